"""marrowctl run --via: a run of many clients in one command. Stubs of the engines start them on this machine."""

import re
import signal
import subprocess

import pytest

from conftest import EMULATOR
from fleet import clock_at, fleet, settings_line
from program_bench import wait_until
from via import SECOND_AT_THE_BEGINNING, SHELL_ENGINES, via

__all__ = ["fleet", "via"]

pytestmark = pytest.mark.skipif(bool(EMULATOR), reason="engines start the programs themselves")


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


def test_the_recipe_goes_away_when_the_engine_has_ended(via):
    process = via.start(*via.words("ssh", via.settings()))
    wait_until(lambda: (via.fleet.control / "mine/mine.bst").exists(), 200)
    wait_until(lambda: list(via.temporary.iterdir()) == [] or process.poll() is not None, 100)
    assert process.poll() is None and list(via.temporary.iterdir()) == []
    process.communicate(timeout=300)


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
