"""Clients of a run on this machine, each with its own host name, and what they leave behind."""

import contextlib
import json
import os
import pathlib
import signal
import subprocess
import sys
import time

import pytest

from conftest import COMMAND, EMULATOR
from program_bench import end_group, own_host_names, wait_until

FAST_MARROWBENCH = os.environ["MARROWBENCH_FAST_PROGRAM"]
FAST_COMMAND = [*EMULATOR, os.environ["MARROWCTL_FAST_PROGRAM"]]

# A test that writes one small file on each client, and asks for the marker.
LINE = "posix;0;0;0;4;0;4;{iterations};0;MEMORY;[host]_[iter].bin;log_[host].txt;{table};true\n"


def settings_line(iterations=2, table="results.csv"):
    return LINE.format(iterations=iterations, table=table)


def clock_at(second):
    """For programs with a clock of their own: it is this second of a minute there now, and goes on as usual."""
    return {"MARROWBENCH_CLOCK_SPEED": "1",
            "MARROWBENCH_CLOCK_OFFSET": str(int((second - time.time()) % 60 * 1_000_000))}


@contextlib.contextmanager
def small_file_system(folder, size="64k"):
    folder.mkdir()
    subprocess.run(["mount", "-t", "tmpfs", "-o", f"size={size}", "tmpfs", folder], check=True)
    try:
        yield
    finally:
        subprocess.run(["umount", "--lazy", folder], check=True)


def fill_up(folder):
    """Writes until there is no space left."""
    with open(folder / "filling", "wb", buffering=0) as file:
        with pytest.raises(OSError):
            while True:
                file.write(b"x" * 4096)


def state_of(pid):
    """The state of a process as /proc tells it; nothing when it is gone."""
    try:
        return pathlib.Path(f"/proc/{pid}/stat").read_text().rsplit(")", 1)[1].split()[0]
    except (FileNotFoundError, ProcessLookupError):
        return ""


def is_gone(pid):
    return state_of(pid) in ("", "Z")


class Fleet:
    """A control folder and its clients: programs with a clock that is sixty times as fast."""

    def __init__(self, folder, run="monday"):
        self.control = folder / "control"
        self.control.mkdir(exist_ok=True)
        self.run_name = run
        self.folder = self.control / run
        self.started = []
        self.marked = f"MARROWCTL_TEST={os.getpid()}_{id(self)}"
        self.environment = {"MARROWBENCH_CLOCK_START": str(int(time.time() * 1e6))}

    def place(self):
        return ["--control", str(self.control), "--run", self.run_name]

    def command(self, action, *arguments, program=COMMAND, host=None):
        words = [*program, "fleet", action, *self.place(), *map(str, arguments)]
        if host is None:
            return words
        return ["unshare", "--uts", "sh", "-c", f"hostname {host}; exec \"$@\"", "sh", *words]

    def start(self, action, *arguments, environment=None, program=COMMAND, host=None, **options):
        options = {"stdout": subprocess.PIPE, "stderr": subprocess.PIPE, "text": True,
                   "stdin": subprocess.DEVNULL, "start_new_session": True, **options}
        name, value = self.marked.split("=")
        process = subprocess.Popen(
            self.command(action, *arguments, program=program, host=host), **options,
            env={**os.environ, **self.environment, name: value, **(environment or {})})
        self.started.append(process)
        return process

    def run(self, action, *arguments, timeout=120, **options):
        process = self.start(action, *arguments, **options)
        out, err = process.communicate(timeout=timeout)
        return subprocess.CompletedProcess(process.args, process.returncode, out, err)

    def arm(self, host, *arguments, **options):
        return self.start("arm", "--program", FAST_MARROWBENCH, *arguments, host=host, **options)

    def ready(self, host):
        """What the client says in its ready file; nothing before it is confirmed."""
        try:
            note = json.loads((self.folder / f"ready__{host}").read_text())
        except (FileNotFoundError, json.JSONDecodeError):
            return None
        return note if note["marrowbench"] else None

    def arm_all(self, hosts, *arguments, **options):
        clients = [self.arm(f"{host}.lab", *arguments, **options) for host in hosts]
        for host in hosts:
            wait_until(lambda host=host: self.ready(host), 120)
        return clients

    def names(self):
        return {path.name for path in self.folder.iterdir()}

    def finished(self, host):
        return json.loads((self.folder / f"finished__{host}").read_text())

    def processes(self):
        """The processes that come from this fleet, by what stands in their environment."""
        found = []
        for folder in pathlib.Path("/proc").glob("[0-9]*"):
            try:
                environment = (folder / "environ").read_bytes().split(b"\0")
            except OSError:
                continue
            pid = int(folder.name)
            if self.marked.encode() in environment and not is_gone(pid):
                found.append(pid)
        return found

    def end_all(self):
        """Ends what is left, detached clients, too, and tells how many processes that were."""
        for process in self.started:
            end_group(process)
            for stream in (process.stdout, process.stderr):
                if stream:
                    stream.close()
        left = self.processes()
        for pid in left:
            try:
                os.kill(pid, signal.SIGKILL)
            except ProcessLookupError:
                pass
        return len(left)


@pytest.fixture
def fleet(ctl):
    if not own_host_names():
        pytest.skip("needs unshare --uts and the right to use it")
    fleet = Fleet(ctl.folder)
    yield fleet
    fleet.end_all()


needs_proc = pytest.mark.skipif(sys.platform != "linux", reason="needs /proc")
