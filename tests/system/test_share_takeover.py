"""Eight clients that find the lock of a dead one, old enough to be taken over.

MARROWBENCH_ROUNDS says how often that is done.
"""

import collections
import os
import re
import shutil
import time
from dataclasses import dataclass, field

from figures import measured
from program_bench import table_rows

CLIENTS = 8
ITERATIONS = 5
ALL = CLIENTS * ITERATIONS
ROUNDS = int(os.environ.get("MARROWBENCH_ROUNDS", 1))
AT_ONCE = 5     # tables, each with a run of every client: they wait most of the time
OLD = "10900 seconds ago"
SETTINGS = (f"posix;0;0;0;4;0;4;{ITERATIONS};0;MEMORY;[host]_[iter].bin;/run/log.txt;res.csv;false\n")
PREPARE = """
for table in "$@"; do
  mkdir "$table" && cp "$0" "$table/run.bst" && touch -d "$OLD" "$table/res.csv_lock.txt" || exit 1
done
"""
# What a client prints for one table is not to stand among what it prints for another.
RUN_ALL = """
until [ -e "$GO" ]; do sleep 0.01; done
for table in "$@"; do
  said=/run/said_$(basename "$table")
  "$PROGRAM" "$table/run.bst" > "$said" 2>&1 &
done
wait
cat /run/said_* && rm /run/said_*
"""


@dataclass
class Findings:
    rows: int = 0
    kept: int = 0
    told: int = 0
    silent: int = 0    # neither kept nor told
    tables: int = 0    # with a fault
    faults: list = field(default_factory=list)

    def look_at(self, table, path, printed):
        """Counts a table's rows, and those that the clients said were lost."""
        before = len(self.faults)
        text = (table / "res.csv").read_text()
        try:
            table_rows(text)
        except AssertionError as failure:
            self.faults.append(f"{table.name}: {str(failure)[:200]}")
        names = collections.Counter(re.findall(r"/(client\d+_\d+)\.bin,", text))
        told = printed.count(f"marrowbench: row lost: {path}/res.csv: ")
        self.faults += [f"{table.name}: {name} twice" for name in names if names[name] > 1]
        if len(names) + told != ALL:
            self.faults.append(f"{table.name}: {len(names)} rows kept, {told} told lost of {ALL}")
        self.faults += [f"{table.name}: {left.name} left behind: {left.read_text()[:100]!r}"
                        for left in table.glob("res.csv_lock*")]
        self.rows += ALL
        self.kept += len(names)
        self.told += told
        self.silent += max(ALL - len(names) - told, 0)
        self.tables += len(self.faults) > before


def run_tables(share, clients, paths):
    """Runs the program on each client for each table, all at the same moment; returns what they print."""
    settings = share.lab.folder / "takeover.bst"
    settings.write_text(SETTINGS)
    clients[0].start("sh", "-c", PREPARE, settings, *paths, environment={"OLD": OLD}).finish()
    go = share.lab.folder / "go"
    go.unlink(missing_ok=True)
    jobs = [client.start("sh", "-c", RUN_ALL, "sh", *paths, environment={
        "GO": go, "PROGRAM": os.environ["MARROWBENCH_PROGRAM"]}) for client in clients]
    time.sleep(1)
    go.touch()
    return "".join(job.finish(seconds=900) for job in jobs)


def test_rows_are_kept_or_told_when_eight_take_over_an_old_lock(share, folder):
    clients = share.clients(CLIENTS)
    findings = Findings()
    for first in range(0, ROUNDS, AT_ONCE):
        names = [f"table{number}" for number in range(first, min(first + AT_ONCE, ROUNDS))]
        printed = run_tables(share, clients, [folder.path / name for name in names])
        for name in names:
            findings.look_at(folder.on_server / name, folder.path / name, printed)
            shutil.rmtree(folder.on_server / name)
    measured(share, f"{ROUNDS} times {CLIENTS} clients with {ITERATIONS} rows each and an old lock: "
                    f"{findings.kept} of {findings.rows} rows kept, {findings.told} told lost, "
                    f"{findings.silent} lost without a word; {findings.tables} tables with a fault")
    assert not findings.faults, "\n".join(findings.faults)
