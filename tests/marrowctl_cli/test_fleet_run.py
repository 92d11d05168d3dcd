"""Whole runs of many clients on this machine: armed, published, watched to the end, reported; and what goes wrong."""

import json
import os
import re
import signal
import time

import pytest

from conftest import EMULATOR
from fleet import FAST_COMMAND, fill_up, fleet, settings_line, small_file_system, state_of
from program_bench import SLOW_CALLS, slowed_calls, wait_until

__all__ = ["fleet"]

HOSTS = [f"c{number:02}" for number in range(10)]
LIST = "c[00-09]"


def settings(fleet):
    path = fleet.control.parent / "mine.bst"
    path.write_text(settings_line())
    return path


def publish(fleet, *arguments, hosts=LIST):
    return fleet.run("publish", "--hosts", hosts, "--now", *arguments, settings(fleet))


def complete_run(fleet, ctl, clients, *arguments):
    """Publishes, watches to the end and reports; the clients are armed."""
    watching = fleet.start("watch", "--hosts", LIST, "--timeout", "5m", "--json")
    published = publish(fleet, *arguments)
    assert (published.returncode, published.stderr) == (0, ""), published.stderr
    out, err = watching.communicate(timeout=300)
    assert watching.returncode == 0, err
    for client in clients:
        assert client.wait(timeout=60) == 0
    assert json.loads(out)["clients"] == {"expected": 10, "ready": 0, "running": 0, "done": 10, "late": 0,
                                          "missing": 0}
    report = json.loads(ctl.run("report", "--json", "--hosts", LIST, "--done", fleet.folder / "_monday_log",
                                fleet.folder / "results.csv", fleet.folder / "monday.bst").stdout)
    assert (report["verdict"]["complete"], report["verdict"]["clean"]) == (True, True), report["verdict"]
    assert (report["clients"]["found"], report["rows"]["read"]) == (10, 20)
    wait_until(lambda: fleet.processes() == [])


def refusals(done):
    assert done.returncode == 1, done.stdout
    return [line.strip() for line in done.stderr.split("not published:\n")[1].splitlines()]


def touched_long_ago(path):
    """As if nobody had touched it for 200 s."""
    then = time.time() - 200
    os.utime(path, (then, then))


def test_ten_clients_from_arm_to_report(fleet, ctl):
    clients = fleet.arm_all(HOSTS)
    complete_run(fleet, ctl, clients)
    left = {name for name in fleet.names() if not name.endswith((".bin", ".txt"))}
    assert left == {"monday.bst", "published__monday", "results.csv", "_monday_log",
                    *(f"{kind}__{host}" for kind in ("finished", "console") for host in HOSTS)}


def test_a_client_that_was_killed_while_armed_is_armed_again(fleet, ctl):
    clients = fleet.arm_all(HOSTS)
    killed = clients.pop(3)
    killed.kill()
    killed.wait(timeout=60)
    touched_long_ago(fleet.folder / "ready__c03")
    told = refusals(publish(fleet))
    assert told[0].startswith("9 of 10 clients are ready: c00, c01, c02, c04,")
    assert re.fullmatch(r"c03 is gone: nobody has touched its ready file for \d+ min \d+ s \(process \d+, armed at "
                        r".*\)", told[1])
    watched = fleet.run("watch", "--timeout", "0", "--json")
    host = next(each for each in json.loads(watched.stdout)["hosts"] if each["host"] == "c03")
    assert host["state"] == "missing" and host["reason"].startswith("it is gone: nobody has touched its ready file")
    clients.append(fleet.arm("c03"))
    wait_until(lambda: fleet.ready("c03") and fleet.ready("c03")["pid"] == clients[-1].pid)
    complete_run(fleet, ctl, clients)


def test_a_client_whose_end_nobody_has_noticed_yet_is_named_in_the_run(fleet):
    clients = fleet.arm_all(HOSTS)
    killed = clients.pop(3)
    killed.kill()
    killed.wait(timeout=60)
    # Its file is still young.
    assert publish(fleet).returncode == 0
    for client in clients:
        assert client.wait(timeout=120) == 0
    touched_long_ago(fleet.folder / "ready__c03")
    done = fleet.run("watch", "--hosts", LIST)
    assert done.returncode == 1
    assert re.search(r"^  missing: c03: it is gone: nobody has touched its ready file for 3 min \d+ s$", done.stderr,
                     re.MULTILINE)
    assert done.stderr.endswith("  2 of 20 rows missing, of c03 (2)\n")


