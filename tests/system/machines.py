"""What hosts and guests have in common: a process tree of their own, and jobs that run on them."""

import os
import pathlib
import signal
import subprocess
import tempfile
import time

from program_bench import wait_until


class Job:
    """A command on a machine; what it prints goes to a file."""

    def __init__(self, printed):
        self.printed_path = pathlib.Path(printed)

    def status(self):
        """The exit status; None while the command runs."""
        raise NotImplementedError

    def printed(self):
        """What it has printed so far; a guest takes a moment to begin."""
        if not self.printed_path.exists():
            return ""
        return self.printed_path.read_text(errors="surrogateescape")

    def finish(self, status=0, seconds=300):
        """Waits for the end of the command and returns what it printed."""
        wait_until(lambda: self.status() is not None, seconds)
        assert self.status() == status, self.printed()
        return self.printed()


class Machine:
    """A tree of processes in a process namespace of its own."""

    def __init__(self, name, folder, command, environment=None):
        """Starts `command` as the first process; `folder` takes what its jobs print."""
        self.name = name
        self.folder = pathlib.Path(tempfile.mkdtemp(prefix=f"{name}_", dir=folder))
        self.jobs = 0
        self.helpers = []  # processes outside that stop when those inside are stopped
        # Machines end with the process that made them, however that ends.
        self.holder = subprocess.Popen(
            [*command, "setpriv", "--pdeathsig", "KILL", "unshare", "--fork", "--kill-child",
             "--pid", "--mount-proc", *self.first_process()], env=environment,
            stdin=subprocess.PIPE, stdout=subprocess.PIPE, stderr=subprocess.STDOUT)

    def first_process(self):
        raise NotImplementedError

    def start(self, *argv, environment=None):
        """Starts a command on the machine and returns its job."""
        raise NotImplementedError

    def run(self, *argv, status=0, seconds=120):
        return self.start(*argv).finish(status, seconds)

    def new_job_folder(self):
        self.jobs += 1
        folder = self.folder / f"job{self.jobs}"
        folder.mkdir()
        return folder

    def first_pid(self):
        return only_child(self.holder.pid)

    def processes(self, name=None):
        """The processes of the machine, as this process numbers them."""
        namespace = link_of(self.first_pid())
        pids = [int(entry) for entry in os.listdir("/proc") if entry.isdigit()]
        return [pid for pid in pids if link_of(pid) == namespace
                and (name is None or name_of(pid) == name)]

    def is_alive(self):
        return self.holder.poll() is None

    def what_freezes(self):
        """The processes that stand still when the machine does."""
        first = self.first_pid()
        return [pid for pid in self.processes() if pid != first]

    def freeze(self):
        signal_all(self.what_freezes(), signal.SIGSTOP)

    def thaw(self):
        signal_all(self.what_freezes(), signal.SIGCONT)
        self.wake_helpers()

    def wake_helpers(self):
        for helper in self.helpers:
            helper.send_signal(signal.SIGCONT)

    def crash(self):
        """Ends everything on the machine at once, as a power failure does."""
        if self.is_alive():
            signal_all([self.first_pid()], signal.SIGKILL)
            self.wake_helpers()
        self.holder.wait(timeout=60)
        self.holder.stdin.close()
        self.holder.stdout.close()


def signal_all(pids, number):
    for pid in pids:
        try:
            os.kill(pid, number)
        except ProcessLookupError:
            pass  # it ended by itself


def link_of(pid):
    try:
        return os.readlink(f"/proc/{pid}/ns/pid")
    except OSError:
        return None


def name_of(pid):
    try:
        return pathlib.Path(f"/proc/{pid}/comm").read_text().strip()
    except OSError:
        return None


def only_child(pid, seconds=30):
    end = time.monotonic() + seconds
    while True:
        children = pathlib.Path(f"/proc/{pid}/task/{pid}/children").read_text().split()
        if children:
            return int(children[0])
        assert time.monotonic() < end, f"process {pid} has no child"
        time.sleep(0.01)
