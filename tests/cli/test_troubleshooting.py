"""Each text that the page quotes is printed by the program, run into that very error."""

import errno
import os
import re
import shutil

import pytest

from conftest import ROOT, reason, until_shown

PAGE = (ROOT / "docs" / "troubleshooting.md").read_text()
# Text and what stands behind it in its cell, of each row.
QUOTED = re.findall(r"^\| `(.+?)`([^|]*) \|", PAGE, re.M)
SHOWN_FOLDER = "/srv/bench"
WRITE = "posix;0;0;0;64;0;64;1;0;MEMORY;{};log.txt;results.csv;true\n"
NOBODY = 65534

SCENARIOS = {}


def prints(start, more=""):
    """The function runs the program into the message that begins so, with this text behind it."""
    def add(function):
        SCENARIOS[start, more] = function
        return function
    return add


def ran(bench, text, **options):
    return bench.run(bench.settings(text), **options)


def as_nobody(bench, text):
    """A user for whom "closed" is closed; root is refused nothing."""
    (bench.folder / "closed").mkdir(mode=0o555)
    path = bench.settings(text)
    if os.geteuid() != 0:
        return bench.run(path)
    bench.folder.parent.chmod(0o755)
    bench.folder.chmod(0o777)
    bench.program = shutil.copy(bench.program, bench.folder / "program")
    return bench.run(path, user=NOBODY, group=NOBODY, extra_groups=[])


@prints("No commandline flags")
def no_argument(bench):
    return bench.run(status=255)


@prints("Unknown commandline flags")
def wrong_extension(bench):
    (bench.folder / "run.txt").write_text(WRITE.format("out.bin"))
    for arguments in ["-zzRoot", str(bench.folder)], ["-zzRoot", "run.bst"]:
        assert "Unknown commandline flags\n" in bench.run(*arguments, status=1)
    return bench.run(bench.folder / "run.txt", status=1)


@prints("######## Loading", "and then dots")
def misspelt(bench):
    bench.settings(WRITE.format("out.bin"), "typo.bst")
    process = bench.start(bench.folder / "tpyo.bst", fast=True)
    return until_shown(process, "########\n\n...")


@prints("Config loaded. Waiting", "and then nothing")
def waits_for_the_minute(bench):
    process = bench.start(bench.folder / "run.bst", fast=True)
    shown = until_shown(process, "########\n\n.")
    bench.put(WRITE.format("out.bin"))
    shown += process.communicate(timeout=120)[0]
    assert "1 files written" in shown
    # The number is that of the moment.
    return re.sub(r"start\.\.\. \d+sec", "start... 80sec", shown)


@prints("Error reading settings line")
def forgotten_number(bench):
    text = "posix;0;0;;64;0;64;1;0;MEMORY;out.bin;log.txt;results.csv;true\n"
    assert "Error reading" not in ran(bench, text.replace(";;", ";0;"))
    return ran(bench, text)


def rows_behind(error, printed):
    """The message has its row behind it; here it gets a line of its own, as the others have."""
    assert printed.count(f"{error} ") == 2 and "1 files written" not in printed
    return printed.replace(f"{error} ", f"{error}\n")


@prints("ERROR: Folder does not exists: .", "in front of each row")
def no_folder(bench):
    bench.settings(WRITE.format("out.bin"))
    return rows_behind("ERROR: Folder does not exists: .", bench.run("run.bst"))


@prints("ERROR: Folder does not exists: ./.", "in front of each row")
def short_folder(bench):
    bench.settings(WRITE.format("out.bin"))
    return rows_behind("ERROR: Folder does not exists: ./.", bench.run("./run.bst"))


@prints("ERROR: Folder does not exists: /srv")
def missing_share(bench):
    return ran(bench, WRITE.format("share/new/bench/out.bin"))


@prints("ERROR: Unable to open file", "File exists")
def ansic_twice(bench):
    text = WRITE.format("out.bin").replace("posix", "ansic")
    assert "ERROR" not in ran(bench, text)
    assert "ERROR" not in ran(bench, text.replace("out.bin", "out_[host].bin"))
    return ran(bench, text)


@prints("ERROR: Unable to open file", "Permission denied")
def closed_folder(bench):
    return as_nobody(bench, WRITE.format("closed/out.bin"))


@prints("ERROR: Unable to find source")
def missing_source(bench):
    return ran(bench, "posix;0;0;0;64;0;0;1;0;in.bin;MEMORY;log.txt;results.csv;true\n")


