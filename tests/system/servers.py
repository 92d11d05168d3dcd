"""Real file servers on the server of a lab, and how clients mount what they share."""

import secrets
import shutil
import signal
import subprocess

from lab import SERVER_ADDRESS
from machines import signal_all
from program_bench import wait_until

MOUNT_POINT = "/run/share"
SECOND_MOUNT_POINT = "/run/again"


class Server:
    """A file server; `data` is the folder it shares, as its own machine shows it."""

    name = ""
    tools = ()           # programs it needs, its client's too
    on_guests = False    # whether its client is a part of the kernel
    daemon = ""          # the processes that serve
    preallocates = False
    keeps_all_rows = True  # of eight clients that begin at once
    keeps_data = False   # of transfers without an error text, whatever becomes of server and cable

    def __init__(self, lab):
        self.host = lab.server
        self.folder = lab.folder / self.name
        self.data = self.folder / "data"
        self.data.mkdir(parents=True)

    @classmethod
    def missing(cls):
        tools = ("ip", "nsenter", "setpriv", *cls.tools)
        tools += ("linux.uml", "gcc", "modprobe") if cls.on_guests else ()
        return [tool for tool in tools if shutil.which(tool) is None]

    def start(self):
        """Starts the server, also again on the data it has."""
        raise NotImplementedError

    def kill(self):
        """Ends what serves at once."""
        signal_all(self.host.processes(self.daemon), signal.SIGKILL)
        wait_until(lambda: not self.host.processes(self.daemon))

    def mount_on(self, client):
        client.run("mkdir", MOUNT_POINT)
        self.mount(client)

    def mount_again(self, client):
        """A second mount on a client, which keeps in mind what it has seen for itself."""
        client.run("mkdir", SECOND_MOUNT_POINT)
        self.mount(client, SECOND_MOUNT_POINT)

    def mount(self, client, point=MOUNT_POINT):
        raise NotImplementedError

    def wait_for_port(self, port):
        def listens():
            return f":{port} " in self.host.run("ss", "-ltn")
        wait_until(listens)


class Gluster(Server):
    name = "gluster"
    tools = ("glusterd", "glusterfs", "gluster")
    daemon = "glusterfsd"
    preallocates = True

    def start(self):
        if not self.host.processes("glusterd"):
            self.start_manager()
            self.gluster("volume", "create", "bench", f"{SERVER_ADDRESS}:{self.data}", "force")
        self.gluster("volume", "start", "bench", "force")
        wait_until(lambda: self.host.processes(self.daemon))

    def start_manager(self):
        (self.folder / "manager").mkdir()
        settings = self.folder / "glusterd.vol"
        settings.write_text(f"""volume management
    type mgmt/glusterd
    option working-directory {self.folder}/manager
    option run-directory /run
    option transport-type socket
    option transport.socket.bind-address {SERVER_ADDRESS}
    option glusterd-sockfile /run/glusterd.sock
end-volume
""")
        self.host.run("glusterd", "-f", settings, "-p", "/run/glusterd.pid", "-l",
                      self.folder / "glusterd.log")
        # It answers some time after its socket is there.
        self.host.run("sh", "-c", "until gluster --glusterd-sock=/run/glusterd.sock volume list; "
                                  "do sleep 0.2; done")

    def gluster(self, *arguments):
        self.host.run("gluster", "--mode=script", "--glusterd-sock=/run/glusterd.sock", *arguments)

    def mount(self, client, point=MOUNT_POINT):
        client.run("glusterfs", f"--volfile-server={SERVER_ADDRESS}", "--volfile-id=bench",
                   "-l", "/run/glusterfs.log", point)


class Sshfs(Server):
    name = "sshfs"
    tools = ("sshd", "sshfs", "ssh-keygen")
    daemon = "sshd"
    # The protocol has no answer for "exists already": a lost race looks like a refusal.
    keeps_all_rows = False
    # Without them a client may see for 20 s what was there before.
    options = ("dir_cache=no", "direct_io", "attr_timeout=0", "entry_timeout=0")
    # A session that does not answer for 6 s has ended, and a new one is made.
    recovery = ("reconnect", "ServerAliveInterval=2")

    def __init__(self, lab):
        super().__init__(lab)
        for key in ("server_key", "client_key"):
            subprocess.run(["ssh-keygen", "-q", "-t", "ed25519", "-N", "", "-f",
                            self.folder / key], check=True)
        self.host.run("mkdir", "/run/sshd")

    def start(self):
        # By its full path, or it does not start.
        self.host.run(shutil.which("sshd"), "-f", "/dev/null", "-h", self.folder / "server_key",
                      "-E", self.folder / "sshd.log", *with_o(
                          f"AuthorizedKeysFile={self.folder}/client_key.pub", "StrictModes=no",
                          "PermitRootLogin=yes", "UsePAM=no", "PidFile=none",
                          "MaxStartups=100", "Subsystem=sftp internal-sftp"))
        self.wait_for_port(22)

    def mount(self, client, point=MOUNT_POINT):
        client.run("sshfs", f"root@{SERVER_ADDRESS}:{self.data}", point, "-F", "/dev/null",
                   *with_o(*self.options, *self.recovery, "BatchMode=yes",
                            f"IdentityFile={self.folder}/client_key",
                            "StrictHostKeyChecking=no", "UserKnownHostsFile=/dev/null"))


