"""A server and its clients on a network of their own, from which nothing leads out."""

import contextlib
import pathlib
import shutil
import subprocess
import tempfile

from hosts import Host
from uml_guest import Guest

SERVER_ADDRESS = "10.90.0.1"


def client_address(number):
    return f"10.90.1.{number}"


class Lab:
    def __init__(self):
        self.folder = pathlib.Path(tempfile.mkdtemp(prefix="marrowbench_shares_"))
        # Clients log in as other users than the one who made the folder.
        self.folder.chmod(0o755)
        self.machines = []
        try:
            self.server = self.added(Host("server", self.folder))
            self.server.run("ip", "link", "add", "bridge", "type", "bridge")
            self.server.run("ip", "address", "add", f"{SERVER_ADDRESS}/16", "dev", "bridge")
            self.server.run("ip", "link", "set", "bridge", "up")
        except BaseException:
            self.close()
            raise

    def added(self, machine):
        self.machines.append(machine)
        return machine

    def add_host(self, number):
        host = self.added(Host(f"client{number}", self.folder))
        self.network("link", "add", f"port{number}", "type", "veth", "peer", "name", "eth0",
                     "netns", host.first_pid())
        host.run("ip", "address", "add", f"{client_address(number)}/16", "dev", "eth0")
        host.run("ip", "link", "set", "eth0", "up")
        self.join_bridge(number)
        return host

    def add_guest(self, number):
        self.network("tuntap", "add", f"port{number}", "mode", "tap")
        self.join_bridge(number)
        return self.added(Guest(number, client_address(number), self.server, self.folder))

    def remove(self, number, machine):
        """Ends a machine at once and takes its cable away."""
        machine.crash()
        self.machines.remove(machine)
        # The cable of a host ends with it, that of a guest does not.
        self.network("link", "delete", f"port{number}", check=False)

    def join_bridge(self, number):
        self.network("link", "set", f"port{number}", "up")
        self.plug(number)

    # Cables are pulled at the bridge: a guest's network device would not survive it at its own end.
    def plug(self, number):
        self.network("link", "set", f"port{number}", "master", "bridge")

    def unplug(self, number):
        self.network("link", "set", f"port{number}", "nomaster")

    def network(self, *arguments, check=True):
        # Not inside the server's process namespace: process ids are this process's.
        subprocess.run(self.server.inside("-n") + ["ip", *map(str, arguments)], check=check,
                       capture_output=not check)

    def close(self):
        """Ends everything, also when one of the machines can't be ended."""
        with contextlib.ExitStack() as ends:
            ends.callback(shutil.rmtree, self.folder)
            for machine in self.machines:
                ends.callback(machine.crash)
        left = processes_that_name(self.folder)
        assert not left, f"still running: {left}"


def processes_that_name(folder):
    """The command lines on this machine in which a folder's name stands."""
    lines = []
    for path in pathlib.Path("/proc").glob("[0-9]*/cmdline"):
        with contextlib.suppress(OSError):  # it has ended
            lines.append(path.read_bytes().replace(b"\0", b" ").decode(errors="replace"))
    return [line for line in lines if str(folder) in line]
