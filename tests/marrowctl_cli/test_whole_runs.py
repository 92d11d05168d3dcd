"""What check foretells is what marrowbench does: random settings files through both programs.

Tests may fail in a run, as a plan tells what will be asked for; that too must be foretold, by a finding.
"""

import json
import math
import os
import pathlib
import random
import re
import socket
import subprocess
import tempfile
from collections import Counter

import pytest

import whole_run
from conftest import COMMAND
from disk_model import Disk
from foretold import cells_of, key_of, one_slash, planned_tests
from program_bench import own_host_names
from random_settings import PLACE, random_case

CASES = 500 if os.environ.get("MARROWBENCH_ALL") == "1" else 60
GROUP = 20  # of cases in one test
OWN_HOST_NAMES = own_host_names()

REFUSED = {"unknown-method", "bad-number", "comment-indented", "byte-order-mark"}
# The first never go without a failure, and a failure needs one of the second.
MUST_FAIL = {"source-missing", "exists-already", "whole-copy-refused", "memory-to-memory"}
MAY_FAIL = MUST_FAIL | {"copies-onto-itself", "folder-refused", "negative-size", "path-too-long"}


def checked(case, root):
    hosts = [word for host in case.hosts for word in ("--host", host)]
    done = subprocess.run([*COMMAND, "check", "--json", *hosts, *case.named], cwd=root / PLACE,
                          env=whole_run.environment_of(root), capture_output=True, timeout=60)
    assert done.returncode in (0, 2) and done.stderr == b"", done.stderr
    return json.loads(done.stdout)


