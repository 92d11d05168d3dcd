"""File systems of their own for tests; what this machine can't mount is skipped by name."""

import importlib.util
import os
import pathlib
import shutil
import subprocess
import sys
import time

import pytest

HERE = pathlib.Path(__file__).resolve().parent


class Mounts:
    """Mounts below a folder, unmounted at the end of a test."""

    def __init__(self, folder):
        self.folder = folder
        self.made = []
        self.servers = []

    def point(self, name):
        path = self.folder / name
        path.mkdir()
        return path

    def mount(self, name, *arguments):
        path = self.point(name)
        done = subprocess.run(["mount", *arguments, path], capture_output=True, text=True)
        if done.returncode != 0:
            pytest.skip(f"can't mount {name}: {done.stderr.strip()}")
        self.made.append(path)
        return path

    def memory(self, options):
        return self.mount("memory", "-t", "tmpfs", "-o", options, "marrowbench")

    def disk(self, kind, mebibytes):
        """A file system of its own in the file disk.img."""
        if shutil.which(f"mkfs.{kind}") is None:
            pytest.skip(f"needs mkfs.{kind}")
        image = self.folder / "disk.img"
        with open(image, "wb") as file:
            file.truncate(mebibytes << 20)
        subprocess.run([f"mkfs.{kind}", "-q", image], check=True, capture_output=True)
        return self.mount(kind, "-o", "loop", image)

    def faulty(self, shown, *fault):
        """A mount that shows a folder with a fault, see fault_fs.py."""
        if importlib.util.find_spec("fusepy") is None:
            pytest.skip("needs python3-fusepy")
        if not os.path.exists("/dev/fuse"):
            pytest.skip("needs /dev/fuse")
        path = self.point("faulty")
        self.servers.append(subprocess.Popen([sys.executable, HERE / "fault_fs.py", shown, path,
                                              *fault]))
        end = time.monotonic() + 30
        while not os.path.ismount(path):
            if self.servers[-1].poll() is not None or time.monotonic() > end:
                pytest.skip("can't mount a FUSE file system")
            time.sleep(0.01)
        self.made.append(path)
        return path

    def unmount(self):
        for path in reversed(self.made):
            subprocess.run(["umount", path], check=True)
        for server in self.servers:
            server.wait(timeout=30)


@pytest.fixture
def mounts(bench):
    if os.geteuid() != 0:
        pytest.skip("mounting needs root")
    mounts = Mounts(bench.folder)
    yield mounts
    mounts.unmount()
