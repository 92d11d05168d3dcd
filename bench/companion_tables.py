"""What tables cost marrowctl: the time and the memory of a report, beside tools that do a part of it."""

import random
import shutil
import time

from companion import processor_and_memory, processor_seconds
from samples import NO_TARGET, Figure, at_most

HEADER = ("Date,Method,Type,Flush,PreAllocate,Chunk Wait,Chunk Size,Chunk Size KiB,System Buffer,"
          "Filesize KiB,Iterations,Empty SystemCache Mode,Source,Source IP,Dest,Dest IP,Error,Zero test,"
          "Time ms,Time KiB/s,Copy Speed %,NICa,NICa IP,NICa speed MiB/s,NICa MTU,NICb,NICb IP,"
          "NICb speed MiB/s,NICb MTU,NICc,NICc IP,NICc speed MiB/s,NICc MTU,\n")
CLIENTS = 100
ITERATIONS = 100
FOLDER = "/mnt/projects/" + "a_folder_that_is_named_at_length/" * 2


ROWS_OF_TABLE = 10
# Each takes a table as its first argument.
PEERS = [
    ("wc -l", "wc", 'wc -l < "$1"'),
    ("awk and datamash", "datamash", """awk -F, 'FNR > 1 && NF > 1 { print $2 "/" $8 "\\t" $20 }' "$1" |
       datamash -s -g 1 count 2 q1 2 median 2 q3 2"""),
    ("Miller", "mlr", 'mlr --icsv --allow-ragged-csv-input --ojson stats1 -a count,p25,p50,p75 -f "Time KiB/s" -g "Method,Chunk Size KiB" "$1"'),
]


def write_table(path, rows, first_client=0):
    """A table of rows of about 300 bytes: copies of up to 100 clients that run together."""
    noise = random.Random(1)
    begin = time.time() - 2 * rows / CLIENTS
    with open(path, "w", encoding="ascii") as file:
        file.write(HEADER)
        for number in range(rows):
            step, client = divmod(number, CLIENTS)
            line, iteration = divmod(step, ITERATIONS)
            date = time.strftime("%b %d. %H:%M.%S", time.localtime(begin + 2 * step))
            name = f"data_client{first_client + client:03}/file_{line}_{iteration}.bin"
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
            figures += peers_of_report(path, rows)
        path.unlink()
    return figures


def peers_of_report(path, rows):
    """Count, quartiles and median of the speed of each method and chunk: less than a report does."""
    figures = []
    for name, tool, command in PEERS:
        figure = Figure(f"{name}, {rows:,} rows, processor time", NO_TARGET, unit="s")
        if shutil.which(tool):
            figure.samples = [processor_seconds("/bin/sh", "-c", command, "sh", path, statuses=(0,)) for _ in range(2)]
        else:
            figure.skipped = f"{tool} is not installed"
        figures.append(figure)
    return figures


def companion_many_tables(bench):
    program, scale = bench.companion, bench.scale
    folder = bench.folder / "tables"
    name = f"marrowctl report of {scale.tables_of_fleet:,} tables with {ROWS_OF_TABLE} rows each"
    if not program.exists():
        return [Figure(name, at_most(2, "s"), skipped="marrowctl is not built")]
    folder.mkdir()
    for number in range(scale.tables_of_fleet):
        write_table(folder / f"results_{number}.csv", ROWS_OF_TABLE, first_client=number)
    # Tables are opened one after the other: the time that passes counts.
    figure = Figure(name, at_most(2, "s"), unit="s")
    for _ in range(min(scale.rounds, 3)):
        begin = time.perf_counter()
        processor_seconds(program, "report", folder)
        figure.samples.append(time.perf_counter() - begin)
    shutil.rmtree(folder)
    return [figure]
