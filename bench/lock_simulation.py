"""How many rows are lost when many clients finish together: the table of docs/many-clients.md.

    python3 bench/lock_simulation.py [--runs N] [--spread SECONDS]...

A client that finds the lock file sleeps 250 ms and looks again. After 40 such looks it asks whether
the lock is stale, which is a last look; then its row is lost. A client that finds no lock creates it,
appends its row and removes it: it holds the lock for the hold time. One that lost the race for a free
lock looks again at once, as if it had come later.
"""

import argparse
import heapq
import random
import statistics

LOOKS = 41
PAUSE_MS = 250
CLIENTS = (10, 20, 50, 100, 200, 500, 1000)
HOLD_MS = (1, 5, 20, 50, 100)
SPREADS = (0.01, 2)


def lost_rows(clients, hold_ms, spread_ms, draw, late_ms=0.2):
    """The rows lost when each client appends one row, from a moment within the spread on.

    A sleep lasts up to `late_ms` longer than asked for, as the timers of an idle machine have it.
    """
    waiting = [(draw.uniform(0, spread_ms), number, 0) for number in range(clients)]
    heapq.heapify(waiting)
    free_at = lost = 0
    while waiting:
        now, number, looks = heapq.heappop(waiting)
        if now >= free_at:
            free_at = now + hold_ms
        elif looks + 1 == LOOKS:
            lost += 1
        else:
            later = now + PAUSE_MS + draw.uniform(0, late_ms)
            heapq.heappush(waiting, (later, number, looks + 1))
    return lost


def table(spread_ms, runs):
    """Rows by number of clients, columns by hold time: the median, and the worst of the runs."""
    draw = random.Random(1)
    lines = ["| clients | " + " | ".join(f"{hold} ms" for hold in HOLD_MS) + " |",
             "|---|" + "---|" * len(HOLD_MS)]
    for clients in CLIENTS:
        cells = []
        for hold in HOLD_MS:
            lost = [lost_rows(clients, hold, spread_ms, draw) for _ in range(runs)]
            middle, worst = round(statistics.median(lost)), max(lost)
            cells.append(f"{middle}" if worst == middle else f"{middle} (up to {worst})")
        lines.append(f"| {clients} | " + " | ".join(cells) + " |")
    return "\n".join(lines)


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--runs", type=int, default=20, help="simulations for each cell")
    parser.add_argument("--spread", type=float, action="append", metavar="SECONDS",
                        help="the clients finish within so many seconds; default: "
                        + " and ".join(map(str, SPREADS)))
    options = parser.parse_args()
    for spread in options.spread or SPREADS:
        print(f"Rows lost of one row per client, all within {spread:g} s:\n")
        print(table(spread * 1000, options.runs), end="\n\n")


if __name__ == "__main__":
    main()
