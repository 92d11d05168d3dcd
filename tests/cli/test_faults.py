"""Every file-related system call of a short but complete run fails once, or the run is ended there.

By default each call gets one errno and one signal; with MARROWBENCH_ALL=1 (scripts/test --all) each
gets all.
"""

import collections
import errno
import os
import re
import shutil
import signal
import subprocess
import time
from concurrent.futures import ThreadPoolExecutor
from dataclasses import dataclass

import pytest

from complete_run import CHAINED, ITERATIONS, write_complete_run
from conftest import HEADER, SANITIZED, end_group, masked, needs_strace, reason

ALL = os.environ.get("MARROWBENCH_ALL") == "1"
LIBCXX = os.environ["MARROWBENCH_STREAMS"] == "libc++"
ERRNOS = ("EIO", "ENOSPC", "EACCES", "ESTALE", "EDQUOT", "EINTR")
# C libraries differ in how they open, look at and write files.
OPENS = ("open", "openat")
WRITES = ("write", "writev")
CALLS = (*OPENS, "read", "readv", *WRITES, "lseek", "close", "stat", "newfstatat", "mkdir",
         "unlink", "rename", "ftruncate", "fallocate", "fcntl", "mmap")
SIGNALS = ("SIGINT", "SIGTERM", "SIGKILL")
WORKERS = 2
# How a client says that a row is lost, or that a test could not begin.
WORDS = ("marrowbench: row lost: ", "Folder does not exists")


@pytest.fixture(autouse=True)
def tools():
    needs_strace()
    if SANITIZED:
        pytest.skip("the sanitizers make calls of their own")


@dataclass(frozen=True)
class Call:
    """A system call of the run without faults."""

    name: str
    occurrence: int  # among the calls of its name, from 1 on
    file: str        # the last part of its path; "" for memory
    iteration: int   # whose it is, from 0 on; -1: before the first test of a settings file

    def __str__(self):
        return f"{self.name} {self.occurrence} ({self.file or 'memory'})"


class Run:
    """One run of the settings files in a folder of its own, under strace."""

    def __init__(self, program, folder, *options):
        self.folder = folder
        folder.mkdir()
        settings = write_complete_run(folder)
        with open(folder / "printed.txt", "wb") as printed:
            tracer = subprocess.Popen(
                ["strace", "-y", "-o", folder / "trace.txt", *options, program, settings],
                stdout=printed, stderr=subprocess.STDOUT, start_new_session=True)
        try:
            self.status = tracer.wait(timeout=120)
        finally:
            end_group(tracer)

    def text(self, name):
        path = self.folder / name
        return path.read_text(errors="replace") if path.exists() else ""

    def rows(self, has_header=True):
        """The cells of the table's whole rows; anything else in the table fails the test."""
        lines = [line for line in self.text("res.csv").split("\n") if line]
        assert lines.count(HEADER) == (1 if lines and has_header else 0), lines
        assert not lines or not has_header or lines[0] == HEADER
        rows = [line.split(",") for line in lines if line != HEADER]
        assert all(len(row) == HEADER.count(",") + 1 for row in rows), "torn row"
        return [dict(zip(HEADER.split(","), row)) for row in rows]


def key(row):
    return row["Method"], row["Type"], os.path.basename(row["Dest"])


def calls_of(run):
    """The calls between the banner and the end, with the iteration that makes them."""
    counts = collections.Counter()
    found, iteration, in_settings, started = [], 0, True, False
    for line in run.text("trace.txt").splitlines():
        match = re.match(r"(\w+)\((.*)\) += ", line)
        if not match or match[1] not in CALLS:
            continue
        counts[match[1]] += 1
        paths = re.findall(r"<([^<>]*)>|\"([^\"]*)\"", match[2])
        files = [os.path.basename(path or text) for path, text in paths if path or text]
        # openat and newfstatat name the working folder first.
        file = files[-1] if match[1] in ("openat", "newfstatat") and files else (files or [""])[0]
        if match[1] in WRITES and "-----" in line:
            started = True
        if file.endswith(".bst"):
            in_settings = True
        elif in_settings and match[1] in (*OPENS, *WRITES) and file == "log.txt":
            in_settings = False
        if started:
            found.append(Call(match[1], counts[match[1]], file, -1 if in_settings else iteration))
        if match[1] == "unlink" and file == "res.csv_lock.txt" and not in_settings:
            iteration += 1
    return found


@pytest.fixture
def normal(bench):
    run = Run(bench.fast_program, bench.folder / "normal", "-e", f"trace={','.join(CALLS)}")
    assert run.status == 0
    assert [row["Error"] for row in run.rows()] == [""] * ITERATIONS
    return run


