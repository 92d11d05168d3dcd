"""Whole transcripts: every byte that a run prints, times masked."""

import os
import re
import time

import pytest

from conftest import DATE, HEADER, RULE, STAMP, masked, wait_until

BLANKS = " " * 18
BANNER = f"""{RULE}
Marrowbench  9.1.01
Copyright (c) 2026 the Marrowbench authors. MIT License.
{RULE}
"""


def loading(path, wait=""):
    return f"\n\n######## Loading/Waiting for settings file '{path}'  ########\n\n{wait}\nSTAMP\n"


def opening(path, index, line):
    return f"DATE: ___   {path}  __  {index}  {'_' * 52}\n{BLANKS}{line}\n"


def iteration(report, null_data="N/A", destination=True):
    rows = [report, f"Null data test: {null_data}"]
    if destination:
        rows.append("Destination fileserver IP: ")
    return "".join(f"{BLANKS}{row}\n" for row in [*rows, " "])


TOTALS = f"{BLANKS}Total time: TOTALms ( data: DATAms)\nDATE: {'_' * 27}\n\n"
CLOSING = "STAMP\n\n"


def test_write_test_as_the_manual_shows_it(bench):
    line = "posix;0;0;0;1024;0;1024;1;0;MEMORY;out.bin;log.txt;res.csv;true"
    path = bench.settings(line + "\n", "run12.bst")
    printed = bench.run(path)
    report = "1 files written ( 1.00 MiB. TIMEs. SPEED MiB/s. Transfer speed setting: 100% )"
    rows = opening(path, 0, line) + iteration(report) + TOTALS
    assert masked(printed) == BANNER + loading(path) + "Config loaded. \n" + rows + CLOSING

    assert masked((bench.folder / "log.txt").read_text()) == rows
    data = (bench.folder / "out.bin").read_bytes()
    assert len(data) == 1048576
    assert data[:16].hex() == "ed43b84144aff4fb404fa6685e3c8293"
    assert 0 not in data and 255 not in data

    table = (bench.folder / "res.csv").read_text()
    pattern = (f"{re.escape(HEADER)}\n{DATE},Posix,Write,,,0,1048576,1024,0,1024,1,0,MEMORY,,"
               f"{re.escape(str(bench.folder))}/out.bin,,,,\\d+,-?\\d+,100,,,,,,,,,,,,,\n\n")
    assert re.fullmatch(pattern, table)
    marker = bench.folder / "_run12_log" / f"done__{os.uname().nodename.split('.')[0]}"
    assert re.fullmatch(STAMP + ": done\n", marker.read_text())


def test_read_test_has_no_destination_row(bench):
    (bench.folder / "in.bin").write_bytes(b"x" * 1048576)
    line = "AnsiC;0;0;0;64;1;1024;1;0;in.bin;MEMORY;;;false"
    path = bench.settings(line)
    report = "1 files read ( 1.00 MiB. TIMEs. SPEED MiB/s. Transfer speed setting: 100% )"
    expected = opening(path, 0, line) + iteration(report, "Ok", destination=False) + TOTALS
    assert expected in masked(bench.run(path))


def test_copy_of_a_missing_source_counts_zero_files(bench):
    line = "stream;0;0;0;64;0;0;1;0;missing.bin;copy.bin;;res.csv;false"
    path = bench.settings(line)
    report = "0 files copied ( 0.00 MiB. TIMEs. SPEED MiB/s. Copy speed setting: 100% )"
    assert opening(path, 0, line) + iteration(report) + TOTALS in masked(bench.run(path))
    assert [row["Error"] for row in bench.rows()] == [""]
    assert [row["Time KiB/s"] for row in bench.rows()] == ["-9223372036854775808"]


