"""Every settings file in examples/ does what its head says: rows, bytes, files left, time."""

import fnmatch
import os
import pathlib
import re
import signal

import pytest

from conftest import ROOT, SANITIZED, needs_strace, until_shown

FOLDER = ROOT / "examples"
EXAMPLES = {path.stem: path.read_text() for path in sorted(FOLDER.glob("*.bst"))}
HOST = os.uname().nodename.split(".")[0]

# Rows in the table: lines times iterations, of a chained file too; of the endless one a round.
ROWS = {
    "chain_first1": 2, "chain_second2": 1, "chunk_sizes": 24, "endurance": 3, "flush": 16,
    "interfaces": 24, "many_clients": 6, "neighbour_read": 1, "neighbour_write": 1,
    "preallocation": 16, "quick": 9, "server_to_server": 13, "small_files": 2000,
    "start_together": 1, "system_buffers": 25, "throttled_copy": 4,
}
# Those whose lines are to be compared with each other.
COMPARING = ["chunk_sizes", "flush", "interfaces", "preallocation", "server_to_server", "system_buffers"]

# What the times in the heads are computed from: usable MiB/s of the two networks, and the seconds
# that an iteration takes besides its transfer.
GIGABIT, TEN_GIGABIT, AROUND = 112, 1120, 0.02
LARGE_KIB = 65536
DIVISOR = 64


