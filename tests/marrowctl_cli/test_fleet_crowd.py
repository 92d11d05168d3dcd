"""As many clients as an administrator has, on one machine, from arm to report."""

import json
import os
import subprocess
import time

from fleet import fleet, settings_line
from program_bench import EMULATOR, wait_until

__all__ = ["fleet"]

SANITIZED = os.environ["MARROWBENCH_SANITIZE"] == "1"
# Each client is three processes.
CLIENTS = 1000 if os.environ.get("MARROWBENCH_ALL") and not SANITIZED else 20 if EMULATOR or SANITIZED else 100
LIST = f"c[000-{CLIENTS - 1:03}]"
MOST_OF_A_PROCESSOR = 0.02


def test_a_crowd_runs_from_arm_to_report(fleet, ctl, capsys):
    hosts = [f"c{number:03}" for number in range(CLIENTS)]
    begin = time.monotonic()
    clients = fleet.arm_all(hosts, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
    armed = time.monotonic()
    watching = fleet.start("watch", "--hosts", LIST, "--timeout", "20m", "--json")
    # A table of each: on one, so many would wait for each other's lock.
    settings = fleet.control.parent / "mine.bst"
    settings.write_text(settings_line(table="res_[host].csv"))
    published = fleet.run("publish", "--hosts", LIST, "--now", settings, timeout=600)
    assert (published.returncode, published.stderr) == (0, "")
    out = watching.stdout.read()
    _, status, used = os.wait4(watching.pid, 0)
    watching.returncode = os.waitstatus_to_exitcode(status)
    ended = time.monotonic()
    assert watching.returncode == 0, out
    counts = json.loads(out)["clients"]
    assert counts == {"expected": CLIENTS, "ready": 0, "running": 0, "done": CLIENTS, "late": 0, "missing": 0}
    for client in clients:
        assert client.wait(timeout=120) == 0
    wait_until(lambda: fleet.processes() == [])

    report = json.loads(ctl.run("report", "--json", "--hosts", LIST, "--done", fleet.folder / "_monday_log",
                                "--settings", fleet.folder / "monday.bst", *fleet.folder.glob("res_*.csv")).stdout)
    assert (report["verdict"]["complete"], report["verdict"]["clean"]) == (True, True), report["verdict"]
    assert report["rows"]["read"] == 2 * CLIENTS

    seconds, processor = ended - armed, used.ru_utime + used.ru_stime
    with capsys.disabled():
        print(f"\nFIGURE {CLIENTS} clients: armed in {armed - begin:.1f} s, run and watched in {seconds:.1f} s; watch "
              f"used {processor:.2f} s of a processor")
    # Its own beginning is no watching.
    assert processor <= 0.2 + MOST_OF_A_PROCESSOR * seconds
