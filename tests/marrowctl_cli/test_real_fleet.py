"""A table of a hundred clients with their own host names, which the program itself has written."""

import json
import os
import re
import subprocess

import pytest

from program_bench import EMULATOR, end_group, own_host_names

CLIENTS = 10 if EMULATOR else 100
ITERATIONS = 3
LINES = 2
# Keeps the lock free most of the time.
PAUSE_MS = 1500
SCRIPT = 'hostname client{:02d}.lab; until [ -e go ]; do sleep 0.1; done; exec "$@"'


@pytest.fixture
def printed(ctl):
    """What each client has printed, by host name."""
    if not own_host_names():
        pytest.skip("needs unshare --uts and the right to use it")
    row = f"posix;0;0;{PAUSE_MS};64;0;64;{ITERATIONS};0"
    settings = ctl.write("fleet.bst", f"{row};MEMORY;data/[host]_[iter].bin;logs/[host].txt;results.csv;true\n"
                                      f"{row};data/[host]_[iter].bin;MEMORY;logs/[host].txt;results.csv;true\n")
    program = [*EMULATOR, os.environ["MARROWBENCH_PROGRAM"]]
    clients = []
    try:
        for number in range(CLIENTS):
            clients.append(subprocess.Popen(
                ["unshare", "--uts", "sh", "-c", SCRIPT.format(number), "sh", *program, settings], cwd=ctl.folder,
                env={**os.environ, "TERM": "xterm"}, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                stderr=subprocess.STDOUT, text=True, errors="surrogateescape", start_new_session=True))
        ctl.write("go", "")
        texts = [client.communicate(timeout=600)[0] for client in clients]
    finally:
        for client in clients:
            end_group(client)
    assert [client.returncode for client in clients] == [0] * CLIENTS
    return {f"client{number:02d}": text for number, text in enumerate(texts)}


def test_the_audit_knows_whether_all_is_there(ctl, printed):
    everything = CLIENTS * LINES * ITERATIONS
    told = sum(text.count("marrowbench: row lost: ") for text in printed.values())
    command = ["report", "results.csv", "fleet.bst", "--hosts", f"client[00-{CLIENTS - 1}]", "--done", "_fleet_log"]
    report = json.loads(ctl.run(*command, "--json").stdout)
    assert report["rows"]["unusable"] == []
    assert (report["rows"]["expected"], report["rows"]["read"]) == (everything, everything - told)
    # Only a machine that stands still for ten seconds makes a client give up on the lock.
    assert report["verdict"]["complete"] is (told == 0), report["verdict"]
    assert [test["clients"] for test in report["tests"]] == [CLIENTS] * LINES
    assert report["clients"]["missing"] == []

    (ctl.folder / "_fleet_log" / "done__client07").unlink()
    assert re.search(r"no done\s+marker of client07", ctl.run(*command).stdout)

    table = ctl.folder / "results.csv"
    lines = table.read_text().splitlines(keepends=True)
    taken = next(line for line in lines if "/client03_" in line and ",Read," in line)
    table.write_text("".join(line for line in lines if line != taken))
    report = json.loads(ctl.run(*command, "--json").stdout)
    assert report["verdict"]["complete"] is False
    assert report["rows"]["read"] == everything - told - 1
