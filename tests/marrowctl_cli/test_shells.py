"""What the shells offer behind marrowctl's name, and that none of its options and findings is missing."""

import re

import pytest

from conftest import ROOT
from shells import COMPLETION, SHELLS, TYPED, needs, offered, offered_by_fish, typed

LETTERS = dict(re.findall(r"^\.It Cm ([a-z-]+) Pq ([EWN])$",
                          (ROOT / "docs/man/marrowctl-check.1").read_text(), re.M))
FINDINGS = set(LETTERS)
COMMANDS = ["check", "sweep", "run", "report", "compare"]
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
    return set(re.findall(r"^  (?:-\w,)?(--[a-z-]+)", ctl.run(command, "--help").stdout, re.M))


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


@pytest.mark.parametrize("command", COMMANDS)
def test_manual_page_has_every_option(ctl, command):
    page = (ROOT / f"docs/man/marrowctl-{command}.1").read_text()
    items = " ".join(re.findall(r"^\.It (Fl .*)", page, re.M))
    named = {f"--{name}" for name in re.findall(r"Fl -([a-z-]+)", items)}
    assert named == options_of(ctl, command) - {"--help", "--version"}


@pytest.mark.parametrize("shell", SHELLS)
def test_script_names_every_finding_once(shell):
    words = re.findall(r"[a-z-]+", SCRIPTS[shell].read_text())
    assert {name for name in FINDINGS if words.count(name) != 1} == set()


@pytest.mark.parametrize("shell", SHELLS)
def test_commands_are_offered(folder, shell):
    # Beside the names zsh shows what they are for.
    shown = {name for name in offered(shell, folder, "marrowctl ") if not name.startswith("-- ")}
    assert set(COMMANDS) <= shown <= {*COMMANDS, "--help", "--version", "-h"}


@pytest.mark.parametrize("shell", TYPED)
@pytest.mark.parametrize("command", COMMANDS)
def test_options_are_offered(ctl, folder, shell, command):
    needs(shell)
    shown = typed(shell, folder, f"marrowctl {command} --\t\t")
    assert options_of(ctl, command) <= set(re.findall(r"--[a-z]+(?:-[a-z]+)*", shown))


@pytest.mark.parametrize("command", COMMANDS)
def test_fish_offers_options(ctl, folder, command):
    needs("fish")
    assert offered_by_fish(folder, f"marrowctl {command} --") == options_of(ctl, command)


@pytest.mark.parametrize("shell", SHELLS)
@pytest.mark.parametrize("command", ["check", "run"])
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
])
def test_keys_complete_to_these_arguments(folder, shell, keys, arguments):
    needs(shell)
    shown = typed(shell, folder, f"marrowctl {keys}\n")
    assert re.findall(r"GOT<(.*?)/?>", shown) == arguments
