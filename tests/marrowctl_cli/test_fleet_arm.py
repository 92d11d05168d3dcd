"""marrowctl fleet arm: ready files, consoles, signals, and that no process is left behind."""

import json
import os
import pathlib
import pty
import re
import signal
import time

import pytest

from conftest import ROOT
from fleet import FAST_COMMAND, FAST_MARROWBENCH, fill_up, fleet, is_gone, settings_line, small_file_system
from program_bench import wait_until

__all__ = ["fleet"]

SIGNALS = [signal.SIGTERM, signal.SIGINT, signal.SIGHUP]


def put(fleet, text, name=None):
    """Makes a settings file that is complete at once."""
    path = fleet.folder / (name or f"{fleet.run_name}.bst")
    draft = fleet.folder / "draft"
    draft.write_text(text)
    draft.rename(path)


def ended(process):
    out, err = process.communicate(timeout=120)
    return process.returncode, out, err


def test_ten_clients_wait_run_and_tell_how_it_ended(fleet):
    hosts = [f"c{n}" for n in range(10)]
    clients = fleet.arm_all(hosts)
    assert fleet.names() >= {f"ready__{host}" for host in hosts}
    assert not any(name.startswith("finished__") for name in fleet.names())
    put(fleet, settings_line())
    for host, client in zip(hosts, clients):
        status, out, err = ended(client)
        assert status == 0, err
        assert err == (f"marrowctl fleet arm: {host} is armed: marrowbench waits for "
                       f"{fleet.folder}/monday.bst\n")
        assert "Config loaded. Waiting for the next minute" in out
        assert (fleet.folder / f"console__{host}").read_text() == out
        finished = fleet.finished(host)
        assert (finished["host"], finished["run"], finished["status"], finished["message"]) == (
            host, "monday", 0, "")
    left = {name for name in fleet.names() if not name.endswith((".bin", ".txt"))}
    assert left == {"monday.bst", "results.csv", "_monday_log",
                    *(f"{kind}__{host}" for kind in ("finished", "console") for host in hosts)}
    assert {path.name for path in (fleet.folder / "_monday_log").iterdir()} == {
        f"done__{host}" for host in hosts}
    assert fleet.processes() == []


def test_ready_file_says_who_waits_and_follows_its_schema(fleet):
    jsonschema = pytest.importorskip("jsonschema", reason="needs jsonschema")
    schema = json.loads((ROOT / "docs/schemas/ready.schema.json").read_text())
    jsonschema.Draft202012Validator.check_schema(schema)
    (client,) = fleet.arm_all(["c1"])
    note = fleet.ready("c1")
    jsonschema.validate(note, schema)
    assert (note["schema"], note["host"], note["run"]) == ("marrowctl.ready/1", "c1", "monday")
    assert note["marrowbench"] == note["marrowctl"]
    assert note["processors"] == os.cpu_count()
    assert abs(note["clockOffsetMs"]) < 1000
    assert not is_gone(note["pid"])
    for name in note:
        with pytest.raises(jsonschema.ValidationError):
            jsonschema.validate({key: value for key, value in note.items() if key != name}, schema)
    client.send_signal(signal.SIGTERM)
    client.wait(timeout=60)
    schema = json.loads((ROOT / "docs/schemas/finished.schema.json").read_text())
    jsonschema.Draft202012Validator.check_schema(schema)
    jsonschema.validate(fleet.finished("c1"), schema)


def test_a_clock_that_is_off_stands_in_the_ready_file(fleet):
    clocks = {"c1": 0, "c2": 90_000, "c3": -90_000}
    for host, ms in clocks.items():
        fleet.arm(host, program=FAST_COMMAND, environment={
            "MARROWBENCH_CLOCK_SPEED": "1", "MARROWBENCH_CLOCK_OFFSET": str(ms * 1000)})
    for host, ms in clocks.items():
        wait_until(lambda host=host: fleet.ready(host))
        assert abs(fleet.ready(host)["clockOffsetMs"] - ms) < 1000


