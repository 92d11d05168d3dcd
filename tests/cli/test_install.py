"""What an installation puts where."""

import os
import pathlib
import shutil
import subprocess

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
    assert files == {
        "bin/marrowbench",
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
