"""A person at Ctrl-C, a system that shuts down, a console that closes."""

import os
import signal

import pytest

from conftest import SANITIZED, needs_strace, until_shown, wait_until

INTERRUPTIONS = [signal.SIGINT, signal.SIGTERM, signal.SIGHUP, signal.SIGQUIT]
TINY = "posix;0;0;0;4;0;4;1;0;MEMORY;tiny.bin;log.txt;res.csv;true\n"


@pytest.mark.parametrize("number", INTERRUPTIONS)
def test_signal_ends_a_waiting_client_with_its_own_status(bench, number):
    client = bench.start(bench.folder / "later.bst")
    until_shown(client, "######## Loading")
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
    # It comes with the write of the row.
    tracer = ["strace", "-o", "/dev/null", "-P", str(bench.folder / "res.csv"), "-e",
              f"inject=write,writev:signal={number}:when=1"]
    client = bench.start(bench.settings(TINY * 2), prefix=tracer)
    assert client.wait(timeout=60) == -number
    assert not (bench.folder / "res.csv_lock.txt").exists()
    assert [row["Error"] for row in bench.rows()] == [""], "the row is whole, the next not begun"


def test_stop_waits_for_the_row_and_leaves_no_lock(bench):
    needs_strace()
    if SANITIZED:
        pytest.skip("the leak sanitizer refuses to be traced")
    trace = bench.folder / "trace.txt"
    tracer = ["strace", "-D", "-o", trace, "-P", str(bench.folder / "res.csv"), "-e",
              f"inject=write,writev:signal={signal.SIGTSTP}:when=1"]
    # A group that no session leader could continue is never stopped.
    client = bench.start(bench.settings(TINY * 2), prefix=tracer, process_group=0)
    wait_until(lambda: trace.exists() and "--- stopped by SIGTSTP ---" in trace.read_text())
    assert not (bench.folder / "res.csv_lock.txt").exists()
    assert len(bench.rows()) == 1, "stopped behind the row"
    client.send_signal(signal.SIGCONT)
    assert client.wait(timeout=60) == 0
    assert len(bench.rows()) == 2


def test_another_clients_lock_survives_a_signal(bench):
    lock = bench.folder / "res.csv_lock.txt"
    lock.write_text("another client's")
    client = bench.start(bench.settings(TINY))
    until_shown(client, "Transfer ")
    client.send_signal(signal.SIGTERM)
    assert client.wait(timeout=60) == -signal.SIGTERM
    assert lock.read_text() == "another client's"


def test_hangup_that_is_ignored_stays_ignored(bench):
    # As under nohup.
    path = bench.folder / "later.bst"
    client = bench.start(path, fast=True, preexec_fn=lambda: signal.signal(signal.SIGHUP,
                                                                           signal.SIG_IGN))
    until_shown(client, "######## Loading")
    client.send_signal(signal.SIGHUP)
    bench.put(TINY, path.name)
    assert client.wait(timeout=120) == 0
    assert len(bench.rows()) == 1


def test_closed_console_does_not_stop_a_run(bench):
    reader, console = os.pipe()
    os.close(reader)
    with os.fdopen(console) as console:
        client = bench.start(bench.settings(TINY * 3), stdout=console,
                             preexec_fn=lambda: signal.signal(signal.SIGPIPE, signal.SIG_DFL))
    assert client.wait(timeout=60) == 0
    assert len(bench.rows()) == 3
