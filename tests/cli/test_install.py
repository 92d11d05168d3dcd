"""What an installation puts where."""

import os
import pathlib
import shutil
import subprocess
import sys

import pytest

from conftest import ROOT

BUILD = pathlib.Path(os.environ["MARROWBENCH_BUILD"])


@pytest.fixture
def installed(bench):
    # The build's own list of installed files is not a test's to change.
    manifest = BUILD / "install_manifest.txt"
    before = manifest.read_bytes() if manifest.exists() else None
    subprocess.run(["cmake", "--install", BUILD, "--prefix", bench.folder], check=True,
                   stdout=subprocess.DEVNULL)
    manifest.unlink()
    if before is not None:
        manifest.write_bytes(before)
    return bench.folder


def test_every_file_has_its_usual_place(installed):
    examples = [path.name for path in (ROOT / "examples").iterdir()
                if path.suffix in (".bst", ".md")]
    assert "quick.bst" in examples
    files = {path.relative_to(installed).as_posix() for path in installed.rglob("*")
             if path.is_file()}
    companion = {
        "bin/marrowctl",
        *(f"share/doc/marrowbench/schemas/{name}.schema.json"
          for name in ("check", "compare", "finished", "probe", "published", "ready", "report", "watch")),
        "share/man/man1/marrowctl.1",
        *(f"share/man/man1/marrowctl-{name}.1" for name in ("check", "compare", "fleet", "report", "run", "sweep")),
        "share/bash-completion/completions/marrowctl",
        "share/zsh/site-functions/_marrowctl",
        "share/fish/vendor_completions.d/marrowctl.fish",
    }
    # Only with the page of charts.
    licences = "share/doc/marrowbench/charts-licences.txt"
    if os.environ["MARROWCTL_CHARTS"] == "1":
        companion.add(licences)
    # Only where its libraries are.
    assert companion & files == (companion if (BUILD / "marrowctl").exists() else set())
    assert files - companion == {
        "bin/marrowbench",
        "share/doc/marrowbench/CHANGELOG.md",
        "share/doc/marrowbench/copyright",
        "share/man/man1/marrowbench.1",
        "share/man/man5/marrowbench-settings.5",
        "share/man/man5/marrowbench-table.5",
        "share/bash-completion/completions/marrowbench",
        "share/zsh/site-functions/_marrowbench",
        "share/fish/vendor_completions.d/marrowbench.fish",
        *(f"share/doc/marrowbench/examples/{name}" for name in examples),
    }
    assert not os.access(installed / "share/man/man1/marrowbench.1", os.X_OK)
    assert os.access(installed / "bin/marrowbench", os.X_OK)


@pytest.mark.skipif(shutil.which("man") is None, reason="needs man")
def test_man_finds_the_pages_there(installed):
    for section, name in ("1", "marrowbench"), ("5", "marrowbench-settings"):
        found = subprocess.run(["man", "-M", installed / "share/man", "-w", section, name],
                               capture_output=True, text=True)
        assert found.stdout.strip() == f"{installed}/share/man/man{section}/{name}.{section}"


def test_copyright_has_the_words_of_the_license(installed):
    copyright_file = (installed / "share/doc/marrowbench/copyright").read_text()
    words = " ".join(copyright_file.replace("\n .\n", "\n").split())
    head, _, terms = (ROOT / "LICENSE").read_text().partition("Permission")
    assert " ".join(f"Permission{terms}".split()) in words
    assert head.split("(c) ")[1].strip() in words


def configured(folder, source, *options):
    """A project that was configured in a folder of its own, and what was said."""
    build = folder / "build"
    done = subprocess.run(["cmake", "-S", source, "-B", build, "-G", "Ninja", *options],
                          capture_output=True, text=True)
    return build, done


def ctest(build):
    done = subprocess.run(["ctest", "--test-dir", build, "-N"], capture_output=True, text=True)
    assert done.returncode == 0
    return done.stdout + done.stderr


def test_without_tools_for_tests_the_program_is_what_is_built(bench):
    build, done = configured(bench.folder, ROOT, "-DCMAKE_DISABLE_FIND_PACKAGE_GTest=ON", "-DPYTEST=OFF")
    assert done.returncode == 0, done.stderr
    assert "unit tests" in done.stderr and "libgtest-dev" in done.stderr
    assert "tests of the whole program" in done.stderr and "python3-pytest" in done.stderr
    assert "Total Tests: 0" in ctest(build)
    cache = (build / "CMakeCache.txt").read_text()
    assert "CMAKE_BUILD_TYPE:STRING=Release\n" in cache
    assert "-Werror" not in (build / "build.ninja").read_text()


@pytest.mark.parametrize("tool, missing", [
    ("GoogleTest", "-DCMAKE_DISABLE_FIND_PACKAGE_GTest=ON"), ("pytest", "-DPYTEST=OFF")])
def test_developers_leave_no_tests_out(bench, tool, missing):
    _, done = configured(bench.folder, ROOT, "--preset", "release", missing)
    assert done.returncode != 0
    assert f"need {tool}: install" in " ".join(done.stderr.split())


def test_a_part_of_another_project_adds_only_the_program(bench):
    (bench.folder / "CMakeLists.txt").write_text(f"""cmake_minimum_required(VERSION 3.25)
project(other LANGUAGES CXX)
enable_testing()
add_subdirectory({ROOT} marrowbench)
""")
    build, done = configured(bench.folder, bench.folder, "-DBUILD_TESTING=ON")
    assert done.returncode == 0, done.stderr
    assert "Total Tests: 0" in ctest(build)
    targets = subprocess.run(["ninja", "-C", build, "-t", "targets", "rule", "phony"], check=True,
                             capture_output=True, text=True).stdout.split()
    assert "marrowbench" in targets and "unit_tests" not in targets and "package" not in targets
    # Nothing was built: whatever it installed would be missing.
    assert subprocess.run(["cmake", "--install", build, "--prefix", bench.folder / "to"],
                          capture_output=True).returncode == 0
    assert not (bench.folder / "to").exists()


@pytest.mark.skipif(sys.platform == "darwin", reason="macOS has no such archive")
def test_a_missing_archive_of_the_library_is_told(bench):
    _, done = configured(bench.folder, ROOT, "-DBUILD_TESTING=OFF",
                         "-DMARROWBENCH_LINKS_STATIC_LIBSTDCXX=OFF")
    assert done.returncode == 0
    assert "libstdc++.a, is not installed" in done.stderr