def check(normal, run, call, code):
    """What must hold after a call has failed."""
    if run.status == 1 and not call.file:
        # Where the memory of the tests themselves is refused nothing can be run.
        assert run.text("printed.txt").endswith("ERROR: Out of memory\n") and not run.rows()
        return
    assert run.status == 0, "exit status"
    assert not (run.folder / "res.csv_lock.txt").exists(), "lock left behind"
    rows = {key(row): row for row in run.rows()}
    assert len(rows) == len(run.rows()), "a row twice"
    expected = [key(row) for row in normal.rows()]

    said = run.text("printed.txt")
    for number, name in enumerate(expected):
        if call.iteration == -1 and (call.file.endswith(".bst") or not call.file):
            continue  # the settings could not be read
        if number != call.iteration and call.file:
            assert name in rows, f"row {number} is missing"
            assert rows[name]["Error"] == "", f"row {number} has an error"
        elif name not in rows:
            assert any(word in said for word in WORDS), "a row is missing without a word"
    why = reason(code)
    for row in rows.values():
        if row["Error"] and call.file:
            # A stream of libc++ forgets the reason when its flush fails.
            told = "No Error." if LIBCXX and "No Error." in row["Error"] else why
            assert row["Error"].startswith("ERROR: ") and told in row["Error"], row["Error"]
            assert told == why or key(row)[:2] == ("Stream", "Copy"), row["Error"]
            assert call.file in row["Error"] or call.name == "fallocate", row["Error"]

    whole = set(masked(normal.text("log.txt")).replace(str(normal.folder), "").split("\n"))
    for line in masked(run.text("log.txt")).replace(str(run.folder), "").split("\n"):
        # A copy whose source can't be asked for its size copies nothing and has no error.
        assert line in whole or "ERROR: " in line or " 0 files copied" in line, f"torn: {line!r}"


def inject(program, folder, normal, call, name):
    """Lets the call fail, and checks what must hold then."""
    run = Run(program, folder, "-e", f"trace={call.name}", "-e",
              f"inject={call.name}:error={name}:when={call.occurrence}")
    assert "(INJECTED)" in run.text("trace.txt"), "the call was not made"
    check(normal, run, call, getattr(errno, name))


def spread(calls, kinds):
    """All pairs of call and kind, or one kind for each call, in turn."""
    return [(call, kind) for number, call in enumerate(calls) for index, kind in enumerate(kinds)
            if ALL or index == number % len(kinds)]


def judge_all(bench, capsys, matrix, judge):
    """Lets `judge` check each (call, kind) in a folder of its own; fails with all that is wrong."""
    def problem(item):
        number, (call, kind) = item
        folder = bench.folder / f"run{number}"
        try:
            judge(folder, call, kind)
        except (AssertionError, subprocess.TimeoutExpired) as wrong:
            return f"{call} {kind}: {wrong}".split("\n")[0]
        finally:
            shutil.rmtree(folder)
        return None

    with ThreadPoolExecutor(WORKERS) as pool:
        problems = [text for text in pool.map(problem, enumerate(matrix)) if text]
    by_call = collections.Counter(call.name for call, _ in matrix).most_common()
    with capsys.disabled():
        print(f"\nFIGURE {len(matrix)} runs: " + ", ".join(f"{name} {n}" for name, n in by_call))
    assert not problems, "\n".join(problems)


def test_each_call_may_fail_once(bench, capsys, normal):
    calls = calls_of(normal)
    assert len(calls) > 300 and len({call.name for call in calls}) >= 10
    judge_all(bench, capsys, spread(calls, ERRNOS), lambda folder, call, name: inject(
        bench.fast_program, folder, normal, call, name))


def follow(bench, folder):
    """A second client on the same table: says what it printed."""
    (folder / "second.bst").write_text(CHAINED)
    return bench.run(folder / "second.bst", fast=True)


def end_at(bench, folder, call, name):
    """Ends the run at the call, and checks what a second client finds then."""
    table, lock = folder / "res.csv", folder / "res.csv_lock.txt"
    run = Run(bench.fast_program, folder, "-e", f"trace={call.name}", "-e",
              f"inject={call.name}:signal={name}:when={call.occurrence}")
    assert run.status == -getattr(signal, name), f"status {run.status}"
    rows = len(run.rows())
    # Killed when the table was made and had no row yet: a client that finds a table writes no header,
    # even into an empty one.
    has_header = not (name == "SIGKILL" and table.exists() and table.stat().st_size == 0)
    if lock.exists():
        assert name == "SIGKILL", "lock left behind"
        assert "still locked" in follow(bench, folder), "the lock was not respected"
        assert len(run.rows(has_header)) == rows
        os.utime(lock, (0, time.time() - 4 * 3600))
    assert "still locked" not in follow(bench, folder)
    assert len(run.rows(has_header)) == rows + 1 and not lock.exists()


def test_run_may_end_at_each_call(bench, capsys, normal):
    judge_all(bench, capsys, spread(calls_of(normal), SIGNALS), lambda folder, call, name: end_at(
        bench, folder, call, name))
