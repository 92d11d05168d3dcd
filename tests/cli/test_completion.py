"""What the shells offer behind the program's name, asked of the shells themselves."""

import os
import pty
import re
import select
import shutil
import signal
import subprocess
import time

import pytest

from conftest import ROOT

COMPLETION = ROOT / "packaging" / "completion"

# The program's name stands for a function that shows its arguments.
ECHO = """marrowbench() { local word; for word in "$@"; do printf 'GOT<%s>\\n' "$word"; done; }"""
SETUP = {
    "bash": f"bind 'set show-all-if-ambiguous on'; bind 'set completion-query-items 0';"
            f" bind 'set page-completions off'; . {COMPLETION}/marrowbench",
    "zsh": f"fpath=({COMPLETION} $fpath); autoload -Uz compinit; compinit -D -u; LISTMAX=1000",
}
START = {"bash": ["bash", "--norc", "--noprofile", "-i"],
         "zsh": ["zsh", "-f", "-i", "-o", "no_prompt_sp"]}
TYPED = ["bash", "zsh"]
SHELLS = [*TYPED, "fish"]

PROMPT = "READY> "
KILL_LINE = "\x01\x0b"


def needs(shell):
    if shutil.which(shell) is None:
        pytest.skip(f"needs {shell}")


class Terminal:
    """A shell at a terminal, with someone who types."""

    def __init__(self, shell, folder, home):
        try:
            self.pid, self.terminal = pty.fork()
        except OSError as problem:
            pytest.skip(f"needs a terminal: {problem}")
        if self.pid == 0:
            os.chdir(folder)
            os.environ.update(TERM="dumb", HOME=str(home), HISTFILE="/dev/null", PS1=PROMPT)
            os.execvp(START[shell][0], START[shell])

    def set_up(self, shell):
        self.read_to(f"{PROMPT}$")
        self.ask(f"{SETUP[shell]}; {ECHO}; stty cols 400 rows 50\n")

    def ask(self, keys):
        """What the shell shows from these keys on until it has done what they say."""
        os.write(self.terminal, f"{keys}{KILL_LINE}printf '%s%s\\n' E ND\n".encode())
        return self.read_to(rf"\nEND\r?\n(.|\n)*{PROMPT}$")

    # The prompt means that keys reach the shell's editor, not the terminal's.
    def read_to(self, pattern):
        shown = ""
        end = time.monotonic() + 60
        while not re.search(pattern, shown):
            assert time.monotonic() < end, shown
            if select.select([self.terminal], [], [], 1)[0]:
                shown += os.read(self.terminal, 65536).decode()
                shown = re.sub(r"\x1b\[[?\d;]*[a-zA-Z]|\a", "", shown)
        return shown

    def close(self):
        os.kill(self.pid, signal.SIGKILL)
        os.close(self.terminal)
        os.waitpid(self.pid, 0)


@pytest.fixture
def folder(bench):
    folder = bench.folder / "here"
    for name in ("run.bst", "Run2.BST", "my run.bst", "notes.txt", "bst", "x.bst.old",
                 "sub/deep.bst", "sub/deep.csv", "odd.bst/other.bst", "home/none"):
        path = folder / name if name != "home/none" else bench.folder / name
        path.parent.mkdir(parents=True, exist_ok=True)
        path.touch()
    return folder


def typed(shell, folder, keys):
    terminal = Terminal(shell, folder, folder.parent / "home")
    try:
        terminal.set_up(shell)
        return terminal.ask(keys)
    finally:
        terminal.close()


def offered_by_fish(folder, line):
    printed = subprocess.run(
        ["fish", "--no-config", "-c", f"source {COMPLETION}/marrowbench.fish; complete -C '{line}'"],
        cwd=folder, env={**os.environ, "HOME": str(folder.parent / "home")}, check=True,
        capture_output=True, text=True).stdout
    return {offer.split("\t")[0] for offer in printed.splitlines()}


def offered(shell, folder, line):
    """The names that the shell lists for the word at the end of the line."""
    needs(shell)
    if shell == "fish":
        names = offered_by_fish(folder, line)
    else:
        shown = typed(shell, folder, f"{line}\t\t")
        rows = [row for row in re.split(r"[\r\n]+", shown)
                if not re.search(rf"^\s*{PROMPT}|^marrowbench|printf|^END", row)]
        names = {name.replace("\\ ", " ") for row in rows for name in re.split(r"\s{2,}|(?<=/) ", row)}
        names.discard("")
    return {name.strip().removesuffix("/") for name in names}


SETTINGS_FILES = {"run.bst", "Run2.BST", "my run.bst"}
FOLDERS = {"sub", "odd.bst"}


@pytest.mark.parametrize("shell", SHELLS)
def test_settings_files_and_folders_are_offered(folder, shell):
    shown = offered(shell, folder, "marrowbench ")
    assert shown - {"-zzRoot"} == SETTINGS_FILES | FOLDERS


@pytest.mark.parametrize("shell", SHELLS)
def test_root_flag_takes_a_folder_and_then_a_settings_file(folder, shell):
    # In any case, as the program reads it.
    assert offered(shell, folder, "marrowbench -ZZroot ") == FOLDERS
    assert offered(shell, folder, "marrowbench -zzRoot sub ") == SETTINGS_FILES | FOLDERS


@pytest.mark.parametrize("shell", SHELLS)
def test_nothing_is_offered_behind_the_settings_file(folder, shell):
    assert offered(shell, folder, "marrowbench run.bst ") == set()
    assert offered(shell, folder, "marrowbench -zzRoot sub run.bst ") == set()


def test_fish_offers_the_flag_and_what_is_in_a_folder(folder):
    needs("fish")
    assert offered_by_fish(folder, "marrowbench -") == {"-zzRoot"}
    assert offered_by_fish(folder, "marrowbench ") >= {"-zzRoot", "sub/"}
    assert offered_by_fish(folder, "marrowbench sub/") == {"sub/deep.bst"}
    assert offered_by_fish(folder, f"marrowbench {folder}/su") == {f"{folder}/sub/"}


@pytest.mark.parametrize("shell", TYPED)
@pytest.mark.parametrize("keys, arguments", [
    ("-\t", ["-zzRoot"]),
    ("su\tde\t", ["sub/deep.bst"]),
    ("my\t", ["my run.bst"]),
    ("-zzroot s\t ./sub/d\t", ["-zzroot", "sub", "./sub/deep.bst"]),
    ("not\t", ["not"]),
])
def test_keys_complete_to_these_arguments(folder, shell, keys, arguments):
    needs(shell)
    shown = typed(shell, folder, f"marrowbench {keys}\n")
    # zsh takes the "/" of a folder back when the next word begins.
    assert re.findall(r"GOT<(.*?)/?>", shown) == arguments


def test_bash_offers_the_flag_without_a_dash(folder):
    assert "-zzRoot" in offered("bash", folder, "marrowbench ")
