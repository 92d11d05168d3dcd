"""marrowctl run --via: a run of many clients in one command. Stubs of the engines start them on this machine."""

import contextlib
import os
import pathlib
import re
import signal
import subprocess

import pytest

from conftest import COMMAND, EMULATOR
from fleet import FAST_COMMAND, FAST_MARROWBENCH, clock_at, fleet, settings_line
from mounts import Mounts
from program_bench import wait_until

__all__ = ["fleet"]

STUB = pathlib.Path(__file__).with_name("host_stub.py")
SHELL_ENGINES = ["ssh", "clush", "pdsh", "srun"]

# Clients with clocks by which second 46 comes soon, and programs for which a minute is a second.
MARROWCTL = f"""#!/bin/sh
[ "$2" != arm ] || exec {FAST_COMMAND[-1]} "$@"
exec {COMMAND[-1]} "$@"
"""
MARROWBENCH = f"""#!/bin/sh
unset MARROWBENCH_CLOCK_SPEED MARROWBENCH_CLOCK_OFFSET
exec {FAST_MARROWBENCH} "$@"
"""
SECOND_AT_THE_BEGINNING = 40

pytestmark = pytest.mark.skipif(bool(EMULATOR), reason="engines start the programs themselves")


class Via:
    """A fleet, and the engines by which it is armed."""

    def __init__(self, fleet):
        self.fleet = fleet
        self.folder = fleet.control.parent
        self.bin = self.folder / "bin"
        self.temporary = self.folder / "temporary"
        for folder in (self.bin, self.temporary):
            folder.mkdir()
        for name in SHELL_ENGINES:
            (self.bin / name).symlink_to(STUB)
        for name, text in (("marrowctl", MARROWCTL), ("marrowbench", MARROWBENCH)):
            (self.bin / name).write_text(text)
            (self.bin / name).chmod(0o755)
        name, value = fleet.marked.split("=")
        self.log = self.folder / "calls"
        self.environment = os.environ | fleet.environment | {
            name: value, "PATH": f"{self.bin}:{os.environ['PATH']}", "TEMP": str(self.temporary),
            "STUB_LOG": str(self.log), "PYTHONDONTWRITEBYTECODE": "1"}

    def settings(self, text=None, name="mine.bst"):
        path = self.folder / name
        path.write_text(text or settings_line())
        return path

    def words(self, engine, settings, *arguments, hosts="c[1-3]"):
        return ["run", "--via", engine, "--hosts", hosts, "--control", str(self.fleet.control),
                *map(str, arguments), str(settings)]

    def start(self, *words, **environment):
        environment = self.environment | clock_at(SECOND_AT_THE_BEGINNING) | environment
        process = subprocess.Popen([*COMMAND, *words], env=environment, cwd=self.folder, text=True,
                                   stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.PIPE,
                                   start_new_session=True)
        self.fleet.started.append(process)
        return process

    def run(self, *words, **environment):
        process = self.start(*words, **environment)
        out, err = process.communicate(timeout=300)
        return subprocess.CompletedProcess(process.args, process.returncode, out, err)

    def calls(self):
        return self.log.read_text().splitlines() if self.log.exists() else []


@pytest.fixture
def via(fleet):
    return Via(fleet)


def steps(text):
    """The commands that were said."""
    return re.findall(r"^\$ (.*)$", text, re.M)


def assert_complete(done):
    """Whether clients on one machine, with such clocks, ran side by side is not to be foretold."""
    verdict = re.match(r"3 of 3 clients, 6 of 6 rows, no error row, no null data(?:, overlap \d+ %)?: "
                       r"complete, (concurrent, |not concurrent, |)clean\. ", " ".join(done.stdout.split()))
    assert verdict, (done.stdout, done.stderr)
    assert done.returncode == (verdict[1] == "not concurrent, "), done.stdout