def test_error_replaces_the_summary_and_is_not_rewritten(bench):
    (bench.folder / "copied.bin").write_bytes(b"old")
    line = "ansic;0;0;0;64;0;64;1;0;MEMORY;copied.bin;;res.csv;false"
    path = bench.settings(line)
    report = f"ERROR: Unable to open file '{bench.folder}/copied.bin' ! File exists"
    assert opening(path, 0, line) + iteration(report) + TOTALS in masked(bench.run(path))
    assert [row["Error"] for row in bench.rows()] == [report]
    assert (bench.folder / "copied.bin").read_bytes() == b"old"


def test_system_method_runs_nothing_and_still_writes_its_row(bench):
    line = "system;0;0;0;64;0;64;2;4;MEMORY;sub/out.bin;;res.csv;false"
    path = bench.settings(line)
    cache = f"{BLANKS}Empty Cache mode 4 POSIX_FADV_NOREUSE | POSIX_FADV_DONTNEED\n"
    report = "0 files written ( 0.00 MiB. TIMEs. SPEED MiB/s. Transfer speed setting: 100% )"
    rows = (cache + iteration(report)) * 2
    assert opening(path, 0, line) + rows + TOTALS in masked(bench.run(path))
    assert [row["Method"] for row in bench.rows()] == ["System", "System"]
    assert list((bench.folder / "sub").iterdir()) == []


def test_missing_folders_end_the_configuration_and_not_the_run(bench):
    bad = "posix;0;0;0;64;0;64;3;0;MEMORY;a/b/c/out.bin;;;false"
    good = "posix;0;0;0;64;0;64;1;0;MEMORY;a/b/out.bin;;;false"
    path = bench.settings(f"{bad}\n{good}\n")
    report = "1 files written ( 0.06 MiB. TIMEs. SPEED MiB/s. Transfer speed setting: 100% )"
    error = f"{BLANKS}ERROR: Folder does not exists: {bench.folder}/a/b/c/\n"
    expected = opening(path, 0, bad) + error + opening(path, 1, good) + iteration(report) + TOTALS
    assert expected in masked(bench.run(path))


def test_rejected_lines_are_shown_as_read(bench):
    path = bench.settings("  posix;0;0;x \n\n# comment\n  # no comment\nAnsi;1\n")
    expected = ("Error reading settings line '  posix;0;0;x ' \n"
                "Error reading settings line '  # no comment' \n"
                "Error reading settings line 'Ansi;1' \n")
    printed = masked(bench.run(path))
    assert printed == (BANNER + loading(path).replace("\nSTAMP\n", f"\n{expected}STAMP\n") +
                       "Config loaded. \n" + CLOSING)
    assert len(list((bench.folder / "_run_log").iterdir())) == 1, "no test: done all the same"


@pytest.mark.parametrize("arguments, status, message", [
    ([], 255, "No commandline flags\n"),
    (["run.txt"], 1, "Unknown commandline flags\n\n"),
    (["-zzRoot"], 1, "Unknown commandline flags\n\n"),
    (["-zzRoot", "run.bst"], 1, "Unknown commandline flags\n\n"),
    ([""], 1, "Unknown commandline flags\n\n"),
])
def test_exit_status_of_a_wrong_command_line(bench, arguments, status, message):
    assert bench.run(*arguments, status=status) == BANNER + message


def test_root_flag_moves_the_path_to_the_third_argument(bench):
    path = bench.settings("# nothing\n", "Tests.BST")
    printed = masked(bench.run("-ZZROOT", "ignored", str(path).replace("/", "\\")))
    assert printed == BANNER + loading(path) + "Config loaded. \n" + CLOSING


def test_chain_runs_both_files_and_restarts_the_numbers(bench):
    line = "posix;0;0;0;64;0;64;1;0;MEMORY;out[cfgID]_[cfgline].bin;;res.csv;false"
    second = bench.settings(f"{line}\n", "second7.bst")
    first = bench.settings(f"{line}\n{second}\n{line}\n", "first3.bst")
    printed = masked(bench.run(first))
    report = iteration("1 files written ( 0.06 MiB. TIMEs. SPEED MiB/s. Transfer speed setting: 100% )")
    assert printed == BANNER + "".join(
        loading(path) + "Config loaded. \n" + opening(path, 0, line) + report + TOTALS
        for path in (first, second)) + CLOSING
    assert [row["Dest"] for row in bench.rows()] == [
        f"{bench.folder}/out{number}_0.bin" for number in (3, 7)]


