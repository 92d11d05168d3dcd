"""The packages for Linux on x86-64, installed into an empty root, used there and removed."""

import gzip
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
VERSION = re.search(r"^project\(.* VERSION ([\d.]+)", (ROOT / "CMakeLists.txt").read_text(), re.M)[1]

# What lintian and rpmlint find and is meant.
MEANT = {
    "shared-library-lacks-prerequisites": "static: one file for every Linux (lintian)",
    "statically-linked-binary": "static: one file for every Linux (rpmlint)",
    "initial-upload-closes-no-bugs": "it is given out here, not uploaded to Debian",
    "no-signature": "SHA256SUMS is what a download is compared with",
    "no-manual-page-for-binary": "rpmlint 2.4 misses every page; test_manual_pages_are_compressed doesn't",
}


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


def unpacked_deb(root):
    run("dpkg-deb", "-x", the_only("marrowbench_*_amd64.deb"), root)
    return root


def check_demo(root, prefix):
    """The demo's settings file runs there: nothing but the program is needed."""
    (root / "tmp").mkdir()
    shutil.copy(root / prefix / "share/doc/marrowbench/examples/quick.bst", root / "tmp")
    # Before the run: AnsiC overwrites nothing, so check refuses names that exist.
    printed = run("chroot", root, f"/{prefix}/bin/marrowctl", "check", "--strict", "/tmp/quick.bst")
    assert "/tmp/quick.bst" in printed
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
    assert not [path for path in root.rglob("*marrow*") if path.is_file()]


def test_archive_runs_where_it_is_unpacked(root):
    with tarfile.open(the_only("marrowbench-*-linux-x86_64.tar.gz")) as archive:
        archive.extractall(root)
    (folder,) = root.iterdir()
    check_demo(root, folder.name)


@pytest.mark.parametrize("pattern, command", [
    ("*_amd64.deb", ["lintian", "--allow-root"]),
    ("*_arm64.deb", ["lintian", "--allow-root"]),
    ("*.x86_64.rpm", ["rpmlint", "-c", ROOT / "packaging/rpmlint.toml"]),
    ("*.aarch64.rpm", ["rpmlint", "-c", ROOT / "packaging/rpmlint.toml"]),
])
def test_checkers_find_only_what_is_meant(pattern, command):
    if shutil.which(command[0]) is None:
        pytest.skip(f"needs {command[0]}")
    checked = subprocess.run([*command, the_only(pattern)], capture_output=True, text=True)
    found = re.findall(r"^(?:\S+: )?[EW]: (?:\S+: )?([a-z0-9-]+)", checked.stdout, re.M)
    # Both find something in every static program: a list without it was not read well.
    assert found, checked.stdout + checked.stderr
    assert set(found) <= set(MEANT), checked.stdout


def test_manual_pages_are_compressed(root):
    listed = set(run("rpm", "-qlp", the_only("marrowbench-*.x86_64.rpm")).splitlines())
    listed &= {f"/{path}" for path in tree(unpacked_deb(root))}
    pages = [page.name for page in (ROOT / "docs/man").glob("*.[1-8]")]
    assert "marrowbench.1" in pages
    assert {f"/usr/share/man/man{page[-1]}/{page}.gz" for page in pages} <= listed


def test_deb_has_the_documents_of_debian(root):
    documents = unpacked_deb(root) / "usr/share/doc/marrowbench"
    news = gzip.decompress((documents / "changelog.gz").read_bytes())
    assert news == (ROOT / "CHANGELOG.md").read_bytes()
    changes = gzip.decompress((documents / "changelog.Debian.gz").read_bytes()).decode()
    assert changes.startswith(f"marrowbench ({VERSION}-1) ")
    maintainer = run("dpkg-deb", "-f", the_only("marrowbench_*_amd64.deb"), "Maintainer").strip()
    assert f"\n -- {maintainer}  " in changes
    assert (documents / "copyright").read_bytes() == (ROOT / "packaging/copyright").read_bytes()


def test_zsh_finds_its_completion_in_the_deb(root):
    """Where Debian's zsh looks by itself."""
    if shutil.which("zsh") is None:
        pytest.skip("needs zsh")
    asked = ("fpath=(${(s.:.)1}$^fpath $fpath); autoload -Uz compinit; compinit -D -u;"
             " print $_comps[marrowbench]")
    own = ["zsh", "-f", "-c", asked, "zsh"]
    assert run(*own, unpacked_deb(root)).strip() == "_marrowbench"
    assert run(*own, "/nowhere").strip() == ""


@pytest.mark.parametrize("system", ["macos-x86_64", "macos-arm64", "linux-x86_64", "linux-arm64"])
def test_every_system_has_its_archive(system):
    with tarfile.open(the_only(f"marrowbench-*-{system}.tar.gz")) as archive:
        names = {name.split("/", 1)[-1] for name in archive.getnames()}
    assert {"bin/marrowbench", "bin/marrowctl", "share/man/man1/marrowbench.1",
            "share/man/man1/marrowctl-check.1", "share/doc/marrowbench/schemas/check.schema.json",
            "share/doc/marrowbench/examples/quick.bst", "share/doc/marrowbench/charts-licences.txt"} <= names


def test_sources_hold_the_chart_library():
    with tarfile.open(the_only(f"marrowbench-{VERSION}.tar.gz")) as archive:
        folder = f"marrowbench-{VERSION}/packaging/charts"
        assert {f"{folder}/charts.js", f"{folder}/charts-licences.txt", f"{folder}/package.json"} <= set(
            archive.getnames())


def test_sums_are_those_of_the_files():
    run("sh", "-c", f"cd {PACKAGES} && sha256sum --check --strict SHA256SUMS")
    assert len((PACKAGES / "SHA256SUMS").read_text().splitlines()) == len(list(PACKAGES.iterdir())) - 1


def test_formula_has_the_sum_of_the_sources():
    sums = (PACKAGES / "SHA256SUMS").read_text()
    digest, name = re.search(r"^(\w{64})  (marrowbench-[\d.]+\.tar\.gz)$", sums, re.M).groups()
    formula = (PACKAGES / "marrowbench.rb").read_text()
    assert f'sha256 "{digest}"' in formula and f'/{name}"' in formula and "@" not in formula
    homepage = re.search(r"^  homepage \"(https://[^\"]+)\"$", formula, re.M)[1]
    assert "/releases" not in homepage
