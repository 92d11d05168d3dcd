"""What marrowctl run --via needs: a fleet on this machine, and stubs of the engines that arm it."""

import os
import pathlib
import subprocess

import pytest

from conftest import COMMAND
from fleet import FAST_COMMAND, FAST_MARROWBENCH, clock_at, settings_line

STUB = pathlib.Path(__file__).with_name("host_stub.py")
SHELL_ENGINES = ["ssh", "clush", "pdsh", "srun"]

# Clients with clocks by which second 46 comes soon, and programs for which a minute is a second.
MARROWCTL = f"""#!/bin/sh
[ "$2" != arm ] || exec {FAST_COMMAND[-1]} "$@"
exec {COMMAND[-1]} "$@"
"""
MARROWBENCH = f"""#!/bin/sh
unset MARROWBENCH_CLOCK_SPEED MARROWBENCH_CLOCK_OFFSET
exec {FAST_MARROWBENCH} "$@"
"""
SECOND_AT_THE_BEGINNING = 40


class Via:
    """A fleet, and the engines by which it is armed."""

    def __init__(self, fleet):
        self.fleet = fleet
        self.folder = fleet.control.parent
        self.bin = self.folder / "bin"
        self.temporary = self.folder / "temporary"
        for folder in (self.bin, self.temporary):
            folder.mkdir()
        for name in SHELL_ENGINES:
            (self.bin / name).symlink_to(STUB)
        for name, text in (("marrowctl", MARROWCTL), ("marrowbench", MARROWBENCH)):
            (self.bin / name).write_text(text)
            (self.bin / name).chmod(0o755)
        name, value = fleet.marked.split("=")
        self.log = self.folder / "calls"
        self.environment = os.environ | fleet.environment | {
            name: value, "PATH": f"{self.bin}:{os.environ['PATH']}", "TEMP": str(self.temporary),
            "STUB_LOG": str(self.log), "PYTHONDONTWRITEBYTECODE": "1"}

    def settings(self, text=None, name="mine.bst"):
        path = self.folder / name
        path.write_text(text or settings_line())
        return path

    def words(self, engine, settings, *arguments, hosts="c[1-3]"):
        return ["run", "--via", engine, "--hosts", hosts, "--control", str(self.fleet.control),
                *map(str, arguments), str(settings)]

    def start(self, *words, **environment):
        environment = self.environment | clock_at(SECOND_AT_THE_BEGINNING) | environment
        process = subprocess.Popen([*COMMAND, *words], env=environment, cwd=self.folder, text=True,
                                   stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.PIPE,
                                   start_new_session=True)
        self.fleet.started.append(process)
        return process

    def run(self, *words, **environment):
        process = self.start(*words, **environment)
        out, err = process.communicate(timeout=300)
        return subprocess.CompletedProcess(process.args, process.returncode, out, err)

    def calls(self):
        return self.log.read_text().splitlines() if self.log.exists() else []


@pytest.fixture
def via(fleet):
    return Via(fleet)
