"""Hosts in namespaces, with their own host name, network, mounts and processes."""

import os
import subprocess

from machines import Job, Machine

# Where daemons leave their sockets and notes: each host has its own, which end with it.
OWN_FOLDERS = "/run /var/log /var/tmp /dev/shm"
SETUP = """
hostname "$0" && ip link set lo up || exit 1
for folder in $1; do mount -t tmpfs tmpfs "$folder" || exit 1; done
echo ready
while sleep 3600; do :; done
"""


class HostJob(Job):
    def __init__(self, command, folder, environment):
        super().__init__(folder / "printed")
        with open(self.printed_path, "wb") as printed:
            self.process = subprocess.Popen(
                command, stdin=subprocess.DEVNULL, stdout=printed, stderr=subprocess.STDOUT,
                env=environment)

    def status(self):
        return self.process.poll()


class Host(Machine):
    def __init__(self, name, folder):
        super().__init__(name, folder, [])
        line = self.holder.stdout.readline()
        assert line == b"ready\n", f"no host {name}: {line!r}"

    def first_process(self):
        return ["--net", "--uts", "--ipc", "sh", "-c", SETUP, self.name, OWN_FOLDERS]

    def inside(self, *namespaces):
        """The beginning of a command line that enters this host."""
        return ["nsenter", "-t", str(self.first_pid()), *namespaces, "--"]

    def start(self, *argv, environment=None):
        command = self.inside("-m", "-u", "-i", "-n", "-p") + list(map(str, argv))
        environment = os.environ | (environment or {})
        job = HostJob(command, self.new_job_folder(), environment)
        # nsenter stops itself when its child is stopped, and then reaps nobody.
        self.helpers.append(job.process)
        return job
