"""marrowctl run: from the settings file to the verdict, with and without a terminal, and interrupted."""

import contextlib
import fcntl
import os
import pathlib
import re
import select
import shutil
import signal
import struct
import subprocess
import tempfile
import termios
import time

import pytest

from conftest import COMMAND, EMULATOR
from program_bench import SANITIZED, end_group, own_host_names, wait_until
from tables import perfect_fleet, write

FAST = [*EMULATOR, os.environ["MARROWCTL_FAST_PROGRAM"]]
INTERRUPTIONS = [signal.SIGINT, signal.SIGTERM, signal.SIGHUP]
PRINTED = "marrowctl run: what marrowbench printed is in "


class Runner:
    """A settings folder, and marrowctl to run files of it."""

    def __init__(self, folder):
        self.folder = folder
        self.scratch = folder.parent / "scratch"
        self.scratch.mkdir()
        self.started = []
        self.bench = self.wrapped(os.environ["MARROWBENCH_PROGRAM"], "bench")
        self.fast_bench = self.wrapped(os.environ["MARROWBENCH_FAST_PROGRAM"], "fast_bench")

    def script(self, name, text):
        path = self.scratch / name
        path.write_text(f"#!/bin/sh\n{text}\n")
        path.chmod(0o755)
        return path

    def wrapped(self, program, name):
        """A program that can be started, whatever runs it."""
        return self.script(name, " ".join(["exec", *EMULATOR, program, '"$@"'])) if EMULATOR else program

    def line(self, dest, *, wait=0, kib=64, iterations=1, table="results.csv", method="posix", log="log.txt"):
        return f"{method};0;0;{wait};4;0;{kib};{iterations};0;MEMORY;{dest};{log};{table};true\n"

    def write(self, name, text):
        path = self.folder / name
        path.write_text(text)
        return path

    def put(self, name, text):
        """A file that is complete at once, for those who wait for it."""
        (self.folder / "being_written").write_text(text)
        (self.folder / "being_written").rename(self.folder / name)

    def start(self, name, *options, fast=False, bench=None, prefix=(), **more):
        chosen = [] if "--marrowbench" in options else [
            "--marrowbench", bench or (self.fast_bench if fast else self.bench)]
        environment = {**os.environ, "TEMP": str(self.scratch), "TERM": "xterm",
                       "MARROWBENCH_CLOCK_START": str(int(time.time() * 1e6))} | more.pop("environment", {})
        process = subprocess.Popen(
            [*prefix, *(FAST if fast else COMMAND), "run", name, *chosen, *options], cwd=self.folder,
            env=environment, stdin=subprocess.DEVNULL, start_new_session=True, text=True,
            stdout=more.pop("stdout", subprocess.PIPE), stderr=more.pop("stderr", subprocess.PIPE), **more)
        self.started.append(process)
        return process

    def start_other(self, arguments, **options):
        process = subprocess.Popen(arguments, cwd=self.folder, start_new_session=True,
                                   env={**os.environ, "TERM": "xterm"}, **options)
        self.started.append(process)
        return process

    def run(self, name, *options, **more):
        process = self.start(name, *options, **more)
        return Done(process, *process.communicate(timeout=120))

    def children(self, process):
        """Processes that it has started and that still run."""
        listed = subprocess.run(["ps", "-A", "-o", "pid=,ppid=,stat="], capture_output=True, text=True).stdout
        return [int(pid) for pid, parent, state in map(str.split, listed.splitlines())
                if int(parent) == process.pid and "Z" not in state]

    def end_all(self):
        for process in self.started:
            with contextlib.suppress(ProcessLookupError):
                os.killpg(process.pid, signal.SIGKILL)
            end_group(process)


class Done:
    """What a run left."""

    def __init__(self, process, output, messages):
        self.status, self.output, self.messages = process.returncode, output, messages

    @property
    def console(self):
        """What marrowbench printed."""
        return pathlib.Path(self.messages.rsplit(PRINTED, 1)[1].rstrip("\n")).read_text()

    @property
    def verdict(self):
        return self.output.splitlines()[0] if self.output else ""


def state_of(process):
    """As ps shows it."""
    return subprocess.run(["ps", "-o", "stat=", "-p", str(process.pid)], capture_output=True, text=True).stdout


