"""What the shells offer behind the program's name, asked of the shells themselves."""

import re

import pytest

from shells import SHELLS, TYPED, needs, offered, offered_by_fish, typed


@pytest.fixture
def folder(bench):
    folder = bench.folder / "here"
    for name in ("run.bst", "Run2.BST", "my run.bst", "notes.txt", "bst", "x.bst.old",
                 "sub/deep.bst", "sub/deep.csv", "odd.bst/other.bst", "home/none"):
        path = folder / name if name != "home/none" else bench.folder / name
        path.parent.mkdir(parents=True, exist_ok=True)
        path.touch()
    return folder


SETTINGS_FILES = {"run.bst", "Run2.BST", "my run.bst"}
FOLDERS = {"sub", "odd.bst"}


@pytest.mark.parametrize("shell", SHELLS)
def test_settings_files_and_folders_are_offered(folder, shell):
    shown = offered(shell, folder, "marrowbench ")
    assert shown - {"-zzRoot"} == SETTINGS_FILES | FOLDERS


@pytest.mark.parametrize("shell", SHELLS)
def test_root_flag_takes_a_folder_and_then_a_settings_file(folder, shell):
    # In any case, as the program reads it.
    assert offered(shell, folder, "marrowbench -ZZroot ") == FOLDERS
    assert offered(shell, folder, "marrowbench -zzRoot sub ") == SETTINGS_FILES | FOLDERS


@pytest.mark.parametrize("shell", SHELLS)
def test_nothing_is_offered_behind_the_settings_file(folder, shell):
    assert offered(shell, folder, "marrowbench run.bst ") == set()
    assert offered(shell, folder, "marrowbench -zzRoot sub run.bst ") == set()


def test_fish_offers_the_flag_and_what_is_in_a_folder(folder):
    needs("fish")
    assert offered_by_fish(folder, "marrowbench -") == {"-zzRoot"}
    assert offered_by_fish(folder, "marrowbench ") >= {"-zzRoot", "sub/"}
    assert offered_by_fish(folder, "marrowbench sub/") == {"sub/deep.bst"}
    assert offered_by_fish(folder, f"marrowbench {folder}/su") == {f"{folder}/sub/"}


@pytest.mark.parametrize("shell", TYPED)
@pytest.mark.parametrize("keys, arguments", [
    ("-\t", ["-zzRoot"]),
    ("su\tde\t", ["sub/deep.bst"]),
    ("my\t", ["my run.bst"]),
    ("-zzroot s\t ./sub/d\t", ["-zzroot", "sub", "./sub/deep.bst"]),
    ("not\t", ["not"]),
])
def test_keys_complete_to_these_arguments(folder, shell, keys, arguments):
    needs(shell)
    shown = typed(shell, folder, f"marrowbench {keys}\n")
    # zsh takes the "/" of a folder back when the next word begins.
    assert re.findall(r"GOT<(.*?)/?>", shown) == arguments


def test_bash_offers_the_flag_without_a_dash(folder):
    assert "-zzRoot" in offered("bash", folder, "marrowbench ")
