"""What goes to which output, with which colours and which exit status."""

import fcntl
import json
import os
import re
import signal
import struct
import subprocess
import sys
import termios

import pytest

from conftest import COMMAND
from tables import perfect_fleet, write

BAD = "posix;0;0;0;x;0;128;1;0;MEMORY;{0}/out.bin;{0}/log.txt;{0}/results.csv;true\n"
WARNED = "posix;0;0;0;64;0;128;0;0;MEMORY;{0}/out.bin;{0}/log.txt;{0}/results.csv;true\n"


@pytest.mark.parametrize("text, plain, strict", [(BAD, 2, 2), (WARNED, 0, 1)])
def test_status_tells_errors_and_with_strict_warnings(ctl, text, plain, strict):
    ctl.write("a.bst", text.format(ctl.folder))
    for form in ([], ["--json"], ["--format", "gcc"], ["--summary"]):
        done = ctl.run("check", "a.bst", *form)
        assert (done.returncode, done.stderr) == (plain, ""), form
        assert ctl.run("check", "--strict", "a.bst", *form).returncode == strict, form


def test_status_is_0_where_all_is_well(ctl):
    ctl.good()
    done = ctl.run("check", "--strict", "good.bst")
    assert (done.returncode, done.stderr) == (0, ""), done.stdout


def test_gcc_form_is_one_line_for_each_finding(ctl):
    ctl.write("a.bst", "# a comment\n" + BAD.format(ctl.folder))
    done = ctl.run("check", "--format", "gcc", "a.bst")
    found = json.loads(ctl.run("check", "--json", "a.bst").stdout)["findings"]
    lines = done.stdout.splitlines()
    assert len(lines) == len(found) > 0
    assert lines[0].startswith("a.bst:2:13: error: ") and lines[0].endswith("[bad-number]")


def test_a_dash_is_the_standard_input(ctl):
    done = ctl.run("check", "--json", "-", input=ctl.good().read_text())
    assert [file["path"] for file in json.loads(done.stdout)["files"]] == ["-"]
    assert done.returncode == 0, done.stdout


def test_a_dash_stands_in_the_current_folder(ctl):
    text = "posix;0;0;0;64;0;128;1;0;MEMORY;out.bin;[cfgPath]log.txt;results.csv;true\n[cfgPath]next.bst\n"
    ctl.write("next.bst", "# nothing\n")
    first, second = json.loads(ctl.run("check", "--json", "-", input=text).stdout)["files"]
    assert (first["chain"], second["path"]) == ("next.bst", "next.bst")
    paths = first["lines"][0]["paths"][0]
    assert (paths["dest"], paths["log"]) == ("out.bin", "log.txt")


def test_a_dash_is_a_list_of_clients_too(ctl):
    done = ctl.run("check", "--json", "--hosts", "-", ctl.good(), input="c1 # one\nc2\n")
    paths = json.loads(done.stdout)["files"][0]["lines"][1]["paths"]
    assert [path["host"] for path in paths] == ["c1", "c1", "c2", "c2"]


@pytest.mark.parametrize("arguments", [["-", "--hosts", "-"], ["-", "-"],
                                       ["good.bst", "--hosts", "-", "--hosts", "-"]])
def test_the_standard_input_is_read_once(ctl, arguments):
    ctl.good()
    done = ctl.run("check", *arguments, input="c1\n")
    assert (done.returncode, done.stdout) == (64, "")
    assert done.stderr.startswith("marrowctl check: - is the standard input, once\n")


def tree_of(folder):
    # Opening a pipe would wait for its other end.
    return {path.relative_to(folder): (path.lstat().st_mtime_ns, path.lstat().st_size,
                                       path.read_bytes() if path.is_file() else b"")
            for path in folder.rglob("*")}


def test_nothing_is_touched_that_a_test_names(ctl):
    (ctl.folder / "new").mkdir()
    os.mkfifo(ctl.folder / "pipe")
    for name in ("in.bin", "log.txt", "old.csv"):
        ctl.write(name, "old")
    ctl.write("a.bst", "".join(f"{method};0;0;0;64;0;128;2;0;{source};{dest};{log};{table};true\n"
                               for method in ("posix", "ansic", "stream", "system")
                               for source, dest, log, table in (
                                   ("MEMORY", "new/a/[iter].bin", "log.txt", "old.csv"),
                                   ("in.bin", "pipe", "pipe", "new/b/results.csv"),
                                   ("pipe", "MEMORY", "[host].log", "pipe"),
                                   ("pipe", "in.bin", "new", "new"))).replace(";new", f";{ctl.folder}/new"))
    before = tree_of(ctl.folder)
    for options in ([], ["--json"], ["--hosts", "c[1-3]"]):
        assert ctl.run("check", "a.bst", *options).returncode == 2
    assert tree_of(ctl.folder) == before


def test_names_need_not_be_utf_8(ctl):
    name = os.fsdecode(b"\xff.bst")
    ctl.good(name)
    done = ctl.run("check", "--json", "--host", os.fsdecode(b"c\xfe"), name)
    file = json.loads(done.stdout)["files"][0]
    assert (file["path"], file["lines"][0]["paths"][0]["host"]) == ("\ufffd.bst", "c\ufffd")
    assert done.returncode == 0