@prints("0 files copied")
def copy_of_nothing(bench):
    return ran(bench, "posix;0;0;0;64;0;0;1;0;in.bin;out.bin;log.txt;results.csv;true\n")


@prints("ERROR: Unable to write file")
def full_disk(bench, mounts):
    mounts.mount("full", "-t", "tmpfs", "-o", "size=64k", "marrowbench")
    return ran(bench, WRITE.format("full/out.bin").replace(";64;1;0;M", ";1024;1;0;M"))


@prints("ERROR: Unable to preallocate")
def no_preallocation(bench, mounts):
    mounts.mount("plain", "-t", "ramfs", "marrowbench")
    text = WRITE.format("plain/out.bin")
    assert "ERROR" not in ran(bench, text)
    return ran(bench, text.replace("posix;0;0", "posix;0;prealloc"))


@prints("ERROR: single chunk")
def negative_chunk(bench):
    (bench.folder / "in.bin").write_bytes(b"x" * 1024)
    return ran(bench, "posix;0;0;0;-1;0;0;1;0;in.bin;out.bin;log.txt;results.csv;true\n")


@prints("ERROR: Unable to write excel file as", "after ten seconds")
def held_lock(bench):
    lock = bench.folder / "results.csv_lock.txt"
    lock.touch()
    printed = ran(bench, WRITE.format("out.bin"), fast=True)
    assert not (bench.folder / "results.csv").exists() and lock.exists()
    lock.unlink()
    assert "ERROR" not in ran(bench, WRITE.format("out.bin"))
    return printed


@prints("ERROR: Unable to write excel file as", "at once")
def closed_table(bench):
    return as_nobody(bench, WRITE.format("out.bin").replace("results", "closed/results"))


@prints("ERROR: Unable to write excel file '")
def table_is_a_folder(bench):
    (bench.folder / "results.csv").mkdir()
    return ran(bench, WRITE.format("out.bin"))


@prints("Unable to create 'Done'-Folder /srv")
def file_in_place_of_the_markers(bench):
    (bench.folder / "_run_log").touch()
    return ran(bench, WRITE.format("out.bin"))


@prints("Unable to create 'Done'-Folder ab")
def short_folder_of_the_marker(bench):
    (bench.folder / "ab").mkdir()
    bench.settings(WRITE.format("out.bin"), "ab/run.bst")
    printed = bench.run("ab/run.bst")
    assert "1 files written" in printed and not (bench.folder / "ab" / "_run_log").exists()
    return printed


def scenario_of(text, more):
    fitting = [key for key in SCENARIOS if text.startswith(key[0]) and key[1] in text + more]
    best = max(fitting, key=lambda key: len("".join(key)), default=None)
    return SCENARIOS.get(best)


def test_page_quotes_and_tests_belong_together():
    assert len(QUOTED) == len(SCENARIOS) == 20
    assert {scenario_of(*quoted) for quoted in QUOTED} == set(SCENARIOS.values())


@pytest.mark.parametrize("quoted", QUOTED, ids=lambda quoted: scenario_of(*quoted).__name__)
def test_text_is_printed(bench, quoted, request):
    scenario = scenario_of(*quoted)
    needs_mounts = "mounts" in scenario.__code__.co_varnames[:scenario.__code__.co_argcount]
    extra = [request.getfixturevalue("mounts")] if needs_mounts else []
    printed = scenario(bench, *extra).replace(str(bench.folder), SHOWN_FOLDER)
    lines = [line.strip() for line in printed.split("\n")]
    if quoted[0].startswith("0 files copied"):
        lines = [re.sub(r"\d+\.\d\ds", "0.00s", line) for line in lines]
    # The page has the texts of Linux distributions' usual C library.
    assert quoted[0].replace("Operation not supported", reason(errno.EOPNOTSUPP)) in lines, printed


def test_readme_quotes_only_what_the_page_quotes():
    readme = (ROOT / "README.md").read_text()
    section = re.search(r"^## Troubleshooting\n(.*?)^## ", readme, re.M | re.S)[1]
    quotes = re.findall(r"^\| `(.+?)`", section, re.M)
    assert len(quotes) >= 4
    assert [quote for quote in quotes if quote not in {text for text, _ in QUOTED}] == []
    assert "(docs/troubleshooting.md)" in section