@pytest.fixture
def runner():
    with tempfile.TemporaryDirectory(prefix="marrowctl_run_") as temporary:
        folder = pathlib.Path(temporary).resolve() / "bench"
        folder.mkdir()
        runner = Runner(folder)
        yield runner
        runner.end_all()


def test_one_command_leads_from_the_file_to_the_verdict(runner):
    runner.write("a.bst", runner.line("data_[iter].bin", wait=50, iterations=3)
                 + runner.line("one.bin", method="stream"))
    done = runner.run("a.bst")
    assert done.status == 0, done.messages
    assert done.verdict == "1 of 1 client, 4 of 4 rows, no error row, no null data: complete, clean."
    assert "\x1b" not in done.output + done.messages
    assert done.messages.startswith("marrowctl run: test 1 of 2, iteration 1 of 3, at least 2 s left (Posix write)\n")
    # What the program prints by itself, whole.
    assert done.console.startswith("-" * 64) and done.console.count("Total time: ") == 2
    assert (runner.folder / "_a_log").is_dir(), "the marker"


def test_the_report_holds_the_rows_of_this_run_only(runner):
    write(runner.folder / "results.csv", perfect_fleet(clients=3))
    old = (runner.folder / "results.csv").read_text()
    runner.write("a.bst", runner.line("data.bin", iterations=2))
    for _ in range(2):
        done = runner.run("a.bst")
        assert (done.status, done.verdict[:29]) == (0, "1 of 1 client, 2 of 2 rows, n"), done.output
    assert (runner.folder / "results.csv").read_text().startswith(old)


def test_a_page_holds_the_report_too(runner, charts):
    runner.write("a.bst", runner.line("data_[iter].bin", iterations=2))
    done = runner.run("a.bst", "--html", "page.html")
    assert (done.status, done.verdict[:29]) == (0, "1 of 1 client, 2 of 2 rows, n"), done.messages
    assert "marrowctl run: written: page.html\n" in done.messages
    assert done.verdict.rstrip(".") in (runner.folder / "page.html").read_text()


def test_a_page_that_exists_is_refused_before_anything_is_measured(runner, charts):
    runner.write("a.bst", runner.line("data.bin"))
    page = runner.write("page.html", "precious")
    done = runner.run("a.bst", "--html", "page.html")
    assert (done.status, done.output) == (2, "")
    assert done.messages == "marrowctl run: page.html: exists already; --force overwrites it\n"
    assert page.read_text() == "precious" and not (runner.folder / "data.bin").exists()
    assert runner.run("a.bst", "--html", "page.html", "--force").status == 0
    assert page.read_text() != "precious"


def test_a_page_that_cannot_be_written_takes_no_figure_away(runner, charts):
    runner.write("a.bst", runner.line("data.bin"))
    page = "p" * 255  # leaves no name for its draft
    done = runner.run("a.bst", "--html", page)
    assert (done.status, done.verdict[:29]) == (2, "1 of 1 client, 1 of 1 row, no"), done.messages
    assert f"marrowctl run: {page}: File name too long\n" in done.messages


@pytest.mark.skipif(not own_host_names(), reason="needs host names of its own")
@pytest.mark.parametrize("dest", ["[host].bin", "{}.bin"])
def test_clients_that_share_a_table_report_each_their_own_rows(runner, dest):
    """Also where no path names the client."""
    iterations = 40
    clients = []
    for number in range(4):
        name = f"c{number}.bst"
        runner.write(name, runner.line(dest.format("same" if number % 2 else "data"), iterations=iterations,
                                       kib=4 * (number + 1)))
        clients.append(runner.start(name, prefix=["unshare", "--uts", "sh", "-c", f'hostname c{number}; exec "$@"', "-"]))
    for client in clients:
        done = Done(client, *client.communicate(timeout=300))
        assert done.verdict.startswith(f"1 of 1 client, {iterations} of {iterations} rows, "), done.output
        assert done.status == 0
    rows = [line for line in (runner.folder / "results.csv").read_text().splitlines() if line][1:]
    assert len(rows) == 4 * iterations


