"""Tables that are no regular files: written to as they are, never looked at or taken back."""

import os
import pty
import threading

import pytest

from conftest import table_rows

ROWS = 3


def settings(bench, table):
    return bench.settings(f"posix;0;0;0;4;0;4;{ROWS};0;MEMORY;tiny.bin;log.txt;{table};false\n")


def is_row(text):
    return text.count(",") == 33 and ",Posix,Write," in text


def test_pipe_whose_reader_leaves_after_each_row(bench):
    pipe = bench.folder / "pipe"
    os.mkfifo(pipe)
    client = bench.start(settings(bench, pipe), stdout=open(bench.folder / "printed.txt", "w"))
    rows = []
    while len(rows) < ROWS:
        with open(pipe) as reader:  # which ends when the program closes the table
            rows += [text for text in reader.read().split("\n") if text]
    assert all(map(is_row, rows)), "no header"
    assert client.wait(timeout=60) == 0
    assert "marrowbench: " not in (bench.folder / "printed.txt").read_text()
    assert sorted(path.name for path in bench.folder.iterdir()) == [
        "log.txt", "pipe", "printed.txt", "run.bst", "tiny.bin"]


def test_standard_output_on_a_pipe(bench):
    if not os.access("/dev", os.W_OK):
        pytest.skip("the lock stands in /dev")
    printed, told = bench.run_apart(settings(bench, "/dev/stdout"))
    assert sum(is_row(text) for text in printed) == ROWS
    assert told == []
    assert not os.path.exists("/dev/stdout_lock.txt")


def test_null_device(bench):
    if not os.access("/dev", os.W_OK):
        pytest.skip("the lock stands in /dev")
    _, told = bench.run_apart(settings(bench, "/dev/null"))
    assert told == []


def test_terminal(bench):
    console, terminal = pty.openpty()
    link = bench.folder / "terminal"
    link.symlink_to(os.ttyname(terminal))
    shown = bytearray()

    def read():
        while shown.count(b",Posix,Write,") < ROWS:
            shown.extend(os.read(console, 4096))

    reader = threading.Thread(target=read, daemon=True)
    reader.start()
    _, told = bench.run_apart(settings(bench, link))
    reader.join(timeout=60)
    os.close(terminal)
    os.close(console)
    assert told == []
    assert sum(is_row(text) for text in shown.decode().split("\r\n")) == ROWS


def test_table_behind_a_link_is_a_table(bench):
    (bench.folder / "link").symlink_to("real.csv")
    _, told = bench.run_apart(settings(bench, "link"))
    assert told == []
    assert len(table_rows((bench.folder / "real.csv").read_text())) == ROWS
    assert (bench.folder / "link").is_symlink()