@pytest.mark.parametrize("number", SIGNALS)
def test_a_signal_while_armed_ends_all_processes(fleet, number):
    (client,) = fleet.arm_all(["c1"])
    assert len(fleet.processes()) == 3, "arm, its guard, marrowbench"
    client.send_signal(number)
    status, _, err = ended(client)
    assert status == 128 + number
    assert f"marrowctl fleet arm: ended by {signal.strsignal(number)}\n" in err
    wait_until(lambda: fleet.processes() == [])
    assert fleet.names() == {"console__c1", "finished__c1"}
    assert fleet.finished("c1")["status"] == 128 + number
    assert "Loading/Waiting" in (fleet.folder / "console__c1").read_text()


@pytest.mark.parametrize("number", SIGNALS)
def test_a_signal_while_tests_run_ends_all_processes(fleet, number):
    (client,) = fleet.arm_all(["c1"])
    # A chunk, then a long pause: an hour by the fast clock.
    put(fleet, "posix;0;0;3600000;4;0;64;1;0;MEMORY;out.bin;;results.csv;true\n")
    wait_until(lambda: (fleet.folder / "out.bin").exists())
    client.send_signal(number)
    status, out, _ = ended(client)
    assert status == 128 + number
    wait_until(lambda: fleet.processes() == [])
    assert "Config loaded." in out
    assert fleet.finished("c1")["status"] == 128 + number


@pytest.mark.parametrize("number", SIGNALS)
def test_a_signal_before_it_is_armed_leaves_nothing(fleet, number):
    fleet.folder.mkdir()
    other = fleet.folder / "ready__c1"
    other.write_text("{}\n")
    client = fleet.arm("c1")
    while "Waiting up to" not in client.stderr.readline():
        pass
    client.send_signal(number)
    assert ended(client)[0] == 128 + number
    assert fleet.processes() == []
    assert fleet.names() == {"ready__c1"} and other.read_text() == "{}\n"


def test_a_signal_right_after_the_start_leaves_nothing(fleet):
    # At whatever moment it comes.
    for wait in (0.02, 0.05, 0.1, 0.2, 0.4, 0.8):
        client = fleet.arm("c1")
        time.sleep(wait)
        client.send_signal(signal.SIGTERM)
        assert ended(client)[0] in (-signal.SIGTERM, 128 + signal.SIGTERM)
        wait_until(lambda: fleet.processes() == [])
        assert not fleet.folder.exists() or "ready__c1" not in fleet.names()


def test_a_client_that_is_killed_takes_marrowbench_along(fleet):
    (client,) = fleet.arm_all(["c1"])
    client.kill()
    client.wait(timeout=60)
    wait_until(lambda: fleet.processes() == [])
    assert "ready__c1" in fleet.names(), "nobody could delete it"


def test_marrowbench_that_is_killed_is_told(fleet):
    (client,) = fleet.arm_all(["c1"])
    (program,) = [pid for pid in fleet.processes()
                  if pathlib.Path(f"/proc/{pid}/exe").resolve() == pathlib.Path(FAST_MARROWBENCH)]
    os.kill(program, signal.SIGKILL)
    status, _, err = ended(client)
    assert status == 128 + signal.SIGKILL
    assert "marrowctl fleet arm: marrowbench was ended by a signal: Killed\n" in err
    assert fleet.names() == {"console__c1", "finished__c1"}
    assert fleet.processes() == []


def test_two_clients_of_one_name_are_not_both_armed(fleet):
    # By the fast clock the ten seconds until the first one touches its file pass quickly.
    (first,) = fleet.arm_all(["c1"], program=FAST_COMMAND)
    status, out, err = ended(fleet.arm("c1.other", program=FAST_COMMAND))
    assert (status, out) == (1, "")
    assert "Two clients are called c1" in err and "touches it" in err
    assert first.poll() is None and fleet.ready("c1")["pid"] == first.pid


def test_clients_called_localhost_are_told_their_name(fleet):
    first = fleet.arm("localhost", program=FAST_COMMAND)
    wait_until(lambda: fleet.ready("NoHostNameSet_"))
    status, _, err = ended(fleet.arm("localhost.localdomain", program=FAST_COMMAND))
    assert status == 1
    assert "this machine has no host name of its own, or is called localhost" in err
    assert "A client that is called localhost, or nothing, is NoHostNameSet_." in err
    assert first.poll() is None


