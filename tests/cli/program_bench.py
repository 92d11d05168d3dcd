"""The built program on a settings folder, and what it prints and writes."""

import errno
import os
import pathlib
import re
import signal
import subprocess
import sys
import time

ROOT = pathlib.Path(__file__).resolve().parents[2]
SANITIZED = os.environ.get("MARROWBENCH_SANITIZE") == "1"
# Which C library's texts the program shows: a static one brings its own.
MUSL = os.environ.get("MARROWBENCH_MUSL") == "1"
MUSL_REASONS = {errno.EIO: "I/O error", errno.ENOMEM: "Out of memory",
                errno.EDQUOT: "Quota exceeded", errno.EOPNOTSUPP: "Not supported"}
# What runs a program for another processor; nothing for this one's.
EMULATOR = os.environ.get("MARROWBENCH_EMULATOR", "").split()
# The library of slow_calls.cpp; empty where a program can't get it.
SLOW_CALLS = os.environ.get("MARROWBENCH_SLOW_CALLS", "")
RULE = "-" * 64
HEADER = (
    "Date,Method,Type,Flush,PreAllocate,Chunk Wait,Chunk Size,Chunk Size KiB,System Buffer,"
    "Filesize KiB,Iterations,Empty SystemCache Mode,Source,Source IP,Dest,Dest IP,Error,Zero test,"
    "Time ms,Time KiB/s,Copy Speed %,NICa,NICa IP,NICa speed MiB/s,NICa MTU,NICb,NICb IP,"
    "NICb speed MiB/s,NICb MTU,NICc,NICc IP,NICc speed MiB/s,NICc MTU,")

DATE = r"[A-Z][a-z]{2} \d\d\. \d\d:\d\d\.\d\d"
STAMP = r"\d\d\.\d\d\. \d\d:\d\d\.\d\d"


def slowed_calls(**settings):
    """What a program's environment needs besides, for its calls on a lock to be as slow_calls.cpp is told."""
    return {
        "LD_PRELOAD": SLOW_CALLS,
        # A sanitizer refuses to run behind another preloaded library.
        "ASAN_OPTIONS": os.environ.get("ASAN_OPTIONS", "") + ":verify_asan_link_order=0",
        **{f"SLOW_CALLS_{name.upper()}": str(value) for name, value in settings.items()}}


def reason(code):
    """The C library's text for an errno code."""
    return MUSL_REASONS.get(code, os.strerror(code)) if MUSL else os.strerror(code)


def masked(text):
    """The text with what differs from run to run replaced: stamps, times, speeds."""
    text = re.sub(DATE, "DATE", text)
    text = re.sub(STAMP, "STAMP", text)
    text = re.sub(r"\d+\.\d\ds\. \d+\.\d{3} MiB/s", "TIMEs. SPEED MiB/s", text)
    return re.sub(r"time: \d+ms \( data read/write only: \d+ms", "time: TOTALms ( data: DATAms", text)


def table_rows(text):
    """The cells of a table's rows by column; its header and line ends are checked."""
    lines = text.split("\n")
    assert lines[0] == HEADER, f"begins with {lines[0][:100]!r}"
    assert lines[-1] == "" and lines[-2] == "", f"every append ends in an empty line, but it ends in {text[-50:]!r}"
    rows = [line for line in lines[1:] if line]
    assert HEADER not in rows, "has a second header"
    assert len(lines) == 2 + 2 * len(rows), "one empty line after each append"
    names = HEADER.split(",")
    return [dict(zip(names, row.split(","))) for row in rows]


class Bench:
    """A settings folder and the program to run on it."""

    def __init__(self, folder):
        self.folder = folder
        self.program = os.environ["MARROWBENCH_PROGRAM"]
        self.fast_program = os.environ["MARROWBENCH_FAST_PROGRAM"]
        self.started = []

    def settings(self, text, name="run.bst"):
        path = self.folder / name
        path.write_text(text)
        return path

    def put(self, text, name="run.bst"):
        """Makes a settings file that is complete at once, for clients that wait for it."""
        return self.settings(text, "being_written").rename(self.folder / name)

    def start(self, *arguments, fast=False, prefix=(), **options):
        program = self.fast_program if fast else self.program
        environment = {k: v for k, v in os.environ.items() if k not in ("TEMP", "TMP")}
        environment |= options.pop("environment", {})
        process = subprocess.Popen(
            [*prefix, *EMULATOR, program, *map(str, arguments)],
            stdout=options.pop("stdout", subprocess.PIPE),
            stderr=options.pop("stderr", subprocess.STDOUT),
            env=environment, cwd=options.pop("cwd", self.folder), text=True,
            errors="surrogateescape", start_new_session=options.get("process_group") is None, **options)
        self.started.append(process)
        return process

    def end_all(self):
        """Ends what a failed test has left running, with what it has started."""
        for process in self.started:
            end_group(process)

    def run(self, *arguments, status=0, **options):
        """Runs the program to its end and returns what it printed."""
        process = self.start(*arguments, **options)
        printed, _ = process.communicate(timeout=300)
        assert process.returncode == status, printed
        return printed

    def run_apart(self, *arguments, **options):
        """Runs the program and returns the lines of standard output and of standard error."""
        process = self.start(*arguments, stderr=subprocess.PIPE, **options)
        texts = process.communicate(timeout=300)
        assert process.returncode == 0, texts
        return [text.splitlines() for text in texts]

    def rows(self, name="res.csv"):
        """The cells of the rows of a table in the folder, see table_rows."""
        return table_rows((self.folder / name).read_text())


def own_host_names():
    """Whether this process may give another one its own host name."""
    if sys.platform != "linux":
        return False
    probe = subprocess.run(["unshare", "--uts", "hostname", "probe"], capture_output=True)
    return probe.returncode == 0


def end_group(process):
    """Ends a process that has a session of its own, and all in it."""
    if process.poll() is None:
        os.killpg(process.pid, signal.SIGKILL)
        process.wait()


def until_shown(process, text):
    """What a process prints up to and with this text."""
    shown = ""
    while not shown.endswith(text):
        character = process.stdout.read(1)
        assert character, f"{text!r} does not come: {shown}"
        shown += character
    return shown


def reserved(bench, line, path):
    """The status of a test's file when its first chunk is written, the others not.

    None when the test refuses the reservation.
    """
    client = bench.start(bench.settings(line.replace("WAIT", "60000")))
    wait_until(lambda: client.poll() is not None or (path.exists() and path.stat().st_size > 0))
    if client.poll() is None:
        status = path.stat()
        client.terminate()
        client.wait(timeout=60)
        return status
    (row,) = bench.rows()
    assert row["Error"] == f"ERROR: Unable to preallocate file '{path}' ! {reason(errno.EOPNOTSUPP)}"
    return None


def wait_until(condition, seconds=60):
    end = time.monotonic() + seconds
    while not condition():
        assert time.monotonic() < end, "waited too long"
        time.sleep(0.01)
