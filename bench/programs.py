"""Runs Marrowbench and what it is compared with."""

import csv
import io
import json
import os
import shutil
import subprocess
import time

KIB = 1024
MIB = 1024 * KIB
GIB = 1024 * MIB


class Unavailable(Exception):
    """What a figure needs is not on this machine."""


def tool(name):
    path = shutil.which(name)
    if path is None:
        raise Unavailable(f"{name} is not installed")
    return path


def wall_ms(*command):
    """The milliseconds from a program's start to its end."""
    nowhere = [(os.POSIX_SPAWN_OPEN, 1, os.devnull, os.O_WRONLY, 0),
               (os.POSIX_SPAWN_OPEN, 2, os.devnull, os.O_WRONLY, 0)]
    start = time.perf_counter()
    process = os.posix_spawn(command[0], [str(part) for part in command], os.environ,
                             file_actions=nowhere)
    _, status = os.waitpid(process, 0)
    passed = (time.perf_counter() - start) * 1000
    if status != 0:
        raise RuntimeError(f"{command[0]} ended with wait status {status}")
    return passed


def peak_kib(*command):
    """The largest resident memory of a program, as GNU time reports it.

    The wait status of a direct child would not do: the kernel counts this interpreter's memory,
    which a child has until its own program is loaded.
    """
    timed = subprocess.run([tool("time"), "-f", "%M", *map(str, command)], check=True,
                           stdout=subprocess.DEVNULL, stderr=subprocess.PIPE, text=True)
    return int(timed.stderr.split()[-1])


def line(kind, file, dest="", method="posix", chunk=MIB, size=0, iterations=1, log="", table=""):
    """A settings line; `size` is for write tests, whose only path is `file`."""
    source, target = {"read": (file, "MEMORY"), "write": ("MEMORY", file), "copy": (file, dest)}[kind]
    return (f"{method};0;0;0;{chunk // KIB};0;{size // KIB};{iterations};0;"
            f"{source};{target};{log};{table};false\n")


class Marrowbench:
    def __init__(self, program, folder):
        self.program = program
        self.folder = folder

    def settings(self, *lines):
        path = self.folder / "bench.bst"
        path.write_text("".join(lines) or "# no tests\n")
        return path

    def run_ms(self, *lines):
        """The whole process, start to exit."""
        return wall_ms(self.program, self.settings(*lines))

    def reported_ms(self, kind, file, **parameters):
        """The milliseconds that the results table tells, one for each iteration."""
        table = self.folder / "bench.csv"
        table.unlink(missing_ok=True)
        self.run_ms(line(kind, file, table=table, **parameters))
        return reported_times(table.read_text())


def reported_times(table):
    """The milliseconds in a table's text; raises an error when a row has one."""
    rows = list(csv.DictReader(io.StringIO(table)))
    errors = [row["Error"] for row in rows if row["Error"]]
    if errors or not rows:
        raise RuntimeError(errors[0] if errors else "the results table has no rows")
    return [float(row["Time ms"]) for row in rows]


def bare_loop_pairs(program, samples, kind, chunk, file, last):
    """Pairs of milliseconds from bench_bare_loop, the first of them thrown away; `last` is the bytes
    to transfer, for a copy the destination."""
    done = subprocess.run([program, str(samples + 1), kind, str(chunk), file, str(last)],
                          check=True, stdout=subprocess.PIPE, text=True)
    return [tuple(map(float, pair.split())) for pair in done.stdout.splitlines()][1:]


def fio_ms(times, kind, chunk, file, size):
    """A job of fio on an existing file, with the system's cache left as it is, as we do."""
    done = subprocess.run(
        [tool("fio"), "--name=peer", "--ioengine=sync", f"--rw={kind}", f"--bs={chunk}",
         f"--size={size}", f"--loops={times}", f"--filename={file}", "--invalidate=0",
         "--fallocate=none", "--output-format=json"],
        check=True, stdout=subprocess.PIPE, text=True)
    job = json.loads(done.stdout)["jobs"][0][kind]
    if job["io_bytes"] != times * size:
        raise RuntimeError(f"fio moved {job['io_bytes']} bytes of {times * size}")
    return float(job["runtime"])


def dd_ms(source, dest):
    return wall_ms(tool("dd"), f"if={source}", f"of={dest}", "bs=1M", "conv=notrunc")


def in_process(program, only, seconds=None):
    """A run of bench_in_process: its context, and its benchmarks by name."""
    arguments = [program, f"--benchmark_filter={only}", "--benchmark_format=json"]
    if seconds is not None:
        arguments.append(f"--benchmark_min_time={seconds}")
    done = subprocess.run(arguments, check=True, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL,
                          text=True)
    result = json.loads(done.stdout)
    return result["context"], {run["name"]: run for run in result["benchmarks"]}
