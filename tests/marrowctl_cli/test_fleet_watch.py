"""marrowctl fleet watch: what it shows on terminals and elsewhere, and when it ends with which status."""

import json
import os
import re
import shutil
import signal
import subprocess
import time

import pytest

from conftest import COMMAND, EMULATOR, ROOT
from fleet import fleet, settings_line
from program_bench import wait_until
from screen import Terminal

__all__ = ["fleet"]

TIME = r"\d\d:\d\d:\d\d"
SIGNALS = [signal.SIGTERM, signal.SIGINT, signal.SIGHUP]


@pytest.fixture
def terminal():
    made = []

    def make(columns=80, rows=24):
        made.append(Terminal(columns, rows))
        return made[-1]

    yield make
    for each in made:
        each.close()


def put(fleet, text, name=None):
    """Makes a settings file that is complete at once."""
    path = fleet.folder / (name or f"{fleet.run_name}.bst")
    draft = fleet.folder / "draft"
    draft.write_text(text)
    draft.rename(path)
    return path


def pretend_ready(fleet, *hosts):
    """Ready files of clients that are touched just now, without their programs."""
    fleet.folder.mkdir(exist_ok=True)
    for host in hosts:
        (fleet.folder / f"ready__{host}").write_text("{}\n")


def mark(fleet, *hosts, folder="_monday_log"):
    (fleet.folder / folder).mkdir(exist_ok=True)
    for host in hosts:
        (fleet.folder / folder / f"done__{host}").write_text("done")


def add_rows(fleet, host, rows=2, table="results.csv"):
    with (fleet.folder / table).open("a") as file:
        for iteration in range(rows):
            file.write("Nov 16. 02:21.29,Posix,Write,,,0,4096,4,0,4,2,0,MEMORY,,"
                       f"{fleet.folder}/{host}_{iteration}.bin,,,0,52,393846,100,,,,,,,,,,,,,\n\n")


def lacks(done):
    told = done.stderr.split("marrowctl fleet watch: the run is not complete:\n")
    assert len(told) == 2, done.stderr
    return [line.strip() for line in told[1].splitlines()]


def old(path, seconds):
    then = time.time() - seconds
    os.utime(path, (then, then))


def test_a_complete_run_ends_it(fleet):
    clients = fleet.arm_all(["c1", "c2", "c3"])
    watching = fleet.start("watch", "--timeout", "5m")
    first = watching.stdout.readline()
    assert re.fullmatch(rf"{TIME} monday waits for its settings file: 3 ready\n", first)
    put(fleet, settings_line())
    out, err = watching.communicate(timeout=120)
    assert (watching.returncode, err) == (0, "")
    lines = out.splitlines()
    assert re.fullmatch(rf"{TIME} monday complete: 3 done; rows 6 of 6; last row \d+ s ago; no lock", lines[-1])
    for client in clients:
        assert client.wait(timeout=60) == 0


def test_what_is_not_complete_when_the_time_is_up_is_named(fleet):
    pretend_ready(fleet, "c1", "c2", "c3", "c4")
    put(fleet, settings_line())
    add_rows(fleet, "c1")
    add_rows(fleet, "c2", rows=1)
    mark(fleet, "c1")
    (fleet.folder / "ready__c4").unlink()
    (fleet.folder / "finished__c4").write_text(json.dumps(
        {"schema": "marrowctl.finished/1", "host": "c4", "run": "monday", "time": "", "status": 143,
         "message": "ended by Terminated"}))
    done = fleet.run("watch", "--hosts", "c[1-5]", "--timeout", "0")
    assert done.returncode == 1
    told = lacks(done)
    assert told[:2] == ["missing: c4: it has ended before its last marker: ended by Terminated",
                        "missing: c5: it never came"]
    assert set(told[2:-1]) == {"still running: c2", "still ready: c3"}
    assert told[-1] == "7 of 10 rows missing, of c2 (1), c3 (2), c4 (2), c5 (2)"


