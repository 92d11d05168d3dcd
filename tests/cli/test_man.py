"""The manual pages: well formed, and nothing of the formats and messages is left out."""

import contextlib
import os
import re
import shutil
import signal
import subprocess
import sys

import pytest

from conftest import EMULATOR, HEADER, ROOT, masked, wait_until

PAGES = {path.name: path for path in sorted((ROOT / "docs" / "man").iterdir())}
# Of the program: marrowctl has pages of its own.
SOURCES = [path for path in sorted((ROOT / "src").rglob("*"))
           if path.suffix in (".cpp", ".h") and not path.is_relative_to(ROOT / "src/marrowctl")]


def page(name):
    return PAGES[name].read_text()


def section(name, title):
    return re.search(rf'^\.S[hs] {title}\n(.*?)(?=^\.S[hs] |\Z)', page(name), re.M | re.S)[1]


def source(name):
    return (ROOT / "src" / name).read_text()


def literals(text):
    """The string literals of a C++ source, neighbours joined as the compiler does."""
    text = re.sub(r"^\s*//.*$", "", text, flags=re.M)
    joined = re.sub(r'(?<!\\)"\s+"', "", text)
    return [literal.replace(r"\n", "\n") for literal in re.findall(r'"((?:\\.|[^"\\])*)"', joined)]


def test_pages_are_these():
    assert set(PAGES) == {"marrowbench.1", "marrowbench-settings.5", "marrowbench-table.5",
                          "marrowctl.1", "marrowctl-check.1", "marrowctl-compare.1",
                          "marrowctl-fleet.1", "marrowctl-report.1", "marrowctl-run.1", "marrowctl-sweep.1"}


@pytest.mark.parametrize("name", PAGES)
def test_lint(bench, name):
    if shutil.which("mandoc") is None:
        pytest.skip("needs mandoc")
    # The pages refer to each other: they are looked for where they will stand.
    for path in PAGES.values():
        folder = bench.folder / f"man{path.suffix[1:]}"
        folder.mkdir(exist_ok=True)
        shutil.copy(path, folder)
    done = subprocess.run(
        ["mandoc", "-T", "lint", "-W", "style", PAGES[name]], capture_output=True, text=True,
        env={**os.environ, "MANPATH": str(bench.folder)})
    assert (done.stdout, done.returncode) == ("", 0)


@pytest.mark.parametrize("name", PAGES)
def test_no_word_is_taken_for_a_macro(name):
    # "An", "No", "It" and the like at the wrong place vanish from the page without a word.
    heads = re.findall(r"^\.(?:It|Sy|Em|Dq|Sq|Ss|Sh|Li|Pa) (.*)", page(name), re.M)
    macros = {"An", "No", "At", "In", "Do", "Os", "Fd", "Or", "As", "Is"}
    assert [head for head in heads if not head.startswith('"') and macros & set(head.split())] == []


def test_table_page_has_the_columns_in_their_order():
    columns = re.findall(r"^\.It Sy (.*)", section("marrowbench-table.5", "Columns"), re.M)
    assert columns == HEADER.rstrip(",").split(",")


def test_settings_page_has_every_placeholder_in_the_order_of_their_replacement():
    known = re.findall(r'replaceAll\("(\[\w+\])"', source("paths/placeholders.cpp"))
    assert len(known) == 11
    items = re.findall(r"^\.It Li (.*)", section("marrowbench-settings.5", "Placeholders"), re.M)
    assert [name for item in items for name in item.split(" , ")] == known


def test_readme_names_the_fields_of_the_settings_page_in_their_order():
    first = re.search(r"^\| field \| here \|.*?\n\n", (ROOT / "README.md").read_text(), re.M | re.S)[0]
    named = re.findall(r"^\| ([a-z -]+) \| `", first, re.M)
    fields = re.findall(r"^\.Sy (.*) :", section("marrowbench-settings.5", "Fields"), re.M)
    assert len(fields) == 14
    assert fields == named


@pytest.mark.skipif(sys.platform != "linux", reason="other systems have a mandoc of their own")
def test_documents_are_made_from_the_pages(bench):
    if shutil.which("mandoc") is None:
        pytest.skip("needs mandoc")
    subprocess.run([ROOT / "scripts" / "manuals", bench.folder], check=True)
    made = sorted(path.name for path in bench.folder.iterdir())
    assert made == ["manual.md", "results-table.md", "settings-file.md"]
    old = [name for name in made
           if (ROOT / "docs" / name).read_text() != (bench.folder / name).read_text()]
    assert old == [], "run scripts/manuals"


