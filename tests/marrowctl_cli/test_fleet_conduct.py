"""marrowctl fleet conduct: each phase begins when all clients have left their markers for the one before."""

import os
import re
import signal
import time

import pytest

from fleet import fleet, settings_line
from program_bench import wait_until

__all__ = ["fleet"]

READ = "posix;0;0;0;4;0;0;1;0;[host]_0.bin;MEMORY;log_[host].txt;{table};{mark}\n"


def phases(fleet, *texts):
    paths = []
    for number, text in enumerate(texts, start=1):
        paths.append(fleet.control.parent / f"phase{number}.bst")
        paths[-1].write_text(text)
    return paths


def reasons(done, problem):
    told = done.stderr.split(f"marrowctl fleet conduct: {problem}:\n")
    assert len(told) == 2, done.stderr
    return [line.strip() for line in told[1].splitlines()]


def markers(fleet, phase):
    name = "_monday_log" if phase == 1 else f"_monday-{phase}_log"
    return {path.name: path.stat().st_mtime_ns for path in (fleet.folder / name).iterdir()}


def test_three_phases_follow_one_another(fleet):
    hosts = ["c1", "c2", "c3", "c4"]
    clients = fleet.arm_all(hosts)
    paths = phases(fleet, settings_line(), READ.format(table="second.csv", mark="true"),
                   READ.format(table="results.csv", mark="true"))
    done = fleet.run("conduct", "--hosts", "c[1-4]", "--now", *paths)
    assert (done.returncode, [line for line in done.stderr.splitlines() if "marrowctl" in line]) == (0, [])
    assert re.findall(r"^(Published\.|Phase \d of \d is done\.)", done.stdout, re.MULTILINE) == [
        "Published.", "Phase 1 of 3 is done.", "Published.", "Phase 2 of 3 is done.", "Published.",
        "Phase 3 of 3 is done."]
    for client in clients:
        assert client.wait(timeout=120) == 0
    for phase in (2, 3):
        before = markers(fleet, phase - 1)
        assert set(before) == {f"done__{host}" for host in hosts}
        appeared = (fleet.folder / f"monday-{phase}.bst").stat().st_mtime_ns
        assert max(before.values()) <= appeared <= min(markers(fleet, phase).values())
    assert (fleet.folder / "monday.bst").read_text() == settings_line() + "[cfgPath]monday-2.bst\n"
    assert not (fleet.folder / "monday-3.bst").read_text().endswith(".bst\n")
    assert (fleet.folder / "results.csv").read_text().count("Posix") == 4 * 2 + 4
    # Who comes later sees the same: the third phase's table was not there before the run.
    later = fleet.run("watch", "--hosts", "c[1-4]", "--timeout", "0")
    assert (later.returncode, later.stderr) == (0, ""), later.stdout


def test_a_marker_of_an_earlier_run_ends_no_phase(fleet):
    fleet.folder.mkdir()
    (fleet.folder / "_monday_log").mkdir()
    stale = fleet.folder / "_monday_log/done__c2"
    stale.write_text("done")
    os.utime(stale, (1_600_000_000, 1_600_000_000))
    clients = fleet.arm_all(["c1", "c2"])
    paths = phases(fleet, settings_line(), READ.format(table="second.csv", mark="true"))
    refused = fleet.run("conduct", "--hosts", "c[1-2]", "--now", *paths)
    assert refused.returncode == 1
    assert f"ended: {stale}" in reasons(refused, "not published")[0]
    done = fleet.run("conduct", "--hosts", "c[1-2]", "--now", "--again", *paths)
    assert done.returncode == 0, done.stderr
    for client in clients:
        assert client.wait(timeout=120) == 0
    assert max(markers(fleet, 1).values()) <= (fleet.folder / "monday-2.bst").stat().st_mtime_ns


def test_a_phase_whose_end_nobody_could_see_is_refused(fleet):
    fleet.arm_all(["c1"])
    for number, texts in ((1, (settings_line().replace("true", "false"), settings_line(table="b.csv"))),
                          (2, (settings_line(), READ.format(table="b.csv", mark="false")))):
        done = fleet.run("conduct", "--hosts", "c1", "--now", *phases(fleet, *texts))
        assert done.returncode == 1
        assert reasons(done, "not published") == [
            f"phase {number}, {fleet.control.parent}/phase{number}.bst: no line asks for the done marker "
            '("true" in the last field): nobody could see the end of this phase']
        assert not any(name.endswith(".bst") for name in fleet.names())


def test_what_would_stop_a_later_phase_is_told_before_the_first(fleet):
    fleet.arm_all(["c1"])
    done = fleet.run("conduct", "--hosts", "c1", "--now", *phases(
        fleet, settings_line(), "posix;0;0;0;x;0;4;1;0;MEMORY;a; ;b.csv;true\n"))
    assert done.returncode == 2
    assert reasons(done, "not published") == ["check finds errors in the settings file, at its new place"]
    assert "monday-2.bst:1:" in done.stderr, "what is wrong is told, of the phase where it is"
    assert "monday.bst" not in fleet.names()
    missing = fleet.control.parent / "missing.bst"
    done = fleet.run("conduct", "--hosts", "c1", "--now", *phases(fleet, settings_line()), missing)
    assert done.returncode == 2
    assert reasons(done, "not published") == [f"{missing}: No such file or directory"]