@pytest.mark.skipif(not SLOW_CALLS, reason="needs a program with glibc, for another library to be put before it")
@pytest.mark.skipif(bool(EMULATOR), reason="the emulator would get the library that is put before the program")
def test_a_client_that_is_killed_while_it_holds_the_lock_is_named_with_it(fleet, ctl):
    clients = fleet.arm_all(HOSTS[:3])
    # It stops itself when it has written its note into the lock.
    clients.append(fleet.arm("c03", environment=slowed_calls(stop="noted", log=ctl.folder / "calls")))
    wait_until(lambda: fleet.ready("c03"))
    table, lock = fleet.folder / "results.csv", fleet.folder / "results.csv_lock.txt"
    published = publish(fleet, hosts="c[00-03]")
    assert published.returncode == 0, published.stderr
    wait_until(lambda: any(state_of(pid) == "T" for pid in fleet.processes()), 120)
    clients[3].kill()
    clients[3].wait(timeout=60)
    lost = 0
    for client in clients[:3]:
        out, err = client.communicate(timeout=120)
        assert client.returncode == 0
        lost += (out + err).count("marrowbench: row lost: ")
    touched_long_ago(fleet.folder / "ready__c03")
    done = fleet.run("watch", "--hosts", "c[00-03]")
    assert done.returncode == 1
    assert "  missing: c03: it is gone: nobody has touched its ready file for 3 min " in done.stderr
    assert re.search(rf"^  {lost + 2} of 8 rows missing, of ", done.stderr, re.MULTILINE), done.stderr
    assert re.search(rf"^  the lock {re.escape(str(lock))} is \d+ s old: no row is appended while it is there\. "
                     rf'"marrowctl fleet unlock --table {re.escape(str(table))}" shows it, and with --age and --yes removes it$', done.stderr,
                     re.MULTILINE)
    assert f"Lock  {lock}\n" in ctl.run("fleet", "unlock", "--table", table).stdout
    assert ctl.run("fleet", "unlock", "--table", table, "--age", "0s", "--yes").returncode == 0
    assert not lock.exists()


@pytest.mark.skipif(os.geteuid() != 0, reason="mounts a small file system")
def test_a_share_that_is_full_in_the_run_is_told(fleet):
    with small_file_system(fleet.folder, "256k"):
        clients = fleet.arm_all(HOSTS[:3])
        assert publish(fleet, hosts="c[00-02]").returncode == 0
        fill_up(fleet.folder)
        told = [client.communicate(timeout=120) for client in clients]
        assert [client.returncode for client in clients] == [0, 0, 0]
        for out, err in told:
            assert "No space left on device" in out, "a file of the test"
            assert "marrowbench: row lost: " in out + err, "and its row"
        done = fleet.run("watch", "--hosts", "c[00-02]", "--timeout", "0")
        assert done.returncode == 1
        assert "  6 of 6 rows missing" in done.stderr


def test_a_marker_of_last_week_is_told_and_does_not_count(fleet, ctl):
    clients = fleet.arm_all(HOSTS)
    marker = fleet.folder / "_monday_log/done__c04"
    marker.parent.mkdir()
    marker.write_text("done")
    last_week = time.time() - 7 * 86_400
    os.utime(marker, (last_week, last_week))
    told = refusals(publish(fleet))
    assert told == ["of an earlier run there is still a done marker, by which the client would seem to have ended: "
                    f"{marker}", 'delete what is left, or let it stay with "marrowctl fleet publish --again"']
    complete_run(fleet, ctl, clients, "--again")
    assert marker.stat().st_mtime > last_week + 86_400


def test_two_hosts_of_one_name_are_told_apart(fleet, ctl):
    # By a fast clock the ten seconds until the first one touches its file pass quickly.
    clients = fleet.arm_all(HOSTS, program=FAST_COMMAND)
    second = fleet.arm("c05.elsewhere", program=FAST_COMMAND)
    _, err = second.communicate(timeout=120)
    assert second.returncode == 1
    assert "Two clients are called c05, or this one is armed already: each needs a host name of its own." in err
    assert fleet.ready("c05")["pid"] == clients[5].pid
    for client in clients:
        client.send_signal(signal.SIGTERM)
        assert client.wait(timeout=60) == 128 + signal.SIGTERM
    complete_run(fleet, ctl, fleet.arm_all(HOSTS))


def test_a_clock_that_is_90_seconds_off_is_named_and_set(fleet, ctl):
    clients = fleet.arm_all([host for host in HOSTS if host != "c06"])
    wrong = fleet.arm("c06", program=FAST_COMMAND, environment={"MARROWBENCH_CLOCK_SPEED": "1",
                                                                "MARROWBENCH_CLOCK_OFFSET": "-90000000"})
    wait_until(lambda: fleet.ready("c06"))
    told = refusals(publish(fleet))
    assert re.fullmatch(r"the clock of c06 is (90\.\d|89\.\d) s behind the others'", told[0])
    assert told[1:] == ["clients start by their own clocks: set them, as chrony or NTP do, and try again a minute "
                        "later"]
    wrong.send_signal(signal.SIGTERM)
    wrong.communicate(timeout=60)
    clients += fleet.arm_all(["c06"])
    complete_run(fleet, ctl, clients)


def test_a_client_that_comes_too_late_is_told(fleet):
    clients = fleet.arm_all(HOSTS[:3])
    assert publish(fleet, hosts="c[00-02]").returncode == 0
    late = fleet.run("arm", "--program", "/bin/true", host="c09")
    assert late.returncode == 1
    assert "monday.bst is there already: the run has begun, and a client that starts now would not start with the " \
           "others." in late.stderr
    for client in clients:
        assert client.wait(timeout=120) == 0


def test_help_of_every_command_has_an_example(ctl):
    for command in ("arm", "publish", "watch", "conduct"):
        done = ctl.run("fleet", command, "--help")
        assert (done.returncode, done.stderr) == (0, "")
        assert f"\n  marrowctl fleet {command} --control " in done.stdout.split("\nExample: ")[1]
        assert f"  {command} " in ctl.run("fleet", "--help").stdout