def test_settings_page_has_every_keyword():
    fields = source("settings/settings_fields.cpp")
    keywords = re.findall(r'\{"(\w+)", Method::', fields)
    keywords += re.findall(r'"(\w+)"', " ".join(re.findall(r"isOneOf\(text, \{(.*?)\}", fields)))
    assert len(keywords) == 11
    shown = re.findall(r"^\.Li (\w+)", section("marrowbench-settings.5", "Fields"), re.M)
    assert set(keywords) <= set(shown)


VALUES = "PATH|FOLDER|LINE|TABLE|REASON|NUMBER|SECONDS|TOTAL|DATA|200"


def messages_of_the_page():
    diagnostics = re.search(r"^\.Sh DIAGNOSTICS\n(.*?)^\.Sh ", page("marrowbench.1"), re.M | re.S)[1]
    return re.findall(r'^\.It Li "(.*)"$', diagnostics.replace(r"\&", ""), re.M)


@pytest.mark.parametrize("message", messages_of_the_page())
def test_message_stands_so_in_the_program(message):
    known = "".join(literals("\n".join(path.read_text() for path in SOURCES)))
    # "ERROR: " is set in front by one routine; the rest is cut where a value is printed.
    assert "ERROR: " in known
    pieces = [piece for piece in re.split(VALUES, message.removeprefix("ERROR: "))
              if len(piece) > 2]
    assert pieces and [piece for piece in pieces if piece not in known] == []


def test_page_has_every_error_of_the_program():
    starts = {literal for path in SOURCES for literal in literals(path.read_text())
              if re.match(r"(ERROR: |Error reading|Unable to|Unknown|No comm|single chunk|marrowbench: )",
                          literal)}
    assert len(starts) >= 15
    page_text = "\n".join(messages_of_the_page())
    lost = [text for text in starts if re.split(r"%|\n", text)[0].rstrip() not in page_text]
    assert lost == []


def test_report_of_the_page_is_what_is_printed(bench):
    block = re.search(r"^\.Bd -literal\n(.*?)\n\.Ed", section("marrowbench.1", "The report"),
                      re.M | re.S)[1]
    # "\&" is nothing, and keeps the blank in front of it at the end of a line.
    block = block.replace("(52 underscores)", "_" * 52).replace("\\&", "")
    line = block.splitlines()[1].strip()
    printed = masked(bench.run(bench.settings(line))).replace(str(bench.folder), "/srv/bench")
    assert f"\n{masked(block)}\n" in printed


def test_page_tells_the_form_of_longer_times():
    # As summary_line.cpp prints it: minutes, then seconds.
    assert '"%d.%02dm.s"' in source("run/summary_line.cpp")
    assert re.search(r"\d+\.\d\dm\.s", page("marrowbench.1"))


def recipe(start):
    """The commands of the page's example that this sentence begins, as a shell takes them."""
    block = re.search(rf"^{start}.*?\n\.Bd -literal -offset indent\n(.*?)\.Ed", page("marrowbench.1"),
                      re.M | re.S)[1]
    return re.sub(r"^(\$|>) ", "", block, flags=re.M)


@pytest.mark.skipif(bool(EMULATOR), reason="the commands start the program by its name")
def test_clients_of_the_recipe_all_wait_and_begin_together(bench):
    bench.settings("posix;0;0;0;64;0;64;2;0;MEMORY;out.bin;log.txt;results.csv;true\n",
                   "many_clients.bst")
    (bench.folder / "hosts").mkdir()
    commands = bench.folder / "commands"
    commands.mkdir()
    # A client that takes its time to start must not find the file at its first look.
    for name, script in (
            ("marrowbench", f'sleep 1; exec {bench.fast_program} "$@"'),
            ("ssh", f'mkdir -p "{bench.folder}/hosts/$1"; cd "{bench.folder}/hosts/$1"; sh -c "$2"')):
        (commands / name).write_text(f"#!/bin/sh\n{script}\n")
        (commands / name).chmod(0o755)
    text = recipe("Begin together on several clients").replace("/tmp/", "")
    text = text.replace("/srv/share/bench", str(bench.folder))
    shell = subprocess.Popen(
        ["sh", "-ec", text], cwd=bench.folder, start_new_session=True,
        env={**os.environ, "PATH": f"{commands}:{os.environ['PATH']}"})

    def printed():
        return {path.parent.name: path.read_text()
                for path in (bench.folder / "hosts").glob("*/run.out")}
    try:
        assert shell.wait(timeout=60) == 0
        wait_until(lambda: all("Total time" in text for text in printed().values()))
    finally:
        with contextlib.suppress(ProcessLookupError):
            os.killpg(shell.pid, signal.SIGKILL)
    assert sorted(printed()) == ["pc1", "pc2", "pc3"]
    assert [name for name, text in printed().items() if "Waiting for the next minute" not in text] == []
    assert len(bench.rows("results.csv")) == 3 * 2
