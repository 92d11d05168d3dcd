"""What a share does, good ones and such as break a rule."""

import contextlib
import json
import os
import re
import resource
import signal
import subprocess

import pytest

from conftest import COMMAND, EMULATOR, ROOT
from mounts import Mounts
from program_bench import wait_until
from screen import Terminal

SCHEMA = json.loads((ROOT / "docs/schemas/probe.schema.json").read_text())


@pytest.fixture
def mounts(ctl):
    if os.geteuid() != 0:
        pytest.skip("mounting needs root")
    with contextlib.ExitStack() as ends:
        yield Mounts(ctl, ends)


@pytest.fixture
def share(ctl):
    folder = ctl.folder / "share"
    folder.mkdir()
    return folder


def is_progress(messages):
    return re.fullmatch(r"(marrowctl fleet probe: trying [^\n]+\n)+", messages)


def probe(ctl, *folders, status=0, seconds=60, options=("--quick",)):
    """The document of a probe, which leaves nothing behind."""
    done = ctl.run("fleet", "probe", "--json", *options, *folders, timeout=seconds)
    assert done.returncode == status and is_progress(done.stderr), (done.stdout, done.stderr)
    for folder in folders:
        assert list(folder.iterdir()) == []
    return json.loads(done.stdout)


def test_good_share_takes_one_table(ctl, share):
    found = probe(ctl, share)
    assert (found["verdict"], found["reasons"], found["clients"]) == ("one table", [], 40)
    races, rows = found["exclusiveCreate"], found["rows"]
    assert (races["rounds"], races["oneWinner"], races["otherAnswers"]) == (20, 20, [])
    assert (rows["kept"], rows["headers"], rows["leavesLock"]) == (rows["told"], 1, False)
    assert rows["told"] == rows["clients"] * 3
    assert found["secondMount"] is None and found["otherClientsSeen"] is False
    assert any("one mount of one machine" in note for note in found["notes"])


def test_whole_probe_tries_more(ctl, share):
    found = probe(ctl, share, share, options=())
    assert found["quick"] is False and found["verdict"] == "one table"
    assert found["exclusiveCreate"]["rounds"] == found["exclusiveCreate"]["oneWinner"] > 20
    assert found["rows"]["told"] == found["rows"]["kept"] == 80
    second = found["secondMount"]
    for name in ("newFile", "newFileLookedFor", "newFileListed", "removedFile", "changedFile", "replacedFile"):
        assert second[name]["files"] == 3 and second[name]["unseen"] == 0, name
        assert second[name]["medianSeconds"] <= second[name]["longestSeconds"] < 5, name


def test_text_says_the_same(ctl, share):
    done = ctl.run("fleet", "probe", "--quick", share, share)
    assert done.returncode == 0
    assert done.stderr.splitlines() == [f"marrowctl fleet probe: trying {what}" for what in (
        "ordinary calls", "the times of files", "exclusive create", "rows under the lock",
        "what the second mount sees")]
    assert re.search(r"^Exclusive create +one winner in 20 of 20 rounds, 8 processes each$", done.stdout, re.M)
    assert re.search(r"^Rows +one takes .*; 12 of 12 rows kept that 4 clients wrote at once$", done.stdout, re.M)
    # One memory shows nothing of another client.
    assert "removed file" not in done.stdout
    assert "\nOne table is safe, for up to 40 clients that finish in step.\n" in done.stdout


@pytest.mark.parametrize("two", [False, True])
@pytest.mark.parametrize("options", [("--quick",), ()])
def test_document_follows_its_schema(ctl, share, two, options):
    jsonschema = pytest.importorskip("jsonschema", reason="needs jsonschema")
    jsonschema.Draft202012Validator.check_schema(SCHEMA)
    document = probe(ctl, *[share] * (1 + two), options=options)
    jsonschema.validate(document, SCHEMA)
    for name in document:
        with pytest.raises(jsonschema.ValidationError):
            jsonschema.validate({key: value for key, value in document.items() if key != name}, SCHEMA)


