"""The built program, run as a user runs it."""

import pathlib
import shutil
import subprocess
import tempfile

import pytest

from mounts import mounts  # a fixture
from program_bench import (
    DATE, EMULATOR, HEADER, MUSL, ROOT, RULE, SANITIZED, STAMP, Bench, end_group, masked, own_host_names,
    reason, reserved, table_rows, until_shown, wait_until)

__all__ = ["DATE", "EMULATOR", "HEADER", "MUSL", "ROOT", "RULE", "SANITIZED", "STAMP", "end_group",
           "masked", "mounts", "own_host_names", "reason", "reserved", "table_rows", "until_shown",
           "wait_until"]


@pytest.fixture
def bench():
    # pytest's own tmp_path would keep the folders of the last runs.
    with tempfile.TemporaryDirectory(prefix="marrowbench_cli_") as temporary:
        folder = pathlib.Path(temporary).resolve() / "bench"
        folder.mkdir()
        bench = Bench(folder)
        yield bench
        bench.end_all()


def needs_strace():
    """Skips the test where the program's calls can't be traced."""
    if EMULATOR:
        pytest.skip("the emulator makes calls of its own")
    if shutil.which("strace") is None:
        pytest.skip("needs strace")
    if subprocess.run(["strace", "true"], capture_output=True).returncode != 0:
        pytest.skip("strace may not trace here")
