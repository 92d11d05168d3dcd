"""Many clients with their own host names on one settings file and one table."""

import os
import re
import time

import pytest

from conftest import DATE, own_host_names

CLIENTS = 20
ITERATIONS = 3

# With MARROWBENCH_REAL_TIME=1 the program itself runs, for up to two minutes.
REAL_TIME = os.environ.get("MARROWBENCH_REAL_TIME") == "1"
SPEED = 1 if REAL_TIME else 10


class Fleet:
    """Clients that share a clock."""

    def __init__(self, bench):
        self.bench = bench
        self.start_time = time.time()
        self.clients = []

    def start(self, path, count):
        environment = {"MARROWBENCH_CLOCK_START": str(int(self.start_time * 1e6)),
                       "MARROWBENCH_CLOCK_SPEED": str(SPEED)}
        for number in range(count):
            script = f"hostname client{number}.lab; exec \"$@\""
            self.clients.append(self.bench.start(
                path, fast=not REAL_TIME, environment=environment,
                prefix=("unshare", "--uts", "sh", "-c", script, "sh")))

    def wait_for_second(self, first, last):
        """Returns when the clients' clock stands between these seconds of a minute."""
        while not first <= (self.start_time + (time.time() - self.start_time) * SPEED) % 60 <= last:
            time.sleep(0.01)

    def printed(self):
        texts = [client.communicate(timeout=300)[0] for client in self.clients]
        assert [client.returncode for client in self.clients] == [0] * len(self.clients)
        return texts


@pytest.fixture
def fleet(bench):
    if not own_host_names():
        pytest.skip("needs unshare --uts and the right to use it")
    return Fleet(bench)


def test_clients_start_together_and_lose_no_row(bench, fleet):
    path = bench.folder / "fleet5.bst"
    fleet.start(path, CLIENTS)
    time.sleep(1)
    # Early in a minute, so that all clients find the file on the same side of second 45.
    fleet.wait_for_second(1, 5)
    bench.settings(f"posix;0;0;0;64;0;64;{ITERATIONS};0;MEMORY;data/[host]_[iter].bin;"
                   "logs/[host].txt;res.csv;true\n", "written")
    (bench.folder / "written").rename(path)
    printed = fleet.printed()

    # Ten seconds of waiting for the lock are one second of the accelerated clock: on a busy machine
    # a client may give up. What it then must not do is stay silent.
    hosts = [f"client{n}" for n in range(CLIENTS)]
    written = [os.path.basename(row["Dest"]).split("_")[0] for row in bench.rows()]
    for host, text in zip(hosts, printed):
        lost = text.count("still locked")
        assert written.count(host) + lost == ITERATIONS, host
        assert lost == 0 or not REAL_TIME, host
    assert len({row["Dest"] for row in bench.rows()}) == len(written), "no row twice"
    assert {marker.name for marker in (bench.folder / "_fleet5_log").iterdir()} == {
        f"done__{host}" for host in hosts}
    starts = {re.search(rf"({DATE}): ___", text).group(1)[:-3] for text in printed}
    assert len(starts) == 1, "all in the same minute"
    assert not (bench.folder / "res.csv_lock.txt").exists()


def test_host_name_in_the_results_path_gives_a_table_per_client(bench, fleet):
    path = bench.settings("posix;0;0;0;64;0;64;1;0;MEMORY;[host].bin;;res_[host].csv;true\n")
    fleet.start(path, 3)
    fleet.printed()
    for number in range(3):
        assert len(bench.rows(f"res_client{number}.csv")) == 1
