"""What the log of slow_calls.cpp tells about a lock: who held it when, and who took it from whom."""

import collections
from dataclasses import dataclass, field

OLD = 3 * 3600          # seconds after which a lock may be taken over
LOOKING = 10 * 10 ** 9  # nanoseconds for which a client looks at a lock before


@dataclass
class History:
    most_holders: int = 0
    rows: collections.Counter = field(default_factory=collections.Counter)  # written, by process
    faults: list = field(default_factory=list)


def history(text, ahead=(), begun=()):
    """Reads a log, whose lines are in the order in which things happened.

    A client holds the lock from its creation until it removes it itself, or until somebody else
    removes it when it is old. A client that finds its lock gone ends its turn when it closes it.

    ahead: processes whose clock is hours ahead; to them a lock looks old that has stood still for as
    long as they look.
    begun: processes that were stopped in the middle of an append, which is then written later.
    """
    found = History()
    holders = set()
    owner, since = None, 0  # of the lock file that is there
    for line in text.splitlines():
        when, process, what, age = line.split()
        when, process, age = int(when), int(process), int(age)
        if what == "lock-created":
            owner, since = process, when
            holders.add(process)
            found.most_holders = max(found.most_holders, len(holders))
            if len(holders) > 1:
                found.faults.append(f"{len(holders)} holders at once: {sorted(holders)}")
        elif what == "lock-removed":
            is_old = age > OLD or (process in ahead and when - since >= LOOKING)
            if process != owner and not is_old:
                found.faults.append(f"{process} removed the lock of {owner}, {age} s old")
            if process == owner or is_old:
                holders.discard(owner)
            owner = None
            # What it removed may have been another's: its own turn is over.
            holders.discard(process)
        elif what == "lock-closed" and process != owner:
            holders.discard(process)
        elif what == "row-written":
            found.rows[process] += 1
            if process != owner and process not in begun:
                found.faults.append(f"{process} wrote a row while the lock was that of {owner}")
    return found
