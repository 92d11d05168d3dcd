"""Each message that marrowbench(1) explains is printed by the program, run into that very situation."""

import errno
import os
import re
import shutil
import signal

import pytest

from conftest import EMULATOR, ROOT, SANITIZED, needs_strace, reason, until_shown, wait_until

PAGE = (ROOT / "docs" / "man" / "marrowbench.1").read_text()
README = (ROOT / "README.md").read_text()
SHOWN_FOLDER = "/srv/bench"
WRITE = "posix;0;0;0;64;0;64;1;0;MEMORY;{};log.txt;results.csv;true\n"
NOBODY = 65534
VALUES = "PATH|FOLDER|LINE|TABLE|NUMBER|SECONDS|TOTAL|DATA"

MESSAGES = {}
QUOTES = {}


def explained():
    """The messages of the page, each as often as there are reasons below it."""
    found = []
    diagnostics = re.search(r"^\.Sh DIAGNOSTICS\n(.*?)^\.Sh ", PAGE, re.M | re.S)[1]
    for kind, text in re.findall(r'^\.It (Li|Dq) (.*)$', diagnostics.replace(r"\&", ""), re.M):
        if kind == "Li":
            found.append((text.strip('"'), ""))
        elif found[-1][1] == "":
            found[-1] = (found[-1][0], text)
        else:
            found.append((found[-1][0], text))
    return found


def readme_quotes():
    section = re.search(r"^## Troubleshooting\n(.*?)^## ", README, re.M | re.S)[1]
    return re.findall(r"^\| `(.+?)`", section, re.M)


def prints(message, why=""):
    """The function runs the program into this message of the page, with this reason."""
    def add(function):
        MESSAGES[message, why] = function
        return function
    return add


def quoted(text):
    """The function runs the program into this text of the README."""
    def add(function):
        QUOTES[text] = function
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


def limited(limit):
    """What starts a program with a limit that a sanitizer's or an emulator's own needs would meet."""
    if SANITIZED or EMULATOR:
        pytest.skip("the program needs more than its own memory here")
    if shutil.which("prlimit") is None:
        pytest.skip("needs prlimit")
    return ["prlimit", limit, "--"]


@prints("ERROR: Out of memory")
def no_memory_at_all(bench):
    path = bench.settings("posix;0;0;0;4;0;4;0;0;MEMORY;out.bin;log.txt;results.csv;false\n")
    # From what is too little to load the program up to what is enough.
    for kib in range(512, 12000, 256):
        client = bench.start(path, prefix=limited(f"--as={kib * 1024}"))
        printed, _ = client.communicate(timeout=60)
        if client.returncode == 1:
            return printed
    raise AssertionError("there is always enough memory, or too little to start")


@prints("No commandline flags")
def no_argument(bench):
    return bench.run(status=255)


@prints("Unknown commandline flags")
@quoted("Unknown commandline flags")
def wrong_extension(bench):
    (bench.folder / "run.txt").write_text(WRITE.format("out.bin"))
    for arguments in ["-zzRoot", str(bench.folder)], ["-zzRoot", "run.bst"]:
        assert "Unknown commandline flags\n" in bench.run(*arguments, status=1)
    return bench.run(bench.folder / "run.txt", status=1)


@prints("######## Loading/Waiting for settings file 'PATH'  ########")
@quoted("######## Loading/Waiting for settings file '/srv/bench/tpyo.bst'  ########")
def misspelt(bench):
    bench.settings(WRITE.format("out.bin"), "typo.bst")
    process = bench.start(bench.folder / "tpyo.bst", fast=True)
    return until_shown(process, "########\n\n...")


@prints("Config loaded. Waiting for the next minute to start... SECONDSsec")
@prints("Note: A time sync for all your clients helps to start this test at the same time.")
@quoted("Config loaded. Waiting for the next minute to start... 80sec")
def waits_for_the_minute(bench):
    process = bench.start(bench.folder / "run.bst", fast=True)
    shown = until_shown(process, "########\n\n.")
    bench.put(WRITE.format("out.bin"))
    shown += process.communicate(timeout=120)[0]
    assert "1 files written" in shown
    # The number is that of the moment.
    return re.sub(r"start\.\.\. \d+sec", "start... 80sec", shown)


