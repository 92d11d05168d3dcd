"""Many clients on one table, their calls on its lock slowed down so that the windows between are wide.

slow_calls.cpp makes them slow and writes down what became of the lock. Of that, of the table and of what
the clients print, four rules are checked. At no time do two clients hold the lock. Nobody removes a
lock that another client holds, unless it is three hours old. Every row is in the table once, or told to
be lost, and nobody gives up before its ten seconds are over.

MARROWBENCH_ROUNDS says how often each test is done. The tests wait most of the time, so they run side by
side.
"""

import collections
import concurrent.futures
import contextlib
import os
import pathlib
import re
import shutil
import signal
import subprocess
import tempfile
import time
from dataclasses import dataclass, field

import pytest

from conftest import EMULATOR, end_group, own_host_names, table_rows, wait_until
from lock_history import OLD, history
from program_bench import SLOW_CALLS, slowed_calls

ALL = os.environ.get("MARROWBENCH_ALL") == "1"
ROUNDS = int(os.environ.get("MARROWBENCH_ROUNDS", 3 if ALL else 1))
# A row may take its ten seconds.
ROWS = 3 if ALL or "MARROWBENCH_ROUNDS" in os.environ else 2
BRISK_ROWS = 10
AHEAD = 4 * 3600
LIMIT = 600  # seconds; what takes longer hangs


@dataclass
class Result:
    """What came of one or more rounds."""

    rounds: int = 0
    faulty_rounds: int = 0
    shared_rounds: int = 0  # with two or more holders at once
    rows: int = 0
    kept: int = 0
    told: int = 0
    silent: int = 0        # neither kept nor told
    most_holders: int = 0
    faults: list = field(default_factory=list)

    def add(self, other):
        self.rows += other.rows
        self.kept += other.kept
        self.told += other.told
        self.silent += other.silent
        self.most_holders = max(self.most_holders, other.most_holders)
        self.faults += other.faults

    def __str__(self):
        return (f"{self.rounds} rounds, {self.faulty_rounds} with a fault, {self.shared_rounds} with two "
                f"holders, at most {self.most_holders}; {self.rows} rows: {self.kept} kept, "
                f"{self.told} told lost, {self.silent} lost without a word")


@dataclass
class Client:
    name: str
    process: subprocess.Popen
    rows: int
    ahead: int
    shown: pathlib.Path   # what it printed
    told: pathlib.Path    # what it said on standard error

    def has_stopped(self):
        status = pathlib.Path(f"/proc/{self.process.pid}/stat").read_text()
        return status.rsplit(")", 1)[1].split()[0] == "T"

    def finish(self):
        self.process.wait(timeout=LIMIT)


