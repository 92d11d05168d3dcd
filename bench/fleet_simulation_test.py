"""The simulation of a fleet keeps to what can be worked out by hand."""

import math

import pytest

from fleet_simulation import (ARM, BEGIN, BEST_SECOND, CALL_ROLL, END, ITERATION, ITERATIONS, LIST, LOOK,
                              LOOK_EVERY, MINUTE, READ, TOUCH, TOUCH_EVERY, Share, listings, simulate,
                              waiting_load)

FAST = 1e9  # requests per second: a share that takes no time


def test_a_share_answers_one_request_after_the_other():
    share = Share(per_second=10)
    assert share.ask(5, 10) == 6
    assert share.ask(5, 5) == 6.5
    assert share.ask(8, 1) == 8.1
    assert share.answered == 16


@pytest.mark.parametrize("seed", range(5))
def test_it_is_published_at_the_best_second_for_the_minute_after_the_next(seed):
    run, _ = simulate(10, FAST, seed)
    assert run.published_at % MINUTE == pytest.approx(BEST_SECOND, abs=1e-6)
    assert run.start % MINUTE == pytest.approx(0, abs=1e-6)
    assert run.start - run.published_at == pytest.approx(MINUTE + MINUTE - BEST_SECOND, abs=1e-6)


def test_clients_that_wait_ask_for_no_more_than_they_have_to():
    run, _ = simulate(200, FAST)
    assert waiting_load(run) == pytest.approx(200 * (LIST + TOUCH / TOUCH_EVERY + LOOK / LOOK_EVERY), rel=0.1)


def test_a_client_finds_the_file_when_it_looks_next():
    run, _ = simulate(500, FAST)
    late = [seen - run.published_at for seen in run.seen_at]
    assert len(late) == 500
    assert 0 <= min(late) and LOOK_EVERY - 0.2 < max(late) <= LOOK_EVERY


def test_reading_the_ready_files_takes_as_long_as_the_share_takes_to_answer():
    run, _ = simulate(100, 1e4)
    assert run.roll_seconds >= (listings(100) + 100 * CALL_ROLL) / 1e4


def test_a_share_that_is_too_slow_lets_clients_start_late():
    # Each of them asks for more in a second than the share answers in one.
    run, _ = simulate(100, 50)
    assert any(seen > run.border for seen in run.seen_at)


def test_no_request_is_forgotten():
    clients = 20
    run, share = simulate(clients, FAST)
    least = clients * (ARM + READ + BEGIN + ITERATIONS * ITERATION + END) + 2 * CALL_ROLL * clients
    seconds = max(run.done_at)
    most = least + clients * (LIST + TOUCH + LOOK) * (seconds + 1) + len(run.watched) * 1000
    assert least < share.answered < most
    assert not math.isinf(run.start)
