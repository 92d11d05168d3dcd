"""The figures of the table, one function for each group of rows."""

import shutil
import statistics
from dataclasses import dataclass

from companion import companion_check, companion_start
from companion_tables import companion_many_tables, companion_report
from programs import (GIB, KIB, MIB, Marrowbench, Unavailable, bare_loop_pairs, dd_ms, fio_ms,
                      in_process, line, peak_kib, reported_times, tool, wall_ms)
from samples import NO_TARGET, Figure, alternate, at_least, at_most, ratios

CHUNKS = {4 * KIB: "4 KiB", 64 * KIB: "64 KiB", MIB: "1 MiB"}


@dataclass(frozen=True)
class Scale:
    """How much is measured."""

    rounds: int            # pairs of each comparison
    times: int             # transfers of each of its processes: the first one is often slower
    file: int              # bytes of a compared transfer
    large: int             # bytes of the first and later reads
    fill: int              # bytes of test data
    starts: int            # starts of the program for its start-to-exit time
    iterations: int        # iterations on tiny files
    tables: tuple          # bytes of the tables that rows are appended to
    checked_lines: int     # lines that marrowctl checks for one client
    checked_hosts: int     # clients that it checks 200 lines for
    reported_rows: tuple   # rows of the tables that it judges
    tables_of_fleet: int   # small tables that it judges together


FULL = Scale(rounds=15, times=5, file=256 * MIB, large=GIB, fill=GIB, starts=100, iterations=1000,
             tables=(KIB, 100 * MIB, GIB), checked_lines=10000, checked_hosts=500,
             reported_rows=(1_000_000, 10_000_000), tables_of_fleet=10_000)
SMOKE = Scale(rounds=2, times=2, file=8 * MIB, large=8 * MIB, fill=64 * KIB, starts=2, iterations=10,
              tables=(KIB, MIB), checked_lines=400, checked_hosts=5,
              reported_rows=(10_000,), tables_of_fleet=10)


class Bench:
    """Where the programs and the folders are."""

    def __init__(self, build, memory, folder, scale):
        self.program = build / "marrowbench"
        self.companion = build / "marrowctl"
        self.in_process = build / "bench/bench_in_process"
        self.bare_loop = build / "bench/bench_bare_loop"
        self.memory = memory  # on a memory file system, or None
        self.folder = folder
        self.scale = scale

    def places(self):
        return [("memory", self.memory), ("folder", self.folder)]


def filled(path, size):
    """A file with `size` bytes that are not zero."""
    with open(path, "wb") as file:
        block = b"marrowbench data" * 4096
        for written in range(0, size, len(block)):
            file.write(block[:size - written])
    return path


def comparison(name, target, rounds, ours, other):
    """The ratio of another program's time to ours, in pairs."""
    try:
        ours(), other()  # both find their files in the same state from here on
        times, others = alternate(rounds, ours, other)
    except Unavailable as reason:
        return Figure(name, target, skipped=str(reason))
    # The program reports whole milliseconds: 0 stands for anything below 1.
    return Figure(name, target, ratios(others, [max(time, 1) for time in times]))


def fill(bench):
    size = bench.scale.fill
    targets = {"scalarLanes": 1, "vector256": 3, "vector512": 4}
    figures = {path: Figure(f"test data, byte loop time / {path} time", at_least(target))
               for path, target in targets.items()}
    for _ in range(bench.scale.rounds):
        _, runs = in_process(bench.in_process, f"^fill/.*/{size}$")
        for path, figure in figures.items():
            run = runs[f"fill/{path}/{size}"]
            if run.get("error_occurred"):
                figure.skipped = run["error_message"]
            else:
                figure.samples.append(runs[f"fill/byteLoop/{size}"]["real_time"] / run["real_time"])
    return list(figures.values())


def loop_cost(bench):
    figures = {"loopOverMemory": "loop cost per chunk, read and write",
               "loopOfCopy": "loop cost per chunk, copy"}
    figures = {key: Figure(name, at_most(25, "ns"), unit="ns") for key, name in figures.items()}
    for _ in range(bench.scale.rounds):
        _, runs = in_process(bench.in_process, "^loop", seconds=0.1)
        for key, figure in figures.items():
            figure.samples.append(1e9 / runs[key]["items_per_second"])
    return list(figures.values())


