"""File systems of their own for tests; what this machine can't mount is skipped by name."""

import contextlib
import importlib.util
import os
import pathlib
import shutil
import subprocess
import sys

import pytest

from program_bench import wait_until

HERE = pathlib.Path(__file__).resolve().parent


class Mounts:
    """Mounts in the folder of a bench."""

    def __init__(self, bench, ends):
        """`ends` gets what is to be done at the end of the test, the last first."""
        self.folder = bench.folder
        self.ends = ends

    def point(self, name):
        path = self.folder / name
        path.mkdir()
        return path

    def mount(self, name, *arguments):
        path = self.point(name)
        done = subprocess.run(["mount", *arguments, path], capture_output=True, text=True)
        if done.returncode != 0:
            pytest.skip(f"can't mount {name}: {done.stderr.strip()}")
        self.ends.callback(unmount, path)
        return path

    def memory(self, options):
        return self.mount("memory", "-t", "tmpfs", "-o", options, "marrowbench")

    def same(self, name, folder):
        """The same folder a second time."""
        return self.mount(name, "--bind", folder)

    def disk(self, kind, mebibytes):
        """A file system of its own in the file disk.img."""
        if shutil.which(f"mkfs.{kind}") is None:
            pytest.skip(f"needs mkfs.{kind}")
        image = self.folder / "disk.img"
        with open(image, "wb") as file:
            file.truncate(mebibytes << 20)
        subprocess.run([f"mkfs.{kind}", "-q", image], check=True, capture_output=True)
        return self.mount(kind, "-o", "loop", image)

    def faulty(self, shown, *fault, name="faulty"):
        """A mount that shows a folder with a fault, see fault_fs.py."""
        if importlib.util.find_spec("fusepy") is None:
            pytest.skip("needs python3-fusepy")
        if not os.path.exists("/dev/fuse"):
            pytest.skip("needs /dev/fuse")
        path = self.point(name)
        server = subprocess.Popen([sys.executable, HERE / "fault_fs.py", shown, path, *fault],
                                  stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True)
        self.ends.callback(end_server, server)
        wait_until(lambda: os.path.ismount(path) or server.poll() is not None)
        if server.poll() is not None:
            said = server.stdout.read()
            assert "not permitted" in said or "Permission denied" in said, said
            pytest.skip(f"can't mount a FUSE file system: {said.strip()}")
        self.ends.callback(unmount, path)
        return path


def unmount(path):
    # Lazily where something is still open there: nothing is to stay.
    if subprocess.run(["umount", path]).returncode != 0:
        subprocess.run(["umount", "--lazy", path], check=True)


def end_server(server):
    """It ends by itself with its mount; one that never mounted does not."""
    with contextlib.suppress(subprocess.TimeoutExpired):
        server.wait(timeout=30)
    server.kill()
    server.communicate()


@pytest.fixture
def mounts(bench):
    if os.geteuid() != 0:
        pytest.skip("mounting needs root")
    with contextlib.ExitStack() as ends:
        mounts = Mounts(bench, ends)
        yield mounts
        bench.end_all()
