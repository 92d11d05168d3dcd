"""What a run uses: no memory wrongly, no descriptor too many, no more memory the longer it is."""

import os
import shutil
import subprocess
import sys

import pytest

from complete_run import write_complete_run
from conftest import EMULATOR, MUSL, SANITIZED

pytestmark = pytest.mark.skipif(SANITIZED, reason="the sanitizers' memory is not the program's")

# Files that are not there, folders in their place, a full device, no folder to write to. A copy
# without a source is passed over.
FAILURES = "".join(
    f"{method};flush;prealloc;0;{chunk};1;8;2;0;{source};{dest};log.txt;res.csv;true\n"
    for method in ("posix", "ansic", "stream") for chunk in (4, 0)
    for source, dest in (("missing.bin", "MEMORY"), ("small.bin", "MEMORY"), ("folder", "MEMORY"),
                         ("MEMORY", "/dev/full"), ("MEMORY", "folder"), ("missing.bin", "out.bin"),
                         ("small.bin", "a/b/c/d/out.bin")))


def needs_valgrind():
    if MUSL:
        pytest.skip("valgrind does not see the blocks of a static program")
    if shutil.which("valgrind") is None:
        pytest.skip("needs valgrind")
    if subprocess.run(["valgrind", "-q", "true"], capture_output=True).returncode != 0:
        pytest.skip("valgrind does not run here")


def run_under_valgrind(bench, settings):
    report = bench.folder / "valgrind.txt"
    bench.run(settings, prefix=["valgrind", "-q", "--leak-check=full", "--show-leak-kinds=all",
                                "--track-fds=yes", "--error-exitcode=99", f"--log-file={report}"])
    lines = [line.split("== ", 1)[-1] for line in report.read_text().splitlines()]
    assert not any(line.startswith("Open file descriptor") and "inherited" not in follow
                   for line, follow in zip(lines, lines[1:])), "\n".join(lines)


def test_valgrind_finds_nothing_in_a_complete_run(bench):
    needs_valgrind()
    run_under_valgrind(bench, write_complete_run(bench.folder))
    assert [row["Error"] for row in bench.rows()] == [""] * 10


def test_valgrind_finds_nothing_where_tests_fail(bench):
    needs_valgrind()
    (bench.folder / "small.bin").write_bytes(b"x" * 5000)
    (bench.folder / "folder").mkdir()
    run_under_valgrind(bench, bench.settings(FAILURES))
    failing = [row for row in bench.rows() if "small.bin" not in row["Source"] and
               row["Type"] != "Copy"]
    assert len(failing) == 3 * 2 * 4 * 2 and all(row["Error"] for row in failing)


def test_no_memory_at_all_ends_with_a_message(bench):
    if shutil.which("prlimit") is None:
        pytest.skip("needs prlimit")
    if EMULATOR:
        pytest.skip("the emulator has memory of its own")
    path, ends = bench.settings("posix;0;0;0;4;0;4;1;0;small.bin;copy.bin;;;false\n"), set()
    # From what is too little to load the program up to what is enough.
    for kib in range(512, 12000, 256):
        client = bench.start(path, prefix=["prlimit", f"--as={kib * 1024}", "--"])
        printed, _ = client.communicate(timeout=60)
        if printed.startswith("-----"):
            assert client.returncode == 0 or printed.endswith("ERROR: Out of memory\n"), printed
            ends.add(client.returncode)
    assert ends == {0, 1}


def test_failing_preallocations_leave_no_descriptor(bench):
    if shutil.which("prlimit") is None:
        pytest.skip("needs prlimit")
    refused = "posix;0;prealloc;0;4;0;128;1;0;MEMORY;out.bin;;res.csv;false\n"
    fits = "posix;0;0;0;4;0;4;1;0;MEMORY;out.bin;;res.csv;false\n"
    bench.run(bench.settings(refused * 199 + fits), prefix=[
        "env", "--ignore-signal=XFSZ", "prlimit", "--nofile=10", "--fsize=65536", "--"])
    errors = [row["Error"] for row in bench.rows()]
    assert all("preallocate" in error for error in errors[:199]) and len(errors) == 200
    assert errors[199] == ""


def peak_kib(bench, chain):
    """The largest resident memory of a run through so many chained settings files."""
    for i in range(chain):
        following = f"[cfgPath]run{i + 1}.bst\n" if i + 1 < chain else ""
        (bench.folder / f"run{i}.bst").write_text(
            "posix;0;0;0;4;0;64;1;0;MEMORY;out.bin;;res.csv;false\n"
            "ansic;0;0;0;4;0;64;1;0;out.bin;MEMORY;;res.csv;false\n"
            "stream;0;0;0;4;1;64;1;0;out.bin;copy.bin;;res.csv;false\n" + following)
    process = bench.start(bench.folder / "run0.bst")
    process.stdout.read()
    _, status, usage = os.wait4(process.pid, 0)
    process.returncode = os.waitstatus_to_exitcode(status)
    assert process.returncode == 0
    return usage.ru_maxrss // (1024 if sys.platform == "darwin" else 1)


def test_memory_stays_flat_over_a_thousand_chained_files(bench):
    short = peak_kib(bench, 10)
    long = peak_kib(bench, 1000)
    assert len(bench.rows()) == 3 * (10 + 1000)
    assert long < short + 512, f"{short} KiB for 10 files, {long} KiB for 1,000"