def test_errors_stop_it_with_the_text_of_check(runner):
    path = runner.write("a.bst", runner.line("data.bin").replace(";64;", ";6x4;"))
    done = runner.run("a.bst")
    checked = subprocess.run([*COMMAND, "check", path], capture_output=True, text=True)
    assert checked.returncode == 2
    assert (done.status, done.output, done.messages) == (
        2, checked.stdout, "marrowctl run: nothing was measured\n")
    assert [path.name for path in runner.folder.iterdir()] == ["a.bst"]


def test_warnings_are_shown_and_strict_stops_at_them(runner):
    runner.write("a.bst", runner.line("data.bin").replace(";true", ";1"))
    strict = runner.run("a.bst", "--strict")
    assert (strict.status, strict.messages) == (1, "marrowctl run: nothing was measured\n")
    assert "[done-flag-one]" in strict.output
    assert not (runner.folder / "data.bin").exists()
    done = runner.run("a.bst")
    assert done.status == 0
    # Not the notes.
    assert re.findall(r"\[([a-z-]+)\]$", done.messages, re.M) == ["done-flag-one"]
    assert "1 warning." in done.messages and "[done-flag-one]" not in done.output


def test_a_file_without_a_table_has_nothing_to_report(runner):
    runner.write("a.bst", runner.line("data.bin", table=" "))
    done = runner.run("a.bst")
    assert (done.status, done.output) == (0, "")
    assert "marrowctl run: it added no row to a table\n" in done.messages


def test_rows_that_are_lost_are_missed(runner):
    # The second table's folder can't be made: a file is in its place.
    (runner.folder / "file").write_text("")
    runner.write("a.bst", "# marrowctl: allow folder-refused table-is-special path-too-long\n"
                 + runner.line("one.bin") + runner.line("two.bin", table="file/results.csv"))
    done = runner.run("a.bst")
    assert (done.status, done.verdict[:29]) == (1, "1 of 1 client, 1 of 2 rows, n"), done.output + done.messages
    assert "row lost" in done.console
    assert f"marrowctl run: 1 row lost: {runner.folder}/file/results.csv: " in done.messages


def test_a_run_whose_rows_were_all_lost_has_failed(runner):
    (runner.folder / "file").write_text("")
    runner.write("a.bst", "# marrowctl: allow folder-refused table-is-special path-too-long\n"
                 + 2 * runner.line("one.bin", table="file/results.csv"))
    done = runner.run("a.bst")
    assert (done.status, done.output) == (2, "")
    assert f"marrowctl run: 2 rows lost, the first one: {runner.folder}/file/results.csv: " in done.messages
    assert "marrowctl run: none of its rows was found in its tables\n" in done.messages


def test_a_program_that_does_nothing_has_failed(runner):
    runner.write("a.bst", runner.line("one.bin"))
    done = runner.run("a.bst", "--marrowbench", "/bin/true")
    assert (done.status, done.output) == (2, "")
    assert "marrowctl run: none of its rows was found in its tables\n" in done.messages


def test_rounds_without_end_are_never_called_complete(runner):
    runner.write("a.bst", runner.line("one.bin", wait=20, iterations=2) + "[cfgPath]a.bst\n")
    process = runner.start("a.bst")
    table = runner.folder / "results.csv"
    wait_until(lambda: table.exists() and table.read_text().count("\n\n") > 4)
    process.send_signal(signal.SIGINT)
    output, _ = process.communicate(timeout=60)
    assert process.returncode == 128 + signal.SIGINT
    assert re.match(r"1 of 1 client, \d+ rows, no error row, no null data: whether all is there cannot be\s+told, clean",
                    output), output


def test_error_rows_are_told(runner):
    # AnsiC overwrites nothing.
    runner.write("data.bin", "")
    runner.write("a.bst", "# marrowctl: allow exists-already\n" + runner.line("data.bin", method="ansic"))
    done = runner.run("a.bst")
    assert done.status == 1
    assert "1 error row" in done.verdict


def shown_wait(console):
    """The seconds to the minute when the file was found, by the program's own clock."""
    second = int(re.search(r"^\d\d\.\d\d\. \d\d:\d\d\.(\d\d)$", console, re.M)[1])
    shown = int(re.search(r"to start\.\.\. (\d+)sec", console)[1])
    assert shown % 60 == second
    return shown - 2 * second, shown