@pytest.mark.parametrize("engine", SHELL_ENGINES)
def test_one_command_goes_from_the_settings_file_to_the_verdict(via, engine):
    done = via.run(*via.words(engine, via.settings()))
    assert_complete(done)
    said = steps(done.stderr)
    place = f"--control {via.fleet.control} --run mine"
    assert said == [
        f"marrowctl check --hosts 'c[1-3]' {via.folder}/mine.bst",
        f"marrowctl fleet probe --quick {via.fleet.control}",
        f"marrowctl fleet recipe {engine} --hosts 'c[1-3]' {place} --give-up 900s | sh",
        f"marrowctl fleet publish {place} --hosts 'c[1-3]' {via.folder}/mine.bst",
        f"marrowctl fleet watch {place} --hosts 'c[1-3]'",
        f"marrowctl report {via.fleet.control}/mine/results.csv --settings {via.fleet.control}/mine/mine.bst "
        f"--hosts 'c[1-3]' --done {via.fleet.control}/mine/_mine_log"]
    assert "One table is safe" in done.stderr
    assert "Published. The tests start at " in done.stderr
    # What the engine starts is shown as it is typed.
    assert f"fleet arm {place} --give-up 900s" in done.stderr
    assert list(via.temporary.iterdir()) == []
    wait_until(lambda: not via.fleet.processes())
    assert sorted(path.name for path in (via.fleet.control / "mine").glob("finished__*")) == [
        "finished__c1", "finished__c2", "finished__c3"]


def test_what_is_said_can_be_typed(via):
    said = steps(via.run(*via.words("ssh", via.settings())).stderr)
    environment = via.environment | clock_at(SECOND_AT_THE_BEGINNING)
    for command in said:
        by_hand = command.replace("--run mine ", "--run again ").replace("/mine/mine.bst", "/again/again.bst").replace(
            f"{via.fleet.control}/mine/", f"{via.fleet.control}/again/").replace("/_mine_log", "/_again_log")
        done = subprocess.run(["sh", "-c", by_hand], env=environment, cwd=via.folder, text=True,
                              capture_output=True, stdin=subprocess.DEVNULL, timeout=300)
        assert done.returncode == 0 or command == said[-1], (by_hand, done.stdout, done.stderr)
    assert_complete(done)


def test_tables_of_each_client_are_found(via):
    settings = via.settings(settings_line(table="res_[host].csv"))
    done = via.run(*via.words("clush", settings, "--run", "other.1"))
    assert_complete(done)
    assert f"marrowctl report '{via.fleet.control}/other.1/res_*.csv' " in steps(done.stderr)[-1]


def test_clients_whose_path_lacks_marrowctl_are_told_the_option(via):
    (via.bin / "marrowctl").unlink()
    done = via.run(*via.words("ssh", via.settings()))
    assert done.returncode == 1
    assert ("marrowctl run: marrowctl is not in the PATH that the clients have there: --marrowctl PATH says "
            "where it is\n") in done.stderr


def test_a_host_that_is_down_stops_it_before_publication(via):
    done = via.run(*via.words("ssh", via.settings()), STUB_DOWN="c2")
    assert (done.returncode, done.stdout) == (1, "")
    assert ("marrowctl run: not all clients are armed:\n  2 of 3 clients are ready: c1, c3\n"
            "  missing: c2. \"marrowctl fleet arm\" makes a machine ready\nssh printed:\n") in done.stderr
    assert "c2: not armed\n" in done.stderr
    # What is printed far away sends the terminal nothing.
    assert "\n\ufffd[31mno route\ufffd\n" in done.stderr and "\x1b" not in done.stderr
    assert done.stderr.endswith("2 clients stay armed; without a run they stop 15 min 0 s after they were armed\n")
    assert not (via.fleet.control / "mine/mine.bst").exists()
    assert list(via.temporary.iterdir()) == []


def test_an_engine_that_is_missing_is_told(via):
    environment = {"PATH": f"{via.bin}:/nowhere"}
    words = via.words("pdsh", via.settings())
    refusal = "marrowctl run: clients could not be armed:\n  "
    # Not even a shell.
    done = via.run(*words, **environment)
    assert (done.returncode, done.stdout) == (2, "")
    assert done.stderr.endswith(refusal + "sh: No such file or directory\n")
    (via.bin / "pdsh").unlink()
    (via.bin / "sh").symlink_to("/bin/sh")
    done = via.run(*words, **environment)
    assert (done.returncode, done.stdout) == (2, "")
    assert done.stderr.endswith(refusal + "pdsh: not in the PATH of this machine\n")