class Comparison:
    """The plan of a case beside what its run has left."""

    def __init__(self, case, root, document, left):
        self.case, self.document, self.left = case, document, left
        self.folder = f"{root}/{PLACE}"
        hosts = [host.partition(".")[0] for host in case.hosts or [socket.gethostname()]]
        self.are_several = len(hosts) > 1  # one after the other, where a plan has them run together
        self.tests = [test for host in hosts for test in planned_tests(document, host)]
        self.sections = [section for text in left.printed for section in whole_run.sections_of(text)]
        self.disk = Disk(left.before, self.folder)
        self.is_clean = True

    def key(self, path):
        return key_of(path, self.folder)

    def compare(self):
        self.compare_lines()
        self.compare_tests()
        self.compare_rows()
        self.compare_logs()
        self.compare_files()
        if self.is_clean:
            self.compare_totals()

    def compare_lines(self):
        """Settings files, refused lines and tests without room, for each of the clients."""
        clients = max(len(self.case.hosts), 1)
        printed = "".join(self.left.printed)
        loaded = re.findall(r"^######## Loading/Waiting for settings file '(.*)'  ########$", printed, re.M)
        assert loaded == [file["path"] for file in self.document["files"]] * clients
        findings = self.document["findings"]
        refused = {(finding["file"], finding["line"]) for finding in findings if finding["name"] in REFUSED}
        assert printed.count("Error reading settings line '") == len(refused) * clients
        assert ("more than 200 tests, line ignored." in printed) == (
            "too-many-tests" in [finding["name"] for finding in findings])

    def compare_tests(self):
        """Each test with its iterations, in their order, and which of them fail."""
        assert [(section.file, section.index) for section in self.sections] == [
            (test.file, test.line["configIndex"]) for test in self.tests]
        for test, section in zip(self.tests, self.sections):
            is_cut = len(section.reports) < len(test.steps)
            assert is_cut == test.is_refused or self.are_several, test
            self.disk.has_doubts = False
            if is_cut:
                self.disk.leave_out(test.steps)
            failures = [self.disk.take(test, *step) for step in zip(test.steps, section.reports)]
            self.is_clean &= not any(failures) and not is_cut and test.keeps_rows
            if not self.are_several and not self.disk.has_doubts:
                self.compare_failures(test, failures)

    def compare_failures(self, test, failures):
        if any(failures):
            assert test.has(MAY_FAIL), test
        # The time in a name changes while the test runs.
        is_dated = any("DATE" in step.source + step.dest for step in test.steps)
        if test.has(MUST_FAIL) and failures and test.line["method"] != "System" and not is_dated:
            assert any(failures), test

    def compare_rows(self):
        """The rows of all tables, cell by cell."""
        expected = {}
        for test, section in zip(self.tests, self.sections):
            for step, report in zip(test.steps, section.reports):
                if step.table is not None and test.keeps_rows:
                    expected.setdefault(self.key(step.table), []).append((test, step, report))
        assert set(self.left.tables) == set(expected)
        for table, rows in self.left.tables.items():
            for row, of in zip(rows, expected[table], strict=True):
                self.compare_row(row, *of)

    def compare_row(self, row, test, step, report):
        assert row.front[1:] == cells_of(test, step)
        middle = f"{one_slash(step.source)},,{one_slash(step.dest)},,"
        assert one_slash(row.middle).startswith(middle), (row, step)
        error = one_slash(row.middle)[len(middle):]
        # The console's row has a margin, so that more of a long text is cut.
        assert error.startswith(one_slash(report)) if error else not report.startswith("ERROR: ")
        assert (row.middle.count(",") > 4) == test.has({"comma-in-path"})
        assert int(row.back[1]) >= self.disk.pauses.get(id(step), 0)

    def compare_logs(self):
        """Every report of a test is in its log, if that has a folder."""
        logs = [self.key(step.log) for test, section in zip(self.tests, self.sections)
                for step in test.steps[:len(section.reports)]
                if step.log is not None and not test.has({"table-is-special"}, "log")]
        expected = Counter(log for log in logs if os.path.dirname(log) in self.left.folders)
        assert +Counter({path: text.count("Null data test: ")
                         for path, text in self.left.texts.items()}) == expected

    def compare_files(self):
        """The files that were not there before are those of the plan, with their sizes."""
        markers = {self.key(marker) for marker in self.document["totals"]["markers"]}
        named = {self.key(step.log) for test in self.tests for step in test.steps if step.log is not None}
        logs = {path for path, text in self.left.texts.items() if whole_run.is_log(text)} | named
        new = self.left.sizes.keys() - self.left.before.keys()
        assert {path for path in new if "/done__" in path} == markers
        data = new - markers - self.left.tables.keys() - logs
        assert data <= self.disk.named
        assert self.disk.written.keys() <= data | self.left.before.keys()
        for path, size in self.disk.written.items():
            assert size == self.left.sizes[path] or None in (size, self.left.sizes[path]), path

    def compare_totals(self):
        totals, disk = self.document["totals"], self.disk
        assert totals["rows"] == sum(map(len, self.left.tables.values()))
        assert totals["filesLeft"] == len(disk.written)
        # A source with the time in its name is found where it was written in the same ten seconds.
        is_dated = any("DATE" in step.source for test in self.tests for step in test.steps)
        if self.are_several or is_dated:
            return
        assert totals["bytesWritten"] == disk.bytes_written
        assert totals["bytesRead"] == disk.bytes_read
        assert totals["memoryBytes"] == disk.memory
        assert totals["pauseSeconds"] == math.ceil(sum(disk.pauses.values()) / 1000)


def compare_random_case(seed, folder):
    root = pathlib.Path(folder).resolve() / "root"
    case = random_case(random.Random(seed), root, OWN_HOST_NAMES)
    whole_run.lay_out(case, root)
    document = checked(case, root)
    comparison = Comparison(case, root, document, whole_run.run(case, root))
    comparison.compare()
    return comparison


@pytest.mark.parametrize("first", range(0, CASES, GROUP))
def test_random_settings_files_do_what_check_says(first):
    clean = 0
    for seed in range(first, first + GROUP):
        with tempfile.TemporaryDirectory(prefix="marrowctl_runs_") as folder:
            try:
                clean += compare_random_case(seed, folder).is_clean
            except AssertionError as difference:
                raise AssertionError(f"seed {seed}") from difference
    assert clean > 0, "the totals of some are compared"