def reduced(text):
    """Divides field 7, the file size, by 64 where it is above 65,536 KiB; nothing else."""
    def line(match):
        fields = match[0].split(";")
        if int(fields[6]) > LARGE_KIB:
            fields[6] = str(int(fields[6]) // DIVISOR)
        return ";".join(fields)
    return re.sub(r"^(?!#).*;.*$", line, text, flags=re.M)


class Head:
    """What the comments in front of the lines promise."""

    def __init__(self, name):
        comments = re.match(r"(#.*\n)+", EXAMPLES[name])[0]
        self.question = comments.splitlines()[0].removeprefix("# ")
        promised = dict(re.findall(r"^# (Writes|Leaves|Takes): ((?:.*\n)(?:#   .*\n)*)", comments, re.M))
        self.written_mib = float(promised["Writes"].strip().removesuffix(" MiB."))
        self.left = [pattern.strip() for pattern in re.sub(r"\n#", "", promised["Leaves"]).split(",")]
        self.takes = promised["Takes"].strip()


class Run:
    """One iteration as its line asks for it. Sizes in KiB."""

    def __init__(self, fields, iteration, number, sizes):
        def path(text):
            text = text.replace("[iter]", str(iteration)).replace("[cfgID]", number)
            return text.replace("[host]", HOST).replace("[temp]", "TEMP/")
        self.method = {"posix": "Posix", "ansic": "AnsiC", "stream": "Stream"}[fields[0]]
        self.flush, self.preallocate = fields[1].strip("0"), fields[2].strip("0")
        self.wait_ms, self.chunk_kib, self.buffer = (int(text) for text in fields[3:6])
        source, dest = path(fields[9]), path(fields[10])
        self.type = "Write" if source == "MEMORY" else "Read" if dest == "MEMORY" else "Copy"
        self.kib = int(fields[6]) if self.type == "Write" else sizes[source]
        self.written_kib = 0 if self.type == "Read" else self.kib
        if self.type != "Read":
            sizes[dest] = self.kib
        self.source, self.dest = source, dest

    def seconds(self, mib_per_second):
        # A copy's bytes pass the client's line twice, one after the other: there is one thread.
        moved_mib = self.kib * (2 if self.type == "Copy" else 1) / 1024
        chunks = -(-self.kib // self.chunk_kib)
        return moved_mib / mib_per_second + chunks * self.wait_ms / 1000 + AROUND


def runs_of(name, change=lambda text: text, sizes=None):
    """The iterations of a settings file and of one that it leads to; of an endless one a round."""
    sizes = {} if sizes is None else sizes
    if name == "neighbour_read":
        sizes["TEMP/data.bin"] = runs_of("neighbour_write", change)[0].kib
    runs = []
    for line in change(EXAMPLES[name]).splitlines():
        if line.startswith("#"):
            continue
        if line.endswith(".bst"):
            following = pathlib.PurePath(line.removeprefix("[cfgPath]")).stem
            return runs + (runs_of(following, change, sizes) if following != name else [])
        fields = line.split(";")
        number = re.search(r"\d*$", name)[0] or "0"
        runs += [Run(fields, iteration, number, sizes) for iteration in range(int(fields[7]))]
    return runs


def shown_time(seconds):
    if seconds < 9.95:
        return f"{seconds:.1f} s"
    return f"{seconds:.0f} s" if seconds < 99.5 else f"{seconds / 60:.1f} min"


class Bed:
    """A folder with all settings files, reduced, and the host's files of one run."""

    def __init__(self, bench):
        self.bench = bench
        self.temp = bench.folder / "temp"
        self.temp.mkdir()
        for name, text in EXAMPLES.items():
            (bench.folder / f"{name}.bst").write_text(reduced(text))

    def run(self, name, **options):
        # From elsewhere: no path of an example may depend on where the program is started.
        return self.bench.run(self.bench.folder / f"{name}.bst", cwd="/",
                              environment={"TEMP": str(self.temp)}, **options)

    def table(self):
        tables = [*self.bench.folder.rglob("*_results.csv")]
        assert len(tables) == 1
        return self.bench.rows(tables[0])

    def files(self):
        paths = [path for path in self.bench.folder.rglob("*") if path.is_file()]
        return {str(path.relative_to(self.bench.folder)).replace("temp/", "TEMP/", 1)
                for path in paths if path.suffix != ".bst"}


@pytest.fixture
def bed(bench):
    return Bed(bench)


def play(bed, name):
    """Runs the example as its head tells to; returns what was printed and the files before."""
    if name == "neighbour_read":
        bed.run("neighbour_write")
        neighbours = bed.bench.folder / "neighbour"
        (neighbours / HOST).rename(bed.temp / "pc2")
        bed.temp = bed.temp / "pc2"
        (bed.bench.folder / "neighbour_results.csv").unlink()
    before = bed.files()
    return (endless(bed) if name == "endurance" else bed.run(name)), before


def endless(bed):
    """Some rounds: the file is renamed in the second, as its head says."""
    settings = bed.bench.folder / "endurance.bst"
    process = bed.bench.start(settings, cwd="/")
    printed = "".join(until_shown(process, "__  0  __") for _ in range(2))
    settings.rename(settings.with_suffix(".away"))
    printed += until_shown(process, "endurance.bst'  ########\n\n.")
    settings.with_suffix(".away").unlink()
    process.send_signal(signal.SIGINT)
    assert process.wait(timeout=30) == -signal.SIGINT
    return printed


def rounds_of(name, printed):
    rounds = printed.count("__  0  __") if name == "endurance" else 1
    assert rounds > 1 or name != "endurance"
    return rounds


def test_every_example_is_listed():
    assert set(EXAMPLES) == set(ROWS)


@pytest.mark.parametrize("name", EXAMPLES)
def test_example_runs(bed, name):
    printed, before = play(bed, name)
    rows = bed.table()
    if name == "preallocation" and any("preallocate" in row["Error"] for row in rows):
        pytest.skip("this file system refuses preallocation")
    assert "rror" not in printed and [row["Error"] for row in rows if row["Error"]] == []
    rounds = rounds_of(name, printed)
    assert len(rows) == ROWS[name] * rounds

    runs = runs_of(name, reduced) * rounds
    assert [(row["Method"], row["Type"]) for row in rows] == [(run.method, run.type) for run in runs]
    for row, run in zip(rows, runs, strict=True):
        assert row["Flush"] == run.flush and row["PreAllocate"] == run.preallocate
        assert int(row["Chunk Wait"]) == run.wait_ms
        assert int(row["Chunk Size KiB"]) == run.chunk_kib
        assert int(row["System Buffer"]) == run.buffer
        for shown, path in (row["Source"], run.source), (row["Dest"], run.dest):
            assert shown.endswith(path.removeprefix("TEMP")), path
        assert row["Zero test"] == ("" if run.type == "Write" else "0")

    moved = [float(mib) for mib in re.findall(r"1 files \w+ \( (\d+\.\d\d) MiB", printed)]
    assert moved == [round(run.kib / 1024 + 1e-9, 2) for run in runs]

    files = {file.replace("TEMP/pc2", "TEMP") for file in bed.files() - before}
    patterns = [pattern.replace("HOST", HOST) for pattern in Head(name).left]
    assert [file for file in files if not any(fnmatch.fnmatch(file, p) for p in patterns)] == []
    assert [p for p in patterns if not fnmatch.filter(files, p)] == []


@pytest.mark.parametrize("name", EXAMPLES)
def test_head_tells_the_bytes_and_the_time(name):
    runs = runs_of(name)
    head = Head(name)
    assert head.written_mib == sum(run.written_kib for run in runs) / 1024
    slow, fast = (sum(run.seconds(speed) for run in runs) for speed in (GIGABIT, TEN_GIGABIT))
    assert head.takes == f"{shown_time(slow)} at 1 GbE, {shown_time(fast)} at 10 GbE."


@pytest.mark.parametrize("name", EXAMPLES)
def test_the_model_of_the_full_size_is_the_reduced_one_enlarged(name):
    # The run above is held to the reduced model, the head to the full one.
    for small, full in zip(runs_of(name, reduced), runs_of(name), strict=True):
        assert full.kib == small.kib * (DIVISOR if full.kib > LARGE_KIB else 1)


@pytest.mark.parametrize("name", COMPARING)
def test_lines_that_are_compared_take_turns(name):
    # What slows the share down evenly during the run then slows all kinds down alike.
    places = {}
    for place, run in enumerate(runs_of(name)):
        kind = (run.method, run.flush, run.preallocate, run.chunk_kib, run.buffer,
                "reserved" in run.source)
        places.setdefault(run.type, {}).setdefault(kind, []).append(place)
    compared = {of_type: kinds for of_type, kinds in places.items() if len(kinds) > 1}
    assert compared
    for kinds in compared.values():
        assert len({len(where) for where in kinds.values()}) == 1
        assert len({sum(where) for where in kinds.values()}) == 1, kinds


def test_no_test_of_an_example_writes_a_file_again():
    # It would find it in memory; the endless one makes a round of that.
    for name in EXAMPLES:
        written = [run.dest for run in runs_of(name) if run.type != "Read"]
        assert len(written) == len(set(written)), name


def test_only_the_throttled_copies_are_slowed_down(bed):
    bed.run("throttled_copy")
    percent = [int(row["Copy Speed %"]) for row in bed.table()]
    assert percent[:2] == [100, 100] and max(percent[2:]) < 100
    times = [int(row["Time ms"]) for row in bed.table()]
    assert times[2] >= 16 * 10 and times[3] >= 16 * 40


@pytest.mark.skipif(os.environ.get("MARROWBENCH_STREAMS") == "libc++",
                    reason="the head tells of the library of the system")
def test_flush_makes_calls_of_ansic_only(bed):
    needs_strace()
    if SANITIZED:
        pytest.skip("the leak sanitizer refuses to be traced")
    trace = bed.bench.folder / "trace"
    bed.run("flush", prefix=["strace", "-y", "-e", "trace=write,writev", "-o", trace])
    calls = {}
    for name in re.findall(r"write[v]?\(\d+<[^>]*/flush_(\w+)_1\.bin>", trace.read_text()):
        calls[name] = calls.get(name, 0) + 1
    chunks = 262144 // DIVISOR
    assert calls == {"ansic_kept": chunks // 4, "ansic_flushed": chunks,
                     "stream_kept": chunks, "stream_flushed": chunks}


def test_chain_runs_the_second_file_with_its_own_number(bed):
    bed.run("chain_first1")
    assert sorted(path.name for path in bed.bench.folder.glob("chain_*.bin")) == [
        "chain_1.bin", "chain_2.bin"]


def test_neighbours_file_is_the_one_that_is_read(bed):
    play(bed, "neighbour_read")
    assert [row["Source"] for row in bed.table()] == [f"{bed.temp}/data.bin"]


def test_start_together_begins_with_a_minute_when_the_file_comes(bed):
    path = bed.bench.folder / "start_together.bst"
    text = path.read_text()
    path.unlink()
    process = bed.bench.start(path, fast=True, cwd="/")
    until_shown(process, "########\n\n.")
    bed.bench.put(text, path.name)
    printed, _ = process.communicate(timeout=120)
    assert "Waiting for the next minute to start..." in printed and process.returncode == 0
    assert len(bed.table()) == 1


def test_readme_lists_each_file_with_its_question():
    readme = (FOLDER / "README.md").read_text()
    listed = re.findall(r"^\| \[(\w+)\.bst\]\(\1\.bst\) \| (.*?) \| (.*?) \| (.*?) \|$", readme, re.M)
    assert sorted(listed) == [
        (name, Head(name).question, f"{Head(name).written_mib:g} MiB",
         Head(name).takes.replace(" at 1 GbE", "").replace(" at 10 GbE.", ""))
        for name in EXAMPLES]


def test_readme_tells_the_rule_and_the_figures_of_these_tests():
    readme = " ".join((FOLDER / "README.md").read_text().split())
    for figure in (f"{GIGABIT} MiB/s", f"{TEN_GIGABIT:,} MiB/s", f"{AROUND * 1000:.0f} ms",
                   f"divided by {DIVISOR}", f"above {LARGE_KIB:,} KiB"):
        assert figure in readme, figure
    assert "divides field 7" in reduced.__doc__.lower()
