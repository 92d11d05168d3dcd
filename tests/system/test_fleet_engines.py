"""Clients that real engines start: armed, published for, watched to the end, judged."""

import json
import os
import re
import time

import pytest

from conftest import may_make_namespaces
from figures import MEASURED
from fleet import Fleet, missing_for
from program_bench import wait_until

CLIENTS = 4
HOSTS = f"client[1-{CLIENTS}]"
# Six seconds of each client.
SETTINGS = "posix;0;0;100;4;0;40;6;0;MEMORY;data/[host]_[iter].bin;log_[host].txt;results.csv;true\n"

ENGINES = {
    "clush": ("clush",), "pdsh": ("pdsh",), "ssh": (), "parallel": ("parallel",), "ansible": ("ansible-playbook",),
    "srun": ("srun", "slurmctld", "slurmd", "munged"), "sbatch": ("sbatch", "slurmctld", "slurmd", "munged"),
}
STAYS_IN_FOREGROUND = {"srun"}


@pytest.fixture(scope="module")
def fleet():
    missing = missing_for("ip", "nsenter", "ssh", "sshd", "ssh-keygen", "ss")
    if os.geteuid() != 0 or not may_make_namespaces():
        missing.append("root and the right to make namespaces")
    if missing:
        pytest.skip(f"needs {', '.join(missing)}")
    fleet = Fleet(CLIENTS)
    yield fleet
    fleet.close()


@pytest.fixture
def engine(request, fleet):
    missing = missing_for(*ENGINES[request.param])
    if missing:
        pytest.skip(f"needs {', '.join(missing)}")
    if "slurmd" in ENGINES[request.param]:
        fleet.start_slurm()
    return request.param


class Run:
    """A run of the fleet, in a control folder whose name has to be quoted."""

    def __init__(self, fleet, name):
        self.fleet = fleet
        self.name = name
        self.control = fleet.share / "it's a control"
        self.control.mkdir(exist_ok=True)
        self.folder = self.control / name

    def ctl(self, command, *arguments, **options):
        return self.fleet.run(os.environ["MARROWCTL_PROGRAM"], "fleet", command, *arguments, "--control",
                              self.control, "--run", self.name, **options)

    def recipe(self, engine):
        path = self.fleet.folder / f"{self.name}.recipe"
        path.write_text(self.ctl("recipe", engine, "--hosts", HOSTS, "--give-up", "10m", "--marrowctl",
                                 os.environ["MARROWCTL_PROGRAM"]))
        return path

    def carry_out(self, engine):
        """Starts the recipe as its first lines say."""
        path = self.recipe(engine)
        command = {"ansible": ["ansible-playbook", "-f", str(CLIENTS)], "sbatch": ["sbatch", "--chdir=/run"]}
        return self.fleet.start(*command.get(engine, ["sh"]), path)

    def ready(self):
        return sorted(path.name.removeprefix("ready__") for path in self.folder.glob("ready__*"))

    def wait_until_ready(self, names):
        wait_until(lambda: self.ready() == names, 120)

    def settings(self):
        path = self.fleet.folder / f"{self.name}.bst"
        path.write_text(SETTINGS)
        return path

    def publish(self, **options):
        return self.ctl("publish", "--hosts", HOSTS, "--now", self.settings(), **options)

    def watch(self, **options):
        return self.ctl("watch", "--hosts", HOSTS, "--timeout", "5m", **options)

    def verdict(self):
        text = self.fleet.run(os.environ["MARROWCTL_PROGRAM"], "report", "--json", self.folder / "results.csv",
                              "--settings", self.folder / f"{self.name}.bst", "--hosts", HOSTS)
        return json.loads(text)["verdict"]


def start_times(run):
    """When each client was armed, by the share's clock."""
    return [path.stat().st_ctime for path in run.folder.glob("ready__*")]


@pytest.mark.parametrize("engine", ENGINES, indirect=True)
def test_run_by_an_engine_is_complete_and_concurrent(fleet, engine):
    run = Run(fleet, f"by_{engine}")
    begin = time.time()
    job = run.carry_out(engine)
    if engine not in STAYS_IN_FOREGROUND:
        job.finish()
    run.wait_until_ready(fleet.names)
    armed = [json.loads(path.read_text())["time"] for path in run.folder.glob("ready__*")]
    MEASURED.append(f"{engine}: {CLIENTS} clients armed {time.time() - begin:.1f} s after it was started")
    assert len(armed) == CLIENTS
    run.publish()
    run.watch(seconds=400)
    verdict = run.verdict()
    assert (verdict["complete"], verdict["concurrent"], verdict["clean"]) == (True, True, True), verdict
    job.finish()
    wait_until(lambda: not fleet.processes("marrowctl") and not fleet.processes("marrowbench"))
    if "slurmd" in ENGINES[engine]:
        wait_until(lambda: fleet.run("squeue", "-h") == "")


@pytest.mark.parametrize("engine", ["clush", "pdsh", "ssh", "parallel"], indirect=True)
def test_host_that_is_down_is_told_by_the_engine_and_missed_by_publish(fleet, engine):
    run = Run(fleet, f"down_{engine}")
    down = fleet.clients[-1]
    down.run("ip", "link", "set", "eth0", "down")
    try:
        job = run.carry_out(engine)
        wait_until(lambda: job.status() is not None, 120)
        assert job.status() != 0
        run.wait_until_ready(fleet.names[:-1])
        assert re.search(rf"\b{down.name}\b", run.publish(status=1))
    finally:
        down.run("ip", "link", "set", "eth0", "up")
        for client in fleet.clients:
            client.run("sh", "-c", "for pid in $(pgrep -x marrowctl); do kill $pid; done")
        wait_until(lambda: not fleet.processes("marrowbench"))
