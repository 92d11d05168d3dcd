"""marrowctl fleet publish: what it refuses, where the file goes, and that all start in one minute."""

import json
import os
import re
import signal
import time

import pytest

from conftest import ROOT
from fleet import FAST_COMMAND, Fleet, clock_at, fill_up, fleet, settings_line, small_file_system
from program_bench import DATE, wait_until

__all__ = ["fleet"]


def write(fleet, text, name="mine.bst"):
    path = fleet.control.parent / name
    path.write_text(text)
    return path


def refusals(done):
    """The sentences of a refusal."""
    told = done.stderr.split("marrowctl fleet publish: not published:\n")
    assert len(told) == 2, done.stderr
    return [line.strip() for line in told[1].splitlines()]


def test_ten_clients_start_together_at_once(fleet):
    hosts = [f"c{n:02}" for n in range(10)]
    clients = fleet.arm_all(hosts)
    done = fleet.run("publish", "--hosts", "c[00-09]", "--now", write(fleet, settings_line()))
    assert (done.returncode, done.stderr) == (0, "")
    lines = done.stdout.splitlines()
    assert lines[0] == f"{fleet.control.parent}/mine.bst as {fleet.folder}/monday.bst: 20 rows."
    assert f"  table {fleet.folder}/results.csv" in lines
    assert f"  log   {fleet.folder}/log_[host].txt" in lines
    assert f"  data  {fleet.folder}/[host]_[iter].bin" in lines
    assert re.fullmatch(r"10 clients ready, their clocks within [\d,]+ ms of each other\.", lines[4])
    assert re.fullmatch(r"Published\. The tests start at \d\d:\d\d:00, in (1 min )?\d+ s; "
                        r"clients have \d+ s to see it\.", lines[5])
    for client in clients:
        assert client.wait(timeout=120) == 0
    assert len(list((fleet.folder / "_monday_log").iterdir())) == 10
    assert {name for name in fleet.names() if name.startswith((".", "published"))} == {
        "published__monday"}


def test_note_for_those_who_watch_follows_its_schema(fleet):
    jsonschema = pytest.importorskip("jsonschema", reason="needs jsonschema")
    fleet.arm_all(["c1", "c2"])
    (fleet.folder / "results.csv").write_text("old\n")
    assert fleet.run("publish", "--clients", "2", "--now", "--again",
                     write(fleet, settings_line())).returncode == 0
    note = json.loads((fleet.folder / "published__monday").read_text())
    schema = json.loads((ROOT / "docs/schemas/published.schema.json").read_text())
    jsonschema.Draft202012Validator.check_schema(schema)
    jsonschema.validate(note, schema)
    assert note["hosts"] == ["c1", "c2"]
    assert note["tables"] == [{"path": "results.csv", "bytes": 4}]
    for name in note:
        with pytest.raises(jsonschema.ValidationError):
            jsonschema.validate({key: value for key, value in note.items() if key != name}, schema)


def test_it_appears_in_second_46_of_the_clients_clocks(fleet):
    # Where that comes soon. A slow machine may meet the next one.
    clock = clock_at(38)
    fleet.arm_all(["c1", "c2"], program=FAST_COMMAND, environment=clock)
    done = fleet.run("publish", "--hosts", "c[1-2]", write(fleet, settings_line()))
    assert (done.returncode, done.stderr) == (0, "")
    told = re.search(r"The tests start at (\S+), in (.*); clients have (\d+) s to see it", done.stdout)
    appeared = (fleet.folder / "monday.bst").stat().st_mtime + int(clock["MARROWBENCH_CLOCK_OFFSET"]) / 1e6
    # Never early; a machine that stands still may be late, and then says so. Clocks are known to some
    # milliseconds.
    assert 45.9 <= appeared % 60 < 46.5 + (59 - int(told[3])), done.stdout
    # Who finds it from then to second 44 of the next minute starts with the minute after that.
    start = (int(appeared + 0.1) + 15) // 60 * 60 + 60
    assert told[1] == time.strftime("%H:%M:%S", time.localtime(start))
    assert told[2] == "1 min 14 s"


