"""Locks that were left behind are shown and, when that is asked for, removed; others stay."""

import os
import re
import subprocess
import time

import pytest

from conftest import COMMAND
from program_bench import SLOW_CALLS, slowed_calls, wait_until

NOTE = "\n File locked by: pc7 Time locked: Nov 16. 02:00.41\nInfo: This lock file should only exist a few seconds.\n\n"
HOUR = 3600

needs_slow_calls = pytest.mark.skipif(not SLOW_CALLS, reason="needs calls that can be preloaded")


@pytest.fixture
def lock(ctl):
    """Two hours old."""
    path = ctl.write("results.csv_lock.txt", NOTE)
    age(path, 2 * HOUR)
    return path


def age(path, seconds):
    then = time.time() - seconds
    os.utime(path, (then, then))


def unlock(ctl, *arguments, table="results.csv", **options):
    return ctl.run("fleet", "unlock", "--table", table, *arguments, **options)


def only(ctl, *names):
    """Nothing else is left in the folder."""
    return sorted(path.name for path in ctl.folder.iterdir()) == sorted(names)


def test_no_lock_is_said(ctl):
    done = unlock(ctl)
    assert (done.returncode, done.stdout, done.stderr) == (
        0, "No lock: results.csv_lock.txt is not there.\n", "")
    assert unlock(ctl, "--age", "1h", "--yes").returncode == 0
    assert only(ctl)


@pytest.mark.parametrize("arguments", [[], ["--age", "1h"]])
def test_a_lock_is_shown_and_stays(ctl, lock, arguments):
    done = unlock(ctl, *arguments)
    assert (done.returncode, done.stderr) == (1, "")
    assert re.match(r"Lock  results\.csv_lock\.txt\nAge   2 h 0 min \d s, by the share's clock\nSize  "
                    rf"{len(NOTE)} bytes\nNote  File locked by: pc7 Time locked: Nov 16\. 02:00\.41\n"
                    r"      Info: This lock file should only exist a few seconds\.\nIt stays\. ", done.stdout)
    assert lock.read_text() == NOTE
    assert only(ctl, lock.name)


def test_an_old_lock_is_removed_when_that_is_asked_for(ctl, lock):
    done = unlock(ctl, "--age", "1h", "--yes")
    assert (done.returncode, done.stderr) == (0, "")
    assert done.stdout.endswith("\nRemoved.\n")
    assert only(ctl)


@pytest.mark.parametrize("asked, stays", [("7190s", False), ("3h", True), ("7300", True), ("1d", True)])
def test_a_younger_lock_stays(ctl, lock, asked, stays):
    done = unlock(ctl, "--age", asked, "--yes")
    assert (done.returncode, lock.exists()) == ((1, True) if stays else (0, False))
    assert ("\nIt stays: it is not older than " in done.stdout) == stays


def test_a_lock_from_the_future_stays(ctl, lock):
    age(lock, -HOUR)
    done = unlock(ctl, "--age", "0", "--yes")
    assert done.returncode == 1 and lock.exists()
    assert "in the future, by the share's clock" in done.stdout


@needs_slow_calls
@pytest.mark.parametrize("ahead", [-6 * HOUR, 6 * HOUR])
def test_the_age_is_told_by_the_shares_clock(ctl, lock, ahead):
    environment = os.environ | slowed_calls(ahead=ahead)
    assert "Age   2 h 0 min " in unlock(ctl, env=environment).stdout
    assert unlock(ctl, "--age", "3h", "--yes", env=environment).returncode == 1
    assert lock.exists()


def test_a_table_is_named_by_any_path(ctl, lock):
    (ctl.folder / "sub").mkdir()
    done = unlock(ctl, "--age", "1h", "--yes", table="../results.csv", cwd=ctl.folder / "sub")
    assert done.returncode == 0 and not lock.exists()


def test_an_empty_lock_and_one_with_odd_bytes(ctl, lock):
    lock.write_bytes(b"")
    assert "\nSize  0 bytes\nIt stays." in unlock(ctl).stdout
    lock.write_bytes(b"\x1b[2Jx\xff\n" * 10000)
    shown = unlock(ctl).stdout
    assert "\x1b" not in shown and "\ufffd[2Jx\ufffd" in shown and len(shown) < 3000


def test_a_client_that_takes_it_over_is_not_disturbed(ctl, lock):
    guard = ctl.write("results.csv_lock.txt.take", "")
    done = unlock(ctl, "--age", "1h", "--yes")
    assert done.returncode == 1 and "a client is taking it over" in done.stdout
    assert only(ctl, lock.name, guard.name)


def test_a_guard_that_was_left_behind_goes_first(ctl, lock):
    age(ctl.write("results.csv_lock.txt.take", ""), 2 * HOUR)
    done = unlock(ctl, "--age", "1h", "--yes")
    assert done.returncode == 0
    assert only(ctl)


@needs_slow_calls
def test_a_lock_that_a_client_has_taken_meanwhile_stays(ctl, lock):
    guard = ctl.folder / "results.csv_lock.txt.take"
    # Each call on a lock comes up to two seconds late: between the look and the removal there is time.
    environment = os.environ | slowed_calls(pause_ms=2000)
    process = subprocess.Popen([*COMMAND, "fleet", "unlock", "--table", "results.csv", "--age", "1h", "--yes"],
                               cwd=ctl.folder, env=environment, stdout=subprocess.PIPE, text=True)
    wait_until(guard.exists)
    fresh = ctl.write("fresh", "another client's")
    fresh.rename(lock)
    shown, _ = process.communicate(timeout=60)
    assert process.returncode == 1, shown
    assert shown.endswith("\nIt has gone meanwhile, and a client has made another one.\n")
    assert lock.read_text() == "another client's"
    assert only(ctl, lock.name)


@pytest.mark.parametrize("table, message", [
    ("results.csv_lock.txt", "results.csv_lock.txt: name the table, not its lock: without _lock.txt"),
    ("no/results.csv", "no: No such file or directory"),
    ("folder", "folder_lock.txt: Is a directory"),
    ("x" * 249, "x" * 249 + ": a path of 249 characters and more leaves no name for a lock"),
])
def test_what_is_no_table_with_a_lock_is_told(ctl, table, message):
    (ctl.folder / "folder_lock.txt").mkdir()
    done = unlock(ctl, table=table)
    assert (done.returncode, done.stdout) == (2, "")
    assert done.stderr == f"marrowctl fleet unlock: {message}\n"


@pytest.mark.skipif(os.geteuid() != 0, reason="needs root to become somebody who may not write")
def test_a_folder_that_nobody_may_write_to_is_told(ctl, lock):
    ctl.folder.parent.chmod(0o755)
    ctl.folder.chmod(0o755)
    done = unlock(ctl, user=65534)
    assert (done.returncode, done.stdout) == (2, "")
    assert "Permission denied" in done.stderr and lock.exists()


def test_the_program_waits_no_more_for_a_lock_that_is_gone(ctl, lock):
    """The name is the program's own: a row that was refused is written afterwards."""
    settings = ctl.write("run.bst", "posix;0;0;0;4;0;4;1;0;MEMORY;out.bin;;results.csv;false\n")
    age(lock, 60)

    def run():
        return subprocess.run([os.environ["MARROWBENCH_PROGRAM"], settings], cwd=ctl.folder,
                              capture_output=True, text=True, timeout=60)
    assert "still locked" in run().stderr
    assert unlock(ctl, "--age", "30s", "--yes").returncode == 0
    assert run().stderr == ""
    assert (ctl.folder / "results.csv").exists()
