"""Results tables with known contents, and what they come to, worked out without marrowctl."""

import dataclasses
import os
import statistics
import time

HEADER = ("Date,Method,Type,Flush,PreAllocate,Chunk Wait,Chunk Size,Chunk Size KiB,System Buffer,"
          "Filesize KiB,Iterations,Empty SystemCache Mode,Source,Source IP,Dest,Dest IP,Error,Zero test,"
          "Time ms,Time KiB/s,Copy Speed %,NICa,NICa IP,NICa speed MiB/s,NICa MTU,NICb,NICb IP,"
          "NICb speed MiB/s,NICb MTU,NICc,NICc IP,NICc speed MiB/s,NICc MTU,")
NO_SPEED = -9223372036854775808
MIB = 1048576
EPOCH = int(time.mktime((2026, 11, 16, 2, 0, 0, 0, 0, -1)))


@dataclasses.dataclass
class Row:
    """A row of a write of 64 MiB, unless it says otherwise; times in seconds from EPOCH."""
    end: int
    host: str = "c01"
    iteration: int = 0
    ms: int = 1000
    method: str = "Posix"
    type: str = "Write"
    kib: int = 65536
    speed: int | None = None
    source: str = "MEMORY"
    dest: str = "/share/data_{host}/file_{iteration}.bin"
    error: str = ""
    null: str = "0"
    iterations: int = 4
    chunk: int = 65536

    def kib_per_second(self):
        if self.speed is not None:
            return self.speed
        return round(self.kib * 1000 / self.ms) if self.ms else NO_SPEED

    def text(self, separator=","):
        names = {"host": self.host, "iteration": self.iteration}
        date = time.strftime("%b %d. %H:%M.%S", time.localtime(EPOCH + self.end))
        kib = self.kib if self.type == "Write" else 0
        cells = [date, self.method, self.type, "", "", 0, self.chunk, self.chunk // 1024, 0, kib,
                 self.iterations, 0, self.source.format(**names), "", self.dest.format(**names), "",
                 self.error.format(**names), self.null, self.ms, self.kib_per_second(), 100] + [""] * 12
        return "".join(f"{cell}{separator}" for cell in cells)

    def moved(self):
        return not self.error and self.ms > 0 and self.kib_per_second() >= 0 and self.method != "System"

    def bytes(self):
        if not self.moved():
            return 0
        return self.kib * 1024 if self.type == "Write" else round(self.kib_per_second() * self.ms * 1.024)

    def mib_per_second(self):
        return self.bytes() * 1000 / MIB / self.ms

    def start(self):
        return self.end - self.ms / 1000


def write(path, rows, header=True, changed=None):
    """A table of these rows or lines, changed when its last row was made."""
    lines = [row if isinstance(row, str) else row.text() for row in rows]
    path.parent.mkdir(parents=True, exist_ok=True)
    path.write_text("".join([f"{HEADER}\n" if header else "", *(f"{line}\n\n" for line in lines)]))
    ends = [row.end for row in rows if isinstance(row, Row)]
    changed = EPOCH + max(ends, default=0) if changed is None else changed
    os.utime(path, (changed, changed))
    return path


def quantile(values, share):
    """Type 7: linear between order statistics."""
    values = sorted(values)
    position = (len(values) - 1) * share
    low = int(position)
    high = min(low + 1, len(values) - 1)
    return values[low] + (position - low) * (values[high] - values[low])


def figures(values):
    mean = statistics.fmean(values)
    return {"min": min(values), "p25": quantile(values, 0.25), "median": quantile(values, 0.5),
            "p75": quantile(values, 0.75), "max": max(values), "mean": mean,
            "cv": statistics.stdev(values) / mean if len(values) > 1 else None}


def rates(rows, left_out=()):
    """Overlap and the two rates of one test."""
    moved = [row for row in rows if row.moved()]
    counted = [row for row in moved if row.host not in left_out]
    hosts = {row.host for row in counted}
    begin = max(min(row.start() for row in counted if row.host == host) for host in hosts)
    end = min(max(row.end for row in counted if row.host == host) for host in hosts)
    first, last = min(row.start() for row in moved), max(row.end for row in moved)
    window = max(0, end - begin)
    inside = sum(row.bytes() * max(0, min(row.end, end) - max(row.start(), begin)) / (row.ms / 1000)
                 for row in counted)
    total = sum(row.bytes() for row in moved)
    return {"overlap": window / (last - first),
            "allActive": {"seconds": window, "bytes": inside, "mibPerSecond": inside / MIB / window}
            if window else None,
            "toTheLast": {"seconds": last - first, "bytes": total,
                          "mibPerSecond": total / MIB / (last - first)}}


def perfect_fleet(clients=5, iterations=4, **changes):
    """Each client writes for nine seconds of ten, the k-th a little longer."""
    return [Row(end=10 * (iteration + 1), host=f"c{client:02}", iteration=iteration,
                ms=9000 + 100 * client + 10 * iteration, iterations=iterations, **changes)
            for iteration in range(iterations) for client in range(1, clients + 1)]
