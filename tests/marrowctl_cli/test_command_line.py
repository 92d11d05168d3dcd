"""Help, versions, wrong usage, and which word of a command line is what."""

import json
import os
import re
import subprocess

import pytest

from conftest import COMMAND, ROOT
from tables import perfect_fleet, write

VERSION = re.search(r"^project\(.* VERSION ([\d.]+)", (ROOT / "CMakeLists.txt").read_text(), re.M)[1]
LEVELS = [[], ["check"], ["sweep"], ["run"], ["report"], ["compare"]]


@pytest.mark.parametrize("level", LEVELS)
@pytest.mark.parametrize("flag", ["--help", "-h"])
def test_help_is_on_every_level_with_an_example(ctl, level, flag):
    done = ctl.run(*level, flag)
    assert (done.returncode, done.stderr) == (0, "")
    assert done.stdout.count("\nExample: ") == 1
    assert f"Usage: {' '.join(['marrowctl', *level])} " in done.stdout


@pytest.mark.parametrize("level", LEVELS)
def test_version_is_that_of_the_project(ctl, level):
    done = ctl.run(*level, "--version")
    assert (done.returncode, done.stdout, done.stderr) == (0, f"marrowctl {VERSION}\n", "")


@pytest.mark.parametrize("level", LEVELS)
def test_example_of_the_help_can_be_typed(ctl, level):
    example = re.search(r"\nExample: .*\n  marrowctl (.*)\n", ctl.run(*level, "--help").stdout)[1]
    ctl.good("first.bst")
    data = f"{ctl.folder}/data_"
    ctl.write("many_clients.bst", f"posix;0;0;0;64;0;65536;4;0;MEMORY;{data}[host]/file_[iter].bin;"
              f"{ctl.folder}/log.txt;{ctl.folder}/results.csv;true\n")
    for name in ("results.csv", "before.csv", "after.csv"):
        write(ctl.folder / name, perfect_fleet(clients=20, dest=data + "{host}/file_{iteration}.bin"))
    done = subprocess.run(["sh", "-c", f'"$@" {example}', "sh", *COMMAND], cwd=ctl.folder,
                          capture_output=True, text=True, env={**os.environ, "TEMP": str(ctl.folder)})
    # A disk may be too small for what the example would write.
    assert done.returncode == (1 if "[space-short]" in done.stderr else 0), done.stderr


def test_no_command_is_wrong_usage_and_shows_the_help(ctl):
    done = ctl.run()
    assert (done.returncode, done.stdout) == (64, "")
    assert done.stderr == ctl.run("--help").stdout


MOST = "no number from 1 to 1000000000"


@pytest.mark.parametrize("arguments, message", [
    ("chekc a.bst", "marrowctl: unknown command chekc; did you mean check?"),
    ("Sweep", "marrowctl: unknown command Sweep; did you mean sweep?"),
    ("explain", "marrowctl: unknown command explain"),
    ("--versoin", "marrowctl: unknown option --versoin; did you mean --version?"),
    ("check", "marrowctl check: name a settings file"),
    ("check --", "marrowctl check: name a settings file"),
    ("check --hots x a.bst", "marrowctl check: unknown option --hots; did you mean --host?"),
    ("check --stric=true a.bst", "marrowctl check: unknown option --stric; did you mean --strict?"),
    ("check -x a.bst", "marrowctl check: unknown option -x"),
    ("check --clients 0 a.bst", f"marrowctl check: --clients: 0 is {MOST}"),
    ("check --clients 2x a.bst", f"marrowctl check: --clients: 2x is {MOST}"),
    ("check --clients 1000000001 a.bst", f"marrowctl check: --clients: 1000000001 is {MOST}"),
    ("check a.bst --clients", "marrowctl check: --clients: "),
    ("check --format xml a.bst", "marrowctl check: --format: xml not in {text,gcc}"),
    ("check --format GCC a.bst", "marrowctl check: --format: GCC not in {text,gcc}"),
    ("check --json --format gcc a.bst", "marrowctl check: --json excludes --format"),
    ("check --hosts c[3-1] a.bst", "marrowctl check: --hosts: [3-1] is no range of numbers"),
    ("check --explain no-logs", "marrowctl check: no finding is called no-logs; did you mean no-log?"),
    ("run", "marrowctl run: name a settings file"),
    ("run --stric a.bst", "marrowctl run: unknown option --stric; did you mean --strict?"),
    ("report", "marrowctl report: name a results table"),
    ("report a.bst", "marrowctl report: name a results table"),
    ("report --tydi a.csv", "marrowctl report: unknown option --tydi; did you mean --tidy?"),
    ("report --tidy --json a.csv", "marrowctl report: --json excludes --tidy"),
    ("report --link 10 a.csv", "marrowctl report: --link: 10 is no speed such as 10G or 100M"),
    ("report --gap 0 a.csv", "marrowctl report: --gap: 0 is no number from 1 to 525600"),
    ("report --host-pattern x a.csv",
     "marrowctl report: --host-pattern: it has no group: put ( ) around the host"),
    ("compare a.csv", "marrowctl compare: name two tables: the old one and the new one"),
    ("compare a.csv b.csv --fail-if-slower x",
     "marrowctl compare: --fail-if-slower: x is no number from 0 to 100"),
    ("sweep x.bst", "marrowctl sweep: too much: x.bst"),
    ("sweep --outptu x.bst", "marrowctl sweep: unknown option --outptu; did you mean --output?"),
    ("sweep --chunk 4Q", "marrowctl sweep: --chunk: "),
    ("sweep --neighbour c1,,c2", "marrowctl sweep: --neighbour: a name is empty"),
])
def test_wrong_usage_is_told_with_what_was_meant(ctl, arguments, message):
    ctl.good("a.bst")
    done = ctl.run(*arguments.split())
    assert (done.returncode, done.stdout) == (64, "")
    told, where = done.stderr.splitlines()
    assert told.startswith(message) if message.endswith(": ") else told == message
    assert where == f"See: {message.split(':')[0]} --help"


