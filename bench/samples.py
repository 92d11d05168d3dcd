"""Samples of a figure, their median, and the verdict on it."""

import statistics
from dataclasses import dataclass, field


@dataclass(frozen=True)
class Target:
    text: str
    lowest: float = float("-inf")
    highest: float = float("inf")

    def met_by(self, value):
        return self.lowest <= value <= self.highest


def at_least(value):
    return Target(f"at least {value:g}", lowest=value)


def at_most(value, unit=""):
    return Target(f"at most {value:g} {unit}".strip(), highest=value)


NO_TARGET = Target("none")


@dataclass
class Figure:
    """One row of the table: a ratio, or a value with a unit."""

    name: str
    target: Target
    samples: list = field(default_factory=list)
    unit: str = ""
    skipped: str = ""  # why there are no samples

    @property
    def median(self):
        return statistics.median(self.samples)

    @property
    def verdict(self):
        if self.skipped:
            return f"skipped: {self.skipped}"
        if self.target is NO_TARGET:
            return "explains"
        return "met" if self.target.met_by(self.median) else "missed"

    def cells(self):
        """Name, median, range, samples, target and verdict as texts."""
        if self.skipped:
            return [self.name, "", "", "", self.target.text, self.verdict]
        return [self.name, f"{shown(self.median)} {self.unit}".strip(),
                f"{shown(min(self.samples))} to {shown(max(self.samples))}",
                str(len(self.samples)), self.target.text, self.verdict]


def shown(value):
    return f"{value:.3g}" if abs(value) < 100 else f"{value:.0f}"


def alternate(rounds, *measure):
    """Measures A, B, A, B, ... and returns one list of samples for each of them.

    In turns, so that whatever else the machine does slows all of them alike.
    """
    taken = [[] for _ in measure]
    for _ in range(rounds):
        for samples, take in zip(taken, measure):
            samples.append(take())
    return taken


def ratios(above, below):
    return [a / b for a, b in zip(above, below)]
