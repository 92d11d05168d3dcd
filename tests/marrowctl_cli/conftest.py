"""The built marrowctl, run as a user runs it."""

import os
import pathlib
import subprocess
import sys
import tempfile

import pytest

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[1] / "cli"))

from program_bench import EMULATOR, ROOT  # noqa: E402

__all__ = ["COMMAND", "EMULATOR", "ROOT"]

COMMAND = [*EMULATOR, os.environ["MARROWCTL_PROGRAM"]]

# Two tests without a finding, for any clients.
GOOD = ("posix;0;0;0;64;0;128;2;0;MEMORY;{0}/[host]_[iter].bin;{0}/log.txt;{0}/results.csv;false\n"
        "posix;0;0;0;64;0;0;2;0;{0}/in.bin;{0}/copy_[host].bin;{0}/log.txt;{0}/results.csv;true\n")


class Ctl:
    """A folder, and marrowctl to run in it."""

    def __init__(self, folder):
        self.folder = folder

    def run(self, *arguments, **options):
        if "stdout" not in options:
            options["stdout"] = subprocess.PIPE
        return subprocess.run([*COMMAND, *map(str, arguments)], cwd=self.folder, timeout=60, text=True,
                              stderr=subprocess.PIPE, **options)

    def write(self, name, text):
        path = self.folder / name
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_text(text)
        return path

    def good(self, name="good.bst"):
        """A settings file without a finding."""
        self.write("in.bin", "data")
        return self.write(name, GOOD.format(self.folder))


@pytest.fixture
def ctl():
    # pytest's own tmp_path would keep the folders of the last runs.
    with tempfile.TemporaryDirectory(prefix="marrowctl_cli_") as temporary:
        folder = pathlib.Path(temporary).resolve() / "bench"
        folder.mkdir()
        yield Ctl(folder)
