"""Servers that end and come back, and cables that are pulled, while clients run.

Whatever happens, clients end with status 0, the table holds whole rows below one header, and each
row is in it or was said to be lost.
"""

import pathlib
import time

import pytest

from accounts import account, check_error
from figures import measured
from program_bench import table_rows, wait_until
from shares import start_program

METHODS = ("posix", "ansic", "stream")
# Tests of one iteration each: a test whose folder can't be seen ends with its first iteration.
TESTS = 60
SMALL_KIB, LARGE_KIB = 256, 8192
BEFORE = 5          # rows that are in the table when the fault begins
SERVER_AWAY = 4     # seconds
CABLE_OUT = 8


def small_tests(client):
    return "".join(
        f"{METHODS[number % 3]};flush;0;20;64;0;{SMALL_KIB};1;0;MEMORY;data/{client}_[cfgline].bin;"
        "/run/log.txt;res.csv;false\n" for number in range(TESTS))


def is_whole(path, size_kib):
    """Test data holds no zero, so one on the server is data that did not arrive."""
    content = path.read_bytes()
    return len(content) == size_kib * 1024 and 0 not in content


def restart_server(share):
    share.server.kill()
    time.sleep(SERVER_AWAY)
    share.server.start()


def pull_cables(share):
    for number in (1, 2):
        share.lab.unplug(number)
    try:
        time.sleep(CABLE_OUT)
    finally:
        for number in (1, 2):
            share.lab.plug(number)


FAULTS = (restart_server, pull_cables)


@pytest.mark.parametrize("fault", FAULTS, ids=lambda fault: fault.__name__)
def test_rows_are_kept_or_told_lost(share, folder, fault):
    clients = share.clients(2)
    jobs = [start_program(client, folder.put(f"{client.name}.bst", small_tests(client.name)))
            for client in clients]
    wait_until(lambda: folder.row_count() >= BEFORE)
    fault(share)
    printed = [job.finish() for job in jobs]
    rows = folder.rows()
    found = account(rows, printed, folder.path / "data")
    broken = [row["Dest"] for row in rows if row["Error"] == "" and not is_whole(
        folder.on_server / "data" / pathlib.Path(row["Dest"]).name, SMALL_KIB)]
    left = "left" if folder.lock.exists() else "not left"
    measured(share, f"{fault.__name__}: {found}; {len(broken)} of them not "
                    f"whole on the server; lock {left}")
    assert not (broken and share.server.keeps_data)
    assert found.total() == 2 * TESTS
    assert found.kept >= BEFORE
    check_that_it_works_again(share, folder, clients)


def check_that_it_works_again(share, folder, clients):
    share.wait_until_it_works()
    for client in clients:
        name = f"again_{client.name}"
        start_program(client, folder.put(
            f"{name}.bst", f"posix;0;0;0;64;0;256;1;0;MEMORY;{name}.bin;/run/log.txt;{name}.csv;"
            "false\n")).finish()
        assert [row["Error"] for row in folder.rows(f"{name}.csv")] == [""]


@pytest.mark.parametrize("fault", FAULTS, ids=lambda fault: fault.__name__)
def test_failed_transfers_name_file_and_reason(share, folder, fault):
    """The tables are on the client's own disk, so that the rows of failed transfers are kept."""
    client = share.clients(2)[0]
    own = f"/run/{folder.path.name}"
    client.run("mkdir", own)
    jobs = [start_program(client, folder.put(
        f"{method}.bst", f"{method};flush;0;50;64;0;{LARGE_KIB};1;0;MEMORY;{method}.bin;"
        f"{own}/log.txt;{own}/{method}.csv;false\n")) for method in METHODS]
    files = [folder.on_server / f"{method}.bin" for method in METHODS]
    wait_until(lambda: all(file.exists() for file in files))
    fault(share)
    for job in jobs:
        job.finish()
    for method, file in zip(METHODS, files):
        (row,) = table_rows(client.run("cat", f"{own}/{method}.csv"))
        check_error(row)
        measured(share, f"{fault.__name__}, {method} write of {LARGE_KIB} KiB: " + (
            row["Error"].split("' ")[-1] or f"whole after {row['Time ms']} ms"))
        assert row["Error"] or is_whole(file, LARGE_KIB)
