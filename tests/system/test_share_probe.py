"""What the probe says of real shares: their figures, and a verdict that holds."""

import json
import os

import pytest

from figures import measured
from program_bench import wait_until
from servers import FIRST, MOUNT_POINT, SECOND_MOUNT_POINT, SERVERS, CachedSshfs

# What clients of these may do; None where it depends on how their looks fall.
VERDICTS = {"gluster": "one table", "nfs": "one table", "sshfs": "own tables", "sshfs-cached": "own tables",
            "smb": None}
LIMIT = 400


def named(server):
    return server.name


def start_probe(client, *folders, options=()):
    return client.start(os.environ["MARROWCTL_PROGRAM"], "fleet", "probe", "--json", *options, *folders)


def document(job):
    wait_until(lambda: job.status() is not None, LIMIT)
    printed = job.printed()
    # Lines of progress come first.
    return json.loads(printed[printed.index("{"):])


def probes_left(folder):
    return [path.name for path in folder.on_server.iterdir() if path.name.startswith(".marrowctl")]


@pytest.mark.parametrize("share", (*SERVERS, CachedSshfs), indirect=True, ids=named)
def test_verdict_on_a_share_seen_through_two_mounts(share, folder):
    client = share.clients(1)[0]
    share.server.mount_again(client)
    job = start_probe(client, folder.path, str(folder.path).replace(MOUNT_POINT, SECOND_MOUNT_POINT))
    found = document(job)
    races, rows, second = found["exclusiveCreate"], found["rows"], found["secondMount"]
    measured(share, f"{found['verdict']}; one winner in {races['oneWinner']} of {races['rounds']}, others told "
             f"{races['otherAnswers']}; {rows['kept']} of {rows['told']} rows, one in "
             f"{1000 * (rows['secondsPerRow'] or 0):.1f} ms; seen after " + ", ".join(
                 f"{name} {delays['longestSeconds']}" for name, delays in second.items() if name != "limitSeconds"))
    # None of these shares lets two win or loses a row without a word.
    assert races["severalWinners"] == 0 and rows["kept"] == rows["told"]
    assert VERDICTS[share.server.name] in (None, found["verdict"]), found["reasons"]
    assert probes_left(folder) == []


@pytest.mark.parametrize("share", FIRST, indirect=True, ids=named)
def test_probes_of_several_clients_do_not_disturb_each_other(share, folder):
    clients = share.clients(4)
    jobs = [start_probe(client, folder.path, options=["--quick"]) for client in clients]
    for job in jobs:
        found = document(job)
        assert found["exclusiveCreate"]["oneWinner"] == found["exclusiveCreate"]["rounds"] > 0
        assert found["rows"]["kept"] == found["rows"]["told"] > 0
    assert probes_left(folder) == []