def first_read(bench):
    figure = Figure("first read test of a process / later ones, memory file system", at_most(1.1))
    if bench.memory is None:
        figure.skipped = "no memory file system"
        return [figure]
    ours = Marrowbench(bench.program, bench.memory)
    file = filled(bench.memory / "large.bin", bench.scale.large)
    for _ in range(min(bench.scale.rounds, 7)):
        first, *later = ours.reported_ms("read", file, iterations=6)
        figure.samples.append(first / max(statistics.median(later), 1))
    file.unlink()
    return [figure]


def against_bare_loop(bench):
    name = "bare C loop time / reported time"
    if bench.memory is None:
        return [Figure(name, at_least(0.98), skipped="no memory file system")]
    file, dest = filled(bench.memory / "file.bin", bench.scale.file), bench.memory / "dest.bin"
    figures = []
    for kind in ("read", "write", "copy"):
        last = dest if kind == "copy" else bench.scale.file
        for chunk, text in CHUNKS.items():
            pairs = bare_loop_pairs(bench.bare_loop, bench.scale.rounds, kind, chunk, file, last)
            figures.append(Figure(f"{name}, memory, {kind}, {text}", at_least(0.98),
                                  [bare / max(reported, 1) for reported, bare in pairs]))
    return figures


def against_fio(bench):
    size, times = bench.scale.file, bench.scale.times
    figures = []
    for place, folder in bench.places():
        for kind in ("read", "write"):
            for chunk, text in CHUNKS.items():
                name = f"fio time / reported time, {place}, {kind}, {text}"
                if folder is None:
                    figures.append(Figure(name, at_least(1), skipped="no memory file system"))
                    continue
                ours = Marrowbench(bench.program, folder)
                file = filled(folder / "file.bin", size)
                figures.append(comparison(
                    name, at_least(1), min(bench.scale.rounds, 9),
                    lambda: sum(ours.reported_ms(kind, file, chunk=chunk, size=size,
                                                 iterations=times)),
                    lambda: fio_ms(times, kind, chunk, file, size)))
    return figures


def one_block(bench):
    """How much time is saved by reading into one block over and over, as fio does: the block stays
    in the processor's cache, memory for a whole file does not."""
    size = bench.scale.file
    file = filled((bench.memory or bench.folder) / "file.bin", size)
    return [Figure(f"bare C loop, read, {text}: time into one block / into memory for the file",
                   NO_TARGET,
                   [block / whole for whole, block in bare_loop_pairs(
                       bench.bare_loop, bench.scale.rounds, "read-block", chunk, file, size)])
            for chunk, text in CHUNKS.items()]


def against_dd(bench):
    figures = []
    for place, folder in bench.places():
        name = f"dd time / our time, whole process, {place}, copy, 1 MiB"
        if folder is None:
            figures.append(Figure(name, at_least(0.98), skipped="no memory file system"))
            continue
        ours = Marrowbench(bench.program, folder)
        file, dest = filled(folder / "file.bin", bench.scale.large), folder / "dest.bin"
        figures.append(comparison(name, at_least(0.98), bench.scale.rounds,
                                  lambda: ours.run_ms(line("copy", file, dest=dest)),
                                  lambda: dd_ms(file, dest)))
    return figures


def start_to_exit(bench):
    ours = Marrowbench(bench.program, bench.folder)
    marker = bench.folder / "_bench_log"

    def start():
        # An old marker would be emptied first, and some file systems then write it to the disk.
        shutil.rmtree(marker, ignore_errors=True)
        return ours.run_ms()

    times, bases = alternate(bench.scale.starts, start, lambda: wall_ms(tool("true")))
    shutil.rmtree(marker, ignore_errors=True)
    return [Figure("start to exit, no tests", at_most(5, "ms"), times, "ms"),
            Figure("start to exit, no tests / (1.5 times true + 2 ms)", at_most(1),
                   [time / (1.5 * base + 2) for time, base in zip(times, bases)])]


def peak_memory(bench):
    figure = Figure("peak resident memory, copies through all interfaces", at_most(8, "MiB"),
                    unit="MiB")
    folder = bench.folder
    file = filled(folder / "file.bin", bench.scale.file)
    ours = Marrowbench(bench.program, folder)
    lines = [line("copy", file, dest=folder / "dest.bin", method=method, log=folder / "bench.log",
                  table=folder / "bench.csv") for method in ("posix", "ansic", "stream")]
    try:
        for _ in range(min(bench.scale.rounds, 3)):
            figure.samples.append(peak_kib(bench.program, ours.settings(*lines)) / KIB)
    except Unavailable as reason:
        figure.skipped = str(reason)
    return [figure]


