"""Settings files that nobody would write, and what other people's programs leave in their place."""

import os
import shutil
import signal
import subprocess

import pytest

from conftest import EMULATOR, SANITIZED, until_shown, wait_until

TEST = "posix;0;0;0;4;0;4;1;0;MEMORY;tiny.bin;;res.csv;true\n"
MIB = 1 << 20


def run(bench, content):
    path = bench.folder / "run.bst"
    path.write_bytes(content)
    return bench.run(path)


def marker(bench):
    return bench.folder / "_run_log"


def test_empty_file_ends_with_a_marker(bench):
    assert "Config loaded" in run(bench, b"")
    assert len(list(marker(bench).iterdir())) == 1


def test_all_byte_values_are_rejected_lines(bench):
    everything = bytes(range(256)) * 4
    printed = run(bench, everything + b"\n" + TEST.encode())
    assert "Error reading settings line" in printed
    assert len(bench.rows()) == 1, "the line behind them runs"


def test_hundred_thousand_lines_run_two_hundred_tests(bench):
    printed = run(bench, b"# a comment\n" * 50000 + b"not a method;\n" * 49000 + TEST.encode() * 1000)
    assert printed.count("Error reading settings line") == 49000
    assert printed.count("more than 200 tests, line ignored.") == 800
    assert len(bench.rows()) == 200


@pytest.mark.skipif(SANITIZED, reason="the sanitizers' memory is not the program's")
@pytest.mark.skipif(bool(EMULATOR), reason="takes many minutes in an emulator")
@pytest.mark.parametrize("content", [b"\n" * 100 * MIB, b"#" * 100 * MIB, b"\0" * 100 * MIB],
                         ids=["lines", "comment", "zeros"])
def test_hundred_mebibytes_are_read_to_their_end(bench, content):
    run(bench, content + b"\n" + TEST.encode())
    assert len(bench.rows()) == 1


@pytest.mark.parametrize("length", [499, 500, 501, 999, 1000, 1001, 4999, 5000, 5001])
def test_long_fields_are_cut_and_never_more(bench, length):
    # So many characters without the line's end.
    name = "tiny.bin" + "n" * (length + 1 - len(TEST))
    printed = run(bench, TEST.replace("tiny.bin", name).encode() + TEST.encode())
    assert printed.count("Null data test: ") == 2
    *cut, whole = [row["Error"] for row in bench.rows()]
    assert whole == ""
    # A line of more than 1000 characters loses what is behind them: one more the end of its last
    # field, far more its table.
    assert len(cut) == (1 if length <= 1001 else 0)
    # The name is too long to open, and the text that says so is cut as well.
    for error in cut:
        assert len(error) <= 500
        assert error.startswith(f"ERROR: Unable to open file '{bench.folder}/tiny.binnnn")


@pytest.mark.parametrize("length", [499, 500, 501, 999, 1000, 1001, 4999, 5000, 5001, 100000])
def test_long_path_on_the_command_line_is_cut(bench, length):
    client = bench.start("/" + "n" * (length - 5) + ".bst")
    if length > 500:  # the extension is cut off
        assert "Unknown commandline flags" in client.communicate(timeout=60)[0]
        assert client.returncode == 1
        return
    until_shown(client, "######## Loading")
    client.terminate()
    assert client.wait(timeout=60) == -signal.SIGTERM


@pytest.mark.parametrize("make", [lambda path: path.mkdir(),
                                  lambda path: path.symlink_to("nowhere")],
                         ids=["folder", "dangling link"])
def test_what_is_no_file_is_waited_for(bench, make):
    path = bench.folder / "run.bst"
    make(path)
    client = bench.start(path, fast=True)
    # Through the accelerated clock a dot takes a moment.
    until_shown(client, "########\n\n.")
    path.rmdir() if path.is_dir() else path.unlink()
    bench.put(TEST)
    assert client.wait(timeout=120) == 0
    assert len(bench.rows()) == 1


def rows_of_a_fifo(bench, *parts):
    """The rows of a run that gets its settings file part by part."""
    path = bench.folder / "run.bst"
    os.mkfifo(path)
    client = bench.start(path)
    with open(path, "w") as settings:
        for part in parts:
            settings.write(part)
            settings.flush()
    assert client.wait(timeout=60) == 0
    return bench.rows()


def test_fifo_is_read_like_a_file(bench):
    assert len(rows_of_a_fifo(bench, TEST)) == 1


def test_file_that_may_not_be_read_has_no_lines(bench):
    path = bench.settings(TEST)
    path.chmod(0)
    if os.access(path, os.R_OK):  # root reads everything
        if shutil.which("setpriv") is None:
            pytest.skip("needs setpriv")
        bench.folder.chmod(0o777)
        bench.folder.parent.chmod(0o755)
        prefix = ("setpriv", "--reuid=65534", "--regid=65534", "--clear-groups")
        if subprocess.run([*prefix, bench.program], capture_output=True).returncode != 255:
            pytest.skip("another user may not run the program here")
    else:
        prefix = ()
    bench.run(path, prefix=prefix)
    assert not (bench.folder / "res.csv").exists()
    assert len(list(marker(bench).iterdir())) == 1


def test_file_that_disappears_while_it_runs_changes_nothing(bench):
    path = bench.settings("posix;0;0;100;4;0;8;1;0;MEMORY;slow.bin;;res.csv;true\n" * 2)
    client = bench.start(path)
    wait_until(lambda: (bench.folder / "slow.bin").exists())
    path.unlink()
    assert client.wait(timeout=60) == 0
    assert len(bench.rows()) == 2


def test_file_that_grows_while_it_is_read_gives_whole_lines(bench):
    assert len(rows_of_a_fifo(bench, TEST[:30], TEST[30:] + TEST[:5], TEST[5:])) == 2
