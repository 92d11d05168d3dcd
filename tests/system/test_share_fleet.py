"""A fleet on shares whose clients remember for a minute what was not there."""

import json
import os
import time

import pytest

from figures import measured
from fleet import hosts_ready
from program_bench import wait_until
from servers import RememberingNfs

CLIENTS = 4
HOSTS = f"client[1-{CLIENTS}]"
CTL = os.environ.get("MARROWCTL_PROGRAM", "")
# The tables lie where nobody but those that write them has a look by itself.
SETTINGS = "posix;0;0;100;4;0;40;10;0;MEMORY;[host]_[iter].bin;log_[host].txt;{tables}/[host].csv;true\n"


def named(server):
    return server.name


@pytest.mark.parametrize("share", [RememberingNfs], indirect=True, ids=named)
def test_clients_that_looked_in_vain_start_in_the_same_minute(share, folder):
    clients = share.clients(CLIENTS)
    run = folder.on_server / "monday"
    settings = share.lab.folder / "monday.bst"
    settings.write_text(SETTINGS.format(tables=folder.path / "tables"))

    def start(client, command, *arguments):
        return client.start(CTL, "fleet", command, "--control", folder.path, "--run", "monday", *arguments)

    jobs = [start(client, "arm", "--give-up", "10m") for client in clients]
    wait_until(lambda: hosts_ready(run) == [client.name for client in clients]
               or any(job.status() is not None for job in jobs), 120)
    assert [job.printed() for job in jobs if job.status() is not None] == []
    # Clients have half a minute at most to see the file: less than their mounts may remember that it is not there.
    wait_until(lambda: 10 <= time.time() % 60 <= 20, 70)
    told = start(clients[0], "publish", "--now", "--hosts", HOSTS, settings).finish()
    watched = start(clients[0], "watch", "--hosts", HOSTS, "--timeout", "5m").finish(seconds=400)
    for job in jobs:
        job.finish()
    report = clients[0].run(CTL, "report", "--json", folder.path / "tables", "--settings",
                            folder.path / "monday/monday.bst", "--hosts", HOSTS)
    verdict = json.loads(report)["verdict"]
    measured(share, f"{told.splitlines()[-1]} {watched.splitlines()[-1]}")
    assert (verdict["complete"], verdict["concurrent"], verdict["clean"]) == (True, True, True), verdict
