"""The built marrowctl, run as a user runs it."""

import itertools
import os
import pathlib
import re
import subprocess
import sys
import tempfile

import pytest

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[1] / "cli"))

from program_bench import EMULATOR, ROOT  # noqa: E402

from fleet_table import tests, write_fleet  # noqa: E402

__all__ = ["COMMAND", "EMULATOR", "ROOT"]

COMMAND = [*EMULATOR, os.environ["MARROWCTL_PROGRAM"]]

# Two tests without a finding, for any clients.
GOOD = ("posix;0;0;0;64;0;128;2;0;MEMORY;{0}/[host]_[iter].bin;{0}/log.txt;{0}/results.csv;false\n"
        "posix;0;0;0;64;0;0;2;0;{0}/in.bin;{0}/copy_[host].bin;{0}/log.txt;{0}/results.csv;true\n")


class Ctl:
    """A folder, and marrowctl to run in it."""

    def __init__(self, folder):
        self.folder = folder

    def run(self, *arguments, **options):
        if "stdout" not in options:
            options["stdout"] = subprocess.PIPE
        # A million rows take sanitizers minutes.
        return subprocess.run([*COMMAND, *map(str, arguments)], text=True,
                              cwd=options.pop("cwd", self.folder),
                              timeout=options.pop("timeout", 600), stderr=subprocess.PIPE, **options)

    def write(self, name, text):
        path = self.folder / name
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_text(text)
        return path

    def good(self, name="good.bst"):
        """A settings file without a finding."""
        self.write("in.bin", "data")
        return self.write(name, GOOD.format(self.folder))


@pytest.fixture
def ctl():
    # pytest's own tmp_path would keep the folders of the last runs.
    with tempfile.TemporaryDirectory(prefix="marrowctl_cli_") as temporary:
        folder = pathlib.Path(temporary).resolve() / "bench"
        folder.mkdir()
        yield Ctl(folder)


HOSTS = [f"c{number:02d}" for number in range(1, 13)]
HOST_PATTERN = r"([^/]*)_\d+\.bin$"


def made_page(ctl, subcommand, name, *arguments):
    done = ctl.run(subcommand, "--html", name, "--force", "--all-runs", "--host-pattern", HOST_PATTERN, *arguments)
    # Where it takes long, lines of progress come first.
    assert re.fullmatch(rf"(marrowctl {subcommand}: reading, .*\n)*marrowctl {subcommand}: written: {name}\n",
                        done.stderr), done.stderr
    assert done.returncode in (0, 1)
    return ctl.folder / name


@pytest.fixture
def charts():
    if os.environ["MARROWCTL_CHARTS"] != "1":
        pytest.skip("needs a program with charts, see MARROWBENCH_CHARTS")


@pytest.fixture
def page(ctl, charts):
    """Makes a page of a fleet's table; gives it and how many rows there are."""
    def make(hosts=HOSTS, **options):
        rows = write_fleet(ctl.folder / "results.csv", hosts, **options)
        return made_page(ctl, "report", "page.html", "results.csv"), rows
    return make


@pytest.fixture
def compared_page(ctl, charts):
    """Makes a page of two runs of a fleet: some tests are faster in the second, some slower, some neither."""
    def make(hosts=HOSTS, old="old.csv", new="new.csv"):
        factors = itertools.cycle([1, 1.3, 0.8, 0.97])
        write_fleet(ctl.folder / old, hosts)
        write_fleet(ctl.folder / new, hosts, seed=2, factors={test: next(factors) for test in tests()})
        return made_page(ctl, "compare", "compared.html", old, new)
    return make
