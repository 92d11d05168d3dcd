"""Eight clients, each with its own host name and mount, on one settings file and one table."""

import collections
import pathlib
import re
import time

import pytest

from accounts import account
from figures import measured
from program_bench import DATE, wait_until
from servers import FIRST, SERVERS, CachedSshfs
from shares import start_at_once, start_program

CLIENTS = 8
ITERATIONS = 5
ALL = CLIENTS * ITERATIONS
SETTINGS = (f"posix;0;0;0;64;0;64;{ITERATIONS};0;MEMORY;data/[host]_[iter].bin;/run/log.txt;"
            "res.csv;true\n")


def check_table(share, folder, printed):
    """Every row once or told to be lost, one header, a marker per client, no lock left."""
    rows = folder.rows()
    found = account(rows, printed, folder.path / "data")
    measured(share, f"{CLIENTS} clients with {ITERATIONS} rows each: {found}")
    assert found.total() == ALL
    assert found.errors == found.failed == found.no_folder == 0
    if share.server.keeps_all_rows:
        assert found.kept == ALL
    owners = collections.Counter(pathlib.Path(row["Dest"]).name.split("_")[0] for row in rows)
    assert set(owners) <= {f"client{number}" for number in range(1, CLIENTS + 1)}
    assert not list(folder.on_server.glob("res.csv_lock*"))
    (log,) = folder.on_server.glob("_*_log")
    assert {marker.name for marker in log.iterdir()} == {
        f"done__client{number}" for number in range(1, CLIENTS + 1)}


def named(server):
    return server.name


@pytest.mark.parametrize("share", (*SERVERS, CachedSshfs), indirect=True, ids=named)
def test_rows_of_eight_clients_are_kept_or_told_lost(share, folder):
    clients = share.clients(CLIENTS)
    settings = folder.put("table.bst", SETTINGS)
    jobs = start_at_once(share, clients, settings)
    check_table(share, folder, [job.finish() for job in jobs])


def wait_for_the_minute():
    # All clients, which look every 5 s, are to find the file before second 45.
    while not 1 < time.time() % 60 < 35:
        time.sleep(0.1)


@pytest.mark.parametrize("share", FIRST, indirect=True, ids=named)
def test_waiting_clients_start_in_the_same_minute(share, folder):
    clients = share.clients(CLIENTS)
    jobs = [start_program(client, folder.path / "wait.bst") for client in clients]
    wait_until(lambda: all("########\n\n." in job.printed() for job in jobs))
    wait_for_the_minute()
    folder.put("wait.bst", SETTINGS)
    printed = [job.finish() for job in jobs]
    starts = {re.search(rf"({DATE}): ___", text).group(1)[:-3] for text in printed}
    assert len(starts) == 1
    check_table(share, folder, printed)


def test_a_table_that_was_missing_a_moment_ago_gets_no_second_header(share, folder):
    """Clients may remember for a second that a name was not there."""
    looker, writer = share.clients(2)
    other = folder.put("other.bst", SETTINGS.replace("res.csv", "other.csv"))
    start_program(writer, other).finish()
    settings = folder.put("table.bst", SETTINGS)
    go = share.lab.folder / "go"
    go.unlink(missing_ok=True)
    look = f'until [ -e {folder.path}/res.csv -o -e {go} ]; do sleep 0.01; done; exec "$@"'
    job = start_program(looker, settings, prefix=("sh", "-c", look, "sh"))
    time.sleep(1)
    (folder.on_server / "other.csv").rename(folder.on_server / "res.csv")
    go.touch()
    job.finish()
    assert len(folder.rows()) == 2 * ITERATIONS