def test_a_time_limit_is_kept(fleet):
    pretend_ready(fleet, "c1")
    before = time.monotonic()
    done = fleet.run("watch", "--timeout", "2s")
    assert time.monotonic() - before >= 2
    assert (done.returncode, lacks(done)) == (1, ["nothing has been published for this run yet"])


def test_stale_markers_do_not_count(fleet):
    pretend_ready(fleet, "c1", "c2")
    mark(fleet, "c1", "c2")
    old(fleet.folder / "_monday_log/done__c2", 7 * 86_400)
    old(put(fleet, settings_line()), 60)
    for host in ("c1", "c2"):
        add_rows(fleet, host)
    done = fleet.run("watch", "--timeout", "0", "--json")
    assert done.returncode == 1
    hosts = {each["host"]: each for each in json.loads(done.stdout)["hosts"]}
    assert (hosts["c1"]["state"], hosts["c1"]["markers"]) == ("done", 1)
    assert (hosts["c2"]["state"], hosts["c2"]["markers"]) == ("running", 0)


def test_it_ends_soon_when_nobody_is_left(fleet):
    pretend_ready(fleet, "c1")
    put(fleet, settings_line())
    add_rows(fleet, "c1", rows=1)
    mark(fleet, "c1")
    before = time.monotonic()
    done = fleet.run("watch")
    # What was written last may come late.
    assert time.monotonic() - before >= 5
    assert (done.returncode, lacks(done)) == (1, ["1 of 2 rows missing, of c1 (1)"])


def test_it_ends_when_all_have_given_up_before_publication(fleet):
    fleet.folder.mkdir(exist_ok=True)
    note = {"schema": "marrowctl.finished/1", "status": 1, "message": "gave up after 20 s"}
    for host in ("c1", "c2"):
        (fleet.folder / f"finished__{host}").write_text(json.dumps(note) + "\n")
    done = fleet.run("watch")
    assert (done.returncode, lacks(done)) == (1, [
        "nothing has been published for this run yet",
        "missing: c1, c2: it has ended before its last marker: gave up after 20 s"])
    # Those of an earlier attempt may be armed again.
    for host in ("c1", "c2"):
        old(fleet.folder / f"finished__{host}", 3600)
    done = fleet.run("watch", "--timeout", "12")
    assert done.returncode == 1 and done.stdout.splitlines()[-1].count("waits for its settings file") == 1


def test_clients_of_an_earlier_run_do_not_count(fleet):
    pretend_ready(fleet, "c1", "gone")
    old(fleet.folder / "ready__gone", 3600)
    (fleet.folder / "finished__ended").write_text("{}\n")
    old(fleet.folder / "finished__ended", 3600)
    put(fleet, settings_line())
    add_rows(fleet, "c1")
    mark(fleet, "c1")
    done = fleet.run("watch", "--timeout", "0")
    assert (done.returncode, done.stderr) == (0, "")
    # Unless they are wanted.
    done = fleet.run("watch", "--timeout", "0", "--hosts", "c1,gone")
    assert done.returncode == 1
    assert re.fullmatch(r"missing: gone: it is gone: nobody has touched its ready file for 1 h 0 min \d+ s",
                        lacks(done)[0])