@prints("Config loaded.")
@prints("Null data test: N/A")
@prints("Total time: TOTALms ( data read/write only: DATAms)")
def plain_run(bench):
    return ran(bench, WRITE.format("out.bin"))


@prints("Error reading settings line 'LINE'")
def forgotten_number(bench):
    text = "posix;0;0;;64;0;64;1;0;MEMORY;out.bin;log.txt;results.csv;true\n"
    assert "Error reading" not in ran(bench, text.replace(";;", ";0;"))
    return ran(bench, text)


@prints("Error reading settings file 'PATH', line NUMBER: more than 200 tests, line ignored.")
def too_many_tests(bench):
    line = WRITE.format("out.bin").replace(";64;1;0;M", ";64;0;0;M")
    assert "more than 200" not in ran(bench, line * 200)
    return ran(bench, line * 201)


@prints("Unable to create 'Done'-Folder FOLDER: REASON.", "File exists")
def file_in_place_of_the_markers(bench):
    (bench.folder / "_run_log").touch()
    return ran(bench, WRITE.format("out.bin"))


@prints("Unable to create 'Done'-Folder FOLDER: REASON.", "No such file or directory")
def short_folder_of_the_marker(bench):
    (bench.folder / "ab").mkdir()
    bench.settings(WRITE.format("out.bin"), "ab/run.bst")
    printed = bench.run("ab/run.bst")
    assert "1 files written" in printed and not (bench.folder / "ab" / "_run_log").exists()
    return printed


@prints("Unable to write 'Done'-File PATH: REASON.")
def full_marker(bench):
    assert "Done" not in ran(bench, WRITE.format("out.bin"))
    (marker,) = (bench.folder / "_run_log").iterdir()
    marker.unlink()
    marker.symlink_to("/dev/full")
    return ran(bench, WRITE.format("out.bin"))


@prints("ERROR: Unable to open file 'PATH' ! REASON", "File exists")
@quoted("ERROR: Unable to open file '/srv/bench/out.bin' ! File exists")
def ansic_twice(bench):
    text = WRITE.format("out.bin").replace("posix", "ansic")
    assert "ERROR" not in ran(bench, text)
    assert "ERROR" not in ran(bench, text.replace("out.bin", "out_[host].bin"))
    return ran(bench, text)


@prints("ERROR: Unable to open file 'PATH' ! REASON", "Permission denied")
def closed_folder(bench):
    return as_nobody(bench, WRITE.format("closed/out.bin"))


@prints("ERROR: Unable to find source file 'PATH' ! REASON")
def missing_source(bench):
    return ran(bench, "posix;0;0;0;64;0;0;1;0;in.bin;MEMORY;log.txt;results.csv;true\n")


@prints("NUMBER files copied")
def copy_of_nothing(bench):
    return ran(bench, "posix;0;0;0;64;0;0;1;0;in.bin;out.bin;log.txt;results.csv;true\n")


@prints("ERROR: Unable to read file 'PATH' ! REASON", "No Error.")
def stream_copy_onto_itself(bench):
    source = bench.folder / "in.bin"
    source.write_bytes(b"x" * 300000)
    printed = ran(bench, "stream;0;0;0;64;0;0;1;0;in.bin;in.bin;log.txt;results.csv;true\n")
    assert source.stat().st_size == 0
    return printed


@prints("ERROR: Unable to write file 'PATH' ! REASON", "No space left on device")
def full_disk(bench, mounts):
    mounts.mount("full", "-t", "tmpfs", "-o", "size=64k", "marrowbench")
    return ran(bench, WRITE.format("full/out.bin").replace(";64;1;0;M", ";1024;1;0;M"))


@prints("ERROR: Unable to write file 'PATH' ! REASON", "File too large")
def file_of_two_chunks_at_most(bench):
    text = WRITE.format("out.bin").replace(";64;1;0;M", ";1024;1;0;M")
    return ran(bench, text, prefix=limited("--fsize=131072"))


@prints("ERROR: Unable to write file 'PATH' ! REASON", "No Error.")
def file_of_a_part_of_a_chunk_at_most(bench):
    return ran(bench, WRITE.format("out.bin"), prefix=limited("--fsize=40000"))