def test_phases_may_not_bring_the_same_file(fleet):
    fleet.arm_all(["c1"])
    (fleet.control.parent / "more.bst").write_text(settings_line(table="more.csv"))
    chained = settings_line() + "[cfgPath]more.bst\n"
    done = fleet.run("conduct", "--hosts", "c1", "--now", *phases(fleet, chained, chained))
    assert done.returncode == 1
    assert reasons(done, "not published") == [
        f"phases 1 and 2 both bring {fleet.folder}/more.bst: give the files that they chain to different names"]
    assert "monday.bst" not in fleet.names()


def test_a_phase_may_be_several_files(fleet):
    (client,) = fleet.arm_all(["c1"])
    (fleet.control.parent / "more.bst").write_text(settings_line(table="more.csv"))
    done = fleet.run("conduct", "--hosts", "c1", "--now", *phases(
        fleet, settings_line() + "[cfgPath]more.bst\n", READ.format(table="results.csv", mark="true")))
    assert done.returncode == 0, done.stderr
    assert client.wait(timeout=120) == 0
    more = (fleet.folder / "_more_log/done__c1").stat().st_mtime_ns
    assert more <= (fleet.folder / "monday-2.bst").stat().st_mtime_ns


# A chunk, then a pause of an hour by the clients' fast clock, which is a minute.
SLOW = "posix;0;0;3600000;4;0;64;1;0;MEMORY;[host].bin;;results.csv;true\n"


def test_a_client_that_is_killed_in_a_phase_stops_the_next(fleet):
    clients = fleet.arm_all(["c1", "c2"])
    conducting = fleet.start("conduct", "--hosts", "c[1-2]", "--now",
                             *phases(fleet, SLOW, READ.format(table="second.csv", mark="true")))
    wait_until(lambda: (fleet.folder / "c2.bin").exists())
    clients[1].kill()
    clients[1].wait(timeout=60)
    # As if nobody had touched it for so long.
    then = time.time() - 200
    os.utime(fleet.folder / "ready__c2", (then, then))
    out, err = conducting.communicate(timeout=120)
    assert conducting.returncode == 1 and "Phase 1" not in out
    told = err.split("marrowctl fleet conduct: phase 1 is not complete:\n")[1]
    assert re.search(r"^  missing: c2: it is gone: nobody has touched its ready file for 3 min \d+ s$", told,
                     re.MULTILINE)
    assert (f"phase 2 would start without them, and is not published: the other clients wait for "
            f"{fleet.folder}/monday-2.bst until they are ended, or give up\n") in told
    assert "monday-2.bst" not in fleet.names()


def test_a_client_that_ends_in_a_phase_stops_the_next(fleet):
    clients = fleet.arm_all(["c1", "c2"])
    conducting = fleet.start("conduct", "--hosts", "c[1-2]", "--now",
                             *phases(fleet, SLOW, READ.format(table="second.csv", mark="true")))
    wait_until(lambda: (fleet.folder / "c2.bin").exists())
    clients[1].send_signal(signal.SIGTERM)
    _, err = conducting.communicate(timeout=120)
    assert conducting.returncode == 1
    assert "missing: c2: it has ended before its last marker: ended by Terminated\n" in err


def test_a_time_limit_is_kept(fleet):
    fleet.arm_all(["c1"])
    done = fleet.run("conduct", "--hosts", "c1", "--now", "--timeout", "2s", *phases(fleet, SLOW, SLOW))
    assert done.returncode == 1
    told = reasons(done, "phase 1 is not complete")
    assert told[0] in ("still ready: c1", "still running: c1")
    assert "monday-2.bst" not in fleet.names()


@pytest.mark.parametrize("number", [signal.SIGTERM, signal.SIGINT, signal.SIGHUP])
def test_a_signal_ends_it_between_phases(fleet, number):
    fleet.arm_all(["c1"])
    conducting = fleet.start("conduct", "--hosts", "c1", "--now", *phases(fleet, SLOW, SLOW))
    wait_until(lambda: (fleet.folder / "c1.bin").exists())
    conducting.send_signal(number)
    _, err = conducting.communicate(timeout=60)
    assert conducting.returncode == 128 + number
    assert err.endswith("marrowctl fleet conduct: ended by a signal:\n  phase 2 is not published: the clients wait for "
                        f"{fleet.folder}/monday-2.bst until they are ended, or give up\n")
    assert "monday-2.bst" not in fleet.names()


@pytest.mark.parametrize("arguments, message", [
    ("--control . --run x --clients 1", "name a settings file for each phase"),
    ("--control . --run x a.bst b.bst", "say which clients: --hosts LIST, or how many: --clients N"),
    ("--control . --run x --clients 1 a.bst -", 'each phase is a file, not "-"'),
])
def test_wrong_usage_is_told(ctl, arguments, message):
    done = ctl.run("fleet", "conduct", *arguments.split())
    assert (done.returncode, done.stdout) == (64, "")
    assert done.stderr == f"marrowctl fleet conduct: {message}\nSee: marrowctl fleet conduct --help\n"
