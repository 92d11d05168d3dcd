"""marrowctl run --via where nothing comes to be published: what stops it, what is said, and what is left."""

import contextlib
import os
import signal

import pytest

from conftest import EMULATOR
from fleet import clock_at, fleet, settings_line
from mounts import Mounts
from program_bench import wait_until
from via import via

__all__ = ["fleet", "via"]

pytestmark = pytest.mark.skipif(bool(EMULATOR), reason="engines start the programs themselves")


def test_clients_whose_path_lacks_marrowctl_are_told_the_option(via):
    (via.bin / "marrowctl").unlink()
    done = via.run(*via.words("ssh", via.settings()))
    assert done.returncode == 1
    assert ("marrowctl run: marrowctl is not in the PATH that the clients have there: --marrowctl PATH says "
            "where it is\n") in done.stderr


def test_a_host_that_is_down_stops_it_before_publication(via):
    done = via.run(*via.words("ssh", via.settings()), STUB_DOWN="c2")
    assert (done.returncode, done.stdout) == (1, "")
    assert ("marrowctl run: not all clients are armed:\n  2 of 3 clients are ready: c1, c3\n"
            "  missing: c2. \"marrowctl fleet arm\" makes a machine ready\nssh printed:\n") in done.stderr
    assert "c2: not armed\n" in done.stderr
    # What is printed far away sends the terminal nothing.
    assert "\n\ufffd[31mno route\ufffd\n" in done.stderr and "\x1b" not in done.stderr
    assert done.stderr.endswith("2 clients stay armed; without a run they stop 15 min 0 s after they were armed\n")
    assert not (via.fleet.control / "mine/mine.bst").exists()
    assert list(via.temporary.iterdir()) == []


def test_an_engine_that_is_missing_is_told(via):
    environment = {"PATH": f"{via.bin}:/nowhere"}
    words = via.words("pdsh", via.settings())
    refusal = "marrowctl run: clients could not be armed:\n  "
    # Not even a shell.
    done = via.run(*words, **environment)
    assert (done.returncode, done.stdout) == (2, "")
    assert done.stderr.endswith(refusal + "sh: No such file or directory\n")
    (via.bin / "pdsh").unlink()
    (via.bin / "sh").symlink_to("/bin/sh")
    done = via.run(*words, **environment)
    assert (done.returncode, done.stdout) == (2, "")
    assert done.stderr.endswith(refusal + "pdsh: not in the PATH of this machine\n")


def test_a_reader_that_goes_away_does_not_end_it(via):
    (via.bin / "pdsh").unlink()
    process = via.start(*via.words("pdsh", via.settings()), PATH=f"{via.bin}:/nowhere")
    process.stderr.close()
    process.stderr = None
    process.communicate(timeout=300)
    # It came as far as the engine.
    assert process.returncode == 2


@pytest.mark.skipif(os.geteuid() != 0, reason="mounting needs root")
def test_what_the_probe_leaves_is_told(via):
    share = via.folder / "share"
    share.mkdir()
    with contextlib.ExitStack() as ends:
        via.fleet.control = Mounts(via, ends).faulty(share, "stay", "name=.marrowctl_probe_*", "code=EBUSY")
        done = via.run(*via.words("pdsh", via.settings()), PATH=f"{via.bin}:/nowhere")
        assert done.returncode == 2
        (left,) = via.fleet.control.glob(".marrowctl_probe_*")
        assert f"\nmarrowctl run: left behind: {left}\n" in done.stderr


def test_errors_in_the_settings_file_arm_nobody(via):
    settings = via.settings("posix;0;0;0;1M;0;4;2;0;MEMORY;[host]_[iter].bin;log.txt;results.csv;true\n")
    done = via.run(*via.words("ssh", settings))
    assert (done.returncode, done.stdout, via.calls()) == (2, "", [])
    assert "[bad-number]" in done.stderr and "no client was armed" in done.stderr
    assert not (via.fleet.control / "mine").exists()


def test_warnings_arm_nobody_under_strict(via):
    settings = via.settings(settings_line().replace(";posix", "").replace("posix;0;0", "posix;flush;0"))
    done = via.run(*via.words("ssh", settings, "--strict"))
    assert (done.returncode, done.stdout, via.calls()) == (1, "", [])
    assert "[no-effect]" in done.stderr


