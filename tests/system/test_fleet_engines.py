"""Clients that real engines start: armed, published for, watched to the end, judged."""

import json
import os
import re
import time

import pytest

from conftest import may_make_namespaces
from figures import MEASURED
from fleet import Fleet, hosts_ready, missing_for
from program_bench import wait_until

CLIENTS = 4
HOSTS = f"client[1-{CLIENTS}]"
CTL = os.environ.get("MARROWCTL_PROGRAM", "")
# Fifteen seconds of each client: they begin some seconds apart. A table for each: this machine is busy.
SETTINGS = "posix;0;0;100;4;0;40;15;0;MEMORY;data/[host]_[iter].bin;log_[host].txt;results_[host].csv;true\n"

SLURM = ("slurmctld", "slurmd", "munged", "sinfo", "squeue")
ENGINES = {"clush": ("clush",), "pdsh": ("pdsh",), "ssh": (), "parallel": ("parallel",),
           "ansible": ("ansible-playbook",), "srun": ("srun", *SLURM), "sbatch": ("sbatch", *SLURM)}
STAYS_IN_FOREGROUND = {"srun"}


def needed(*programs):
    missing = missing_for(*programs)
    if missing:
        pytest.skip(f"needs {', '.join(missing)}")


@pytest.fixture(scope="module")
def fleet():
    if os.geteuid() != 0 or not may_make_namespaces():
        pytest.skip("needs root and the right to make namespaces")
    needed("ip", "nsenter", "ssh", "sshd", "ssh-keygen", "ss")
    fleet = Fleet(CLIENTS)
    try:
        if not missing_for(*SLURM):
            fleet.start_slurm()
        yield fleet
    finally:
        fleet.close()


class Run:
    """A run of the fleet, in a control folder whose name has to be quoted."""

    def __init__(self, fleet, name):
        self.fleet = fleet
        self.name = name
        self.control = fleet.share / "it's a control"
        self.control.mkdir(exist_ok=True)
        self.folder = self.control / name

    def start(self, command, *arguments):
        return self.fleet.start(CTL, "fleet", command, *arguments, "--control", self.control, "--run", self.name)

    def recipe(self, engine):
        path = self.fleet.folder / f"{self.name}.recipe"
        path.write_text(self.start("recipe", engine, "--hosts", HOSTS, "--give-up", "10m", "--marrowctl",
                                   CTL).finish())
        return path

    def carry_out(self, engine):
        """Starts the recipe as its first lines say."""
        path = self.recipe(engine)
        command = {"ansible": ["ansible-playbook", "-f", str(CLIENTS)], "sbatch": ["sbatch", "--chdir=/run"]}
        return self.fleet.start(*command.get(engine, ["sh"]), path)

    def ready(self):
        """Those whose program waits."""
        return hosts_ready(self.folder)

    def publish(self, *options):
        return self.start("publish", "--hosts", HOSTS, *options, self.settings())

    def watch(self):
        return self.start("watch", "--hosts", HOSTS, "--timeout", "5m")

    def settings(self):
        path = self.fleet.folder / f"{self.name}.bst"
        path.write_text(SETTINGS)
        return path

    def verdict(self):
        text = self.fleet.run(CTL, "report", "--json", self.folder, "--settings",
                              self.folder / f"{self.name}.bst", "--hosts", HOSTS)
        return json.loads(text)["verdict"]


class Course:
    """The jobs of a run by one engine, as far as they came."""

    def __init__(self, fleet, engine):
        self.engine = engine
        self.run = Run(fleet, f"by_{engine}")
        self.job = self.published = self.watched = None

    def arm(self):
        begin = time.time()
        self.job = self.run.carry_out(self.engine)
        wait_until(lambda: self.run.ready() == self.run.fleet.names or self.has_failed(), 120)
        MEASURED.append(f"{self.engine}: {len(self.run.ready())} of {CLIENTS} clients armed {time.time() - begin:.1f} s "
                        "after it was started")

    def has_failed(self):
        return self.job.status() not in (None, 0)


@pytest.fixture(scope="module")
def courses(fleet):
    """A run by each engine. All at once: most of the time they wait for their minute."""
    found = {engine: Course(fleet, engine) for engine in ENGINES if not missing_for(*ENGINES[engine])}
    for course in found.values():
        course.arm()
    for course in found.values():
        course.published = course.run.publish()
    for course in found.values():
        wait_until(lambda course=course: course.published.status() is not None, 180)
        course.watched = course.run.watch()
    for course in found.values():
        wait_until(lambda course=course: course.watched.status() is not None, 400)
    return found


@pytest.mark.parametrize("engine", ENGINES)
def test_run_by_an_engine_is_complete_and_concurrent(fleet, courses, engine):
    needed(*ENGINES[engine])
    course = courses[engine]
    if engine in STAYS_IN_FOREGROUND:
        wait_until(lambda: course.job.status() is not None)
    assert course.job.status() == 0, course.job.printed()
    assert course.published.status() == 0, course.published.printed()
    assert course.watched.status() == 0, course.watched.printed()
    verdict = course.run.verdict()
    assert (verdict["complete"], verdict["concurrent"], verdict["clean"]) == (True, True, True), verdict
    assert [path.name for path in sorted(course.run.folder.glob("finished__*"))] == [
        f"finished__{name}" for name in fleet.names]
    assert course.run.ready() == []
    for path in course.run.folder.glob("finished__*"):
        assert json.loads(path.read_text())["status"] == 0


def test_nothing_goes_on_behind_the_runs(fleet, courses):
    wait_until(lambda: not fleet.processes("marrowctl") and not fleet.processes("marrowbench"))
    if not missing_for(*SLURM):
        wait_until(lambda: fleet.run("squeue", "-h") == "")


@pytest.mark.parametrize("engine", ["clush", "pdsh", "ssh", "parallel"])
def test_host_that_is_down_is_told_by_the_engine_and_missed_by_publish(fleet, engine):
    needed(*ENGINES[engine])
    run = Run(fleet, f"down_{engine}")
    down = fleet.clients[-1]
    down.run("ip", "link", "set", "eth0", "down")
    try:
        job = run.carry_out(engine)
        wait_until(lambda: job.status() is not None, 120)
        assert job.status() != 0
        wait_until(lambda: run.ready() == fleet.names[:-1])
        told = run.publish("--dry-run").finish(status=1)
        assert f"3 of {CLIENTS} clients are ready: {', '.join(fleet.names[:-1])}\n" in told
        assert re.search(rf"missing: {down.name}\.", told), told
    finally:
        down.run("ip", "link", "set", "eth0", "up")
        for client in fleet.clients:
            client.run("sh", "-c", "for pid in $(pgrep -x marrowctl); do kill $pid; done")
        wait_until(lambda: not fleet.processes("marrowbench"))


@pytest.mark.parametrize("engine", ["clush", "srun", "ansible"])
def test_one_command_does_it_all(fleet, engine):
    needed(*ENGINES[engine])
    run = Run(fleet, f"all_{engine}")
    job = fleet.start(CTL, "run", "--via", engine, "--hosts", HOSTS, "--control", run.control, "--marrowctl", CTL,
                      "--timeout", "5m", run.settings())
    # Lines are broken where they are too long.
    printed = " ".join(job.finish(seconds=500).split())
    assert f" {CLIENTS} of {CLIENTS} clients, {15 * CLIENTS} of {15 * CLIENTS} rows" in printed
    assert ": complete, concurrent, clean." in printed
    wait_until(lambda: not fleet.processes("marrowctl") and not fleet.processes("marrowbench"))
