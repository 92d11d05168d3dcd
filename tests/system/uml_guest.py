"""Guests with a Linux kernel of their own, and so its real clients of NFS and SMB and a clock of
their own: User-Mode Linux, whose kernel is a process. The root file system is this machine's, read-only.
"""

import os
import pathlib
import shlex
import subprocess

from machines import Job, Machine, only_child
from program_bench import wait_until

HERE = pathlib.Path(__file__).resolve().parent
MODULES = pathlib.Path("/usr/lib/uml/modules")
MEMORY = "128M"
# The guest kernel keeps only the SSE registers of a process, see small_xsave.c.
SSE_ONLY = "glibc.cpu.hwcaps=" + ",".join(f"-{feature}" for feature in (
    "AVX", "AVX2", "AVX512F", "AVX512VL", "AVX512BW", "AVX512DQ", "FMA", "FMA4",
    "AVX_Fast_Unaligned_Load", "XSAVEC"))


class GuestJob(Job):
    def __init__(self, guest, folder):
        super().__init__(folder / "printed")
        self.guest = guest
        self.status_path = folder / "status"

    def status(self):
        if self.status_path.exists():
            return int(self.status_path.read_text())
        assert self.guest.is_alive(), "the guest has ended"
        return None


class Guest(Machine):
    def __init__(self, number, address, server, lab):
        """Boots a guest with a cable to the bridge of the host `server`."""
        self.number = number
        self.lab = lab
        self.address = address
        prepare(lab)
        # Its memory is a file there, unlinked as soon as it is open.
        environment = os.environ | {"TMPDIR": "/dev/shm", "HOME": str(lab)}
        super().__init__(f"client{number}", lab, server.inside("-n"), environment)
        self.console = b""

    def first_process(self):
        kernel = [
            self.lab / "small_xsave", "linux.uml", f"mem={MEMORY}", "quiet", "panic=1",
            "rootfstype=hostfs", "rootflags=/", "ro", f"init={HERE / 'guest_init.sh'}",
            "con=null", "con0=fd:0,fd:1", "con1=null", "ssl=null",
            "umid=kernel", f"uml_dir={self.folder}/",
            f"vec0:transport=tap,ifname=port{self.number},gro=1,depth=128,"
            f"mac=02:90:00:00:00:{self.number:02x}",
            f"LAB={self.lab}", f"NAME={self.name}", f"ADDRESS={self.address}",
            f"GLIBC_TUNABLES={SSE_ONLY}"]
        # Not the first process itself: that one can't receive signals of its own making.
        return ["sh", "-c", '"$@"; exit', "sh", *map(str, kernel)]

    def wait_until_ready(self, seconds=120):
        """Waits for the end of the boot; apart from the start so that guests boot side by side."""
        os.set_blocking(self.holder.stdout.fileno(), False)

        def is_ready():
            self.console += self.holder.stdout.read() or b""
            assert self.is_alive(), self.console
            return b"ready" in self.console
        wait_until(is_ready, seconds)

    def what_freezes(self):
        # The kernel's process; those of the guest's programs wait for it.
        return [only_child(self.first_pid())]

    def start(self, *argv, environment=None):
        folder = self.new_job_folder()
        settings = [f"{name}={value}" for name, value in (environment or {}).items()]
        command = shlex.join(["exec", "env", *settings, *map(str, argv)])
        (folder / "command").write_text(command + "\n")
        self.holder.stdin.write(f"{folder}\n".encode())
        self.holder.stdin.flush()
        return GuestJob(self, folder)


def prepare(lab):
    """Puts what guests need into the folder of the lab, once."""
    if (lab / "small_xsave").exists():
        return
    (lab / "modules/lib").mkdir(parents=True)
    (lab / "modules/lib/modules").symlink_to(MODULES)
    subprocess.run(["gcc", "-O2", "-o", lab / "small_xsave", HERE / "small_xsave.c"], check=True)