def test_who_is_missing_is_named(fleet):
    fleet.arm_all(["c1", "c3"])
    path = write(fleet, settings_line())
    done = fleet.run("publish", "--hosts", "c[1-4]", path)
    assert done.returncode == 1
    assert refusals(done) == ["2 of 4 clients are ready: c1, c3",
                              'missing: c2, c4. "marrowctl fleet arm" makes a machine ready']
    assert refusals(fleet.run("publish", "--clients", "3", path)) == [
        "2 of 3 clients are ready: c1, c3"]
    assert "monday.bst" not in fleet.names()
    done = fleet.run("publish", "--hosts", "c1", "--now", path)
    assert done.returncode == 0
    assert "Ready, too, and starting with them: c3.\n" in done.stdout


def test_nobody_is_ready_for_another_run(fleet):
    fleet.arm_all(["c1"])
    other = Fleet(fleet.control.parent, "tuesday")
    done = other.run("publish", "--hosts", "c1", write(fleet, settings_line()))
    assert done.returncode == 1
    assert refusals(done) == ["no client is ready",
                              'missing: c1. "marrowctl fleet arm" makes a machine ready',
                              f"{other.folder} does not exist: nobody was armed for such a run"]


def test_a_client_that_was_killed_while_armed_is_named(fleet):
    clients = fleet.arm_all(["c1", "c2"])
    clients[1].kill()
    clients[1].wait(timeout=60)
    path = write(fleet, settings_line())
    # Its file is still young: nobody can know yet.
    assert fleet.run("publish", "--hosts", "c[1-2]", "--dry-run", path).returncode == 0
    old = time.time() - 200
    os.utime(fleet.folder / "ready__c2", (old, old))
    done = fleet.run("publish", "--hosts", "c[1-2]", path)
    assert done.returncode == 1
    first, second = refusals(done)
    assert first == "1 of 2 clients are ready: c1"
    assert re.fullmatch(r"c2 is gone: nobody has touched its ready file for 3 min \d+ s "
                        r"\(process \d+, armed at .*\)", second)


def test_a_client_that_leaves_during_the_waiting_is_noticed(fleet):
    clients = fleet.arm_all(["c1", "c2"], program=FAST_COMMAND, environment=clock_at(31))
    publishing = fleet.start("publish", "--hosts", "c[1-2]", write(fleet, settings_line()))
    while "It will be published" not in publishing.stdout.readline():
        pass
    clients[1].send_signal(signal.SIGTERM)
    clients[1].wait(timeout=60)
    _, err = publishing.communicate(timeout=120)
    assert publishing.returncode == 1
    assert "1 of 2 clients are ready: c1" in err and "missing: c2" in err
    assert "monday.bst" not in fleet.names()
    assert not any(name.startswith(".") for name in fleet.names()), "no draft stays"


def test_a_file_that_somebody_else_has_put_there_meanwhile_stays(fleet):
    fleet.arm_all(["c1"], program=FAST_COMMAND, environment=clock_at(31))
    publishing = fleet.start("publish", "--hosts", "c1", write(fleet, settings_line()))
    while "It will be published" not in publishing.stdout.readline():
        pass
    (fleet.folder / "monday.bst").write_text("# another one\n")
    _, err = publishing.communicate(timeout=120)
    assert publishing.returncode == 1
    assert f"{fleet.folder}/monday.bst is there already: a run needs a name of its own" in err
    assert (fleet.folder / "monday.bst").read_text() == "# another one\n"
    assert "published__monday" not in fleet.names()


def test_of_two_who_publish_the_same_run_one_does(fleet):
    fleet.arm_all(["c1"], program=FAST_COMMAND, environment=clock_at(31))
    publishing = fleet.start("publish", "--hosts", "c1", write(fleet, settings_line()))
    wait_until(lambda: any(name.startswith(".monday.bst.") for name in fleet.names()))
    second = fleet.run("publish", "--now", "--hosts", "c1", write(fleet, settings_line(iterations=7)))
    assert second.returncode == 2
    assert refusals(second) == [
        f"{fleet.folder}/.monday.bst.draft is there: somebody else is publishing this run. "
        "If nobody is, delete the .draft files beside it"]
    _, err = publishing.communicate(timeout=120)
    assert (publishing.returncode, err) == (0, "")
    assert not any(name.startswith(".") for name in fleet.names())


@pytest.mark.parametrize("number", [signal.SIGTERM, signal.SIGINT, signal.SIGHUP])
def test_a_signal_during_the_waiting_leaves_nothing(fleet, number):
    fleet.arm_all(["c1"], program=FAST_COMMAND, environment=clock_at(50))
    before = fleet.names()
    publishing = fleet.start("publish", "--hosts", "c1", write(fleet, settings_line()))
    wait_until(lambda: any(name.startswith(".monday.bst.") for name in fleet.names()))
    publishing.send_signal(number)
    _, err = publishing.communicate(timeout=60)
    assert (publishing.returncode, err) == (
        128 + number, "marrowctl fleet publish: not published: ended by a signal\n")
    assert fleet.names() - {"console__c1"} == before - {"console__c1"}