def test_settings_file_that_appears_later_starts_with_a_minute(bench):
    path = bench.folder / "later.bst"
    started = time.time()
    process = bench.start(path, fast=True, bufsize=1,
                          environment={"MARROWBENCH_CLOCK_START": str(int(started * 1e6))})
    head = "".join(process.stdout.readline() for _ in range(8))
    first_dot = process.stdout.read(1)
    put = time.localtime(started + (time.time() - started) * 60)
    bench.put("posix;0;0;0;64;0;64;1;0;MEMORY;out.bin;;;true\n", path.name)
    rest, _ = process.communicate(timeout=120)
    assert process.returncode == 0

    assert head.endswith("########\n\n") and first_dot == "."
    printed = masked(head + first_dot + rest)
    shown = re.search(r"start\.\.\. (\d+)sec", printed).group(1)
    wait = ("Config loaded. Waiting for the next minute to start... " + shown + "sec \n\n"
            "Note: A time sync for all your clients helps to start this test at the same time.\n\n")
    dots = re.search(r"########\n\n(\.+)\n", printed).group(1)
    assert printed.startswith(BANNER + loading(path, dots) + wait + "DATE: ___")

    # Which minute, and what is shown of it, unit tests hold on a clock that stands still.
    began = re.search(rf"({DATE}): ___", rest).group(1)
    minutes = (int(began[8:10]) * 60 + int(began[11:13])) - (put.tm_hour * 60 + put.tm_min)
    assert minutes % 1440 >= 1, "not before the next minute"


def test_lock_of_another_client_loses_the_row_and_is_left_alone(bench):
    lock = bench.folder / "res.csv_lock.txt"
    lock.write_text("held")
    path = bench.settings("posix;0;0;0;64;0;64;2;0;MEMORY;out.bin;;res.csv;true\n")
    printed = bench.run(path, fast=True)
    error = f"{BLANKS}ERROR: Unable to write excel file as it is still locked.{bench.folder}/res.csv\n"
    assert printed.count(error) == 2
    assert lock.read_text() == "held"
    assert not (bench.folder / "res.csv").exists()


def test_lock_given_back_in_time_loses_nothing(bench):
    lock = bench.folder / "res.csv_lock.txt"
    lock.write_text("held")
    path = bench.settings("posix;0;0;0;64;0;64;1;0;MEMORY;out.bin;;res.csv;true\n")
    process = bench.start(path)
    wait_until((bench.folder / "out.bin").exists)
    os.unlink(lock)
    printed, _ = process.communicate(timeout=60)
    assert process.returncode == 0 and "still locked" not in printed
    assert len(bench.rows()) == 1
    assert not lock.exists()


def test_stale_lock_is_taken_over(bench):
    lock = bench.folder / "res.csv_lock.txt"
    lock.write_text("left behind")
    old = os.stat(lock).st_mtime - 10900
    os.utime(lock, (old, old))
    path = bench.settings("posix;0;0;0;64;0;64;1;0;MEMORY;out.bin;;res.csv;true\n")
    bench.run(path, fast=True)
    assert len(bench.rows()) == 1
    assert not lock.exists()


@pytest.mark.parametrize("obstacle", ["folder", "dangling link"])
def test_lock_path_that_never_becomes_free_does_not_hold_the_client(bench, obstacle):
    lock = bench.folder / "res.csv_lock.txt"
    if obstacle == "folder":
        lock.mkdir()
    else:
        lock.symlink_to(bench.folder / "nowhere" / "nothing")
    path = bench.settings("posix;0;0;0;64;0;64;1;0;MEMORY;out.bin;;res.csv;true\n")
    assert "still locked" in bench.run(path, fast=True)
    assert not (bench.folder / "res.csv").exists()
    assert lock.is_symlink() or lock.is_dir()
