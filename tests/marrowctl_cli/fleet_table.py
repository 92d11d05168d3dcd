"""A results table of a fleet, made up: speeds that shares have, with what goes wrong on them."""

import datetime
import itertools
import random

from tables import HEADER, MIB, NO_SPEED

FILE = 256 * MIB
SHARE = 1100.0  # MiB/s that the server delivers to all clients together
LINK = 111.0  # MiB/s of a client's link
INTERFACES = {"Stream": 0.93, "AnsiC": 0.96, "Posix": 1.0}


def tests(chunks=(16, 64, 1024), pauses=(5, 20)):
    """Method, type, chunk KiB and pause of each test."""
    plain = [(method, kind, chunk, 0) for kind, chunk, method in itertools.product(
        ("Write", "Read"), chunks, INTERFACES)]
    return plain + [("Posix", "Write", 1024, pause) for pause in pauses]


def speed_of(test, clients, chance):
    method, kind, chunk, _ = test
    share = min(LINK, SHARE / clients) * INTERFACES[method] * chunk / (chunk + 12)
    return share * (1.06 if kind == "Read" else 1) * chance.uniform(0.9, 1.05)


def row(end, test, host, iteration, iterations, milliseconds, speed, percent, error="", null=""):
    method, kind, chunk, pause = test
    path = f"/srv/share/{kind.lower()}_{method}_{chunk}k_{pause}/{host}_{iteration}.bin"
    source, dest = ("MEMORY", path) if kind == "Write" else (path, "MEMORY")
    cells = [end.strftime("%b %d. %H:%M.%S"), method, kind, "", "", pause, chunk * 1024, chunk, 0,
             FILE // 1024, iterations, 0, source, "", dest, "", error, null, milliseconds,
             round(speed * 1024), percent, *[""] * 12]
    return ",".join(map(str, cells)) + ",\n"


def rows_of_client(number, host, clients, begin, iterations, chance, all_tests, factors):
    """The last client is slow, the second one begins three tests late, the third meets errors and null data."""
    rows = []
    for index, test in enumerate(all_tests):
        method, kind, chunk, pause = test
        late = 8 if number == 1 and index < 3 else 0
        now = begin + datetime.timedelta(seconds=chance.uniform(0, 1) + late)
        for iteration in range(iterations):
            speed = speed_of(test, clients, chance) * factors.get(test, 1) / (1.6 if number == clients - 1 else 1)
            if iteration == 0 and kind == "Write":
                speed *= 0.6
            busy = FILE / MIB / speed * 1000
            waited = FILE / (chunk * 1024) * pause
            taken = busy + waited
            now += datetime.timedelta(milliseconds=taken + 150)
            failed = number == 2 and iteration == 2 and kind == "Read"
            rows.append((now, row(now, test, host, iteration, iterations, round(taken),
                                  NO_SPEED / 1024 if failed else FILE / MIB / taken * 1000,
                                  round(100 * busy / taken),
                                  "ERROR: Can't read the file. Errno 5, Input/output error" if failed else "",
                                  4096 if number == 2 and iteration == 1 and kind == "Read" else "")))
        slowest = iterations * (FILE / MIB * 3 * max(1 / LINK, clients / SHARE) + 1)
        begin += datetime.timedelta(minutes=1 + slowest // 60)
    return rows


def write_fleet(path, hosts, iterations=6, all_tests=None, seed=1, factors=None):
    """The rows of all clients in the order of their ends; returns how many there are.

    factors: how much faster than usual a test is, for those that are."""
    chance = random.Random(seed)
    begin = datetime.datetime.now().replace(second=0, microsecond=0) - datetime.timedelta(hours=4)
    rows = [each for number, host in enumerate(hosts) for each in rows_of_client(
        number, host, len(hosts), begin, iterations, chance, all_tests or tests(), factors or {})]
    rows.sort(key=lambda each: each[0])
    path.write_text(HEADER + "\n" + "".join(text for _, text in rows), errors="surrogateescape")
    return len(rows)