class Scene:
    """A table in a folder, and its clients."""

    def __init__(self, folder, pause_ms=5, hold_ms=150):
        self.folder = folder / "bench"
        self.said = folder / "said"
        self.folder.mkdir(parents=True)
        self.said.mkdir()
        self.log = self.said / "log"
        self.table = self.folder / "res.csv"
        self.lock = self.folder / "res.csv_lock.txt"
        self.guard = self.folder / "res.csv_lock.txt.take"
        self.pause_ms = pause_ms
        self.hold_ms = hold_ms
        self.clients = []
        self.closed_gate, self.gate = os.pipe()

    def start(self, name, rows=1, ahead=0, stop=""):
        """Starts a client, which waits for open_gate()."""
        settings = self.folder / f"{rows}.bst"
        settings.write_text(f"posix;0;0;0;4;0;4;{rows};0;MEMORY;[host]_[iter].bin;;res.csv;false\n")
        preloaded = slowed_calls(
            log=self.log, ahead=ahead, pause_ms=self.pause_ms, hold_ms=self.hold_ms, stop=stop)
        script = f'hostname {name}; read gate; exec env "$@" < /dev/null'
        shown, told = self.said / f"{name}.out", self.said / f"{name}.err"
        with open(shown, "wb") as out, open(told, "wb") as err:
            process = subprocess.Popen(
                ["unshare", "--uts", "sh", "-c", script, "sh",
                 *(f"{key}={value}" for key, value in preloaded.items()),
                 os.environ["MARROWBENCH_PROGRAM"], settings],
                stdin=self.closed_gate, stdout=out, stderr=err, start_new_session=True)
        client = Client(name, process, rows, ahead, shown, told)
        self.clients.append(client)
        return client

    def open_gate(self):
        """Lets the clients go that were started, all at the same moment."""
        os.close(self.gate)
        os.close(self.closed_gate)
        self.closed_gate, self.gate = os.pipe()

    def leave(self, file):
        """Makes a lock or guard of a client that ended three hours ago."""
        file.write_text("")
        make_old(file)

    def finish(self):
        for client in self.clients:
            client.finish()
        os.close(self.gate)
        os.close(self.closed_gate)

    def result(self, begun=()):
        found = history(self.log.read_text(),
                        ahead={client.process.pid for client in self.clients if client.ahead},
                        begun={client.process.pid for client in begun})
        result = Result(most_holders=found.most_holders, faults=found.faults)
        kept = self.kept(result)
        for client in self.clients:
            told = self.told(client, result)
            result.rows += client.rows
            result.kept += kept[client.name]
            result.told += told
            result.silent += max(client.rows - kept[client.name] - told, 0)
            if client.process.returncode != 0:
                result.faults.append(f"{client.name} ended with {client.process.returncode}")
            if kept[client.name] + told != client.rows:
                result.faults.append(f"{client.name}: {kept[client.name]} rows kept and {told} told "
                                     f"lost of {client.rows}")
            if found.rows[client.process.pid] < kept[client.name]:
                result.faults.append(f"{client.name} wrote rows that are not in the log")
        left = sorted(path.name for path in self.folder.glob("*_lock.txt*"))
        if left:
            result.faults.append(f"left behind: {left}")
        return result

    def kept(self, result):
        """How many rows each client has in the table."""
        text = self.table.read_text() if self.table.exists() else ""
        try:
            if text:
                table_rows(text)
        except AssertionError as failure:
            result.faults.append(f"the table is broken: {str(failure)[:200]}")
        names = collections.Counter(re.findall(r"/(client\d+_\d+)\.bin,", text))
        result.faults += [f"row {name} {count} times" for name, count in names.items() if count > 1]
        return collections.Counter(name.split("_")[0] for name in names)

    def told(self, client, result):
        """How many rows the client said were lost."""
        lines = client.told.read_text().splitlines()
        told = sum(line.startswith(f"marrowbench: row lost: {self.table}: ") for line in lines)
        result.faults += [f"{client.name} gave up: {line}" for line in lines if "no lock: " in line]
        sums = [f"marrowbench: {told} of {client.rows} rows lost"] if told else []
        if lines[told:] != sums:
            result.faults.append(f"{client.name} said {lines}")
        if client.shown.read_text().count("as it is still locked.") > told:
            result.faults.append(f"{client.name} told a lost row only on the console")
        return told


def make_old(file):
    old = time.time() - OLD - 60
    os.utime(file, (old, old))


def congested(folder):
    """A hundred clients, of which a second's worth of holders keeps the others waiting."""
    scene = Scene(folder)
    for number in range(100):
        scene.start(f"client{number}", ROWS)
    scene.open_gate()
    scene.finish()
    return [scene.result()]


def brisk(folder):
    """Locks come and go between any two questions of clients that take their time."""
    scene = Scene(folder, pause_ms=0, hold_ms=10)
    for number in range(20):
        scene.start(f"client{number}", BRISK_ROWS)
    scene.pause_ms = 40
    for number in range(20, 30):
        scene.start(f"client{number}", ROWS)
    scene.open_gate()
    scene.finish()
    return [scene.result()]


def some_ahead(folder):
    """Five of thirty clients have a clock for which each lock is hours old.

    Locks are held so long that many wait their ten seconds in vain, and then look at the age.
    """
    scene = Scene(folder, hold_ms=300)
    for number in range(30):
        scene.start(f"client{number}", ROWS, ahead=AHEAD if number % 6 == 0 else 0)
    scene.open_gate()
    scene.finish()
    return [scene.result()]


