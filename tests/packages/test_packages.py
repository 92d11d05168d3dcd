"""The packages for Linux on x86-64, installed into an empty root, used there and removed."""

import os
import pathlib
import platform
import re
import shutil
import subprocess
import tarfile
import tempfile

import pytest

ROOT = pathlib.Path(__file__).resolve().parents[2]
PACKAGES = ROOT / "dist/packages"


@pytest.fixture
def root():
    if os.geteuid() != 0 or platform.machine() != "x86_64":
        pytest.skip("programs in other roots need root and an x86-64 processor")
    with tempfile.TemporaryDirectory(prefix="marrowbench_root_") as folder:
        yield pathlib.Path(folder)


def the_only(pattern):
    found = list(PACKAGES.glob(pattern))
    assert len(found) == 1, found
    return found[0]


def run(*command):
    return subprocess.run(command, check=True, capture_output=True, text=True).stdout


def tree(root):
    """Everything but what belongs to the package manager."""
    return {path.relative_to(root).as_posix() for path in root.rglob("*")
            if not path.relative_to(root).as_posix().startswith("var/lib")}


def check_demo(root, prefix):
    """The demo's settings file runs there: nothing but the program is needed."""
    (root / "tmp").mkdir()
    shutil.copy(root / prefix / "share/doc/marrowbench/examples/quick.bst", root / "tmp")
    printed = run("chroot", root, f"/{prefix}/bin/marrowbench", "/tmp/quick.bst")
    assert "ERROR" not in printed
    table = (root / "tmp/marrowbench_quick_results.csv").read_text()
    assert table.count("\n\n") == 9
    shutil.rmtree(root / "tmp")


def test_deb_runs_in_an_empty_root_and_leaves_nothing(root):
    if shutil.which("dpkg") is None:
        pytest.skip("needs dpkg")
    (root / "var/lib/dpkg/info").mkdir(parents=True)
    (root / "var/lib/dpkg/updates").mkdir()
    (root / "var/lib/dpkg/status").touch()
    before = tree(root)
    dpkg = ["dpkg", f"--root={root}", "--log=/dev/null"]
    run(*dpkg, "-i", the_only("marrowbench_*_amd64.deb"))
    check_demo(root, "usr")
    run(*dpkg, "--purge", "marrowbench")
    assert tree(root) == before


def test_rpm_runs_in_an_empty_root_and_leaves_no_file(root):
    if shutil.which("rpm") is None:
        pytest.skip("needs rpm")
    rpm = ["rpm", f"--root={root}", "--dbpath=/var/lib/rpm"]
    run(*rpm, "--initdb")
    run(*rpm, "-i", the_only("marrowbench-*.x86_64.rpm"))
    check_demo(root, "usr")
    run(*rpm, "-e", "marrowbench")
    assert not [path for path in root.rglob("*marrowbench*") if path.is_file()]


def test_archive_runs_where_it_is_unpacked(root):
    with tarfile.open(the_only("marrowbench-*-linux-x86_64.tar.gz")) as archive:
        archive.extractall(root)
    (folder,) = root.iterdir()
    check_demo(root, folder.name)


@pytest.mark.parametrize("system", ["macos-x86_64", "macos-arm64", "linux-x86_64", "linux-arm64"])
def test_every_system_has_its_archive(system):
    with tarfile.open(the_only(f"marrowbench-*-{system}.tar.gz")) as archive:
        names = {name.split("/", 1)[-1] for name in archive.getnames()}
    assert {"bin/marrowbench", "share/man/man1/marrowbench.1",
            "share/doc/marrowbench/examples/quick.bst"} <= names


def test_sums_are_those_of_the_files():
    run("sh", "-c", f"cd {PACKAGES} && sha256sum --check --strict SHA256SUMS")
    assert len((PACKAGES / "SHA256SUMS").read_text().splitlines()) == len(list(PACKAGES.iterdir())) - 1


def test_formula_has_the_sum_of_the_sources():
    sums = (PACKAGES / "SHA256SUMS").read_text()
    digest, name = re.search(r"^(\w{64})  (marrowbench-[\d.]+\.tar\.gz)$", sums, re.M).groups()
    formula = (PACKAGES / "marrowbench.rb").read_text()
    assert f'sha256 "{digest}"' in formula and f'/{name}"' in formula and "@" not in formula