def wait_until_it_waits(runner, name="a.bst"):
    """Until the program prints a dot: at its first look it would take the file and begin at once."""
    waiting = f"'{runner.folder / name}'  ########\n\n."
    wait_until(lambda: any(waiting in console.read_text() for console in runner.scratch.glob("marrowbench_a_*.txt")))


def test_a_file_is_waited_for_and_checked_when_it_is_there(runner):
    process = runner.start("a.bst", fast=True)
    wait_until_it_waits(runner)
    time.sleep(0.5)
    runner.put("a.bst", runner.line("data.bin", wait=1000, iterations=2).replace(";true", ";1"))
    done = Done(process, *process.communicate(timeout=120))
    assert done.status == 0, done.messages
    assert "2 of 2 rows" in done.verdict
    waits = re.findall(r"waiting for a\.bst for .*, next look in \d s$", done.messages, re.M)
    assert waits, done.messages
    assert "[done-flag-one]" in done.messages
    told = re.search(r"a\.bst: waiting for the full minute, (?:1 min )?(\d+) s\n", done.messages)
    true, shown = shown_wait(done.console)
    # A second takes a sixtieth of one.
    assert (true - int(told[1])) % 60 <= 20, (true, shown, done.messages)
    assert done.messages.index("waiting for a.bst") < done.messages.index("full minute") < (
        done.messages.index("test 1 of 1"))


@pytest.mark.parametrize("old, new, options, status, finding", [
    (";64;", ";6x4;", [], 2, "[bad-number]"),
    (";true", ";1", ["--strict"], 1, "[done-flag-one]"),
])
def test_a_file_that_is_no_good_ends_the_wait(runner, old, new, options, status, finding):
    process = runner.start("a.bst", *options, fast=True)
    wait_until_it_waits(runner)
    runner.put("a.bst", runner.line("data.bin").replace(old, new))
    done = Done(process, *process.communicate(timeout=120))
    assert (done.status, done.output) == (status, "")
    assert finding in done.messages
    assert "marrowctl run: ended: the settings file that was waited for is no good\n" in done.messages
    assert not (runner.folder / "log.txt").exists()


def test_a_chained_file_is_waited_for(runner):
    next_file = runner.folder / "b.bst"
    runner.write("a.bst", runner.line("one.bin", wait=2000) + f"{next_file}\n")
    process = runner.start("a.bst", fast=True)
    wait_until_it_waits(runner, "b.bst")
    time.sleep(0.5)
    runner.put("b.bst", runner.line("two.bin", wait=2000, iterations=2, table="other.csv"))
    done = Done(process, *process.communicate(timeout=120))
    assert (done.status, done.verdict[:29]) == (0, "1 of 1 client, 3 of 3 rows, n"), done.messages
    assert "[chain-missing]" in done.messages
    assert "test 1 of at least 1, iteration 1 of 1 (Posix write)" in done.messages
    assert "test 2 of 2, iteration 1 of 2, last row" in done.messages


@contextlib.contextmanager
def interrupted(runner, process, number):
    """The running process, which gets the signal at the end; nothing may be left of it."""
    yield
    children = runner.children(process)
    process.send_signal(number)
    process.done = Done(process, *process.communicate(timeout=60))
    for child in children:
        with pytest.raises(ProcessLookupError):
            os.kill(child, 0)


@pytest.mark.parametrize("number", INTERRUPTIONS)
def test_a_signal_ends_the_check(runner, number):
    os.mkfifo(runner.folder / "a.bst")
    process = runner.start("a.bst")
    with interrupted(runner, process, number):
        time.sleep(0.5)
        assert process.poll() is None
    assert process.done.status in (-number, 128 + number)
    assert (process.done.output, process.done.messages) == ("", "")


@pytest.mark.parametrize("number", INTERRUPTIONS)
def test_a_signal_ends_the_wait_for_a_file(runner, number):
    process = runner.start("a.bst")
    with interrupted(runner, process, number):
        wait_until_it_waits(runner)
    assert (process.done.status, process.done.output) == (128 + number, "")
    assert process.done.console.endswith("\n.")
    assert f"marrowctl run: ended by signal {number}" in process.done.messages


