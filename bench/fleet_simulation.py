"""What a share has to bear when many clients are armed, started and watched: a table of docs/many-clients.md.

    python3 bench/fleet_simulation.py [--clients N]... [--per-second REQUESTS]...

The share answers one request after the other, each in the same time; the clock is the simulation's own.
Each system call on a file of the share counts as a request, though clients of shares answer some of them
themselves. How many each step makes was counted by strace, in a run whose tables, logs and data have the
client's name in their paths.
"""

import argparse
import heapq
import itertools
import math
import random
from dataclasses import dataclass, field

CLIENTS = (10, 100, 1000, 10000)
PER_SECOND = (2000, 10000, 50000)

# Calls of a client.
ARM = 19  # its folder, the ready file, the clock of the share
LIST = 4  # every second, so that a new file is seen
TOUCH = 10  # every ten seconds, its ready file and what the console says
LOOK = 1  # of the program for its settings file, every five seconds
READ = 5  # of the settings file that is there
BEGIN = 9  # its log's first lines
ITERATION = 36  # a transfer of two calls, its row under the lock, and what the log says about it
END = 24  # the done marker, what the console said, the finished file
# Calls of the machine that publishes and watches.
CALL_ROLL = 5  # per ready file
NAMES_PER_LISTING = 800  # of a folder
FOLLOW = 8  # per client: its ready file, opened for its time, its table and the lock of that
LOOKED_AT = 200  # clients in one look

LIST_EVERY, TOUCH_EVERY, LOOK_EVERY, WATCH_EVERY = 1, 10, 5, 1
ARMED_WITHIN = 5  # seconds: engines that start all clients at once, detached
BEST_SECOND, LAST_SECOND, MINUTE = 46, 45, 60
ITERATIONS = 5
ITERATION_SECONDS = 10  # of a client that has the share to itself


@dataclass
class Share:
    """Answers requests in the order in which they come."""
    per_second: float
    free_at: float = 0
    answered: int = 0

    def ask(self, now, requests):
        """When the last of these requests is answered."""
        self.free_at = max(now, self.free_at) + requests / self.per_second
        self.answered += requests
        return self.free_at


@dataclass
class Run:
    """What is known of a run while it goes on; times in seconds."""
    clients: int
    armed_at: list = field(default_factory=list)
    published_at: float = math.inf
    start: float = math.inf
    seen_at: list = field(default_factory=list)
    done_at: list = field(default_factory=list)
    watched: list = field(default_factory=list)  # how long each look of watch took
    asked: list = field(default_factory=list)  # of the share, by the end of each second


# Each of these is a thread of work: it yields requests to the share, or a time to sleep until.
def armed_client(run, moment):
    now = yield ("sleep", moment)
    now = yield ("ask", ARM)
    run.armed_at.append(now)
    while len(run.done_at) < run.clients and math.isinf(run.start):
        now = yield ("sleep", now + LIST_EVERY)
        now = yield ("ask", LIST)


def touching_client(run, moment):
    now = moment
    while len(run.done_at) < run.clients:
        now = yield ("sleep", now + TOUCH_EVERY)
        now = yield ("ask", TOUCH)


def program(run, moment, draw):
    now = yield ("sleep", moment)
    while now < run.published_at:
        now = yield ("sleep", now + LOOK_EVERY)
        now = yield ("ask", LOOK)
    now = yield ("ask", READ)
    run.seen_at.append(now)
    now = yield ("sleep", max(run.start, now))
    now = yield ("ask", BEGIN)
    for _ in range(ITERATIONS):
        now = yield ("sleep", now + ITERATION_SECONDS * draw.uniform(0.9, 1.1))
        now = yield ("ask", ITERATION)
    now = yield ("ask", END)
    run.done_at.append(now)


def listings(clients):
    return 2 + math.ceil(clients / NAMES_PER_LISTING)


def publisher(run):
    now = 0
    while len(run.armed_at) < run.clients:
        now = yield ("sleep", now + 0.1)
    begin = now
    now = yield ("ask", listings(run.clients) + CALL_ROLL * run.clients)
    run.roll_seconds = now - begin
    # Those that have left meanwhile are found by a second call, which ends at the moment.
    moment = now + (BEST_SECOND - now) % MINUTE
    now = yield ("sleep", max(now, moment - 2 * run.roll_seconds - 1))
    now = yield ("ask", listings(run.clients) + CALL_ROLL * run.clients)
    now = yield ("sleep", max(now, moment))
    run.published_at = now
    border = now + (LAST_SECOND - now) % MINUTE
    run.start = border + MINUTE - LAST_SECOND
    run.border = border  # whoever sees the file later starts a minute later


def watcher(run):
    now = 0
    while math.isinf(run.published_at):
        now = yield ("sleep", now + 1)
    while len(run.done_at) < run.clients:
        begin = now
        now = yield ("ask", 2 * listings(run.clients) + FOLLOW * min(run.clients, LOOKED_AT))
        run.watched.append(now - begin)
        now = yield ("sleep", now + WATCH_EVERY)


def simulate(clients, per_second, seed=1):
    """Runs all of it; returns the run and the share."""
    draw, share, run = random.Random(seed), Share(per_second), Run(clients)
    # The engine begins at a second of no meaning.
    begin = draw.uniform(0, MINUTE)
    threads = [publisher(run), watcher(run)]
    for _ in range(clients):
        moment = begin + draw.uniform(0, ARMED_WITHIN)
        threads += [armed_client(run, moment), touching_client(run, moment), program(run, moment, draw)]
    order = itertools.count()
    events = []

    def go_on(thread, now):
        try:
            kind, value = next(thread) if now is None else thread.send(now)
        except StopIteration:
            return
        now = now or 0
        later = max(value, now) if kind == "sleep" else share.ask(now, value)
        heapq.heappush(events, (later, next(order), thread))

    for thread in threads:
        go_on(thread, None)
    run.begin = begin
    while events:
        now, _, thread = heapq.heappop(events)
        run.asked.extend([share.answered] * (int(now) + 1 - len(run.asked)))
        go_on(thread, now)
    return run, share


def busiest_second(run):
    return max(after - before for before, after in zip(run.asked, run.asked[1:]))


def waiting_load(run):
    """Requests per second while all clients wait."""
    begin, end = math.ceil(max(run.armed_at)), int(run.published_at)
    return (run.asked[end] - run.asked[begin]) / (end - begin) if end > begin else math.nan


def row(clients, per_second):
    run, _ = simulate(clients, per_second)
    late = sum(seen > run.border for seen in run.seen_at)
    cells = (f"{clients:,}", f"{per_second:,}", f"{max(run.armed_at) - run.begin:.1f} s",
             f"{run.roll_seconds:.2f} s", f"{waiting_load(run):,.0f}", f"{busiest_second(run):,}",
             f"{max(run.seen_at) - run.published_at:.1f} s", f"{late:,}",
             f"{max(run.watched):.2f} s", f"{max(run.done_at) - run.start:.0f} s")
    return "| " + " | ".join(cells) + " |"


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--clients", type=int, action="append", metavar="N")
    parser.add_argument("--per-second", type=int, action="append", metavar="REQUESTS",
                        help="that the share answers")
    options = parser.parse_args()
    print("| clients | answers per second | all armed | ready files read | asked per second while waiting "
          "| asked in the busiest second | last client sees the file | too late | longest look of watch | run |")
    print("|" + "---|" * 10)
    for clients, per_second in itertools.product(options.clients or CLIENTS, options.per_second or PER_SECOND):
        print(row(clients, per_second), flush=True)


if __name__ == "__main__":
    main()