class Tiny:
    """Copies of a tiny file, with log and table, all on the folder's file system."""

    def __init__(self, bench):
        self.ours = Marrowbench(bench.program, bench.folder)
        self.folder = bench.folder
        self.table = bench.folder / "tiny.csv"
        self.file = filled(bench.folder / "tiny.bin", 4 * KIB)

    def lines(self, count, iterations):
        return [line("copy", self.file, dest=self.folder / "tiny_copy.bin", iterations=iterations,
                     log=self.folder / "tiny.log", table=self.table)] * count

    def outside_ms(self, lines, iterations, runs=1):
        """The time outside the timed spans, per iteration: the process less what it takes without
        iterations, less the times that it reports."""
        total = 0
        for _ in range(runs):
            size = self.table.stat().st_size if self.table.exists() else 0
            total += self.ours.run_ms(*self.lines(lines, iterations))
            total -= self.ours.run_ms(*self.lines(1, 0))
            total -= sum(self.times_behind(size))
        return total / (runs * lines * iterations)

    def times_behind(self, size):
        with open(self.table, "rb") as table:
            header = table.readline()
            table.seek(max(size, len(header)))
            return reported_times((header + table.read()).decode())

    def empty_table(self):
        self.table.unlink(missing_ok=True)
        (self.folder / "tiny.log").unlink(missing_ok=True)


def growth(names, sizes, measured, unit):
    """A row for each size, and one that tells whether the time grows with it."""
    rows = [Figure(f"the same, {name}", at_most(0.3, "ms"), samples, "ms")
            for name, samples in zip(names, measured)]
    slope = (rows[-1].median - rows[0].median) * 1000 / (sizes[-1] - sizes[0])
    return [*rows, Figure(f"the same, {names[-1]} / {names[0]} (slope {slope:+.2g} us per {unit})",
                          at_most(1.2), ratios(measured[-1], measured[0]))]


def outside_the_span(bench):
    tiny = Tiny(bench)
    figure = Figure("outside the timed span, per iteration, tiny files", at_most(0.3, "ms"),
                    unit="ms")
    for _ in range(bench.scale.rounds):
        tiny.empty_table()
        figure.samples.append(tiny.outside_ms(1, bench.scale.iterations))
    return [figure]


def over_lines(bench):
    tiny = Tiny(bench)
    counts = (1, 10, 100, 200)
    each = max(bench.scale.iterations // 100, 1)
    runs = {count: max(2 * bench.scale.iterations // (count * each), 1) for count in counts}
    tiny.empty_table()
    measured = alternate(min(bench.scale.rounds, 7), *[
        lambda count=count: tiny.outside_ms(count, each, runs[count]) for count in counts])
    names = [f"{count} lines" if count > 1 else "1 line" for count in counts]
    return growth(names, counts, measured, "line")


def grown_table(tiny, size):
    """A table of at least `size` bytes, of rows as the program writes them."""
    tiny.empty_table()
    tiny.ours.run_ms(*tiny.lines(1, 1))
    first = tiny.table.read_bytes()
    row = first[first.index(b"\n") + 1:]
    table = tiny.folder / f"table_{size}.csv"
    with open(table, "wb") as file:
        file.write(first)
        while file.tell() < size:
            file.write(row * min(max((size - file.tell()) // len(row), 1), 4096))
    return table


def over_table_size(bench):
    tiny = Tiny(bench)
    sizes = bench.scale.tables
    tables = [grown_table(tiny, size) for size in sizes]

    def sample(table):
        tiny.table = table
        return tiny.outside_ms(1, bench.scale.iterations)

    measured = alternate(bench.scale.rounds,
                         *[lambda table=table: sample(table) for table in tables])
    for table in tables:
        table.unlink()
    names = [f"table of {size // MIB} MiB" if size >= MIB else f"table of {size // KIB} KiB"
             for size in sizes]
    return growth(names, [size / GIB for size in sizes], measured, "GiB")


GROUPS = (fill, first_read, against_bare_loop, against_fio, one_block, against_dd, loop_cost,
          start_to_exit, peak_memory, outside_the_span, over_lines, over_table_size, companion_start,
          companion_check, companion_report, companion_many_tables)
