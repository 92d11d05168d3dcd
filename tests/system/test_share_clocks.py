"""A client whose clock is three hours ahead, for which a lock that is held looks stale."""

import shutil

import pytest

from accounts import account
from figures import measured
from held_lock import hold_lock, one_row
from shares import start_program

AHEAD = 3 * 3600 + 60
ROWS = 200


@pytest.fixture
def ahead(share):
    """The second client, three hours ahead: a function that starts the program on it."""
    client = share.clients(2)[1]
    if not share.server.on_guests:
        if shutil.which("faketime") is None:
            pytest.skip("a host's clock needs faketime")
        yield lambda settings: start_program(client, settings, prefix=("faketime", "-f", f"+{AHEAD}"),
                                             environment={"NO_FAKE_STAT": "1"})
        return
    client.run("date", "-s", f"{AHEAD} seconds")
    yield lambda settings: start_program(client, settings)
    client.run("date", "-s", f"{AHEAD} seconds ago")


def test_client_ahead_takes_over_a_live_lock_after_its_ten_seconds(share, folder, ahead):
    holder = share.clients(2)[0]
    later = folder.put("later.bst", one_row("later.bin"))
    job = hold_lock(holder, folder, ROWS)
    try:
        printed = [ahead(later).finish()]
        was_taken = not folder.lock.exists()
    finally:
        holder.thaw()
    printed.append(job.finish())
    found = account(folder.rows(), printed, folder.path)
    measured(share, f"client 3 h ahead: lock {'taken over' if was_taken else 'kept'}, "
                    f"{found} of {ROWS + 1}")
    assert was_taken
    assert not folder.lock.exists()
    # Two clients may write at the same time, and then one row may be lost without a word; no more.
    assert ROWS <= found.total() <= ROWS + 1


def test_client_ahead_among_others_loses_nobodys_row(share, folder, ahead):
    """Nobody waits ten seconds for the lock here, so its age is never asked for."""
    first, _, third = share.clients(3)
    settings = folder.put("all.bst", one_row("[host]_[iter].bin", 5))
    jobs = [start_program(first, settings), ahead(settings), start_program(third, settings)]
    printed = [job.finish() for job in jobs]
    found = account(folder.rows(), printed, folder.path)
    measured(share, f"3 clients with 5 rows each, one 3 h ahead: {found}")
    assert found.total() == 3 * 5
    assert found.kept == 3 * 5 or not share.server.keeps_all_rows
