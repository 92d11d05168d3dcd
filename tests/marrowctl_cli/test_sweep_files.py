"""What sweep writes, and where."""

import os
import re
import subprocess

import pytest

from conftest import EMULATOR


def lines_of(text):
    return [line for line in text.splitlines() if not line.startswith("#") and line.count(";") == 13]


def test_standard_output_is_the_settings_file(ctl):
    done = ctl.run("sweep", "--size", "64K", "--chunk", "4K..16K", "--method", "posix,stream")
    assert (done.returncode, done.stderr) == (0, "")
    assert len(lines_of(done.stdout)) == 6
    assert list(ctl.folder.iterdir()) == []


def test_the_head_is_the_command_for_a_shell(ctl):
    done = ctl.run("sweep", "--dest", "it's here/", "--size=4K")
    assert done.stdout.splitlines()[0].endswith(r"marrowctl sweep --dest 'it'\''s here/' --size=4K")


def test_a_line_end_in_a_word_does_not_end_the_comment(ctl):
    ctl.write("x\nposix;0", "c1 c2\n")
    done = ctl.run("sweep", "--size", "64K", "--output", "y.bst", "--neighbour", "x\nposix;0")
    assert done.returncode == 0, done.stderr
    for path in ctl.folder.glob("*.bst"):
        assert path.read_text().startswith("# Made by: marrowctl sweep --size 64K --output y.bst "
                                           "--neighbour 'x?posix;0'\n")


def test_each_option_has_its_field(ctl):
    ctl.write("in.bin", "data")
    folder = ctl.folder
    done = ctl.run("sweep", "--method", "stream", "--kind", "copy", "--chunk", "4K", "--size", "8K",
                   "--buffer", "1", "--wait", "3", "--iterations", "2", "--flush", "yes", "--prealloc", "no",
                   "--dest", f"{folder}/out.bin", "--source", f"{folder}/in.bin", "--log", f"{folder}/l.txt",
                   "--table", f"{folder}/t_[host].csv")
    assert lines_of(done.stdout) == [
        f"stream;flush;0;3;4;1;0;2;0;{folder}/in.bin;{folder}/out_[host]_[iter].bin;{folder}/l.txt;"
        f"{folder}/t_[host].csv;true"], done.stderr
    done = ctl.run("sweep", "--size", "8K", "--prealloc", "yes", "--dest", f"{folder}/")
    assert lines_of(done.stdout)[0].startswith(
        f"posix;0;prealloc;0;1024;-1;8;1;0;MEMORY;{folder}/[host]_write_posix_1M_8K.bin;")


def test_nothing_is_overwritten_without_force(ctl):
    old = ctl.write("x.bst", "old")
    done = ctl.run("sweep", "--size", "64K", "--output", "x.bst")
    assert (done.returncode, done.stderr) == (
        2, "marrowctl sweep: x.bst: exists already; --force overwrites it\n")
    assert old.read_text() == "old"
    done = ctl.run("sweep", "--size", "64K", "--output", "x.bst", "--force")
    assert (done.returncode, done.stdout, done.stderr) == (0, "", "marrowctl sweep: written: x.bst\n")
    assert len(lines_of(old.read_text())) == 1


@pytest.mark.parametrize("options, status, message", [
    (["--kind", "read", "--source", "none.bin"], 1,
     'no earlier line writes "./././none.bin", and it does not exist here; put a line before this one that '
     "writes it, with as many iterations, or make the file beforehand [source-missing]"),
    (["--table", "folder"], 1, "the table is a folder here: what is written there is not kept in a file; "
     "write the path of a file [table-is-special]"),
    (["--dest", "a/b/c/"], 2, 'the test is not run: three or more levels of "./././a/b/c/" are missing here, '
     "and a client makes two at most; correct the path, or make the folder beforehand [folder-refused]"),
])
@pytest.mark.parametrize("output", [[], ["--output", "-"], ["--output", "x.bst"], ["--output", "old.bst",
                                                                                 "--force"]])
def test_what_a_strict_check_finds_here_is_refused(ctl, options, status, message, output):
    (ctl.folder / "folder").mkdir()
    old = ctl.write("old.bst", "old")
    done = ctl.run("sweep", "--size", "64K", *options, *output)
    assert (done.returncode, done.stdout, done.stderr) == (status, "", f"marrowctl sweep: {message}\n")
    assert {path.name for path in ctl.folder.iterdir()} == {"folder", "old.bst"}
    assert old.read_text() == "old"


def test_each_kind_of_finding_is_told_and_the_worst_is_the_status(ctl):
    done = ctl.run("sweep", "--size", "64K", "--chunk", "4K..64K", "--table", "/dev/null", "--dest", "a/b/c/")
    names = re.findall(r"\[([a-z-]+)\]$", done.stderr, re.M)
    assert (done.returncode, sorted(names)) == (2, ["folder-refused", "table-is-special"])


def test_a_folder_that_is_not_there_is_told_first(ctl):
    done = ctl.run("sweep", "--output", "no/where.bst")
    assert (done.returncode, done.stdout, done.stderr) == (
        2, "", "marrowctl sweep: no/where.bst: No such file or directory\n")


def test_over_200_tests_become_a_chain_of_files(ctl):
    done = ctl.run("sweep", "--output", "y.bst", "--chunk", "1K..16M", "--size", "4K..64K",
                   "--wait", "0,1,2")
    assert done.returncode == 0, done.stderr
    names = re.findall(r"written: (.*)", done.stderr)
    assert names == ["y.bst", "y-2.bst"]
    counts = [len(lines_of((ctl.folder / name).read_text())) for name in names]
    assert sum(counts) == 15 * 5 * 3 and max(counts) <= 200
    assert (ctl.folder / "y.bst").read_text().rstrip().endswith("y-2.bst")


@pytest.mark.parametrize("options", [
    [], ["--neighbour", "c[1-3]"], ["--method", "ansic,stream", "--kind", "write,copy,read"],
    ["--kind", "read,copy", "--source", "in.bin"],
    ["--iterations", "1,3", "--flush", "no,yes", "--method", "stream"]])
def test_files_pass_a_strict_check(ctl, options):
    ctl.write("in.bin", "data")
    assert ctl.run("sweep", "--output", "x.bst", "--size", "64K", "--chunk", "4K,16K",
                   *options).returncode == 0
    hosts = ["--hosts", "c[1-3]"] if "--neighbour" in options else []
    done = ctl.run("check", "--strict", "x.bst", *hosts)
    assert done.returncode == 0, done.stdout


@pytest.mark.parametrize("output", ["x.bst", "./x.bst", "a/x.bst", "ab/x.bst", "abc/x.bst", "a/b/x.bst", "/x.bst"])
def test_files_can_be_run_from_every_folder(ctl, output):
    if output.startswith("/"):
        output = f"{ctl.folder}{output}"
    (ctl.folder / output).parent.mkdir(parents=True, exist_ok=True)
    options = ["--method", "posix,ansic", "--kind", "write,copy,read", "--size", "64K"]
    assert ctl.run("sweep", *options, "--output", output).returncode == 0
    done = subprocess.run([*EMULATOR, os.environ["MARROWBENCH_FAST_PROGRAM"], output], cwd=ctl.folder,
                          capture_output=True, text=True, timeout=60)
    table = (ctl.folder / output).with_name("x_results.csv").read_text()
    rows = re.findall(r"^\w+ \d+\. .*,(?:Posix|AnsiC),", table, re.M)
    assert ("ERROR" in done.stdout, len(rows)) == (False, 6), done.stdout