@pytest.mark.parametrize("words", [["compare", "a.csv", "b.csv", "--fail-if-slower"], ["report", "a.csv", "--hosts"],
                                   ["report", "a.csv", "--done"], ["sweep", "--output"], ["run", "a.bst", "--html"]])
def test_an_option_with_an_empty_word_is_not_taken_for_none(ctl, words):
    done = ctl.run(*words, "")
    assert (done.returncode, done.stdout) == (64, "")
    assert done.stderr == (f"marrowctl {words[0]}: {words[-1]}: nothing is given\n"
                           f"See: marrowctl {words[0]} --help\n")


def files_and_hosts(done):
    document = json.loads(done.stdout)
    hosts = {path["host"]: None for file in document["files"] for line in file["lines"]
             for path in line["paths"]}
    return [file["path"] for file in document["files"]], list(hosts)


@pytest.mark.parametrize("arguments, hosts", [
    (["--host", "x", "a.bst", "b.bst"], ["x"]),
    (["a.bst", "--host=x", "b.bst", "--host", "y.example.org"], ["x", "y"]),
    (["--hosts", "c[09-10]", "a.bst", "b.bst", "--host", "d"], ["d", "c09", "c10"]),
    (["--hosts", "list", "--", "a.bst", "b.bst"], ["one", "two"]),
    (["--host", "x", "--hosts", "x,y", "a.bst", "b.bst"], ["x", "y"]),
])
def test_an_option_takes_one_word_and_the_rest_are_files(ctl, arguments, hosts):
    ctl.good("a.bst")
    ctl.good("b.bst")
    ctl.write("list", "one # the first\ntwo\n")
    assert files_and_hosts(ctl.run("check", "--json", *arguments)) == (["a.bst", "b.bst"], hosts)


def test_a_number_of_clients_is_decimal(ctl):
    ctl.good("a.bst")
    done = ctl.run("check", "--json", "--clients", "010", "a.bst")
    assert json.loads(done.stdout)["totals"]["clients"] == 10


@pytest.mark.parametrize("name", ["-odd.bst", "--strict.bst", "[a].bst", "[a,b]/x.bst", "a b.bst"])
def test_any_name_is_a_file_behind_two_dashes(ctl, name):
    ctl.good(name)
    assert files_and_hosts(ctl.run("check", "--json", "--", name))[0] == [name]


@pytest.mark.parametrize("name", ["check", "sweep", "[a,b]"])
def test_a_folder_may_have_any_name(ctl, name):
    ctl.good(f"{name}/a.bst")
    assert files_and_hosts(ctl.run("check", "--json", name))[0] == [f"{name}/a.bst"]