@pytest.mark.parametrize("number", INTERRUPTIONS)
def test_a_signal_ends_the_wait_for_the_minute(runner, number):
    process = runner.start("a.bst", fast=True, environment={"MARROWBENCH_CLOCK_SPEED": "5"})
    with interrupted(runner, process, number):
        wait_until_it_waits(runner)
        runner.put("a.bst", runner.line("data.bin"))
        console = next(runner.scratch.glob("marrowbench_a_*.txt"))
        wait_until(lambda: "Waiting for the next minute" in console.read_text())
        time.sleep(0.2)
    assert (process.done.status, process.done.output) == (128 + number, "")
    assert "waiting for the full minute" in process.done.messages
    assert not (runner.folder / "data.bin").exists()


@pytest.mark.parametrize("number", INTERRUPTIONS)
def test_a_signal_ends_a_test_and_what_is_there_is_reported(runner, number):
    runner.write("a.bst", runner.line("fast.bin", iterations=2) + runner.line("slow.bin", wait=60000))
    process = runner.start("a.bst")
    with interrupted(runner, process, number):
        wait_until(lambda: (runner.folder / "slow.bin").exists())
    assert process.done.status == 128 + number
    assert process.done.verdict.startswith("1 of 1 client, 2 of 3 rows, "), process.done.messages
    assert "not complete" in process.done.verdict
    assert f"marrowctl run: ended by signal {number}" in process.done.messages
    assert not (runner.folder / "results.csv_lock.txt").exists()


def test_a_second_signal_leaves_a_program_behind_that_does_not_end(runner):
    runner.write("a.bst", runner.line("data.bin"))
    deaf = runner.script("deaf", "trap '' INT TERM HUP; echo deaf; while :; do sleep 0.1; done")
    process = runner.start("a.bst", bench=deaf)
    wait_until(lambda: any("deaf" in path.read_text() for path in runner.scratch.glob("marrowbench_a_*.txt")))
    (child,) = runner.children(process)
    try:
        process.send_signal(signal.SIGINT)
        time.sleep(1)
        assert process.poll() is None, "it waits for the program's end"
        process.send_signal(signal.SIGTERM)
        done = Done(process, *process.communicate(timeout=60))
        assert done.status == 128 + signal.SIGTERM
        assert f"marrowctl run: marrowbench, process {child}, has not ended yet\n" in done.messages
    finally:
        os.kill(child, signal.SIGKILL)


def test_a_hangup_that_is_ignored_stays_ignored(runner):
    # As under nohup.
    runner.write("a.bst", runner.line("slow.bin", wait=1000, kib=8))
    process = runner.start("a.bst", preexec_fn=lambda: signal.signal(signal.SIGHUP, signal.SIG_IGN))
    wait_until(lambda: (runner.folder / "slow.bin").exists())
    os.killpg(process.pid, signal.SIGHUP)
    done = Done(process, *process.communicate(timeout=60))
    assert (done.status, done.verdict[:29]) == (0, "1 of 1 client, 1 of 1 row, no"), done.messages


def test_closed_outputs_do_not_stop_the_measurement(runner):
    runner.write("a.bst", runner.line("data.bin", iterations=3))
    read, closed = os.pipe()
    os.close(read)
    process = runner.start("a.bst", stdout=closed, stderr=closed,
                           preexec_fn=lambda: signal.signal(signal.SIGPIPE, signal.SIG_DFL))
    os.close(closed)
    assert process.wait(timeout=60) == 2
    assert (runner.folder / "results.csv").read_text().count("Posix") == 3


@pytest.mark.parametrize("script, status, message", [
    ("exit 3", 2, "marrowbench failed: exit status 3"),
    ("kill -9 $$", 2, "marrowbench was ended by signal 9"),
    ("kill -2 $$", 2, "marrowbench was ended by signal 2"),
])
def test_a_program_that_fails_is_told(runner, script, status, message):
    runner.write("a.bst", runner.line("data.bin"))
    bench = runner.script("failing", script)
    done = runner.run("a.bst", "--marrowbench", bench)
    assert (done.status, done.output) == (status, "")
    assert f"marrowctl run: {message}" in done.messages
    assert done.console == ""


