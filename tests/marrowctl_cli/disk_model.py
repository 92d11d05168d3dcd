"""What tests make of the files on a disk, reckoned from what they report."""

import math
import re

from foretold import key_of

SUMMARY = re.compile(r"^(\d) files (?:copied|read|written) \( (\d+\.\d\d) MiB\. ")
MIB = 1 << 20


class Disk:
    """Sizes of files by path. None is in doubt: a test that failed may have begun to write."""

    def __init__(self, sizes, folder):
        self.sizes, self.folder = dict(sizes), folder
        self.named = set()       # all destinations
        self.written = {}        # those of tests that did not fail, with their size
        self.pauses = {}         # in ms, by the id of the step
        self.has_doubts = False  # a step met such a file
        self.bytes_read = self.bytes_written = self.memory = 0

    def key(self, path):
        return None if path == "MEMORY" else key_of(path, self.folder)

    def leave_out(self, steps):
        """Takes a test that is not run."""
        self.sizes |= {self.key(step.dest): None for step in steps}

    def take(self, test, step, report):
        """Takes an iteration and its report. Returns whether it failed."""
        if test.line["method"] == "System":
            return False
        source, dest = self.key(step.source), self.key(step.dest)
        self.has_doubts |= any(key in self.sizes and self.sizes[key] is None for key in (source, dest))
        if dest:
            self.named.add(dest)
        summary = SUMMARY.match(report)
        if summary and summary[1] == "1":
            self.move(test.line, step, float(summary[2]))
            return False
        if summary and source and dest and self.sizes.get(source) == 0:
            # Nothing is copied, and no file made or looked for.
            self.has_doubts = True
            self.sizes.setdefault(dest, None)
            return False
        self.sizes[dest] = None
        if dest in self.written:
            self.written[dest] = None
        return True

    def move(self, line, step, mib):
        source, dest = self.key(step.source), self.key(step.dest)
        size = self.sizes[source] if source else max(line["fileBytes"], 0)
        if dest:
            self.sizes[dest] = self.written[dest] = self.size_written(line, dest, size)
        if size is None:
            return
        assert abs(size / MIB - mib) < 0.006, (step, size)
        self.pauses[id(step)] = pause_of(line, size)
        self.bytes_read += size if source else 0
        self.bytes_written += size if dest else 0
        if not (source and dest):
            self.memory = max(self.memory, size)

    def size_written(self, line, dest, size):
        if line["method"] != "Posix" or line["preallocate"]:
            return size
        # A descriptor neither truncates nor needs a new file: a longer one keeps its end.
        old = self.sizes.get(dest, 0)
        return None if None in (old, size) else max(old, size)


def pause_of(line, size):
    chunk = line["chunkBytes"]
    return 0 if chunk <= 0 else max(math.ceil(size / chunk), 1) * max(line["chunkWaitMs"], 0)