def test_a_reader_that_goes_away_does_not_end_it(via):
    (via.bin / "pdsh").unlink()
    process = via.start(*via.words("pdsh", via.settings()), PATH=f"{via.bin}:/nowhere")
    process.stderr.close()
    process.stderr = None
    process.communicate(timeout=300)
    # It came as far as the engine.
    assert process.returncode == 2


@pytest.mark.skipif(os.geteuid() != 0, reason="mounting needs root")
def test_what_the_probe_leaves_is_told(via):
    share = via.folder / "share"
    share.mkdir()
    with contextlib.ExitStack() as ends:
        via.fleet.control = Mounts(via, ends).faulty(share, "stay", "name=.marrowctl_probe_*", "code=EBUSY")
        done = via.run(*via.words("pdsh", via.settings()), PATH=f"{via.bin}:/nowhere")
        assert done.returncode == 2
        (left,) = via.fleet.control.glob(".marrowctl_probe_*")
        assert f"\nmarrowctl run: left behind: {left}\n" in done.stderr


def test_the_recipe_goes_away_when_the_engine_has_ended(via):
    process = via.start(*via.words("ssh", via.settings()))
    wait_until(lambda: (via.fleet.control / "mine/mine.bst").exists(), 200)
    wait_until(lambda: list(via.temporary.iterdir()) == [] or process.poll() is not None, 100)
    assert process.poll() is None and list(via.temporary.iterdir()) == []
    process.communicate(timeout=300)


def test_errors_in_the_settings_file_arm_nobody(via):
    settings = via.settings("posix;0;0;0;1M;0;4;2;0;MEMORY;[host]_[iter].bin;log.txt;results.csv;true\n")
    done = via.run(*via.words("ssh", settings))
    assert (done.returncode, done.stdout, via.calls()) == (2, "", [])
    assert "[bad-number]" in done.stderr and "no client was armed" in done.stderr
    assert not (via.fleet.control / "mine").exists()


def test_warnings_arm_nobody_under_strict(via):
    settings = via.settings(settings_line().replace(";posix", "").replace("posix;0;0", "posix;flush;0"))
    done = via.run(*via.words("ssh", settings, "--strict"))
    assert (done.returncode, done.stdout, via.calls()) == (1, "", [])
    assert "[no-effect]" in done.stderr


def test_a_name_that_was_used_arms_nobody(via):
    (via.fleet.control / "mine").mkdir()
    (via.fleet.control / "mine/mine.bst").write_text("")
    done = via.run(*via.words("ssh", via.settings()))
    assert (done.returncode, done.stdout, via.calls()) == (1, "", [])
    assert "mine.bst is there already: a run needs a name of its own" in done.stderr
    # Nor would another option of publish help.
    (via.fleet.control / "mine/results.csv").write_text("")
    done = via.run(*via.words("ssh", via.settings()))
    assert "of an earlier run there is still a table" in done.stderr and "--again" not in done.stderr


def test_clients_that_gave_up_before_publication_are_not_said_to_stay(via):
    # The best moment is more than half a minute away.
    done = via.run(*via.words("ssh", via.settings(), "--give-up", "5s"), **clock_at(50))
    assert (done.returncode, done.stdout) == (1, "")
    assert "armed before, and ended: c1, c2, c3: gave up after 5 s" in done.stderr
    assert "armed; without a run" not in done.stderr


@pytest.mark.skipif(os.geteuid() != 0, reason="mounting needs root")
def test_a_share_that_is_unfit_for_one_table_takes_only_tables_of_each(via):
    share = via.folder / "share"
    share.mkdir()
    with contextlib.ExitStack() as ends:
        via.fleet.control = Mounts(via, ends).faulty(share, "late", "name=race_*", "length=500")
        done = via.run(*via.words("ssh", via.settings()))
        assert (done.returncode, done.stdout, via.calls()) == (1, "", [])
        assert "Use [host] in the results path" in done.stderr
        assert done.stderr.endswith(
            f"marrowctl run: no client was armed: all would write to {via.fleet.control}/mine/results.csv\n")
        done = via.run(*via.words("ssh", via.settings(settings_line(table="res_[host].csv"))), STUB_DOWN="c1 c2 c3")
        assert done.returncode == 1 and "no client is ready" in done.stderr
        assert sorted(via.calls()) == ["ssh c1", "ssh c2", "ssh c3"]