def test_several_probes_of_one_folder_do_not_disturb_each_other(ctl, share):
    probes = [subprocess.Popen([*COMMAND, "fleet", "probe", "--quick", "--json", share], text=True,
                               stdout=subprocess.PIPE, stderr=subprocess.PIPE) for _ in range(6)]
    for each in probes:
        output, messages = each.communicate(timeout=120)
        assert each.returncode == 0 and is_progress(messages), (output, messages)
        rows = json.loads(output)["rows"]
        assert rows["told"] == rows["kept"] == 12
    assert list(share.iterdir()) == []


@pytest.mark.parametrize("kind, redraws", [("xterm", True), ("dumb", False)])
def test_progress_is_drawn_where_the_terminal_can(ctl, share, kind, redraws):
    terminal = Terminal(80, 24)
    try:
        probing = subprocess.Popen([*COMMAND, "fleet", "probe", "--quick", share], env=os.environ | {"TERM": kind},
                                   stdout=subprocess.DEVNULL, stderr=terminal.side)
        assert terminal.read_to_the_end(probing) == 0
        assert ("\x1b" in terminal.text) == redraws
        assert "trying rows under the lock" in terminal.text
        # Nothing stays of a line that is drawn anew.
        assert ("trying" in "".join(terminal.screen.shown())) == (not redraws)
    finally:
        terminal.close()


def test_a_reader_that_goes_away_leaves_nothing_behind(ctl, share):
    probing = subprocess.Popen([*COMMAND, "fleet", "probe", "--quick", share], stdout=subprocess.DEVNULL,
                               stderr=subprocess.PIPE)
    probing.stderr.close()
    assert probing.wait(timeout=120) == 0
    assert list(share.iterdir()) == []


@pytest.mark.parametrize("number", [signal.SIGINT, signal.SIGTERM, signal.SIGHUP])
def test_a_signal_ends_it_without_leftovers(ctl, share, number):
    process = subprocess.Popen([*COMMAND, "fleet", "probe", share], stdout=subprocess.DEVNULL,
                               start_new_session=True)
    wait_until(lambda: list(share.glob(".marrowctl_probe_*")))
    os.killpg(process.pid, number)
    assert process.wait(timeout=30) == -number
    assert list(share.iterdir()) == []
    with pytest.raises(ProcessLookupError):
        os.killpg(process.pid, 0)


def test_members_end_with_a_probe_that_is_killed(ctl, share):
    process = subprocess.Popen([*COMMAND, "fleet", "probe", share], stdout=subprocess.DEVNULL,
                               start_new_session=True)
    wait_until(lambda: list(share.glob(".marrowctl_probe_*")))
    process.kill()
    process.wait(timeout=30)

    def is_gone():
        try:
            os.killpg(process.pid, 0)
        except ProcessLookupError:
            return True
        return False
    wait_until(is_gone)


@pytest.mark.parametrize("arguments, message", [
    (["missing"], "missing: No such file or directory"),
    (["file"], "file: Not a directory"),
    (["share", "file"], "file: Not a directory"),
    (["share", "other"], "other: it does not show what is made in share: another share, or its files are "
                         "seen late"),
])
def test_what_is_no_folder_of_a_share_is_told(ctl, share, arguments, message):
    ctl.write("file", "")
    (ctl.folder / "other").mkdir()
    done = ctl.run("fleet", "probe", "--quick", *arguments)
    assert (done.returncode, done.stdout) == (2, "")
    assert done.stderr == f"marrowctl fleet probe: {message}\n"
    assert list(share.iterdir()) == []


@pytest.mark.parametrize("folders", [[""], ["", "share"], ["share", ""]])
def test_an_empty_word_is_no_folder(ctl, share, folders):
    done = ctl.run("fleet", "probe", "--quick", *folders)
    assert (done.returncode, done.stdout) == (64, "")
    assert done.stderr.startswith("marrowctl fleet probe: a folder's name is empty\n")


@pytest.mark.skipif(os.geteuid() != 0, reason="needs root to become somebody who may not write")
def test_a_folder_that_nobody_may_write_to_is_told(ctl, share):
    share.chmod(0o755)
    ctl.folder.parent.chmod(0o755)
    done = ctl.run("fleet", "probe", "share", user=65534)
    assert (done.returncode, done.stderr) == (2, "marrowctl fleet probe: share: Permission denied\n")


