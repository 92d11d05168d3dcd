"""The built program, run as a user runs it."""

import os
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile
import time

import pytest

from mounts import mounts  # a fixture

__all__ = ["mounts"]

ROOT = pathlib.Path(__file__).resolve().parents[2]
SANITIZED = os.environ.get("MARROWBENCH_SANITIZE") == "1"
RULE = "-" * 64
HEADER = (
    "Date,Method,Type,Flush,PreAllocate,Chunk Wait,Chunk Size,Chunk Size KiB,System Buffer,"
    "Filesize KiB,Iterations,Empty SystemCache Mode,Source,Source IP,Dest,Dest IP,Error,Zero test,"
    "Time ms,Time KiB/s,Copy Speed %,NICa,NICa IP,NICa speed MiB/s,NICa MTU,NICb,NICb IP,"
    "NICb speed MiB/s,NICb MTU,NICc,NICc IP,NICc speed MiB/s,NICc MTU,")

DATE = r"[A-Z][a-z]{2} \d\d\. \d\d:\d\d\.\d\d"
STAMP = r"\d\d\.\d\d\. \d\d:\d\d\.\d\d"


def masked(text):
    """The text with what differs from run to run replaced: stamps, times, speeds."""
    text = re.sub(DATE, "DATE", text)
    text = re.sub(STAMP, "STAMP", text)
    text = re.sub(r"\d+\.\d\ds\. \d+\.\d{3} MiB/s", "TIMEs. SPEED MiB/s", text)
    return re.sub(r"time: \d+ms \( data read/write only: \d+ms", "time: TOTALms ( data: DATAms", text)


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

    def start(self, *arguments, fast=False, prefix=(), **options):
        program = self.fast_program if fast else self.program
        environment = {k: v for k, v in os.environ.items() if k not in ("TEMP", "TMP")}
        environment |= options.pop("environment", {})
        process = subprocess.Popen(
            [*prefix, program, *map(str, arguments)], stdout=subprocess.PIPE,
            stderr=subprocess.STDOUT, env=environment, cwd=options.pop("cwd", self.folder),
            text=True, errors="surrogateescape", **options)
        self.started.append(process)
        return process

    def run(self, *arguments, status=0, **options):
        """Runs the program to its end and returns what it printed."""
        process = self.start(*arguments, **options)
        printed, _ = process.communicate(timeout=300)
        assert process.returncode == status, printed
        return printed

    def rows(self, name="res.csv"):
        """The cells of the table's rows by column; its header and line ends are checked."""
        lines = (self.folder / name).read_text().split("\n")
        assert lines[0] == HEADER
        assert lines[-1] == "" and lines[-2] == "", "every append ends in an empty line"
        rows = [line for line in lines[1:] if line]
        assert HEADER not in rows
        assert len(lines) == 2 + 2 * len(rows), "one empty line after each append"
        names = HEADER.split(",")
        return [dict(zip(names, row.split(","))) for row in rows]


@pytest.fixture
def bench():
    # pytest's own tmp_path would keep the folders of the last runs.
    with tempfile.TemporaryDirectory(prefix="marrowbench_cli_") as temporary:
        folder = pathlib.Path(temporary).resolve() / "bench"
        folder.mkdir()
        bench = Bench(folder)
        yield bench
        for process in bench.started:
            if process.poll() is None:
                process.kill()
                process.wait()


def wait_until(condition, seconds=60):
    end = time.monotonic() + seconds
    while not condition():
        assert time.monotonic() < end, "waited too long"
        time.sleep(0.01)


def own_host_names():
    """Whether this process may give another one its own host name."""
    if sys.platform != "linux":
        return False
    probe = subprocess.run(["unshare", "--uts", "hostname", "probe"], capture_output=True)
    return probe.returncode == 0


def needs_strace():
    """Skips the test where no process may be traced."""
    if shutil.which("strace") is None:
        pytest.skip("needs strace")
    if subprocess.run(["strace", "true"], capture_output=True).returncode != 0:
        pytest.skip("strace may not trace here")