@pytest.mark.parametrize("arguments, message", [
    (["missing.bst"], "marrowctl check: missing.bst: No such file or directory\n"),
    (["good.bst", "no/where.bst"], "marrowctl check: no/where.bst: No such file or directory\n"),
    (["empty"], "marrowctl check: empty: no settings file is in this folder\n"),
    (["--hosts", "./missing", "good.bst"], "marrowctl check: ./missing: No such file or directory\n"),
])
def test_what_cannot_be_read_is_told(ctl, arguments, message):
    ctl.good()
    (ctl.folder / "empty").mkdir()
    done = ctl.run("check", *arguments)
    assert (done.returncode, done.stdout, done.stderr) == (2, "", message)


@pytest.mark.skipif(os.geteuid() != 0, reason="needs root to become somebody who may not read")
def test_a_file_that_is_locked_away_is_told(ctl):
    path = ctl.good()
    path.chmod(0o600)
    ctl.folder.parent.chmod(0o755)
    done = ctl.run("check", "good.bst", user=65534)
    assert (done.returncode, done.stderr) == (2, "marrowctl check: good.bst: Permission denied\n")


def test_a_finding_is_explained_by_its_name(ctl):
    done = ctl.run("check", "--explain", "no-log")
    assert (done.returncode, done.stderr) == (0, "")
    assert "no-log" in done.stdout.splitlines()[0]


@pytest.mark.skipif(sys.platform != "linux", reason="needs /dev/full")
@pytest.mark.parametrize("arguments", [["check", "good.bst"], ["sweep"], ["--help"]])
def test_an_answer_that_cannot_be_written_is_none(ctl, arguments):
    ctl.good()
    with open("/dev/full", "wb") as full:
        done = ctl.run(*arguments, stdout=full)
    assert (done.returncode, done.stderr) == (
        2, "marrowctl: the standard output: No space left on device\n")


def test_a_closed_pipe_ends_it_by_its_signal(ctl):
    read, write = os.pipe()
    os.close(read)
    done = ctl.run("--help", stdout=write,
                   preexec_fn=lambda: signal.signal(signal.SIGPIPE, signal.SIG_DFL))
    os.close(write)
    assert done.returncode in (-signal.SIGPIPE, 128 + signal.SIGPIPE)


@pytest.mark.parametrize("number", [signal.SIGINT, signal.SIGTERM, signal.SIGHUP])
def test_a_signal_ends_it(ctl, number):
    waiting = subprocess.Popen([*COMMAND, "check", "-"], stdin=subprocess.PIPE, cwd=ctl.folder,
                               preexec_fn=lambda: signal.signal(number, signal.SIG_DFL))
    # More than a pipe holds: some of it is read, so that the program is at work.
    waiting.stdin.write(b"#" * 1000000)
    waiting.send_signal(number)
    # A shell tells either as 128 and the number.
    assert waiting.wait(timeout=60) in (-number, 128 + number)
    waiting.stdin.close()


def on_a_terminal(ctl, *arguments, columns=0, **environment):
    terminal, side = os.openpty()
    if columns:
        fcntl.ioctl(side, termios.TIOCSWINSZ, struct.pack("4H", 24, columns, 0, 0))
    clean = {name: value for name, value in os.environ.items() if name != "NO_COLOR"}
    process = subprocess.Popen([*COMMAND, *map(str, arguments)], stdout=side, stderr=side,
                               cwd=ctl.folder, env={**clean, "TERM": "xterm", **environment})
    os.close(side)
    shown = b""
    try:
        while piece := os.read(terminal, 65536):
            shown += piece
    except OSError:  # Linux tells so that the other side is closed.
        pass
    process.wait(timeout=60)
    os.close(terminal)
    return shown.decode()


def test_colours_are_for_a_terminal(ctl):
    bad = ctl.write("bad.bst", BAD.format(ctl.folder))
    assert "\x1b[" not in ctl.run("check", bad).stdout
    assert "\x1b[" in on_a_terminal(ctl, "check", bad)
    assert "\x1b[" not in on_a_terminal(ctl, "check", bad, NO_COLOR="1")
    assert "\x1b[" not in on_a_terminal(ctl, "check", "--json", bad)


def longest(text):
    return max(map(len, re.sub(r"\x1b\[[\d;]*m", "", text).splitlines()))


@pytest.mark.parametrize("arguments", [["check", "a.bst"], ["check", "--summary", "a.bst"],
                                       ["check", "--explain", "chain-cycle"]])
def test_the_width_is_that_of_the_terminal_or_100(ctl, arguments):
    ctl.write("a.bst", "posix;1;0;0;64;5;128;x;0;MEMORY;out.bin;log.txt;results.csv;1\n"
              "posix;1;1;0;64;5;128;1;0;MEMORY;out_[hostname]_of_this_client.bin;log.txt;results.csv;1\n")
    widths = [longest(on_a_terminal(ctl, *arguments, columns=columns)) for columns in (70, 90, 200)]
    assert widths[0] <= 70 and widths[1] <= 90
    wide = longest(ctl.run(*arguments).stdout)
    assert wide <= 100
    if "--summary" not in arguments:
        assert 70 < widths[1] and 90 < wide and 100 < widths[2]


@pytest.mark.parametrize("columns", [40, 71, 72])
def test_the_answers_of_a_report_fit_a_narrow_terminal(ctl, columns):
    write(ctl.folder / "a.csv", perfect_fleet())
    text = on_a_terminal(ctl, "report", "a.csv", columns=columns).split("Speed of one client")[0]
    assert longest(text) <= max(columns, 2 + 38 + len("cannot tell"))
    assert text.count("cannot tell") == 1 and "--settings" in text
