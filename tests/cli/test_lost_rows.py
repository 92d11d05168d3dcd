"""Where it stands that a row is lost: on standard error, and nowhere else."""

import os
import resource

import pytest

from conftest import masked, needs_strace

BLANKS = " " * 18
STILL_LOCKED = f"{BLANKS}ERROR: Unable to write excel file as it is still locked."


def line(table, iterations=1, log="log.txt"):
    return f"posix;0;0;0;4;0;4;{iterations};0;MEMORY;tiny.bin;{log};{table};false\n"


def log_of(bench, file):
    return [text for text in (bench.folder / "log.txt").read_text().splitlines() if file in text]


def test_row_that_cant_be_written_is_silent_on_console_and_log(bench):
    calm, told = bench.run_apart(bench.settings(line("res.csv", 2)))
    assert told == []
    printed, told = bench.run_apart(bench.settings(line("/dev/full", 2)))
    assert masked("\n".join(printed)).replace("/dev/full", "res.csv") == masked("\n".join(calm))
    assert told == ["marrowbench: row lost: /dev/full: No space left on device"] * 2 + [
        "marrowbench: 2 of 2 rows lost"]
    assert log_of(bench, "ERROR") == []


def test_lock_that_cant_be_had_is_told_on_both(bench):
    table = bench.folder / "res.csv"
    (bench.folder / "res.csv_lock.txt").write_text("another client's")
    printed, told = bench.run_apart(bench.settings(line("res.csv")), fast=True)
    assert [text for text in printed if "ERROR" in text] == [f"{STILL_LOCKED}{table}"]
    assert log_of(bench, "ERROR") == [f"{STILL_LOCKED}{table}"]
    assert told == [f"marrowbench: row lost: {table}: still locked by another client",
                    "marrowbench: 1 of 1 rows lost"]


def test_lock_that_cant_be_made_has_its_reason(bench):
    # Three missing levels are not made.
    table = bench.folder / "a/b/c/res.csv"
    printed, told = bench.run_apart(bench.settings(line(table)))
    assert f"{STILL_LOCKED}{table}" in printed
    assert told[0] == f"marrowbench: row lost: {table}: no lock: No such file or directory"


def test_lost_rows_are_counted_over_chained_files(bench):
    bench.settings(line("/dev/full", 3), "second.bst")
    settings = bench.settings(line("res.csv", 2) + line("/dev/full") + "[cfgPath]second.bst\n")
    _, told = bench.run_apart(settings)
    assert told[-1] == "marrowbench: 4 of 6 rows lost"
    assert len(told) == 5 and len(bench.rows()) == 2


@pytest.mark.parametrize("table", [" ", ".", ""])
def test_folder_in_place_of_a_table_asks_for_none(bench, table):
    # An empty field before the last reads as ";": this one is the last.
    printed, told = bench.run_apart(
        bench.settings(f"posix;0;0;0;4;0;4;1;0;MEMORY;tiny.bin;log.txt;{table}\n"))
    assert [text for text in printed if "ERROR" in text] == []
    assert told == []


def test_path_of_249_characters_has_no_name_for_its_lock(bench):
    folder = bench.folder / ("n" * (230 - len(str(bench.folder))))
    folder.mkdir()
    for length in (248, 249, 250, 251, 260):
        table = str(folder / ("t" * (length - 1 - len(str(folder)))))
        _, told = bench.run_apart(bench.settings(line(table, 2)))
        if length == 249:
            assert told[0] == f"marrowbench: row lost: {table}: File name too long"
            assert not os.path.exists(table)
            continue
        assert told == []
        assert len(bench.rows(table)) == 2
        assert sum(name.startswith("t") for name in os.listdir(folder)) == 1, "no lock stays"
        os.unlink(table)


def test_limit_on_file_sizes_is_told_and_leaves_whole_rows(bench):
    """ulimit -f: the system's signal would end the program with a torn row and its lock."""
    limit = 1300
    _, told = bench.run_apart(
        bench.settings(line("res.csv", 9, log="") .replace(";4;0;4;", ";1;0;1;")),
        preexec_fn=lambda: resource.setrlimit(resource.RLIMIT_FSIZE, (limit, limit)))
    kept = len(bench.rows())
    table = bench.folder / "res.csv"
    assert 0 < kept < 9 and table.stat().st_size <= limit
    assert told == [f"marrowbench: row lost: {table}: File too large"] * (9 - kept) + [
        f"marrowbench: {9 - kept} of 9 rows lost"]
    assert not (bench.folder / "res.csv_lock.txt").exists()


def test_client_that_stands_still_at_its_lock_knows_it_again(bench):
    needs_strace()
    # Ten seconds between the creation of the lock and its note, as on a machine that sleeps.
    table, lock = bench.folder / "res.csv", bench.folder / "res.csv_lock.txt"
    still = ("strace", "-f", "-o", bench.folder / "trace", "-P", lock, "-e", "trace=openat,write",
             "-e", "inject=write:delay_enter=10000000:when=1")
    _, told = bench.run_apart(bench.settings(line(table)), prefix=still,
                              environment={"ASAN_OPTIONS": "detect_leaks=0"})
    assert "(DELAYED)" in (bench.folder / "trace").read_text()
    assert told == []
    assert len(bench.rows()) == 1
    assert not lock.exists()
