"""Hosts as an administrator has them: reached by ssh under their names, one folder in common, and the engines
that start programs on them."""

import json
import os
import pathlib
import shutil
import subprocess

from lab import SERVER_ADDRESS, Lab, client_address
from program_bench import wait_until

SSHD = shutil.which("sshd") or "sshd"
MUNGE_KEY_BYTES = 1024


def with_o(*texts):
    return [argument for text in texts for argument in ("-o", text)]


class Fleet:
    """A machine of the administrator and as many clients; `share` is a folder that all of them see."""

    def __init__(self, count):
        self.lab = Lab()
        self.folder = self.lab.folder
        self.share = self.folder / "share"
        self.share.mkdir()
        try:
            self.admin = self.lab.server
            self.clients = [self.lab.add_host(number) for number in range(1, count + 1)]
            self.name_all()
            self.serve_ssh()
        except BaseException:
            self.lab.close()
            raise

    @property
    def names(self):
        return [client.name for client in self.clients]

    @property
    def machines(self):
        return [self.admin, *self.clients]

    def name_all(self):
        """Every machine knows the names of all."""
        lines = ["127.0.0.1 localhost", f"{SERVER_ADDRESS} {self.admin.name}"]
        lines += [f"{client_address(number)} {client.name}" for number, client in enumerate(self.clients, 1)]
        hosts = self.folder / "hosts"
        hosts.write_text("\n".join(lines) + "\n")
        for machine in self.machines:
            machine.run("mount", "--bind", hosts, "/etc/hosts")
        self.hide_start_files()

    def hide_start_files(self):
        """What this machine's user has shells do, for a minute maybe, is nothing that clients have."""
        nothing = self.folder / "nothing"
        nothing.touch()
        for name in (".bashrc", ".bash_profile", ".bash_login", ".profile", ".zshenv"):
            if (pathlib.Path.home() / name).exists():
                for machine in self.clients:
                    machine.run("mount", "--bind", nothing, pathlib.Path.home() / name)

    def serve_ssh(self):
        for key in ("host_key", "user_key"):
            subprocess.run(["ssh-keygen", "-q", "-t", "ed25519", "-N", "", "-f", self.folder / key], check=True)
        # Of the whole machine, so that every engine takes it.
        settings = self.folder / "ssh_config"
        settings.write_text(f"IdentityFile {self.folder}/user_key\nStrictHostKeyChecking no\n"
                            "UserKnownHostsFile /dev/null\nLogLevel ERROR\n")
        self.admin.run("mount", "--bind", settings, "/etc/ssh/ssh_config")
        for machine in self.clients:
            machine.run("mkdir", "/run/sshd")
            # By its full path, or it does not start.
            machine.run(SSHD, "-f", "/dev/null", "-h", self.folder / "host_key", *with_o(
                f"AuthorizedKeysFile={self.folder}/user_key.pub", "StrictModes=no", "PermitRootLogin=yes",
                "UsePAM=no", "PidFile=none", "MaxStartups=100"))
        for machine in self.clients:
            wait_until(lambda: ":22 " in machine.run("ss", "-ltn"))

    def environment(self):
        """For programs of the administrator; Ansible leaves its files in the home folder."""
        return {"HOME": str(self.folder), "LC_ALL": "C.UTF-8", "ANSIBLE_LOCAL_TEMP": str(self.folder / "ansible"),
                # The clients have no other Python than this machine's.
                "ANSIBLE_PYTHON_INTERPRETER": "/usr/bin/python3",
                "SLURM_CONF": str(self.folder / "slurm.conf")}

    def start(self, *argv):
        """Starts a command of the administrator."""
        return self.admin.start(*argv, environment=self.environment())

    def run(self, *argv, status=0, seconds=120):
        return self.start(*argv).finish(status, seconds)

    def processes(self, name):
        """Of all clients, each under its host's name."""
        return {client.name: client.processes(name) for client in self.clients if client.processes(name)}

    def start_slurm(self):
        """slurmctld beside the administrator, slurmd on each client, one munged for all."""
        munge = self.folder / "munge"
        munge.mkdir(mode=0o711)
        (self.folder / "munge.key").write_bytes(os.urandom(MUNGE_KEY_BYTES))
        (self.folder / "munge.key").chmod(0o400)
        self.admin.run("munged", "--force", f"--key-file={self.folder}/munge.key", f"--socket={munge}/socket",
                       f"--pid-file={munge}/pid", f"--log-file={munge}/log", f"--seed-file={munge}/seed")
        (self.folder / "slurm.conf").write_text(self.slurm_settings(munge / "socket"))
        for part in ("state", "log", *(f"spool_{name}" for name in self.names)):
            (self.folder / f"slurm_{part}").mkdir()
        slurm = {"SLURM_CONF": str(self.folder / "slurm.conf")}
        self.admin.start("slurmctld", environment=slurm).finish()
        for client in self.clients:
            client.start("slurmd", "-N", client.name, environment=slurm).finish()
        wait_until(lambda: self.run("sinfo", "-h", "-N", "-o", "%N %T").count(" idle") == len(self.clients), 120)

    def slurm_settings(self, socket):
        log, spool = self.folder / "slurm_log", self.folder / "slurm_spool_%n"
        return f"""ClusterName=marrowbench
SlurmctldHost={self.admin.name}({SERVER_ADDRESS})
SlurmUser=root
AuthType=auth/munge
AuthInfo=socket={socket}
CredType=cred/munge
StateSaveLocation={self.folder}/slurm_state
SlurmdSpoolDir={spool}
SlurmctldPidFile=/run/slurmctld.pid
SlurmdPidFile=/run/slurmd.pid
SlurmctldLogFile={log}/controller
SlurmdLogFile={log}/%n
ProctrackType=proctrack/linuxproc
TaskPlugin=task/none
SelectType=select/linear
MpiDefault=none
ReturnToService=2
NodeName={",".join(self.names)} CPUs={os.cpu_count()} RealMemory=100 State=UNKNOWN
PartitionName=all Nodes=ALL Default=YES State=UP OverSubscribe=FORCE:50
"""

    def close(self):
        self.lab.close()


def hosts_ready(run_folder):
    """The hosts whose program waits for the settings file of a run."""
    found = []
    for path in sorted(run_folder.glob("ready__*")):
        try:
            note = json.loads(path.read_text())
        except (FileNotFoundError, json.JSONDecodeError):
            continue  # it is written at this moment
        if note["marrowbench"] and note["clockOffsetMs"] is not None:
            found.append(note["host"])
    return found


def missing_for(*programs):
    """Which of the programs this machine lacks."""
    return [program for program in programs if shutil.which(program) is None]


def program(name):
    return pathlib.Path(os.environ[name])
