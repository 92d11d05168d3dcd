"""The simulation of the lock keeps to what can be worked out by hand."""

import random

from lock_simulation import LOOKS, lost_rows


def lost(clients, hold_ms, spread_ms, late_ms=0):
    return lost_rows(clients, hold_ms, spread_ms, random.Random(7), late_ms)


def test_alone_nothing_is_lost():
    assert lost(1, 100, 0) == 0


def test_clients_in_step_get_one_row_per_look():
    # They all look at the same moments, and whoever comes first keeps the others out.
    assert lost(LOOKS, 1, 0) == 0
    assert lost(100, 1, 0) == 100 - LOOKS


def test_a_lock_held_as_long_as_all_looks_take_leaves_one_row():
    assert lost(10, LOOKS * 250, 0) == 9


def test_no_more_rows_than_the_time_has_room_for():
    # The last client gives up after 250 ms and 40 pauses: 10,250 ms, at 100 ms a row.
    assert lost(1000, 100, 250) >= 1000 - 103


def test_clients_that_come_one_after_the_other_lose_nothing():
    assert lost(500, 1, 60000) == 0