@prints("ERROR: Unable to preallocate file 'PATH' ! REASON", "Operation not supported")
@quoted("ERROR: Unable to preallocate file '/srv/bench/plain/out.bin' ! Operation not supported")
def no_preallocation(bench, mounts):
    mounts.mount("plain", "-t", "ramfs", "marrowbench")
    text = WRITE.format("plain/out.bin")
    assert "ERROR" not in ran(bench, text)
    return ran(bench, text.replace("posix;0;0", "posix;0;prealloc"))


@prints("ERROR: Unable to allocate memory buffer! REASON")
def no_address_space(bench):
    assert "ERROR" not in ran(bench, WRITE.format("out.bin"), prefix=limited("--as=1100000000"))
    return ran(bench, WRITE.format("out.bin"), prefix=limited("--as=1000000000"))


@prints("ERROR: single chunk copy not supported")
def negative_chunk(bench):
    (bench.folder / "in.bin").write_bytes(b"x" * 1024)
    return ran(bench, "posix;0;0;0;-1;0;0;1;0;in.bin;out.bin;log.txt;results.csv;true\n")


@prints("ERROR: Folder does not exists: FOLDER")
def missing_share(bench):
    printed = ran(bench, WRITE.format("share/new/bench/out.bin").replace(";64;1;0;M", ";64;2;0;M"))
    assert "Total time" not in printed and not (bench.folder / "results.csv").exists()
    return printed


@quoted("ERROR: Folder does not exists: .")
def no_folder(bench):
    bench.settings(WRITE.format("out.bin") +
                   "posix;0;0;0;64;0;0;1;0;run.bst;MEMORY;log.txt;results.csv;true\n")
    printed = bench.run("run.bst")
    # The message has its row behind it; here it gets a line of its own, as the others have.
    error = "ERROR: Folder does not exists: ."
    assert printed.count(f"{error} ") > 2 and "1 files written" not in printed
    assert [row["Type"] for row in bench.rows("results.csv")] == ["Read"], "reads run all the same"
    return printed.replace(f"{error} ", f"{error}\n")


@prints("ERROR: Unable to write excel file as it is still locked.PATH")
@prints("marrowbench: row lost: TABLE: REASON", "still locked by another client")
@prints("marrowbench: NUMBER of NUMBER rows lost")
@quoted("ERROR: Unable to write excel file as it is still locked./srv/bench/results.csv")
@quoted("marrowbench: row lost: /srv/bench/results.csv: still locked by another client")
def held_lock(bench):
    lock = bench.folder / "results.csv_lock.txt"
    lock.touch()
    printed = ran(bench, WRITE.format("out.bin"), fast=True)
    assert not (bench.folder / "results.csv").exists() and lock.exists()
    lock.unlink()
    assert "lost" not in ran(bench, WRITE.format("out.bin"))
    return printed


@prints("marrowbench: row lost: TABLE: REASON", "no lock: Permission denied")
def closed_table(bench):
    return as_nobody(bench, WRITE.format("out.bin").replace("results", "closed/results"))


@prints("marrowbench: row lost: TABLE: REASON", "the lock was taken over by another client")
def lock_of_a_stopped_client(bench):
    needs_strace()
    if SANITIZED:
        pytest.skip("the leak sanitizer refuses to be traced")
    lock = bench.folder / "results.csv_lock.txt"
    stop_at_the_lock = ["strace", "-o", bench.folder / "trace", "-P", lock, "-e",
                        "inject=openat:signal=STOP:when=1"]
    client = bench.start(bench.settings(WRITE.format("out.bin")), prefix=stop_at_the_lock)
    wait_until(lambda: "SIGSTOP" in trace_of(bench))
    assert lock.exists() and not (bench.folder / "results.csv").exists()
    lock.rename(bench.folder / "lock of the stopped client")
    lock.write_text("lock of another client")
    os.killpg(client.pid, signal.SIGCONT)
    printed, _ = client.communicate(timeout=60)
    assert not (bench.folder / "results.csv").exists()
    assert lock.read_text() == "lock of another client"
    return printed


def trace_of(bench):
    trace = bench.folder / "trace"
    return trace.read_text() if trace.exists() else ""