def test_json_follows_its_schema(fleet):
    jsonschema = pytest.importorskip("jsonschema", reason="needs jsonschema")
    schema = json.loads((ROOT / "docs/schemas/watch.schema.json").read_text())
    jsonschema.Draft202012Validator.check_schema(schema)
    early = fleet.run("watch", "--timeout", "0", "--json", "--clients", "2")
    assert early.returncode == 1
    jsonschema.validate(json.loads(early.stdout), schema)
    pretend_ready(fleet, "c1")
    put(fleet, settings_line() + "[cfgPath]monday-2.bst\n")
    add_rows(fleet, "c1")
    (fleet.folder / "results.csv_lock.txt").write_text("")
    done = fleet.run("watch", "--timeout", "0", "--json", "--clients", "2")
    assert done.returncode == 1
    answer = json.loads(done.stdout)
    jsonschema.validate(answer, schema)
    assert answer["complete"] is False
    assert answer["clients"] == {"expected": 2, "ready": 0, "running": 1, "done": 0, "late": 0, "missing": 1}
    assert answer["rows"] == {"expected": 4, "found": 2}
    assert answer["awaited"] == f"{fleet.folder}/monday-2.bst"
    assert re.search(r":00[+-]\d\d:\d\d$", answer["start"]), "the full minute"
    assert [lock["path"] for lock in answer["locks"]] == [f"{fleet.folder}/results.csv_lock.txt"]
    assert answer["hosts"] == [{"host": "c1", "state": "running", "rows": 2, "markers": 0, "reason": ""}]
    for name in answer:
        with pytest.raises(jsonschema.ValidationError):
            jsonschema.validate({key: value for key, value in answer.items() if key != name}, schema)


def drawn_runs(terminal, fleet, columns, rows=24):
    """The screen at the end of a run of three clients that was watched there."""
    screen = terminal(columns, rows)
    clients = fleet.arm_all(["c1", "c2", "c3"])
    watching = fleet.start("watch", stdout=screen.side, environment={"LC_ALL": "C.UTF-8"})
    screen.read_until(lambda it: any("3 ready" in line for line in it.screen.shown()))
    assert not screen.screen.cursor_is_shown
    put(fleet, settings_line())
    assert screen.read_to_the_end(watching) == 0, screen.text
    for client in clients:
        assert client.wait(timeout=60) == 0
    return screen


@pytest.mark.parametrize("columns", [80, 200])
def test_a_terminal_shows_a_table_that_is_drawn_in_its_place(terminal, fleet, columns):
    screen = drawn_runs(terminal, fleet, columns)
    lines = screen.screen.shown()
    assert re.fullmatch(rf"monday: complete +{TIME}", lines[0]) and len(lines[0]) == columns
    assert lines[1] == "Clients   0 ready   0 running   3 done   0 late   0 missing"
    assert re.fullmatch(r"Rows      █+  6 of 6", lines[2])
    assert re.fullmatch(r"Last row  \d+ s ago   no lock", lines[3])
    assert lines[4] == ""
    assert lines[5].split("  ") == ["c1 done 2/2", "c2 done 2/2", "c3 done 2/2"]
    assert lines[6:] == [""], "one table, and the cursor behind it"
    assert screen.screen.wrapped == 0
    assert screen.screen.cursor_is_shown


def test_a_narrow_terminal_shows_who_is_missing(terminal, fleet):
    pretend_ready(fleet, "c1")
    screen = terminal(40, 24)
    watching = fleet.start("watch", "--timeout", "0", "--hosts", "c1,c2", stdout=screen.side)
    assert screen.read_to_the_end(watching) == 1
    assert screen.screen.shown()[1] == "Clients   1 ready   1 missing"


def test_what_cannot_be_shown_is_told(fleet):
    pretend_ready(fleet, "c1")
    with open("/dev/full", "w") as full:
        watching = fleet.start("watch", "--timeout", "0", stdout=full)
        _, err = watching.communicate(timeout=60)
    assert (watching.returncode, err) == (2, "marrowctl fleet watch: the standard output can't be written\n")


def test_thousands_of_clients_fit_the_terminal(terminal, fleet):
    pretend_ready(fleet, *(f"client{number:04}" for number in range(1000)))
    put(fleet, settings_line())
    for columns, rows in ((80, 24), (200, 50)):
        screen = terminal(columns, rows)
        watching = fleet.start("watch", "--timeout", "0", stdout=screen.side)
        assert screen.read_to_the_end(watching) == 1
        lines = screen.screen.shown()
        assert len(lines) == rows and screen.screen.wrapped == 0
        assert re.search(r"and \d{3} more$", lines[-2])