class CachedSshfs(Sshfs):
    """As sshfs mounts without options for its caches."""

    name = "sshfs-cached"
    options = ()


class Nfs(Server):
    name = "nfs"
    tools = ("ganesha.nfsd", "rpcbind", "mount.nfs")
    on_guests = True
    daemon = "ganesha.nfsd"
    keeps_data = True    # its mounts wait for the server
    # Else a client that looked in vain for a name may not see it for a minute.
    options = "lookupcache=positive"

    def start(self):
        if not self.host.processes("rpcbind"):
            self.host.run("mkdir", "/run/rpcbind", "/run/ganesha", self.folder / "recovery")
            # The server ends at once where it can't register.
            self.host.run("rpcbind", "-h", SERVER_ADDRESS)
        settings = self.folder / "ganesha.conf"
        settings.write_text(f"""
NFS_CORE_PARAM {{ NFS_Port = 2049; Bind_addr = {SERVER_ADDRESS}; Protocols = 4; }}
NFSv4 {{ Graceless = true; RecoveryBackend = fs; RecoveryRoot = {self.folder}/recovery;
        Minor_Versions = 1; }}
EXPORT {{ Export_Id = 1; Path = {self.data}; Pseudo = /bench; Access_Type = RW;
         Squash = No_Root_Squash; SecType = sys; FSAL {{ Name = VFS; }} }}
""")
        self.host.run("ganesha.nfsd", "-f", settings, "-L", self.folder / "ganesha.log",
                      "-p", "/run/ganesha/pid")
        self.wait_for_port(2049)

    def mount(self, client, point=MOUNT_POINT):
        client.run("/run/modprobe", "-a", "nfs", "nfsv4")
        client.run("mount", "-t", "nfs", "-o", f"vers=4.1,nosharecache,{self.options}",
                   f"{SERVER_ADDRESS}:/bench", point)


class RememberingNfs(Nfs):
    """As NFS mounts that remember what they saw, and what was not there, for a minute."""

    name = "nfs-remembering"
    options = "lookupcache=all,actimeo=60"


class Smb(Server):
    name = "smb"
    tools = ("smbd", "smbpasswd", "mount.cifs")
    on_guests = True
    daemon = "smbd"
    preallocates = True
    # Clients see up to a second late that the lock is gone; their ten seconds may end before that.
    keeps_all_rows = False

    def __init__(self, lab):
        super().__init__(lab)
        self.password = secrets.token_hex(8)
        for folder in ("private", "locks", "state", "cache", "pid", "rpc", "log"):
            (self.folder / folder).mkdir()
        self.settings = self.folder / "smb.conf"
        self.settings.write_text(f"""[global]
  workgroup = BENCH
  server role = standalone server
  interfaces = {SERVER_ADDRESS}
  bind interfaces only = yes
  smb ports = 445
  private dir = {self.folder}/private
  lock directory = {self.folder}/locks
  state directory = {self.folder}/state
  cache directory = {self.folder}/cache
  pid directory = {self.folder}/pid
  ncalrpc dir = {self.folder}/rpc
  log file = {self.folder}/log/%m
  load printers = no
  disable spoolss = yes
[bench]
  path = {self.data}
  read only = no
""")
        subprocess.run(["smbpasswd", "-c", self.settings, "-a", "-s", "root"], check=True,
                       input=f"{self.password}\n" * 2, text=True, capture_output=True)

    def start(self):
        self.host.run("smbd", "-D", "-s", self.settings, "-l", self.folder / "log")
        self.wait_for_port(445)

    def mount(self, client, point=MOUNT_POINT):
        # The ciphers, too: a mount loads them, but does not wait until they are there.
        client.run("/run/modprobe", "-a", "cryptomgr", "hmac", "cmac", "ccm", "gcm", "ctr", "cifs")
        client.run("mount", "-t", "cifs", f"//{SERVER_ADDRESS}/bench", point,
                   "-o", f"vers=3.0,nosharesock,username=root,password={self.password}")


def with_o(*texts):
    return [argument for text in texts for argument in ("-o", text)]


# One share of hosts and one of guests come first: what takes minutes is done on these, FIRST.
SERVERS = (Gluster, Nfs, Sshfs, Smb)
FIRST = SERVERS[:2]
