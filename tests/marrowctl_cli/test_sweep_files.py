"""What sweep writes, and where."""

import re

import pytest


def lines_of(text):
    return [line for line in text.splitlines() if not line.startswith("#") and line.count(";") == 13]


def test_standard_output_is_the_settings_file(ctl):
    done = ctl.run("sweep", "--chunk", "4K..16K", "--method", "posix,stream")
    assert (done.returncode, done.stderr) == (0, "")
    assert len(lines_of(done.stdout)) == 6
    assert list(ctl.folder.iterdir()) == []


def test_the_head_is_the_command_for_a_shell(ctl):
    done = ctl.run("sweep", "--dest", "it's here/", "--chunk=4K")
    assert done.stdout.splitlines()[0].endswith(r"marrowctl sweep --dest 'it'\''s here/' --chunk=4K")


def test_a_line_end_in_a_word_does_not_end_the_comment(ctl):
    done = ctl.run("sweep", "--output", "x\nposix;0.bst")
    texts = [done.stdout, *(path.read_text() for path in ctl.folder.iterdir())]
    assert [text for text in texts if "\nposix;0.bst" in text] == []


def test_nothing_is_overwritten_without_force(ctl):
    old = ctl.write("x.bst", "old")
    done = ctl.run("sweep", "--output", "x.bst")
    assert (done.returncode, done.stderr) == (
        2, "marrowctl sweep: x.bst: exists already; --force overwrites it\n")
    assert old.read_text() == "old"
    done = ctl.run("sweep", "--output", "x.bst", "--force")
    assert (done.returncode, done.stdout, done.stderr) == (0, "", "marrowctl sweep: written: x.bst\n")
    assert len(lines_of(old.read_text())) == 1


def test_over_200_tests_become_a_chain_of_files(ctl):
    done = ctl.run("sweep", "--output", "y.bst", "--chunk", "1K..16M", "--size", "1M..16M",
                   "--wait", "0,1,2")
    assert done.returncode == 0, done.stderr
    names = re.findall(r"written: (.*)", done.stderr)
    assert names == ["y.bst", "y-2.bst"]
    counts = [len(lines_of((ctl.folder / name).read_text())) for name in names]
    assert sum(counts) == 15 * 5 * 3 and max(counts) <= 200
    assert (ctl.folder / "y.bst").read_text().rstrip().endswith("y-2.bst")


@pytest.mark.parametrize("options", [
    [], ["--neighbour", "c[1-3]"], ["--method", "ansic,stream", "--kind", "write,copy,read"],
    ["--iterations", "1,3", "--flush", "no,yes", "--method", "stream"]])
def test_files_pass_a_strict_check(ctl, options):
    assert ctl.run("sweep", "--output", "x.bst", "--size", "64K", "--chunk", "4K,16K",
                   *options).returncode == 0
    hosts = ["--hosts", "c[1-3]"] if "--neighbour" in options else []
    done = ctl.run("check", "--strict", "x.bst", *hosts)
    assert done.returncode == 0, done.stdout