def test_a_terminal_without_codes_gets_plain_lines(terminal, fleet):
    pretend_ready(fleet, "c1")
    screen = terminal()
    watching = fleet.start("watch", "--timeout", "0", stdout=screen.side, environment={"TERM": "dumb"})
    assert screen.read_to_the_end(watching) == 1
    assert "\x1b" not in screen.text
    assert re.fullmatch(rf"{TIME} monday waits for its settings file: 1 ready\r\n", screen.text)


def test_no_color_is_obeyed(terminal, fleet):
    pretend_ready(fleet, "c1")
    for value, has_colour in (("", True), ("1", False)):
        screen = terminal()
        watching = fleet.start("watch", "--timeout", "0", stdout=screen.side,
                               environment={"NO_COLOR": value, "TERM": "xterm"})
        assert screen.read_to_the_end(watching) == 1
        assert (re.search(r"\x1b\[[\d;]*m", screen.text) is not None) is has_colour


@pytest.mark.parametrize("number", [*SIGNALS, signal.SIGQUIT])
def test_a_signal_leaves_the_terminal_as_it_was(terminal, fleet, number):
    pretend_ready(fleet, "c1")
    screen = terminal()
    watching = fleet.start("watch", stdout=screen.side, stderr=screen.side)
    screen.read_until(lambda it: "1 ready" in it.text)
    assert not screen.screen.cursor_is_shown
    watching.send_signal(number)
    status = screen.read_to_the_end(watching)
    assert status == (-number if number == signal.SIGQUIT else 128 + number)
    assert screen.screen.cursor_is_shown
    assert screen.screen.column == 0, "the shell's prompt stands behind the table"


def test_a_stop_shows_the_cursor_and_the_table_goes_on_below(terminal, fleet):
    pretend_ready(fleet, "c1")
    screen = terminal()
    # In the tests' session: a group that nobody could continue is not stopped.
    watching = fleet.start("watch", stdout=screen.side, start_new_session=False, process_group=0)
    screen.read_until(lambda it: "1 ready" in it.text)
    watching.send_signal(signal.SIGTSTP)
    wait_until(lambda: os.waitid(os.P_PID, watching.pid, os.WSTOPPED | os.WNOHANG | os.WNOWAIT))
    # The kernel hands on what was written a moment later.
    screen.read_until(lambda it: it.screen.cursor_is_shown)
    # As a shell writes there meanwhile.
    os.write(screen.side, b"[1]+  Stopped\n")
    watching.send_signal(signal.SIGCONT)
    shown_before = screen.text.count("monday:")
    screen.read_until(lambda it: it.text.count("monday:") > shown_before)
    assert not screen.screen.cursor_is_shown
    lines = screen.screen.shown()
    assert lines.index("[1]+  Stopped") > 0
    assert [line[:7] for line in lines].count("monday:") == 2
    watching.send_signal(signal.SIGINT)
    assert screen.read_to_the_end(watching) == 128 + signal.SIGINT
    assert screen.screen.cursor_is_shown


def test_a_signal_elsewhere_has_its_status(fleet):
    pretend_ready(fleet, "c1")
    for number in SIGNALS:
        watching = fleet.start("watch")
        watching.stdout.readline()
        watching.send_signal(number)
        watching.communicate(timeout=60)
        assert watching.returncode == 128 + number


FOLDER_OPENED = re.compile(r'openat\(AT_FDCWD, "([^"]+)", [^)]*O_DIRECTORY')


def opened_by_watch(fleet):
    """What watch opens in four seconds, as strace tells it, and the seconds that it took."""
    trace = fleet.control.parent / "trace"
    before = time.monotonic()
    subprocess.run(["strace", "-f", "-o", trace, "-e", "trace=openat", *COMMAND, "fleet", "watch", *fleet.place(),
                    "--timeout", "4s"], capture_output=True, timeout=120)
    return trace.read_text(), time.monotonic() - before


