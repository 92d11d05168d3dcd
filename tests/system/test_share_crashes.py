"""A client that dies while it holds the lock of the table."""

import time

from figures import measured
from held_lock import hold_lock, one_row
from shares import start_program

TIMEOUT = 10          # seconds for which a client looks for the lock
STALE = "10801 seconds ago"


def timed(client, settings):
    start = time.monotonic()
    printed = start_program(client, settings).finish()
    return printed, time.monotonic() - start


def test_lock_of_a_dead_client_costs_ten_seconds_and_is_taken_over_when_stale(share, folder):
    other, victim = share.clients(2)
    hold_lock(victim, folder)
    victim.crash()
    assert folder.lock.exists(), "nobody removes it"
    before = folder.read("res.csv")
    assert len(folder.rows()) >= 1, "whole rows below a header"

    printed, seconds = timed(other, folder.put("first.bst", one_row("first.bin")))
    assert printed.count("ERROR: Unable to write excel file as it is still locked.") == 1
    assert seconds >= TIMEOUT
    assert folder.read("res.csv") == before
    assert folder.lock.exists()

    other.run("touch", "-d", STALE, folder.path / folder.lock.name)
    printed, seconds = timed(other, folder.put("second.bst", one_row("second.bin")))
    measured(share, f"row {seconds:.0f} s after a dead client's lock was stale")
    assert "Unable to write" not in printed
    assert folder.rows()[-1]["Dest"] == str(folder.path / "second.bin")
    assert not folder.lock.exists()