@pytest.mark.parametrize("text", ["# no test\n", settings_line(table=" ")])
def test_a_run_without_a_table_needs_no_report(via, text):
    done = via.run(*via.words("ssh", via.settings(text)))
    assert (done.returncode, done.stdout) == (0, ""), done.stderr
    assert done.stderr.endswith("marrowctl run: no line asks for a row in a table\n")


def test_time_that_is_up_reports_what_is_there(via):
    # The last line's program pauses for three hours of its own.
    settings = via.settings(settings_line(iterations=3) + "posix;0;0;120000;4;0;400;1;0;MEMORY;[host].bin;"
                            "log_[host].txt;results.csv;true\n")
    done = via.run(*via.words("ssh", settings, "--timeout", "20s"))
    assert done.returncode == 1
    assert "marrowctl fleet watch: the run is not complete:\n" in done.stderr
    assert "marrowctl run: 3 clients still at work without this program\n" in done.stderr
    assert re.match(r"3 of 3 clients, 9 of 12 rows", done.stdout), done.stdout


@pytest.mark.parametrize("number, send", [(signal.SIGINT, os.killpg), (signal.SIGTERM, os.kill)])
def test_a_signal_while_clients_are_armed_ends_it(via, number, send):
    """And the engine, with all its processes."""
    process = via.start(*via.words("ssh", via.settings()), STUB_HANGS="c1 c2 c3")
    wait_until(lambda: len(via.calls()) == 3, 120)
    send(process.pid, number)
    out, err = process.communicate(timeout=120)
    assert (process.returncode, out) == (128 + number, ""), err
    assert ("marrowctl run: clients could not be armed: ended by a signal\n"
            "clients may be armed by now; without a run they stop 15 min 0 s after they were armed\n") in err
    assert list(via.temporary.iterdir()) == []
    wait_until(lambda: not via.fleet.processes())


def test_an_engine_does_not_outlive_a_program_that_is_killed(via):
    process = via.start(*via.words("ssh", via.settings()), STUB_HANGS="c1 c2 c3")
    wait_until(lambda: len(via.calls()) == 3, 120)
    process.kill()
    process.wait(timeout=60)
    wait_until(lambda: not via.fleet.processes())


@pytest.mark.parametrize("engine, words", [
    ("ssh", "the clients go on without this program"),
    ("srun", "srun ends, and the clients with it"),
])
def test_a_signal_while_clients_run_says_what_becomes_of_them(via, engine, words):
    settings = via.settings("posix;0;0;120000;4;0;400;1;0;MEMORY;[host].bin;;results.csv;true\n")
    process = via.start(*via.words(engine, settings))
    wait_until(lambda: (via.fleet.control / "mine/c1.bin").exists(), 240)
    process.send_signal(signal.SIGTERM)
    _, err = process.communicate(timeout=120)
    assert process.returncode == 128 + signal.SIGTERM
    assert f"marrowctl run: {words}: ended by a signal\n" in err
    if engine == "srun":
        wait_until(lambda: not via.fleet.processes())
    else:
        assert via.fleet.processes()


@pytest.mark.parametrize("arguments, message", [
    (["--via", "telnet"], "--via: telnet not in {clush,pdsh,ssh,parallel,ansible,srun}"),
    (["--via", "ssh", "--control", "."], "--hosts: name the clients"),
    (["--via", "ssh", "--hosts", "c1"], "--control: name a folder on the share"),
    (["--via", "ssh", "--hosts", "c1", "--control", ".", "--run", "a b"], "--run: "),
    (["--via", "ssh", "--hosts", "c1,c1", "--control", "."], "c1 is named twice"),
    (["--via", "ssh", "--hosts", "c1", "--control", ".", "--marrowbench", "x"],
     "--marrowbench is for a run of this machine"),
    (["--hosts", "c1"], "--hosts is for a run of many clients: name an engine by --via"),
    (["--timeout", "5m"], "--timeout is for a run of many clients: name an engine by --via"),
])
def test_wrong_usage_is_told(via, arguments, message):
    done = via.run("run", *arguments, str(via.settings()))
    assert (done.returncode, done.stdout) == (64, "")
    assert done.stderr.startswith(f"marrowctl run: {message}"), done.stderr