@prints("marrowbench: row lost: TABLE: REASON", "Permission denied")
def table_of_another_user(bench):
    table = bench.folder / "results.csv"
    table.touch(mode=0o444)
    printed = as_nobody(bench, WRITE.format("out.bin"))
    assert table.stat().st_size == 0
    return printed


@prints("marrowbench: row lost: TABLE: REASON", "No space left on device")
def table_on_a_full_disk(bench, mounts):
    folder = mounts.mount("full", "-t", "tmpfs", "-o", "size=64k", "marrowbench")
    (folder / "filling").write_bytes(b"x" * 65536)
    printed = ran(bench, WRITE.format("out.bin").replace("results.csv", "full/results.csv"))
    assert [path.name for path in folder.iterdir()] == ["filling"]
    return printed


@prints("marrowbench: row lost: TABLE: REASON", "File name too long")
def table_without_a_name_for_its_lock(bench):
    table = "r" * (249 - len(f"{bench.folder}/"))
    printed = ran(bench, WRITE.format("out.bin").replace("results.csv", table))
    assert not (bench.folder / table).exists()
    return printed


@prints("Null data test: Ok")
def data(bench):
    (bench.folder / "in.bin").write_bytes(b"x" * 65536)
    return ran(bench, "posix;0;0;0;64;0;0;1;0;in.bin;MEMORY;log.txt;results.csv;true\n")


@prints("Null data test: Null found before file position NUMBER")
def zeros(bench):
    (bench.folder / "in.bin").write_bytes(bytes(65536))
    return ran(bench, "posix;0;0;0;64;0;0;1;0;in.bin;MEMORY;log.txt;results.csv;true\n")


@prints("Empty Cache mode 4 POSIX_FADV_NOREUSE | POSIX_FADV_DONTNEED")
def cache_mode(bench):
    return ran(bench, WRITE.format("out.bin").replace(";1;0;MEM", ";1;4;MEM"))


def shown_by(scenario, bench, request):
    """The lines that the scenario prints, without the blanks around them."""
    needs_mounts = "mounts" in scenario.__code__.co_varnames[:scenario.__code__.co_argcount]
    extra = [request.getfixturevalue("mounts")] if needs_mounts else []
    printed = scenario(bench, *extra).replace(str(bench.folder), SHOWN_FOLDER)
    # The page has the texts of Linux distributions' usual C library.
    printed = printed.replace(reason(errno.EOPNOTSUPP), "Operation not supported")
    return [line.strip() for line in printed.split("\n")]


def pattern_of(message, why):
    pattern = re.sub(VALUES, ".+", re.escape(message))
    pattern = pattern.replace("REASON", re.escape(why) if why else ".+")
    # Of the summary the page has the beginning only.
    return pattern + (r" \( .*" if message == "NUMBER files copied" else "")


def test_page_and_scenarios_belong_together():
    assert len(explained()) >= 30
    assert sorted(explained()) == sorted(MESSAGES)


@pytest.mark.parametrize("message, why", MESSAGES, ids=[
    f"{function.__name__}-{number}" for number, function in enumerate(MESSAGES.values())])
def test_message_is_printed(bench, message, why, request):
    lines = shown_by(MESSAGES[message, why], bench, request)
    assert [line for line in lines if re.fullmatch(pattern_of(message, why), line)], "\n".join(lines)


def test_readme_and_scenarios_belong_together():
    assert readme_quotes() and sorted(readme_quotes()) == sorted(QUOTES)
    assert "(docs/manual.md#diagnostics)" in README


@pytest.mark.parametrize("text", QUOTES, ids=lambda text: QUOTES[text].__name__)
def test_text_of_the_readme_is_printed(bench, text, request):
    assert text in shown_by(QUOTES[text], bench, request)


def test_no_table_is_no_lost_row(bench):
    for end in "; ;true", "":
        printed = ran(bench, f"posix;0;0;0;64;0;64;2;0;MEMORY;out.bin;log.txt{end}\n")
        assert printed.count("1 files written") == 2
        assert "lost" not in printed and "excel" not in printed
    assert sorted(path.name for path in bench.folder.iterdir() if path.is_file()) == [
        "log.txt", "out.bin", "run.bst"], "no table, no lock left"
