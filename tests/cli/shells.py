"""The shells, asked what they offer for a line that is typed."""

import os
import pty
import re
import select
import shutil
import signal
import subprocess
import time

import pytest

from program_bench import ROOT

COMPLETION = ROOT / "packaging" / "completion"
PROGRAMS = ["marrowbench", "marrowctl"]

# The programs' names stand for functions that show their arguments.
ECHO = "".join(f"""{program}() {{ local word; for word in "$@"; do printf 'GOT<%s>\\n' "$word"; done; }}; """
               for program in PROGRAMS)
SETUP = {
    "bash": "bind 'set show-all-if-ambiguous on'; bind 'set completion-query-items 0';"
            " bind 'set page-completions off'; "
            + "; ".join(f". {COMPLETION}/{program}" for program in PROGRAMS),
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
        self.ask(f"{SETUP[shell]}; {ECHO} stty cols 400 rows 50\n")

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


def typed(shell, folder, keys):
    terminal = Terminal(shell, folder, folder.parent / "home")
    try:
        terminal.set_up(shell)
        return terminal.ask(keys)
    finally:
        terminal.close()


def offered_by_fish(folder, line):
    printed = subprocess.run(
        ["fish", "--no-config", "-c", f"source {COMPLETION}/{line.split()[0]}.fish; complete -C '{line}'"],
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
                if not re.search(rf"^\s*{PROMPT}|^marrow(bench|ctl) |printf|^END", row)]
        names = {name.replace("\\ ", " ") for row in rows for name in re.split(r"\s{2,}|(?<=/) ", row)}
        names.discard("")
    return {name.strip().removesuffix("/") for name in names}