@pytest.mark.skipif(os.geteuid() != 0, reason="root may start processes beyond any limit")
@pytest.mark.skipif(bool(EMULATOR), reason="the emulator needs processes of its own")
def test_share_is_not_blamed_for_processes_that_do_not_start(ctl, share):
    share.chmod(0o777)
    ctl.folder.parent.chmod(0o755)

    def start_none():
        resource.setrlimit(resource.RLIMIT_NPROC, (0, 0))
    done = ctl.run("fleet", "probe", "--quick", "--json", "share", user=65534, preexec_fn=start_none)
    found = json.loads(done.stdout)
    # Nothing shows that one table is safe, and nothing that the share is unfit.
    assert (done.returncode, found["verdict"]) == (1, "own tables")
    assert (found["exclusiveCreate"], found["rows"]) == (None, None)
    assert found["reasons"] == ["whether rows are kept could not be tried: no processes could be started"]
    assert list(share.iterdir()) == []


def test_memory_is_named_and_takes_one_table(ctl, mounts):
    found = probe(ctl, mounts.memory("size=50m"))
    assert found["folders"][0]["mount"]["type"] == "tmpfs"
    assert found["verdict"] == "one table"
    assert found["preallocation"] == {"accepted": True, "refusal": None}
    assert found["times"]["granularityNanoseconds"] == 1
    assert found["times"]["leastAheadSeconds"] <= 0.01 and found["times"]["mostAheadSeconds"] >= -0.01


def test_full_share_is_not_usable(ctl, mounts):
    share = mounts.memory("size=64k")
    with contextlib.suppress(OSError), open(share / "full", "wb", buffering=0) as file:
        while True:
            file.write(bytes(4096))
    done = ctl.run("fleet", "probe", "--quick", share)
    assert done.returncode == 1
    assert "Not usable.\n  - a file can't be written: No space left on device\n" in done.stdout
    assert [path.name for path in share.iterdir()] == ["full"]


def notes_on_sight(found):
    return [note for note in found["notes"] if "one mount" in note]


def test_two_mounts_of_one_folder(ctl, mounts, share):
    found = probe(ctl, *(mounts.faulty(share, "exact", "name=*", name=name) for name in ("one", "two")))
    assert found["verdict"] == "one table"
    assert [each["mount"]["point"] for each in found["folders"]] == [f"{ctl.folder}/one", f"{ctl.folder}/two"]
    assert found["secondMount"]["removedFile"]["unseen"] == 0
    assert notes_on_sight(found) == [] and found["otherClientsSeen"] is True
    done = ctl.run("fleet", "probe", "--quick", *(each["path"] for each in found["folders"]))
    assert re.search(r"^  a removed file +[\d.]+ m?s +[\d.]+ m?s$", done.stdout, re.M), done.stdout
    assert re.search(r"^One table is safe, for up to ", done.stdout, re.M)


def test_folders_of_one_mount_show_no_other_client(ctl, mounts, share):
    for second in (share, mounts.same("again", share)):
        found = probe(ctl, share, second)
        assert found["folders"][1]["path"] == str(second)
        ours, usual = notes_on_sight(found)
        assert ours.startswith("both are one mount to this system: mount it again with nosharecache (NFS)")
        assert usual.startswith("seen through one mount of one machine")
        assert found["otherClientsSeen"] is False


def test_one_mount_of_a_share_shows_only_so_much(ctl, mounts, share):
    mount = mounts.faulty(share, "close", "name=no")
    done = ctl.run("fleet", "probe", "--quick", mount)
    assert done.returncode == 0
    assert "\nOne table is safe, as far as one mount can show, for up to " in done.stdout


def test_create_that_several_win_forbids_one_table(ctl, mounts, share):
    mount = mounts.faulty(share, "late", "name=race_*", "length=500")
    found = probe(ctl, mount, status=1)
    assert found["verdict"] == "own tables"
    assert found["exclusiveCreate"]["severalWinners"] == found["exclusiveCreate"]["rounds"] > 0
    assert "several winners" in found["reasons"][0]


def test_two_mounts_that_do_not_ask_each_other_forbid_one_table(ctl, mounts, share):
    # Half a second between looking and making: processes of a busy machine are later than a few milliseconds.
    one, two = (mounts.faulty(share, "none", "name=race_*", "length=500", name=name) for name in ("one", "two"))
    found = probe(ctl, one, two, status=1)
    assert found["verdict"] == "own tables"
    races = found["exclusiveCreate"]
    # Each mount by itself lets one win.
    assert races["severalWinners"] > races["rounds"] / 2
    assert probe(ctl, one)["exclusiveCreate"]["severalWinners"] == 0