def test_what_is_there_is_reported_when_the_program_fails_later(runner):
    runner.write("a.bst", runner.line("data.bin", iterations=2))
    bench = runner.script("failing", f'{runner.bench} "$@"\nexit 1')
    done = runner.run("a.bst", bench=bench)
    assert (done.status, "2 of 2 rows" in done.verdict) == (2, True), done.messages


def test_the_program_is_looked_for_beside_it_and_then_in_path(runner):
    if EMULATOR or SANITIZED:
        pytest.skip("the programs are moved")
    runner.write("a.bst", runner.line("data.bin"))
    alone, together = runner.scratch / "alone", runner.scratch / "together"
    for folder in (alone, together):
        folder.mkdir()
        shutil.copy(COMMAND[-1], folder / "marrowctl")
    runner.script("together/marrowbench", "echo beside; exit 4")
    runner.script("path_bench", "")
    in_path = runner.scratch / "path"
    in_path.mkdir()
    runner.script("path/marrowbench", "echo path; exit 4")

    def console(program, path):
        done = subprocess.run([program, "run", "a.bst"], cwd=runner.folder, capture_output=True, text=True,
                              env={"PATH": str(path), "TEMP": str(runner.scratch)})
        return done.stderr if PRINTED not in done.stderr else (
            pathlib.Path(done.stderr.rsplit(PRINTED, 1)[1].strip()).read_text())

    assert console(together / "marrowctl", in_path) == "beside\n"
    assert console(alone / "marrowctl", in_path) == "path\n"
    assert console(alone / "marrowctl", runner.folder) == (
        "marrowctl run: marrowbench is neither beside marrowctl nor in PATH; --marrowbench tells where it is\n")


@pytest.mark.parametrize("arguments, status, message", [
    (["folder"], 2, "marrowctl run: folder: Is a directory\n"),
    (["a.bst", "--marrowbench", "./missing"], 2, "marrowctl run: ./missing: No such file or directory\n"),
    (["-"], 64, "marrowctl run: a settings file cannot be the standard input here\n"
     "See: marrowctl run --help\n"),
    (["a.bst", "b.bst"], 64, "marrowctl run: one settings file at a time\nSee: marrowctl run --help\n"),
])
def test_what_cannot_be_done_is_told(runner, arguments, status, message):
    (runner.folder / "folder").mkdir()
    runner.write("a.bst", runner.line("data.bin"))
    done = runner.run(*arguments)
    assert (done.status, done.output, done.messages) == (status, "", message)
    assert list(runner.scratch.glob("marrowbench_*")) == [], "no console is left"


@pytest.mark.skipif(os.geteuid() != 0, reason="needs root to become somebody who may not read")
def test_a_file_that_is_locked_away_is_told(runner):
    runner.write("a.bst", runner.line("data.bin")).chmod(0o600)
    runner.folder.parent.chmod(0o755)
    done = runner.run("a.bst", user=65534)
    assert (done.status, done.output, done.messages) == (2, "", "marrowctl run: a.bst: Permission denied\n")


def test_a_temporary_folder_that_is_missing_is_told(runner):
    runner.write("a.bst", runner.line("data.bin"))
    done = runner.run("a.bst", environment={"TEMP": str(runner.scratch / "missing")})
    assert (done.status, done.output) == (2, "")
    assert done.messages.endswith(".txt: No such file or directory\n")


class Terminal:
    """A terminal on which a run is started, and what it got."""

    def __init__(self, runner, name, columns=80, **options):
        self.screen, side = os.openpty()
        fcntl.ioctl(side, termios.TIOCSWINSZ, struct.pack("HHHH", 24, columns, 0, 0))
        start = runner.start if isinstance(name, str) else runner.start_other
        self.process = start(name, stdout=side, stderr=side, **options)
        os.close(side)
        self.shown = ""

    def read(self, until=None):
        """What is shown up to and with a text, or to the end."""
        try:
            while until is None or until not in self.shown:
                self.shown += os.read(self.screen, 65536).decode()
        except OSError:  # Linux tells so that the other side is closed.
            assert until is None, self.shown
        return self.shown

    def read_what_is_there(self, seconds):
        if select.select([self.screen], [], [], seconds)[0]:
            self.shown += os.read(self.screen, 65536).decode()

    def end(self):
        self.read()
        os.close(self.screen)
        return self.process.wait(timeout=60)

    @property
    def screen_lines(self):
        """The lines as they stand there at last."""
        lines = self.shown.replace("\r\n", "\n").split("\n")
        return [re.sub(r"\x1b\[[0-9;]*m", "", line.rsplit("\r\x1b[K", 1)[-1]) for line in lines]