@pytest.mark.skipif(bool(EMULATOR) or shutil.which("strace") is None, reason="needs strace")
def test_each_folder_is_read_once_a_second_at_most(fleet):
    pretend_ready(fleet, *(f"c{number}" for number in range(100)))
    put(fleet, settings_line())
    mark(fleet, *(f"c{number}" for number in range(50)))
    opened, seconds = opened_by_watch(fleet)
    folders = FOLDER_OPENED.findall(opened)
    for folder in (fleet.folder, fleet.folder / "_monday_log"):
        # One look at once, another one when the time is up.
        assert 2 <= folders.count(str(folder)) <= seconds + 2


@pytest.mark.skipif(bool(EMULATOR) or shutil.which("strace") is None, reason="needs strace")
def test_what_clients_of_shares_remember_is_asked_again(fleet):
    """That a table was not there, and the time of a marker which is then written anew: by opening its folder, and
    the marker."""
    tables = fleet.control.parent / "tables"
    tables.mkdir()
    pretend_ready(fleet, "c1", "c2")
    put(fleet, settings_line(table=f"{tables}/[host]/res.csv") + settings_line(table=f"{tables}/results.csv"))
    mark(fleet, "c1")
    old(fleet.folder / "_monday_log/done__c1", 86_400)
    opened, seconds = opened_by_watch(fleet)
    folders = FOLDER_OPENED.findall(opened)
    assert 2 <= folders.count(str(tables)) <= seconds + 2
    assert f'"{fleet.folder}/_monday_log/done__c1"' in opened


def test_tables_with_the_date_in_their_names_are_counted(fleet):
    (client,) = fleet.arm_all(["c1"])
    watching = fleet.start("watch", "--timeout", "5m")
    put(fleet, settings_line(iterations=3, table="res_[date].csv"))
    out, err = watching.communicate(timeout=120)
    assert (watching.returncode, err) == (0, ""), out
    assert "rows 3 of 3" in out.splitlines()[-1]
    assert client.wait(timeout=60) == 0


def test_a_share_that_cannot_be_read_for_a_while_is_shown_and_ends_nothing(fleet):
    pretend_ready(fleet, "c1")
    watching = fleet.start("watch", "--timeout", "5m")
    watching.stdout.readline()
    aside = fleet.control / "aside"
    fleet.folder.rename(aside)
    fleet.folder.write_text("no folder")
    told = f"monday can't be seen: {fleet.folder}: Not a directory: "
    while told not in (line := watching.stdout.readline()):
        assert line, watching.stderr.read()
    fleet.folder.unlink()
    aside.rename(fleet.folder)
    put(fleet, settings_line())
    add_rows(fleet, "c1")
    mark(fleet, "c1")
    out, err = watching.communicate(timeout=120)
    assert (watching.returncode, err) == (0, ""), out


def test_it_changes_nothing(fleet):
    pretend_ready(fleet, "c1")
    put(fleet, settings_line())
    before = {path: path.stat().st_mtime_ns for path in fleet.control.rglob("*")}
    assert fleet.run("watch", "--timeout", "2s").returncode == 1
    after = {path: path.stat().st_mtime_ns for path in fleet.control.rglob("*")}
    assert after == before


@pytest.mark.parametrize("arguments, message", [
    ("--run x", "--control: name a folder on the share"),
    ("--control . --run x y", "too much: y"),
    ("--control . --run x --timeout soon", "--timeout: soon is no time such as"),
])
def test_wrong_usage_is_told(ctl, arguments, message):
    done = ctl.run("fleet", "watch", *arguments.split())
    assert (done.returncode, done.stdout) == (64, "")
    assert done.stderr.startswith(f"marrowctl fleet watch: {message}")


def test_a_missing_folder_is_told(ctl):
    done = ctl.run("fleet", "watch", "--control", "missing", "--run", "x")
    assert done.returncode == 2
    assert done.stderr == (f"marrowctl fleet watch: {ctl.folder}/missing: No such file or directory. "
                           "Is the share mounted here?\n")