def test_a_name_that_was_used_arms_nobody(via):
    (via.fleet.control / "mine").mkdir()
    (via.fleet.control / "mine/mine.bst").write_text("")
    done = via.run(*via.words("ssh", via.settings()))
    assert (done.returncode, done.stdout, via.calls()) == (1, "", [])
    assert "mine.bst is there already: a run needs a name of its own" in done.stderr
    # Nor would another option of publish help.
    (via.fleet.control / "mine/results.csv").write_text("")
    done = via.run(*via.words("ssh", via.settings()))
    assert "of an earlier run there is still a table" in done.stderr and "--again" not in done.stderr


def test_clients_that_gave_up_before_publication_are_not_said_to_stay(via):
    # The best moment is more than half a minute away.
    done = via.run(*via.words("ssh", via.settings(), "--give-up", "5s"), **clock_at(50))
    assert (done.returncode, done.stdout) == (1, "")
    assert "armed before, and ended: c1, c2, c3: gave up after 5 s" in done.stderr
    assert "armed; without a run" not in done.stderr


@pytest.mark.skipif(os.geteuid() != 0, reason="mounting needs root")
def test_a_share_that_is_unfit_for_one_table_takes_only_tables_of_each(via):
    share = via.folder / "share"
    share.mkdir()
    with contextlib.ExitStack() as ends:
        via.fleet.control = Mounts(via, ends).faulty(share, "late", "name=race_*", "length=500")
        done = via.run(*via.words("ssh", via.settings()))
        assert (done.returncode, done.stdout, via.calls()) == (1, "", [])
        assert "Use [host] in the results path" in done.stderr
        assert done.stderr.endswith(
            f"marrowctl run: no client was armed: all would write to {via.fleet.control}/mine/results.csv\n")
        done = via.run(*via.words("ssh", via.settings(settings_line(table="res_[host].csv"))), STUB_DOWN="c1 c2 c3")
        assert done.returncode == 1 and "no client is ready" in done.stderr
        assert sorted(via.calls()) == ["ssh c1", "ssh c2", "ssh c3"]


@pytest.mark.parametrize("number, send", [(signal.SIGINT, os.killpg), (signal.SIGTERM, os.kill)])
def test_a_signal_while_clients_are_armed_ends_it(via, number, send):
    """And the engine, with all its processes."""
    process = via.start(*via.words("ssh", via.settings()), STUB_HANGS="c1 c2 c3")
    wait_until(lambda: len(via.calls()) == 3, 120)
    send(process.pid, number)
    out, err = process.communicate(timeout=120)
    assert (process.returncode, out) == (128 + number, ""), err
    assert ("marrowctl run: clients could not be armed: ended by a signal\n"
            "clients may be armed by now; without a run they stop 15 min 0 s after they were armed\n") in err
    assert list(via.temporary.iterdir()) == []
    wait_until(lambda: not via.fleet.processes())


def test_an_engine_does_not_outlive_a_program_that_is_killed(via):
    process = via.start(*via.words("ssh", via.settings()), STUB_HANGS="c1 c2 c3")
    wait_until(lambda: len(via.calls()) == 3, 120)
    process.kill()
    process.wait(timeout=60)
    wait_until(lambda: not via.fleet.processes())


@pytest.mark.parametrize("arguments, message", [
    (["--via", "telnet"], "--via: telnet not in {clush,pdsh,ssh,parallel,ansible,srun}"),
    (["--via", "ssh", "--control", "."], "--hosts: name the clients"),
    (["--via", "ssh", "--hosts", "c1"], "--control: name a folder on the share"),
    (["--via", "ssh", "--hosts", "c1", "--control", ".", "--run", "a b"], "--run: "),
    (["--via", "ssh", "--hosts", "c1,c1", "--control", "."], "c1 is named twice"),
    (["--via", "ssh", "--hosts", "c1", "--control", ".", "--marrowbench", "x"],
     "--marrowbench is for a run of this machine"),
    (["--hosts", "c1"], "--hosts is for a run of many clients: name an engine by --via"),
    (["--timeout", "5m"], "--timeout is for a run of many clients: name an engine by --via"),
])
def test_wrong_usage_is_told(via, arguments, message):
    done = via.run("run", *arguments, str(via.settings()))
    assert (done.returncode, done.stdout) == (64, "")
    assert done.stderr.startswith(f"marrowctl run: {message}"), done.stderr
