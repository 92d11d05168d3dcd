"""Clients that stand still while they hold the lock of a table."""

import time

from program_bench import wait_until
from shares import start_program

ATTEMPTS = 300
# Seconds until the server has seen what a client did before it froze: a short wait to see whether
# there is a lock, then a longer one, as the server may be busy.
SETTLE = 0.2
SETTLE_WELL = 2


def one_row(name, iterations=1):
    return f"posix;0;0;0;4;0;4;{iterations};0;MEMORY;{name};/run/log.txt;res.csv;false\n"


def hold_lock(client, folder, iterations=5000):
    """Starts a run that writes row after row and freezes the client while it holds the lock."""
    job = start_program(client, folder.put("hold.bst", one_row(f"{client.name}_[iter].bin",
                                                               iterations)))
    wait_until(lambda: folder.row_count() >= 3)
    for _ in range(ATTEMPTS):
        client.freeze()
        time.sleep(SETTLE)
        if folder.lock.exists():
            time.sleep(SETTLE_WELL)
        if folder.lock.exists():
            return job
        client.thaw()
        time.sleep(0.02)
    raise AssertionError("never caught with the lock held")
