"""What marrowctl costs: the time until it answers, and the memory that tables take."""

import os
import random
import time

from programs import wall_ms
from samples import Figure, at_most

TESTS_OF_A_FILE = 200


def processor_seconds(*command):
    """The processor time of a program that may find something: its status is 0 or 1."""
    return processor_and_memory(*command)[0]


def processor_and_memory(*command):
    """The same, and the most memory that it had at once, in MB."""
    nowhere = [(os.POSIX_SPAWN_OPEN, 1, os.devnull, os.O_WRONLY, 0)]
    process = os.posix_spawn(command[0], [str(part) for part in command], os.environ,
                             file_actions=nowhere)
    _, status, used = os.wait4(process, 0)
    if os.waitstatus_to_exitcode(status) not in (0, 1):
        raise RuntimeError(f"{command[0]} ended with wait status {status}")
    return used.ru_utime + used.ru_stime, used.ru_maxrss * 1024 / 1e6


def settings_line(folder, number, methods):
    """Each client writes files of its own, by methods and chunks in turns."""
    method = methods[number % len(methods)]
    # AnsiC overwrites nothing: each of its names may be taken.
    iterations = 100 if method == "ansic" else 3
    return (f"{method};0;0;0;{4 << number % 9};-1;{1 << number % 20};{iterations};0;MEMORY;"
            f"{folder}/data_[host]/write_{number}_[iter].bin;{folder}/log_[host].txt;"
            f"{folder}/results_[host].csv;{'true' if number % TESTS_OF_A_FILE == 0 else 'false'}\n")


def write_chain(folder, tests, methods=("posix", "stream")):
    """Settings files with so many tests in all, each with a chain line to the next; the first one."""
    paths = [folder / f"chain_{start}.bst" for start in range(0, tests, TESTS_OF_A_FILE)]
    for index, path in enumerate(paths):
        first = index * TESTS_OF_A_FILE
        lines = [settings_line(folder, number, methods)
                 for number in range(first, min(first + TESTS_OF_A_FILE, tests))]
        if path != paths[-1]:
            lines.append(f"[cfgPath]{paths[index + 1].name}\n")
        path.write_text("".join(lines))
    return paths


def companion_start(bench):
    program = bench.companion
    if not program.exists():
        return [Figure("marrowctl --help", at_most(10, "ms"), skipped="marrowctl is not built")]
    (small,) = write_chain(bench.folder, 2)
    # As a start is measured for marrowbench: the whole process, in turns.
    answers = {"marrowctl --help": ["--help"], "marrowctl check, 2 lines": ["check", small]}
    figures = [Figure(f"{name}, start to exit", at_most(10, "ms"), unit="ms") for name in answers]
    for _ in range(bench.scale.starts):
        for figure, arguments in zip(figures, answers.values()):
            figure.samples.append(wall_ms(program, *arguments))
    small.unlink()
    return figures


def companion_check(bench):
    program, scale = bench.companion, bench.scale
    if not program.exists():
        return [Figure("marrowctl check", at_most(0.8, "s"), skipped="marrowctl is not built")]
    figures = []
    others = ("posix", "stream")
    for tests, methods, hosts, limit in ((scale.checked_lines, others, 1, 0.8),
                                         (TESTS_OF_A_FILE, others, scale.checked_hosts, 2),
                                         (TESTS_OF_A_FILE, ("ansic",), scale.checked_hosts, 2)):
        paths = write_chain(bench.folder, tests, methods)
        for form in ([], ["--json"]):
            name = " ".join(["marrowctl check", *form])
            lines = f"{tests:,} lines" + (" of AnsiC" if methods == ("ansic",) else "")
            figure = Figure(f"{name}, {lines}, hosts: {hosts}, processor time", at_most(limit, "s"),
                            unit="s")
            for _ in range(min(scale.rounds, 5)):
                figure.samples.append(processor_seconds(
                    program, "check", *form, "--hosts", f"c[1-{hosts}]", paths[0]))
            figures.append(figure)
        for path in paths:
            path.unlink()
    return figures


HEADER = ("Date,Method,Type,Flush,PreAllocate,Chunk Wait,Chunk Size,Chunk Size KiB,System Buffer,"
          "Filesize KiB,Iterations,Empty SystemCache Mode,Source,Source IP,Dest,Dest IP,Error,Zero test,"
          "Time ms,Time KiB/s,Copy Speed %,NICa,NICa IP,NICa speed MiB/s,NICa MTU,NICb,NICb IP,"
          "NICb speed MiB/s,NICb MTU,NICc,NICc IP,NICc speed MiB/s,NICc MTU,\n")
CLIENTS = 100
ITERATIONS = 100
FOLDER = "/mnt/projects/" + "a_folder_that_is_named_at_length/" * 2


def write_table(path, rows):
    """A table of rows of about 300 bytes: copies of 100 clients that run together."""
    noise = random.Random(1)
    begin = time.time() - 2 * rows / CLIENTS
    with open(path, "w", encoding="ascii") as file:
        file.write(HEADER)
        for number in range(rows):
            step, client = divmod(number, CLIENTS)
            line, iteration = divmod(step, ITERATIONS)
            date = time.strftime("%b %d. %H:%M.%S", time.localtime(begin + 2 * step))
            name = f"data_client{client:03}/file_{line}_{iteration}.bin"
            ms = noise.randint(1000, 1900)
            file.write(f"{date},{('Posix', 'Stream', 'AnsiC')[line % 3]},Copy,,,0,{4096 << line % 9},"
                       f"{4 << line % 9},0,0,{ITERATIONS},0,{FOLDER}in/{name},,{FOLDER}out/{name},,,0,{ms},"
                       f"{262144000 // ms},100,,,,,,,,,,,,,\n\n")


def companion_report(bench):
    program, scale = bench.companion, bench.scale
    if not program.exists():
        return [Figure("marrowctl report", at_most(0.8, "s"), skipped="marrowctl is not built")]
    figures = []
    for rows, limit, memory in zip(scale.reported_rows, (0.8, 8), (100, 500)):
        path = bench.folder / "rows.csv"
        write_table(path, rows)
        name = f"marrowctl report, {rows:,} rows"
        used = [processor_and_memory(program, "report", path) for _ in range(min(scale.rounds, 3))]
        figures += [Figure(f"{name}, processor time", at_most(limit, "s"), [each[0] for each in used], "s"),
                    Figure(f"{name}, memory", at_most(memory, "MB"), [each[1] for each in used], "MB")]
        if rows == scale.reported_rows[0]:
            tidy = [processor_seconds(program, "report", "--tidy", path) for _ in range(min(scale.rounds, 3))]
            figures.append(Figure(f"{name}, --tidy, processor time", at_most(3, "s"), tidy, "s"))
        path.unlink()
    return figures