def test_a_ready_file_that_was_left_behind_is_taken_over(fleet):
    (first,) = fleet.arm_all(["c1"])
    first.kill()
    first.wait(timeout=60)
    before = fleet.ready("c1")["id"]
    old = time.time() - 151
    os.utime(fleet.folder / "ready__c1", (old, old))
    fleet.arm("c1")
    wait_until(lambda: (fleet.ready("c1") or {"id": before})["id"] != before)


def test_give_up_ends_the_waiting(fleet):
    before = time.monotonic()
    client = fleet.arm("c1", "--give-up", "3s")
    status, out, err = ended(client)
    assert status == 1 and time.monotonic() - before >= 3
    assert err.endswith(f"marrowctl fleet arm: gave up after 3 s: {fleet.folder}/monday.bst "
                        "did not come\n")
    assert "Loading/Waiting" in out
    assert fleet.names() == {"console__c1", "finished__c1"}
    assert fleet.finished("c1")["message"].startswith("gave up after 3 s")
    assert fleet.processes() == []


def test_a_clock_that_is_set_makes_nobody_give_up(fleet):
    # By that clock an hour passes in a second.
    (client,) = fleet.arm_all(["c1"], "--give-up", "1h", program=FAST_COMMAND,
                              environment={"MARROWBENCH_CLOCK_SPEED": "3600"})
    time.sleep(4)
    assert client.poll() is None, client.stderr.read()


def test_what_another_machine_wrote_sends_the_terminal_nothing(fleet):
    (client,) = fleet.arm_all(["c1"])
    ready = fleet.folder / "ready__c1"
    note = json.loads(ready.read_text()) | {"id": "another", "kernel": "\x1b[31mLinux\x07"}
    ready.write_text(json.dumps(note) + "\n")
    status, _, err = ended(client)
    assert status == 1
    assert "\ufffd[31mLinux\ufffd" in err and "\x1b" not in err and "\x07" not in err


def test_give_up_does_not_end_tests(fleet):
    (client,) = fleet.arm_all(["c1"], "--give-up", "15s", environment={"MARROWBENCH_CLOCK_SPEED": "120"})
    # A pause that is longer: 50 minutes by the clock of the program, which are 25 seconds.
    put(fleet, "posix;0;0;3000000;4;0;4;1;0;MEMORY;out.bin;;results.csv;true\n[cfgPath]next.bst\n")
    wait_until(lambda: (fleet.folder / "_monday_log/done__c1").exists(), 240)
    status, _, err = ended(client)
    assert status == 1
    assert f"gave up after 15 s: {fleet.folder}/next.bst did not come" in err


def test_detached_client_survives_its_shell(fleet):
    # The shell of a login: the leader of a session with a terminal, which hangs up at its end.
    words = fleet.command("arm", "--program", FAST_MARROWBENCH, "--detach", host="c1")
    shell, terminal = pty.fork()
    if shell == 0:
        name, value = fleet.marked.split("=")
        os.environ.update({name: value, **fleet.environment})
        os.execvp("sh", ["sh", "-c", '"$@"; echo "status $?"; read line', "sh", *words])
    shown = b""
    while b"status" not in shown:
        shown += os.read(terminal, 4096)
    assert b"c1 is armed: marrowbench waits for" in shown
    assert re.search(rb"status (\d+)", shown)[1] == b"0"
    os.close(terminal)
    os.kill(shell, signal.SIGHUP)
    os.waitpid(shell, 0)
    note = fleet.ready("c1")
    time.sleep(1)
    assert sorted(fleet.processes()) and not is_gone(note["pid"])
    put(fleet, settings_line())
    wait_until(lambda: "finished__c1" in fleet.names())
    assert fleet.finished("c1")["status"] == 0
    wait_until(lambda: fleet.processes() == [])
    assert "Config loaded." in (fleet.folder / "console__c1").read_text()