def takeover(folder):
    """Clients find the lock of a dead one, and take their time between its age and its removal.

    At some tables the dead one was taking a lock over itself, and left the guard of that, too.
    """
    scenes = []
    for count, pause_ms, has_guard in (
            (8, 20, False), (24, 50, False), (8, 20, True), (24, 50, True), (24, 50, True)):
        scene = Scene(folder / f"table{len(scenes)}", pause_ms)
        scene.leave(scene.lock)
        if has_guard:
            scene.leave(scene.guard)
        for number in range(count):
            scene.start(f"client{number}", ROWS)
        scenes.append(scene)
    for scene in scenes:
        scene.open_gate()
    for scene in scenes:
        scene.finish()
    return [scene.result() for scene in scenes]


class Stop(Scene):
    """A holder is stopped at some point, and goes on while another holds the lock it has taken over."""

    def __init__(self, folder, point):
        super().__init__(folder)
        self.point = point
        if point in ("opened", "appended"):
            # Whether its header comes first is no question of the lock.
            self.start("client0")
            self.open_gate()
            self.clients[0].finish()
        self.holder = self.start("client1", stop=point)
        self.open_gate()

    def let_another_take_over(self):
        wait_until(self.holder.has_stopped, LIMIT)
        make_old(self.lock)
        self.other = self.start("client2", stop="noted")
        self.open_gate()

    def go_on(self):
        wait_until(self.other.has_stopped, LIMIT)
        taken = self.lock.stat()
        self.holder.process.send_signal(signal.SIGCONT)
        self.holder.finish()
        self.other_keeps_lock = self.lock.exists() and os.path.samestat(taken, self.lock.stat())
        self.other.process.send_signal(signal.SIGCONT)
        self.finish()

    def result(self):
        result = super().result(begun=[self.holder] if self.point == "opened" else [])
        if not self.other_keeps_lock:
            result.faults.append("the holder removed the lock of another")
        result.faults = [f"stopped when {self.point}: {fault}" for fault in result.faults]
        return result


def stopped(folder):
    """The points are when the lock is created, its note written, the table opened, the row appended."""
    scenes = [Stop(folder / point, point) for point in ("created", "noted", "opened", "appended")]
    for scene in scenes:
        scene.let_another_take_over()
    for scene in scenes:
        scene.go_on()
    return [scene.result() for scene in scenes]


def rounds_of(scenario, folder):
    total = Result(rounds=ROUNDS)
    for number in range(ROUNDS):
        place = folder / f"{scenario.__name__}{number}"
        before = len(total.faults)
        results = scenario(place)
        for result in results:
            total.add(result)
        total.faulty_rounds += len(total.faults) > before
        total.shared_rounds += any(result.most_holders > 1 for result in results)
        shutil.rmtree(place)
    return total


SCENARIOS = {scenario.__name__: scenario for scenario in (congested, brisk, stopped, some_ahead, takeover)}


def chosen_in(session):
    """The scenarios of this run of pytest."""
    return {item.callspec.params["scenario"] for item in session.items
            if getattr(item, "function", None) is test_one_holder_and_every_row_kept_or_told}


@pytest.fixture(scope="module")
def started(request):
    """All scenarios, running."""
    if not SLOW_CALLS:
        pytest.skip("needs a program with glibc, for another library to be put before it")
    if EMULATOR:
        pytest.skip("the emulator would get the library that is put before the program")
    if not own_host_names():
        pytest.skip("needs unshare --uts and the right to use it")
    with tempfile.TemporaryDirectory(prefix="marrowbench_congestion_") as folder, \
            concurrent.futures.ThreadPoolExecutor(len(SCENARIOS)) as threads:
        folder = pathlib.Path(folder).resolve()
        yield {name: threads.submit(rounds_of, SCENARIOS[name], folder)
               for name in chosen_in(request.session)}


@pytest.mark.parametrize("scenario", SCENARIOS)
def test_one_holder_and_every_row_kept_or_told(started, capsys, scenario):
    result = started[scenario].result()
    with capsys.disabled():
        print(f"\nFIGURE {scenario}: {result}")
    assert not result.faults, "\n".join(result.faults[:40])