def test_a_clock_that_is_90_seconds_off_is_named(fleet):
    for host, seconds in (("c1", 0), ("c2", 90), ("c3", 0)):
        fleet.arm(host, program=FAST_COMMAND, environment={
            "MARROWBENCH_CLOCK_SPEED": "1",
            "MARROWBENCH_CLOCK_OFFSET": str(seconds * 1_000_000)})
    for host in ("c1", "c2", "c3"):
        wait_until(lambda host=host: fleet.ready(host), 120)
    done = fleet.run("publish", "--hosts", "c[1-3]", write(fleet, settings_line()))
    assert done.returncode == 1
    first, second = refusals(done)
    assert re.fullmatch(r"the clock of c2 is (90\.\d|89\.9) s ahead of the others'", first)
    assert "set them, as chrony or NTP do" in second


def test_the_moment_is_that_of_the_clients_clocks(fleet):
    """Where all of them are 30 s ahead of the share's, their second 46 is its second 16."""
    fleet.arm("c1", program=FAST_COMMAND, environment={
        "MARROWBENCH_CLOCK_SPEED": "1", "MARROWBENCH_CLOCK_OFFSET": str(30_000_000)})
    wait_until(lambda: fleet.ready("c1"))
    done = fleet.run("publish", "--hosts", "c1", "--dry-run", write(fleet, settings_line()))
    assert done.returncode == 0
    start = re.search(r"for a start at (\d\d):(\d\d):00", done.stdout)
    wait = re.search(r"It would be published in (?:(\d+) min )?(\d+) s", done.stdout)
    seconds = 60 * int(wait[1] or 0) + int(wait[2])
    # The time since then is not known exactly, but the minute of the start by the client's clock.
    clients_time = time.localtime(time.time() + seconds + 30)
    minutes = (int(start[1]) * 60 + int(start[2]) - clients_time.tm_hour * 60 - clients_time.tm_min)
    assert minutes % 1440 in (1, 2)
    assert "monday.bst" not in fleet.names()


def test_what_an_earlier_run_left_is_refused(fleet):
    fleet.arm_all(["c1"])
    (fleet.folder / "results.csv").write_text("")
    (fleet.folder / "results.csv_lock.txt").write_text("")
    (fleet.folder / "_monday_log").mkdir()
    (fleet.folder / "_monday_log/done__c1").write_text("done")
    path = write(fleet, settings_line())
    done = fleet.run("publish", "--hosts", "c1", path)
    assert done.returncode == 1
    assert refusals(done) == [
        "of an earlier run there is still a done marker, by which the client would seem to have "
        f"ended: {fleet.folder}/_monday_log/done__c1",
        "of an earlier run there is still a table, to which the rows would be added: "
        f"{fleet.folder}/results.csv",
        "of an earlier run there is still a lock, for which clients would wait: "
        f"{fleet.folder}/results.csv_lock.txt",
        'delete what is left, or let it stay with "marrowctl fleet publish --again"']
    assert fleet.run("publish", "--hosts", "c1", "--again", "--now", path).returncode == 0


def test_a_run_is_published_once(fleet):
    fleet.arm_all(["c1"])
    path = write(fleet, settings_line())
    assert fleet.run("publish", "--hosts", "c1", "--now", path).returncode == 0
    done = fleet.run("publish", "--hosts", "c1", "--now", "--again", path)
    assert done.returncode == 1
    assert f"{fleet.folder}/monday.bst is there already: a run needs a name of its own" in done.stderr


def test_errors_that_check_finds_refuse_it(fleet):
    fleet.arm_all(["c1"])
    # An error that a comment allows: publishing does not obey that.
    path = write(fleet, "# marrowctl: allow bad-number\nposix;0;0;0;x;0;4;1;0;MEMORY;a;;b.csv;true\n")
    done = fleet.run("publish", "--hosts", "c1", "--now", path)
    assert done.returncode == 2
    assert f"{fleet.folder}/monday.bst:2:13: error:" in done.stderr
    assert "check finds errors in the settings file, at its new place" in done.stderr
    assert "monday.bst" not in fleet.names()


