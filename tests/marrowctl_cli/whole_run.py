"""marrowbench run on settings files to its end, and what it left."""

import dataclasses
import os
import re
import subprocess

from program_bench import EMULATOR, HEADER
from random_settings import PLACE

WAITING = re.compile(rb"########\n\n\.+$")
DATE = re.compile(r"\d{4}_\d{5}")
OPENING = re.compile(r"^.*: ___   (.*)  __  (\d+)  _{52}$", re.M)
REPORT = re.compile(r"^(.*)\n.*Null data test: ", re.M)
MARGIN = " " * 18


def plain(text):
    """A path as it can be compared: a time in it has gone on since the plan was made."""
    return DATE.sub("DATE", text)


@dataclasses.dataclass
class Row:
    """A row of a table. A comma in a path splits its cells, so it is read from both ends."""
    front: list
    middle: str  # Source, its address, Dest, its address, Error
    back: list


@dataclasses.dataclass
class Section:
    """What the console shows of a test."""
    file: str
    index: int
    reports: list  # of each iteration: its summary, or an error text


@dataclasses.dataclass
class Left:
    """What a run has left. Keys are paths."""
    printed: list  # of each start
    before: dict   # sizes of the files that were there
    sizes: dict    # of all files; None: of several that differ in a time only
    texts: dict    # what they begin with
    tables: dict   # rows
    folders: set


def environment_of(root):
    return os.environ | {"TEMP": f"{root}/temp/", "MARROWBENCH_CLOCK_SPEED": "600"}


def lay_out(case, root):
    for name, content in case.files.items():
        path = root / name
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_bytes(content)


def until_it_ends_or_waits(process):
    """What is printed; a program that waits for a file that never comes is ended."""
    printed = b""
    while piece := os.read(process.stdout.fileno(), 1 << 16):
        printed += piece
        if WAITING.search(printed):
            process.terminate()
    process.stdout.close()
    assert process.wait(timeout=60) in (0, -15), printed
    return printed.decode(errors="replace")


def start(root, name, host):
    command = [*EMULATOR, os.environ["MARROWBENCH_FAST_PROGRAM"], name]
    if host:
        command = ["unshare", "--uts", "sh", "-c", 'hostname "$0" && exec "$@"', host, *command]
    process = subprocess.Popen(command, cwd=root / PLACE, env=environment_of(root),
                               stdout=subprocess.PIPE, stderr=subprocess.STDOUT)
    return until_it_ends_or_waits(process)


def sections_of(printed):
    parts = OPENING.split(printed)
    return [Section(file, int(index),
                    [plain(report.rsplit(MARGIN, 1)[-1]) for report in REPORT.findall(text)])
            for file, index, text in zip(parts[1::3], parts[2::3], parts[3::3])]


def is_log(text):
    """A log begins so even where no iteration was run."""
    return OPENING.search(text) is not None


def row_of(text):
    cells = text.split(",")
    assert len(cells) >= 34 and cells[-1] == "", text
    return Row(cells[:12], plain(",".join(cells[12:-17])), cells[-17:-1])


def names_below(root):
    """All files, and their path as text."""
    return [(path, path.decode(errors="replace")) for folder, _, names in os.walk(os.fsencode(root))
            for path in (os.path.join(folder, name) for name in names)]


def run(case, root):
    """Runs the case for one client after the other."""
    before = {path: os.path.getsize(name) for name, path in names_below(root)}
    printed = [start(root, name, host) for host in case.hosts or [""] for name in case.named]
    left = Left(printed, before, {}, {}, {}, {plain(os.fsdecode(folder)) for folder, _, _ in os.walk(root)})
    for name, path in names_below(root):
        key = plain(path)
        left.sizes[key] = None if key in left.sizes else os.path.getsize(name)
        with open(name, "rb") as file:
            left.texts[key] = file.read(1 << 20).decode(errors="replace")
        if left.texts[key].startswith(HEADER):
            left.tables[key] = [row_of(line) for line in left.texts[key].split("\n")[1:] if line]
    return left
