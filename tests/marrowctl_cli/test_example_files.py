"""The settings files in examples/ are as check wants them; what it is told to allow, it would find."""

import json
import os
import re
import shutil

import pytest

from conftest import ROOT

FOLDER = ROOT / "examples"
EXAMPLES = {path.name: path.read_text() for path in sorted(FOLDER.glob("*.bst"))}
ALLOW = re.compile(r"^# marrowctl: allow (.*)\n", re.M)


@pytest.fixture
def share(ctl):
    """All examples in a folder of their own, and TEMP in it: nothing there is left of a run."""
    for name, text in EXAMPLES.items():
        ctl.write(f"share/{name}", text)
    (ctl.folder / "share/temp").mkdir()
    return ctl


def check(ctl, *arguments):
    environment = os.environ | {"TEMP": str(ctl.folder / "share/temp")}
    # From elsewhere, by the whole path, as README.md beside the examples tells.
    done = ctl.run("check", "--strict", "--json", *arguments, env=environment)
    assert done.stderr == ""
    return done.returncode, json.loads(done.stdout)


def found(document, *, notes=False):
    return {finding["name"] for finding in document["findings"]
            if notes or finding["severity"] != "note"}


def needs_room(ctl, document):
    if shutil.disk_usage(ctl.folder).free < document["totals"]["bytesWritten"]:
        pytest.skip("there is not as much room here as the example writes")


@pytest.mark.parametrize("name", EXAMPLES)
def test_example_has_no_finding_but_notes(share, name):
    status, document = check(share, share.folder / "share" / name)
    needs_room(share, document)
    assert (status, found(document)) == (0, set())


def test_all_examples_together_have_none_either(share):
    status, document = check(share, share.folder / "share")
    needs_room(share, document)
    assert (status, found(document)) == (0, set())
    assert len(document["files"]) == len(EXAMPLES)


@pytest.mark.parametrize("name", [name for name, text in EXAMPLES.items() if "# Each client:\n" in text])
@pytest.mark.parametrize("fleet", [["--clients", "20"], ["--hosts", "c[01-20]"]])
def test_example_for_many_clients_has_none_for_twenty(share, name, fleet):
    status, document = check(share, *fleet, share.folder / "share" / name)
    needs_room(share, document)
    assert (status, found(document)) == (0, set())


@pytest.mark.parametrize("name", [name for name, text in EXAMPLES.items() if ALLOW.search(text)])
def test_what_is_allowed_would_be_found_and_has_its_reason(share, name):
    allowed = {word for names in ALLOW.findall(EXAMPLES[name]) for word in names.split()}
    path = share.write(f"share/{name}", ALLOW.sub("", EXAMPLES[name]))
    assert found(check(share, path)[1], notes=True) >= allowed
    reasons = re.findall(r"^(.*)\n# marrowctl: allow", EXAMPLES[name], re.M)
    assert reasons and all(re.fullmatch(r"# .*\w.*:", reason) for reason in reasons)
