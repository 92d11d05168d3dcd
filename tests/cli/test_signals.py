"""A person at Ctrl-C, a system that shuts down, a console that closes."""

import os
import signal

import pytest

from conftest import SANITIZED, needs_strace, wait_until

INTERRUPTIONS = [signal.SIGINT, signal.SIGTERM, signal.SIGHUP]
TINY = "posix;0;0;0;4;0;4;1;0;MEMORY;tiny.bin;log.txt;res.csv;true\n"


@pytest.mark.parametrize("number", INTERRUPTIONS)
def test_signal_ends_a_waiting_client_with_its_own_status(bench, number):
    client = bench.start(bench.folder / "later.bst")
    wait_until(lambda: client.stdout.readline().startswith("######## Loading"))
    client.send_signal(number)
    assert client.wait(timeout=60) == -number


@pytest.mark.parametrize("number", INTERRUPTIONS)
def test_signal_ends_a_transfer(bench, number):
    path = bench.settings("posix;0;0;60000;4;0;8;1;0;MEMORY;slow.bin;log.txt;res.csv;true\n")
    client = bench.start(path)
    wait_until(lambda: (bench.folder / "slow.bin").exists())
    client.send_signal(number)
    assert client.wait(timeout=60) == -number
    assert not (bench.folder / "res.csv").exists()


@pytest.mark.parametrize("number", INTERRUPTIONS)
def test_signal_waits_for_the_row_and_leaves_no_lock(bench, number):
    needs_strace()
    if SANITIZED:
        pytest.skip("the leak sanitizer refuses to be traced")
    # The row is under way as long as the write of the table is delayed.
    tracer = ["strace", "-f", "-o", "/dev/null", "-P", str(bench.folder / "res.csv"),
              "-e", "inject=write,writev:delay_exit=1000000", "sh", "-c", 'echo $$ > pid; exec "$@"', "sh"]
    client = bench.start(bench.settings(TINY * 2), prefix=tracer)
    wait_until(lambda: (bench.folder / "res.csv").exists())
    assert (bench.folder / "res.csv_lock.txt").exists()
    os.kill(int((bench.folder / "pid").read_text()), number)
    assert client.wait(timeout=60) == -number
    assert not (bench.folder / "res.csv_lock.txt").exists()
    assert [row["Error"] for row in bench.rows()] == [""], "the row is whole, the next not begun"


def test_another_clients_lock_survives_a_signal(bench):
    lock = bench.folder / "res.csv_lock.txt"
    lock.write_text("another client's")
    client = bench.start(bench.settings(TINY))
    wait_until(lambda: "Transfer " in client.stdout.readline())
    client.send_signal(signal.SIGTERM)
    assert client.wait(timeout=60) == -signal.SIGTERM
    assert lock.read_text() == "another client's"


def test_hangup_that_is_ignored_stays_ignored(bench):
    # As under nohup.
    path = bench.folder / "later.bst"
    client = bench.start(path, fast=True, preexec_fn=lambda: signal.signal(signal.SIGHUP,
                                                                           signal.SIG_IGN))
    wait_until(lambda: client.stdout.readline().startswith("######## Loading"))
    client.send_signal(signal.SIGHUP)
    bench.settings(TINY, "written")
    (bench.folder / "written").rename(path)
    assert client.wait(timeout=120) == 0
    assert len(bench.rows()) == 1


def test_closed_console_does_not_stop_a_run(bench):
    client = bench.start(bench.settings(TINY * 3), preexec_fn=lambda: signal.signal(
        signal.SIGPIPE, signal.SIG_DFL))
    client.stdout.close()
    assert client.wait(timeout=60) == 0
    assert len(bench.rows()) == 3
