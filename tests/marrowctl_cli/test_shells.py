"""What the shells offer behind marrowctl's name, and that none of its options and findings is missing."""

import re

import pytest

from conftest import ROOT
from shells import COMPLETION, SHELLS, TYPED, needs, offered, offered_by_fish, typed

LETTERS = dict(re.findall(r"^\.It Cm ([a-z-]+) Pq ([EWN])$",
                          (ROOT / "docs/man/marrowctl-check.1").read_text(), re.M))
FINDINGS = set(LETTERS)
FLEET = ["arm", "publish", "watch", "conduct", "probe", "unlock", "recipe"]
WITH_OPTIONS = ["check", "sweep", "run", "report", "compare"]
COMMANDS = [*WITH_OPTIONS, "fleet"]
SCRIPTS = {"bash": COMPLETION / "marrowctl", "zsh": COMPLETION / "_marrowctl",
           "fish": COMPLETION / "marrowctl.fish"}


@pytest.fixture
def folder(ctl):
    for name in ("run.bst", "Run2.BST", "notes.txt", "sub/deep.bst", "results.csv"):
        ctl.write(name, "")
    (ctl.folder.parent / "home").mkdir()
    return ctl.folder


def options_of(ctl, command):
    """The options that the program itself knows."""
    return set(re.findall(r"^  (?:-\w,)?(--[a-z-]+)", ctl.run(*command.split(), "--help").stdout, re.M))


def findings_of_the_program():
    """The names in the tables of the sources."""
    sources = (ROOT / "src/marrowctl/check").glob("kinds_about_*.cpp")
    return {name for path in sources
            for name in re.findall(r'^ *\{"([a-z-]+)",', path.read_text(), re.M)}


def test_manual_page_has_every_finding():
    assert len(FINDINGS) == 39
    assert FINDINGS == findings_of_the_program()


def test_every_finding_of_the_page_can_be_explained(ctl):
    severities = {"E": "error", "W": "warning", "N": "note"}
    for name, letter in LETTERS.items():
        done = ctl.run("check", "--explain", name)
        assert done.returncode == 0
        assert done.stdout.startswith(f"{name} ({severities[letter]})\n\n")


def options_named(text):
    return {f"--{name}" for name in re.findall(r"Fl -([a-z-]+)", text)}


def options_of_items(page):
    return options_named(" ".join(re.findall(r"^\.It (Fl .*)", page, re.M)))


@pytest.mark.parametrize("command", WITH_OPTIONS)
def test_manual_page_has_every_option(ctl, command):
    page = (ROOT / f"docs/man/marrowctl-{command}.1").read_text()
    assert options_of_items(page) == options_of(ctl, command) - {"--help", "--version"}


def test_manual_page_of_fleet_has_every_command_and_option(ctl):
    page = (ROOT / "docs/man/marrowctl-fleet.1").read_text()
    uses = dict(re.findall(r"^\.Nm marrowctl fleet (\w+)\n(.*?)(?=^\.Nm |^\.Sh )", page, re.M | re.S))
    assert list(uses) == FLEET
    options = {action: options_of(ctl, f"fleet {action}") - {"--help", "--version"} for action in FLEET}
    assert {action: options_named(use) for action, use in uses.items()} == options
    # What each of them means.
    assert options_of_items(page) == set().union(*options.values())


@pytest.mark.parametrize("shell", SHELLS)
def test_script_names_every_finding_once(shell):
    words = re.findall(r"[a-z-]+", SCRIPTS[shell].read_text())
    assert {name for name in FINDINGS if words.count(name) != 1} == set()


@pytest.mark.parametrize("shell", SHELLS)
def test_commands_are_offered(folder, shell):
    # Beside the names zsh shows what they are for.
    shown = {name for name in offered(shell, folder, "marrowctl ") if not name.startswith("-- ")}
    assert set(COMMANDS) <= shown <= {*COMMANDS, "--help", "--version", "-h"}


@pytest.mark.parametrize("shell", SHELLS)
def test_commands_of_fleet_are_offered(folder, shell):
    shown = {name for name in offered(shell, folder, "marrowctl fleet ") if not name.startswith("-- ")}
    assert set(FLEET) <= shown <= {*FLEET, "--help", "--version", "-h"}


@pytest.mark.parametrize("shell", TYPED)
@pytest.mark.parametrize("command", [*WITH_OPTIONS, *(f"fleet {action}" for action in FLEET)])
def test_options_are_offered(ctl, folder, shell, command):
    needs(shell)
    shown = typed(shell, folder, f"marrowctl {command} --\t\t")
    assert options_of(ctl, command) <= set(re.findall(r"--[a-z]+(?:-[a-z]+)*", shown))


@pytest.mark.parametrize("command", [*WITH_OPTIONS, *(f"fleet {action}" for action in FLEET)])
def test_fish_offers_options(ctl, folder, command):
    needs("fish")
    assert offered_by_fish(folder, f"marrowctl {command} --") == options_of(ctl, command)


@pytest.mark.parametrize("shell", SHELLS)
@pytest.mark.parametrize("command", ["check", "run", "fleet publish", "fleet conduct"])
def test_settings_files_and_folders_are_offered(folder, shell, command):
    assert offered(shell, folder, f"marrowctl {command} ") == {"run.bst", "Run2.BST", "sub"}


@pytest.mark.parametrize("shell", SHELLS)
@pytest.mark.parametrize("command", ["report", "compare"])
def test_tables_and_folders_are_offered(folder, shell, command):
    assert offered(shell, folder, f"marrowctl {command} ") == {"results.csv", "sub"}
    assert offered(shell, folder, f"marrowctl {command} --settings ") == {"run.bst", "Run2.BST", "sub"}


@pytest.mark.parametrize("shell", SHELLS)
def test_names_of_findings_are_offered(folder, shell):
    assert offered(shell, folder, "marrowctl check --explain size-") == {"size-capped", "size-unknown"}
    assert offered(shell, folder, "marrowctl check --format ") == {"text", "gcc"}


@pytest.mark.parametrize("shell", TYPED)
@pytest.mark.parametrize("keys, arguments", [
    ("ch\tru\t", ["check", "run.bst"]),
    ("check --expl\tchain-c\t", ["check", "--explain", "chain-cycle"]),
    ("sweep --method posix,str\t", ["sweep", "--method", "posix,stream"]),
    ("sweep --kin\tre\t", ["sweep", "--kind", "read"]),
    ("sweep --out\tru\t", ["sweep", "--output", "run.bst"]),
    ("check -- ru\t", ["check", "--", "run.bst"]),
    ("run ru\t", ["run", "run.bst"]),
    ("run -- ru\t", ["run", "--", "run.bst"]),
    ("run --marrowb\tsub/de\t", ["run", "--marrowbench", "sub/deep.bst"]),
    ("fl\tpub\t--cont\tsu\t --dry\t", ["fleet", "publish", "--control", "sub", "--dry-run"]),
    ("fleet unlock --tab\tres\t", ["fleet", "unlock", "--table", "results.csv"]),
    ("fleet recipe par\t", ["fleet", "recipe", "parallel"]),
])
def test_keys_complete_to_these_arguments(folder, shell, keys, arguments):
    needs(shell)
    shown = typed(shell, folder, f"marrowctl {keys}\n")
    assert re.findall(r"GOT<(.*?)/?>", shown) == arguments