def test_a_terminal_shows_one_line_that_is_drawn_anew(runner):
    runner.write("a.bst", runner.line("slow_[iter].bin", wait=100, kib=16, iterations=5))
    terminal = Terminal(runner, "a.bst")
    assert terminal.end() == 0
    drawn = re.findall(r"\r\x1b\[K([^\r]+)", terminal.shown.split("1 of 1 client")[0])
    assert len(drawn) > 5
    assert all(re.match(r"test 1 of 1, iteration [1-5] of 5, .* left \(Posix write\)$", line) for line in drawn)
    assert all(len(line) < 80 for line in drawn)
    assert re.search(r", last row \d+\.\d MiB/s, \d+ s left \(", terminal.shown)
    assert terminal.screen_lines[0].startswith("1 of 1 client, 5 of 5 rows"), "nothing is left of the line"
    assert "iteration" not in "".join(terminal.screen_lines).split("A row is")[0].replace("first-iteration", "")


@pytest.mark.parametrize("number", INTERRUPTIONS)
def test_a_terminal_is_left_clean_after_a_signal(runner, number):
    runner.write("a.bst", runner.line("fast.bin") + runner.line("slow.bin", wait=60000))
    terminal = Terminal(runner, "a.bst", columns=50)
    terminal.read("test 2 of 2")
    terminal.process.send_signal(number)
    assert terminal.end() == 128 + number
    assert terminal.screen_lines[0].startswith("1 of 1 client, 1 of 2 rows"), terminal.shown
    assert "test 2 of 2" not in "".join(terminal.screen_lines)
    assert terminal.screen_lines[-2].endswith(".txt")


@pytest.mark.parametrize("number", INTERRUPTIONS)
def test_a_signal_ends_the_reading_of_tables(runner, number):
    """The line that shows how far it is does not stay on the terminal."""
    write(runner.folder / "old.csv", perfect_fleet())
    rows = (runner.folder / "old.csv").read_bytes()
    reader, writer = os.pipe()
    terminal = Terminal(runner, [*COMMAND, "report", "-"], stdin=reader)
    os.close(reader)
    with open(writer, "wb", buffering=0) as table:
        while "reading, " not in terminal.shown:
            table.write(rows)
            terminal.read_what_is_there(0.05)
        terminal.process.send_signal(number)
        assert terminal.end() in (-number, 128 + number)
    assert re.match(r"\r\x1b\[Kreading, \d+ MiB\r\x1b\[K$", terminal.shown), terminal.shown
    assert terminal.screen_lines == [""]


@pytest.mark.parametrize("number", INTERRUPTIONS)
def test_a_signal_at_the_programs_end_is_no_loss(runner, number):
    """It comes when all rows are there, but the report is not."""
    runner.write("a.bst", runner.line("data.bin"))
    bench = runner.script("bench_and_stop", f'{runner.bench} "$@"\nkill -STOP $PPID')
    process = runner.start("a.bst", bench=bench)
    wait_until(lambda: "T" in state_of(process))
    process.send_signal(number)
    process.send_signal(signal.SIGCONT)
    done = Done(process, *process.communicate(timeout=60))
    assert done.status == 128 + number
    assert done.verdict.startswith("1 of 1 client, 1 of 1 row, "), done.messages


def test_a_terminal_shows_the_wait(runner):
    terminal = Terminal(runner, "a.bst", fast=True)
    terminal.read("next look in")
    runner.put("a.bst", runner.line("data.bin"))
    assert terminal.end() == 0
    seconds = [60 * int(minute or 0) + int(second) for minute, second in
               re.findall(r"full minute, (?:(\d) min )?(\d+) s", terminal.shown)]
    assert len(seconds) > 3 and seconds == sorted(seconds, reverse=True) and seconds[-1] < 20
    assert "the first test begins within 4 s" in terminal.shown
    assert terminal.screen_lines[0].startswith("1 of 1 client, 1 of 1 row")