def test_warnings_are_shown_unless_they_are_allowed(fleet):
    fleet.arm_all(["c1", "c2"])
    line = "posix;0;0;0;4;0;4;1;0;MEMORY;same.bin; ;[host].csv;true\n"
    done = fleet.run("publish", "--clients", "2", "--dry-run", write(fleet, line))
    assert done.returncode == 0 and "[shared-destination]" in done.stderr
    allowed = "# marrowctl: allow shared-destination\n" + line
    done = fleet.run("publish", "--clients", "2", "--dry-run", write(fleet, allowed))
    assert (done.returncode, done.stderr) == (0, "")


def test_chained_files_are_taken_along(fleet):
    (client,) = fleet.arm_all(["c1"])
    write(fleet, settings_line(table="second.csv"), "second.bst")
    path = write(fleet, settings_line() + "[cfgPath]second.bst\n", "first.bst")
    assert fleet.run("publish", "--hosts", "c1", "--now", path).returncode == 0
    assert client.wait(timeout=120) == 0
    assert {"monday.bst", "second.bst", "results.csv", "second.csv"} <= fleet.names()


def test_settings_may_come_from_the_standard_input(fleet):
    fleet.arm_all(["c1"])
    with open(write(fleet, settings_line()), encoding="utf-8") as text:
        done = fleet.run("publish", "--hosts", "c1", "--now", "-", stdin=text)
    assert done.returncode == 0, done.stderr
    assert done.stdout.startswith(f"- as {fleet.folder}/monday.bst: 2 rows.\n")
    assert (fleet.folder / "monday.bst").read_text() == settings_line()


def test_placeholders_that_read_differently_are_told(fleet):
    fleet.arm_all(["c1"])
    path = write(fleet, "posix;0;0;0;4;0;4;1;0;MEMORY;[host];;[cfgNameID].csv;true\n", "first7.bst")
    done = fleet.run("publish", "--hosts", "c1", "--dry-run", path)
    assert "  [cfgNameID] is monday there, not first7\n" in done.stdout


def test_dry_run_publishes_nothing(fleet):
    fleet.arm_all(["c1"])
    before = fleet.names() | {"console__c1"}
    done = fleet.run("publish", "--hosts", "c1", "--dry-run", write(fleet, settings_line()))
    assert (done.returncode, done.stderr) == (0, "")
    assert re.search(r"It would be published in .*, for a start at \d\d:\d\d:00\.\n$", done.stdout)
    assert fleet.names() <= before


@pytest.mark.skipif(os.geteuid() != 0, reason="mounts a small file system")
def test_a_full_share_is_told(fleet):
    with small_file_system(fleet.folder):
        fleet.arm_all(["c1"])
        fill_up(fleet.folder)
        done = fleet.run("publish", "--hosts", "c1", "--now", write(fleet, settings_line()))
        assert done.returncode == 2
        assert refusals(done) == [f"{fleet.folder}/monday.bst: No space left on device"]
        assert "monday.bst" not in fleet.names()
        assert not any(name.startswith(".monday") for name in fleet.names())


@pytest.mark.parametrize("arguments, message", [
    ("--control . --run x", "name a settings file"),
    ("--control . --run x a.bst", "say which clients: --hosts LIST, or how many: --clients N"),
    ("--control . --run x --clients 1 a.bst b.bst", "too much: b.bst"),
    ("--control . --run x --clients 1 --hosts c1 a.bst", "--hosts excludes --clients"),
    ("--control . --run x --hosts c[2-1] a.bst", "--hosts: [2-1] is no range of numbers"),
])
def test_wrong_usage_is_told(ctl, arguments, message):
    done = ctl.run("fleet", "publish", *arguments.split())
    assert (done.returncode, done.stdout) == (64, "")
    assert done.stderr == f"marrowctl fleet publish: {message}\nSee: marrowctl fleet publish --help\n"


@pytest.mark.parametrize("arguments, message", [
    ("--control missing --run x --clients 1 a.bst",
     "missing: No such file or directory. Is the share mounted here?"),
    ("--control . --run x --clients 1 missing.bst", "missing.bst: No such file or directory"),
    ("--control . --run x --hosts ./none a.bst", "./none: No such file or directory"),
])
def test_what_cannot_be_done_is_told(ctl, arguments, message):
    ctl.good("a.bst")
    done = ctl.run("fleet", "publish", *arguments.split())
    assert done.returncode == 2 and message in done.stderr