def test_rows_that_a_share_loses_forbid_one_table(ctl, mounts, share):
    # Those of one client still fit.
    found = probe(ctl, mounts.faulty(share, "drop", "name=table.csv", "at=500"), status=1)
    assert found["verdict"] == "own tables"
    rows = found["rows"]
    assert 0 < rows["kept"] < rows["told"] <= 12
    assert found["reasons"] == [f"{rows['told'] - rows['kept']} of {rows['told']} rows that were told to be "
                                "written are not in the table"]


def test_share_that_loses_the_rows_of_one_client_is_not_usable(ctl, mounts, share):
    found = probe(ctl, mounts.faulty(share, "drop", "name=table.csv", "at=250"), status=1)
    assert found["verdict"] == "not usable"
    assert found["reasons"][0].startswith("of 5 rows of a single client 2 are in the table")


def test_slow_share_is_no_bad_one(ctl, mounts, share):
    # A client begins no row behind the fourth second: none has time for all of them.
    mount = mounts.faulty(share, "slow", "name=table.csv", "length=1000")
    done = ctl.run("fleet", "probe", "--quick", "--json", mount)
    found = json.loads(done.stdout)
    # On a machine that is busy besides, clients that wait for each other's lock may give up.
    assert found["verdict"] in ("one table", "own tables"), found["reasons"]
    assert found["rows"]["secondsPerRow"] >= 1
    assert 0 < found["rows"]["told"] == found["rows"]["kept"]


def test_changes_that_take_long_are_no_late_ones(ctl, mounts, share):
    # Twelve changes, of which two remove a file, which takes no time: the first one would wait for five seconds.
    changed = mounts.faulty(share, "slow", "name=file?*", "length=500", name="changed")
    # Neither mount makes files exclusively.
    found = probe(ctl, changed, mounts.faulty(share, "close", "name=no", name="seen"), status=1)
    second = found["secondMount"]
    assert second["newFile"]["longestSeconds"] < 4
    assert second["newFile"]["unseen"] == 0


def test_share_without_rename_is_not_usable(ctl, mounts, share):
    found = probe(ctl, mounts.faulty(share, "rename", "name=*", "code=EPERM"), status=1)
    assert found["verdict"] == "not usable"
    assert found["reasons"][0] == "a file can't be renamed over another: Operation not permitted"


def test_times_in_whole_seconds(ctl, mounts, share):
    found = probe(ctl, mounts.faulty(share, "whole", "name=*"), options=())
    times = found["times"]
    assert times["granularityNanoseconds"] == 1_000_000_000
    # Rounded down, they are no wrong clock.
    assert times["leastAheadSeconds"] <= 0.05 and times["mostAheadSeconds"] >= -0.05
    assert times["mostAheadSeconds"] - times["leastAheadSeconds"] < 0.5
    assert found["verdict"] == "one table"
    assert found["preallocation"] == {"accepted": False, "refusal": os.strerror(95)}


def test_clock_that_is_off_is_told(ctl, mounts, share):
    found = probe(ctl, mounts.faulty(share, "aged", "name=*", "length=90"))
    assert found["times"]["leastAheadSeconds"] == pytest.approx(-90, abs=0.5)
    assert any("is 90 s behind this machine's" in note for note in found["notes"])


def test_locks_that_look_old_at_once_forbid_one_table(ctl, mounts, share):
    found = probe(ctl, mounts.faulty(share, "aged", "name=*", "length=20000"), status=1)
    assert found["verdict"] == "own tables"
    assert any("5 h 33 min 20 s old when they are made" in reason for reason in found["reasons"])


def test_case_of_names_is_told(ctl, mounts, share):
    found = probe(ctl, mounts.faulty(share, "case"))
    assert found["caseSensitive"] is False
    assert any("case of letters" in note for note in found["notes"])


def test_long_paths_do_not_cut_the_lock(ctl, share):
    deep = share / ("d" * 200) / ("e" * 100)
    deep.mkdir(parents=True)
    assert probe(ctl, deep)["verdict"] == "one table"
