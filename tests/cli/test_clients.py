"""Many clients with their own host names on one settings file and one table."""

import collections
import os
import re
import time

import pytest

from conftest import DATE, EMULATOR, SANITIZED, own_host_names, table_rows, until_shown

ALL = os.environ.get("MARROWBENCH_ALL") == "1"
# An emulator makes each client several times as slow, and ten seconds for the lock stay ten seconds.
CLIENTS = 20 if EMULATOR else 100
CROWD = 500
ITERATIONS = 5
# A pause after each transfer keeps the lock free most of the time. Without it, it depends on the
# machine whether one of the clients finds the lock held forty times in a row.
PAUSE_MS = 4000


class Fleet:
    """Clients of the program itself, on the real clock."""

    def __init__(self, bench):
        self.bench = bench
        self.clients = []

    def start(self, path, count, before="true"):
        """Starts clients; each runs the shell command `before` first."""
        for number in range(count):
            script = f"hostname client{number}.lab; {before}; exec \"$@\""
            self.clients.append(self.bench.start(
                path, prefix=("unshare", "--uts", "sh", "-c", script, "sh")))

    def wait_until_shown(self, text):
        for client in self.clients:
            until_shown(client, text)

    def printed(self):
        texts = [client.communicate(timeout=300)[0] for client in self.clients]
        assert [client.returncode for client in self.clients] == [0] * len(self.clients)
        return texts


@pytest.fixture
def fleet(bench):
    if not own_host_names():
        pytest.skip("needs unshare --uts and the right to use it")
    return Fleet(bench)


def wait_for_first_half_of_a_minute():
    # A client that finds the file at second 45 or later starts a minute after the others.
    while time.time() % 60 > 35:
        time.sleep(0.1)


def test_clients_start_together_and_keep_or_tell_each_row(bench, fleet):
    start_together_and_keep_or_tell_each_row(bench, fleet, CLIENTS)


def test_so_does_a_crowd(bench, fleet):
    if not ALL or EMULATOR or SANITIZED:
        pytest.skip("takes a minute of a machine of its own: scripts/test --all, without sanitizers")
    start_together_and_keep_or_tell_each_row(bench, fleet, CROWD)


def start_together_and_keep_or_tell_each_row(bench, fleet, count):
    path = bench.folder / "fleet5.bst"
    fleet.start(path, count)
    fleet.wait_until_shown("########\n\n.")
    wait_for_first_half_of_a_minute()
    bench.put(f"posix;0;0;{PAUSE_MS};64;0;64;{ITERATIONS};0;MEMORY;data/[host]_[iter].bin;"
              "logs/[host].txt;res.csv;true\n", path.name)
    printed = fleet.printed()

    hosts = [f"client{n}" for n in range(count)]
    rows = bench.rows()
    told = {host: re.findall("row lost: .*: (.*)", text) for host, text in zip(hosts, printed)}
    # On a machine that stands still for ten seconds a client may give up, but for no other reason.
    assert {reason for reasons in told.values() for reason in reasons} <= {
        "still locked by another client"}
    assert len(rows) >= 0.95 * count * ITERATIONS
    assert {row["Error"] for row in rows} == {""}
    written = collections.Counter(os.path.basename(row["Dest"]).split("_")[0] for row in rows)
    assert {host: written[host] + len(told[host]) for host in hosts} == {
        host: ITERATIONS for host in hosts}
    assert len({row["Dest"] for row in rows}) == len(rows), "no row twice"
    assert {marker.name for marker in (bench.folder / "_fleet5_log").iterdir()} == {
        f"done__{host}" for host in hosts}
    starts = {re.search(rf"({DATE}): ___", text).group(1)[:-3] for text in printed}
    assert len(starts) == 1, "all in the same minute"
    assert not (bench.folder / "res.csv_lock.txt").exists()


def test_clients_make_the_same_folders_at_the_same_moment(bench, fleet):
    path = bench.settings("posix;0;0;0;4;0;4;1;0;MEMORY;new/data/[host].bin;new/logs/[host].txt;"
                          "[host].csv;true\n")
    fleet.start(path, 50, before="echo ready; until [ -e go ]; do sleep 0.01; done")
    fleet.wait_until_shown("ready\n")
    (bench.folder / "go").write_text("")
    fleet.printed()
    for number in range(50):
        assert [row["Error"] for row in bench.rows(f"client{number}.csv")] == [""]
        assert "Null data" in (bench.folder / f"new/logs/client{number}.txt").read_text()


def test_host_name_in_the_results_path_gives_a_table_per_client(bench, fleet):
    path = bench.settings("posix;0;0;0;64;0;64;1;0;MEMORY;[host].bin;;res_[host].csv;true\n")
    fleet.start(path, 3)
    fleet.printed()
    for number in range(3):
        assert len(bench.rows(f"res_client{number}.csv")) == 1


def test_table_that_another_client_has_just_made_gets_no_second_header(bench, mounts):
    shown = mounts.point("shown")
    table = shown / "res.csv"
    line = "posix;0;0;0;4;0;4;2;0;MEMORY;tiny.bin;log.txt;{};false\n"
    bench.run(bench.settings(line.format(table)))
    mount = mounts.faulty(shown, "hidden", "name=res.csv")
    bench.run(bench.settings(line.format(mount / "res.csv")))
    assert len(table_rows(table.read_text())) == 4
