"""Every settings file in examples/ runs without an error and writes the rows it promises."""

import shutil

import pytest

from conftest import ROOT

EXAMPLES = sorted((ROOT / "examples").glob("*.bst"))

# Rows in the table: lines times iterations, of the chained file too.
ROWS = {
    "quick": ("marrowbench_quick_results.csv", 9),
    "copy": ("copy_results.csv", 10),
    "throttled_copy": ("throttled_results.csv", 2),
    "write_then_read": ("write_read_results.csv", 8),
    "many_clients": ("many_clients_results.csv", 6),
    "chain_first1": ("chain_results.csv", 2),
    "chain_second2": ("chain_results.csv", 1),
}


def test_every_example_is_listed():
    assert {path.stem for path in EXAMPLES} == set(ROWS)


@pytest.mark.parametrize("example", EXAMPLES, ids=lambda path: path.stem)
def test_example_runs(bench, example):
    for path in EXAMPLES:
        shutil.copy(path, bench.folder)
    printed = bench.run(bench.folder / example.name, environment={"TEMP": str(bench.folder)})
    table, rows = ROWS[example.stem]
    errors = [row["Error"] for row in bench.rows(table) if row["Error"]]
    if any("preallocate" in error for error in errors):
        pytest.skip("this file system refuses preallocation")
    assert errors == [] and "rror" not in printed
    assert len(bench.rows(table)) == rows


def test_chain_runs_the_second_file_with_its_own_number(bench):
    for path in EXAMPLES:
        shutil.copy(path, bench.folder)
    bench.run(bench.folder / "chain_first1.bst", cwd="/")
    assert sorted(path.name for path in bench.folder.glob("chain_*.bin")) == [
        "chain_1.bin", "chain_2.bin"]