def test_detached_client_holds_no_pipe_open(fleet):
    # An engine that reads what its commands print would wait for the end of the run.
    done = fleet.run("arm", "--program", FAST_MARROWBENCH, "--detach", host="c1")
    assert (done.returncode, done.stdout) == (0, "")
    assert "c1 is armed" in done.stderr
    assert len(fleet.processes()) == 3
    os.kill(fleet.ready("c1")["pid"], signal.SIGTERM)
    wait_until(lambda: fleet.processes() == [])
    assert fleet.finished("c1")["status"] == 128 + signal.SIGTERM


def test_detached_client_that_cannot_be_armed_tells_why(fleet):
    fleet.folder.mkdir()
    put(fleet, settings_line())
    done = fleet.run("arm", "--program", FAST_MARROWBENCH, "--detach", host="c1")
    assert (done.returncode, done.stdout) == (1, "")
    assert "monday.bst is there already: the run has begun" in done.stderr
    assert fleet.processes() == []


@pytest.mark.parametrize("program, status", [("/bin/true", 0), ("/bin/false", 1)])
def test_a_program_that_does_not_wait_is_not_called_armed(fleet, program, status):
    done = fleet.run("arm", "--program", program, "--detach", host="c1")
    assert (done.returncode, done.stdout) == (1, "")
    assert done.stderr.endswith(f"marrowctl fleet arm: {program} did not wait: it has ended, exit status {status}\n")
    assert fleet.processes() == []


@pytest.mark.parametrize("number", SIGNALS)
def test_a_signal_to_the_shells_process_reaches_the_one_that_leaves(fleet, number):
    fleet.folder.mkdir()
    (fleet.folder / "ready__c1").write_text("{}\n")
    client = fleet.arm("c1", "--detach")
    while "Waiting up to" not in client.stderr.readline():
        pass
    client.send_signal(number)
    assert ended(client)[0] == 128 + number
    assert fleet.processes() == []


@pytest.mark.parametrize("detach", [[], ["--detach"]])
def test_what_cannot_be_done_is_told(fleet, ctl, detach):
    arm = ["arm", *detach]
    done = ctl.run("fleet", *arm, "--control", fleet.control / "missing", "--run", "monday")
    assert done.returncode == 2
    assert done.stderr == (f"marrowctl fleet arm: {fleet.control}/missing: No such file or directory. "
                           "Is the share mounted here?\n")
    done = fleet.run(*arm, "--program", "/no/marrowbench")
    assert done.returncode == 2
    assert "/no/marrowbench: No such file or directory. Where is marrowbench?" in done.stderr
    assert not any(name.startswith("ready__") for name in fleet.names())
    assert fleet.processes() == []


@pytest.mark.skipif(os.geteuid() != 0, reason="mounts a small file system")
def test_a_full_share_is_told(fleet):
    with small_file_system(fleet.folder):
        fill_up(fleet.folder)
        done = fleet.run("arm", "--program", FAST_MARROWBENCH, host="c1")
        assert done.returncode == 2
        assert done.stderr == (f"marrowctl fleet arm: {fleet.folder}/ready__c1: "
                               "No space left on device\n")
        assert fleet.names() == {"filling"}


@pytest.mark.skipif(os.geteuid() != 0, reason="mounts a small file system")
def test_a_share_that_fills_up_later_stops_no_client(fleet):
    with small_file_system(fleet.folder):
        (client,) = fleet.arm_all(["c1"])
        put(fleet, settings_line())
        fill_up(fleet.folder)
        status, out, err = ended(client)
        assert status == 0 and "No space left on device" in err
        assert "Config loaded." in out
        assert fleet.processes() == []


def test_a_run_needs_its_folder_and_a_plain_name(fleet, ctl):
    for arguments, message in [
            ("--run x", "--control: name a folder on the share"),
            ("--control .", "--run: give the run a name"),
            ("--control . --run a/b", "--run: a run's name begins with a letter or a digit"),
            ("--control . --run x y", "too much: y"),
            ("--control . --run x --give-up 5x", "--give-up: 5x is no time such as")]:
        done = ctl.run("fleet", "arm", *arguments.split())
        assert (done.returncode, done.stdout) == (64, "")
        assert done.stderr.startswith(f"marrowctl fleet arm: {message}")
        assert done.stderr.endswith("See: marrowctl fleet arm --help\n")
