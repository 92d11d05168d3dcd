"""Where the rows of a run went: into the table, or said to be lost."""

import collections
import os
import re
from dataclasses import dataclass

REASONS = {os.strerror(code) for code in range(1, 134)}


@dataclass(frozen=True)
class Account:
    """What became of the iterations of all clients of one table."""

    kept: int
    locked: int      # told: the lock could not be had
    failed: int      # told: the table could not be written, or the lock was taken over
    no_folder: int   # told: the test did not begin, for lack of its folder
    errors: int      # of the rows kept: those of failed transfers

    def total(self):
        return self.kept + self.locked + self.failed + self.no_folder

    def __str__(self):
        parts = [f"{self.kept} rows kept"]
        for count, what in ((self.errors, "of failed transfers"),
                            (self.locked, "told: locked"), (self.failed, "told: not written"),
                            (self.no_folder, "told: no folder")):
            parts += [f"{count} {what}"] if count else []
        return ", ".join(parts)


def account(rows, printed, data_folder):
    """Counts the rows, each of which has a name of its own, and what the clients printed."""
    names = collections.Counter(row["Dest"] for row in rows)
    assert set(names.values()) <= {1}, "a row twice"
    for row in rows:
        check_error(row)
    text = "".join(printed)
    told = text.count("marrowbench: row lost: ")
    locked = text.count("Unable to write excel file as it is still locked.")
    assert locked <= told, "a lost row is always told on standard error"
    return Account(
        kept=len(rows), locked=locked, failed=told - locked,
        no_folder=text.count(f"Folder does not exists: {data_folder}"),
        errors=sum(row["Error"] != "" for row in rows))


def check_error(row):
    """A failed transfer names its file and the system's reason."""
    if row["Error"] == "":
        return
    match = re.fullmatch(r"ERROR: Unable to [^']+'(.*)' *! *(.*)", row["Error"])
    assert match, row["Error"]
    assert match[1] == row["Dest"] and match[2] in REASONS, row["Error"]
