"""The benchmarks run and say what they measured. What they measure is never asserted."""

import os
import pathlib
import subprocess
import sys
import tempfile

import figures
import pytest
import report
from samples import NO_TARGET, Figure, alternate, at_least, at_most, ratios

BENCH = pathlib.Path(__file__).resolve().parent
DOCUMENT = f"before\n{report.BEGIN}\nold figures\n{report.END}\nbehind\n"


def test_verdict_is_about_the_median():
    assert Figure("a", at_least(1), [0.5, 1, 7]).verdict == "met"
    assert Figure("a", at_least(1), [0.5, 0.9, 7]).verdict == "missed"
    assert Figure("a", at_most(25, "ns"), [24, 25, 90]).verdict == "met"
    assert Figure("a", at_most(25, "ns"), [24, 26, 27]).verdict == "missed"


def test_nothing_measured_is_neither_met_nor_missed():
    skipped = Figure("a", at_least(0), skipped="fio is not installed")
    assert skipped.cells()[1:4] == ["", "", ""]
    assert skipped.verdict == "skipped: fio is not installed"
    assert Figure("a", NO_TARGET, [1]).verdict == "explains"


def test_row_shows_median_range_samples_and_target():
    row = Figure("loop", at_most(25, "ns"), [3.14159, 250.4, 5], "ns").cells()
    assert row == ["loop", "5 ns", "3.14 to 250", "3", "at most 25 ns", "met"]


def test_samples_are_taken_in_turns():
    order = []
    taken = alternate(2, lambda: order.append("a") or 6, lambda: order.append("b") or 3)
    assert order == ["a", "b", "a", "b"]
    assert taken == [[6, 6], [3, 3]]
    assert ratios(*taken) == [2, 2]


def test_document_keeps_what_stands_around_the_figures():
    document = report.replace_figures(DOCUMENT, "new figures")
    assert document == f"before\n{report.BEGIN}\n\nnew figures\n\n{report.END}\nbehind\n"
    with pytest.raises(ValueError, match="lacks the lines"):
        report.replace_figures("no marks", "new figures")


@pytest.fixture
def folder():
    # pytest's own tmp_path would keep the folders of the last runs.
    with tempfile.TemporaryDirectory(prefix="marrowbench_bench_") as path:
        yield pathlib.Path(path)


def test_smoke_run_measures_every_group(folder):
    document = folder / "performance.md"
    document.write_text(DOCUMENT)
    done = subprocess.run(
        [sys.executable, BENCH / "bench.py", "--build", os.environ["MARROWBENCH_BUILD"], "--smoke",
         "--document", document, folder], stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True)
    assert done.returncode == 0, done.stderr
    measured = [line.split()[-1] for line in done.stderr.splitlines() if "measuring:" in line]
    assert measured == [group.__name__ for group in figures.GROUPS]

    rows = [line.strip("| ").split(" | ") for line in document.read_text().splitlines()
            if line.startswith("| ")][2:]
    assert len(rows) > 3 * len(figures.GROUPS) - 3
    for row in rows:
        assert row[-1] in ("met", "missed", "explains") or row[-1].startswith("skipped: "), row
        if not row[-1].startswith("skipped"):
            assert int(row[3]) >= 2, row
    assert [path.name for path in folder.iterdir()] == ["performance.md"]
