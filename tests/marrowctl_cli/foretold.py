"""What check's JSON says of settings files, in the order in which a client does it."""

import dataclasses
import os
import re

from whole_run import plain

FIELDS = ("source", "dest", "log", "table")


def key_of(path, folder):
    """One text for all ways to name a file."""
    return plain(os.path.normpath(os.path.join(folder, path)))


def one_slash(text):
    """The paths of a row are expanded once and those of the files twice: it shows in doubled "/"."""
    return re.sub("/+", "/", text)


@dataclasses.dataclass
class Step:
    """One iteration of a test on a client."""
    source: str
    dest: str
    log: str    # None: not kept
    table: str  # None: not kept


@dataclasses.dataclass
class PlannedTest:
    """A test on a client."""
    file: str
    line: dict
    findings: list
    steps: list

    def has(self, names, field=None, severity=None):
        return any(finding["name"] in names and field in (None, finding["field"]) and
                   severity in (None, finding["severity"]) for finding in self.findings)

    @property
    def is_refused(self):
        """The folder of an iteration is not made, so that it and those behind it are not run."""
        return any(finding["name"] == "folder-refused" and finding["message"].startswith("the test is not run")
                   for finding in self.findings)

    @property
    def keeps_rows(self):
        return not (self.has({"folder-refused", "table-is-special"}, "table") or
                    self.has({"path-too-long"}, "table", "error"))


def between(first, last, iteration, count):
    """The path of an iteration: its number stands where those of the first and the last one differ."""
    if first is None or iteration == 0:
        return first
    if iteration == count - 1:
        return last
    return "".join(str(iteration) if a != b else a for a, b in zip(first, last, strict=True))


def steps_of(line, host):
    ends = [paths for paths in line["paths"] if paths["host"] == host]
    count = line["iterations"]
    paths = [[between(ends[0][field], ends[-1][field], i, count) for field in FIELDS] for i in range(count)]
    return [Step(*(path and plain(path) for path in four)) for four in paths]


def planned_tests(document, host):
    found = {}
    for finding in document["findings"]:
        found.setdefault((finding["file"], finding["line"]), []).append(finding)
    return [PlannedTest(file["path"], line, found.get((file["path"], line["line"]), []), steps_of(line, host))
            for file in document["files"] for line in file["lines"]]


def cells_of(test, step):
    """The cells of a row between its date and its paths."""
    line = test.line
    kind = "Read" if step.dest == "MEMORY" else "Write" if step.source == "MEMORY" else "Copy"
    numbers = (line["chunkWaitMs"], line["chunkBytes"], int(line["chunkBytes"] / 1024), line["systemBuffer"],
               int(line["fileBytes"] / 1024), line["iterations"], line["cacheMode"])
    return [line["method"], kind, "flush" if line["flush"] else "", "prealloc" if line["preallocate"] else "",
            *map(str, numbers)]
