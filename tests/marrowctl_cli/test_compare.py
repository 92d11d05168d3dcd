"""What compare says of two tables, against a calculation of its own."""

import json
import random
import statistics

import pytest

from tables import Row, perfect_fleet, quantile, write


def compare(ctl, *arguments):
    done = ctl.run("compare", "--json", *arguments)
    assert done.stderr == ""
    return json.loads(done.stdout), done.returncode


def tables(ctl, factor, **changes):
    """Two runs; the second takes `factor` of the time."""
    old, new = perfect_fleet(**changes), perfect_fleet(**changes)
    for row in old + new:
        row.ms //= 2
    for row in new:
        row.ms = round(row.ms * factor)
    return write(ctl.folder / "old.csv", old), write(ctl.folder / "new.csv", new), old, new


def medians(rows):
    return statistics.median(row.mib_per_second() for row in rows)


@pytest.mark.parametrize("factor, verdict", [
    (1.0, "the same"), (0.9, "faster"), (1.2, "slower"), (1.01, "cannot tell")])
def test_verdict_follows_ratio_and_interval(ctl, factor, verdict):
    old_path, new_path, old, new = tables(ctl, factor, clients=5)
    (test,) = compare(ctl, old_path, new_path)[0]["tests"]
    assert test["ratio"] == pytest.approx(medians(new) / medians(old), rel=1e-9)
    assert test["low"] <= test["ratio"] <= test["high"]
    expected = ("the same" if test["low"] >= 0.98 and test["high"] <= 1.02 else
                "faster" if test["low"] > 1 else "slower" if test["high"] < 1 else "cannot tell")
    assert test["verdict"] == expected
    if factor != 1.01:
        assert test["verdict"] in (verdict, "cannot tell" if factor == 1.0 else verdict)


def drawn_interval(old, new, by_client):
    """The percentile bootstrap, with other random numbers."""
    draw = random.Random(5)

    def groups(rows):
        key = (lambda row: row.host) if by_client else id
        found = {}
        for row in rows:
            found.setdefault(key(row), []).append(row.mib_per_second())
        return list(found.values())
    sides = [groups(old), groups(new)]
    ratios = []
    for _ in range(20000):
        before, after = (statistics.median([speed for group in draw.choices(side, k=len(side)) for speed in group])
                         for side in sides)
        ratios.append(after / before)
    return quantile(ratios, 0.025), quantile(ratios, 0.975)


@pytest.mark.parametrize("clients, by_client", [(8, True), (3, False)])
def test_interval_is_that_of_an_independent_bootstrap(ctl, clients, by_client):
    noise = random.Random(1)
    old, new = perfect_fleet(clients=clients, iterations=8), perfect_fleet(clients=clients, iterations=8)
    for row in old + new:
        row.ms = round(row.ms * noise.uniform(0.5, 1.1))
    write(ctl.folder / "old.csv", old)
    write(ctl.folder / "new.csv", new)
    (test,) = compare(ctl, "old.csv", "new.csv")[0]["tests"]
    low, high = drawn_interval(old, new, by_client)
    width = high - low
    assert width > 0.02
    assert test["low"] == pytest.approx(low, abs=0.1 * width)
    assert test["high"] == pytest.approx(high, abs=0.1 * width)


def test_the_same_input_gives_the_same_interval(ctl):
    old, new, _, _ = tables(ctl, 1.05)
    assert compare(ctl, old, new) == compare(ctl, old, new)


def test_few_rows_tell_nothing(ctl):
    old, new, _, _ = tables(ctl, 2.0, clients=1, iterations=4)
    (test,) = compare(ctl, old, new)[0]["tests"]
    assert (test["verdict"], test["low"], test["high"]) == ("cannot tell", None, None)
    assert test["ratio"] == pytest.approx(0.5, rel=1e-3)


@pytest.mark.parametrize("iterations, told", [
    (4, "marrowctl compare: --fail-if-slower can't judge 1 of 1 test: fewer than 5 rows with a speed on a side\n"),
    (5, "")])
def test_a_limit_that_cannot_be_judged_is_told(ctl, iterations, told):
    old, new, _, _ = tables(ctl, 2.0, clients=1, iterations=iterations)
    done = ctl.run("compare", old, new, "--fail-if-slower", "10")
    assert (done.returncode, done.stderr) == (0 if told else 3, told)
    assert ctl.run("compare", old, new).stderr == ""


@pytest.mark.parametrize("limit, told", [
    ("10", "marrowctl compare: --fail-if-slower can't judge 1 of 1 test: the median is beyond the limit, but rows "
           "scatter too much to tell\n"),
    ("40", "")])
def test_a_loss_that_scatter_hides_is_told(ctl, limit, told):
    # The median of the second run is a quarter lower, and half of its rows are as fast as ever.
    sides = [[Row(iteration * 4, iteration=iteration, ms=ms) for iteration, ms in enumerate(times)]
             for times in ([1000] * 6, [1000, 2000] * 3)]
    old, new = (write(ctl.folder / f"{name}.csv", rows) for name, rows in zip(("old", "new"), sides))
    (test,) = compare(ctl, old, new)[0]["tests"]
    assert (test["verdict"], test["ratio"]) == ("cannot tell", pytest.approx(0.75, rel=1e-3))
    done = ctl.run("compare", old, new, "--fail-if-slower", limit)
    assert (done.returncode, done.stderr) == (0, told)


@pytest.mark.parametrize("limit, status", [("10", 3), ("16.6", 3), ("17", 0)])
def test_a_loss_beyond_the_limit_is_a_status(ctl, limit, status):
    old, new, _, _ = tables(ctl, 1.2)
    assert compare(ctl, old, new, "--fail-if-slower", limit)[1] == status
    assert compare(ctl, new, old, "--fail-if-slower", limit)[1] == 0
    assert compare(ctl, old, new)[1] == 0


def test_tests_are_matched_by_name_or_by_file(ctl):
    def rows(folder, chunks):
        return [Row(end=10 * (4 * at + i + 1), ms=9000, iteration=i, chunk=chunk,
                    dest=f"{folder}/file_{{iteration}}.bin") for at, chunk in enumerate(chunks) for i in range(4)]
    write(ctl.folder / "old.csv", rows("/here", [4096, 8192]))
    write(ctl.folder / "new.csv", rows("/there", [8192, 16384]))
    found, _ = compare(ctl, "old.csv", "new.csv")
    assert [test["name"] for test in found["tests"]] == ["Posix write, 8 KiB chunks, 64 MiB files"]
    assert found["onlyOld"] == ["Posix write, 4 KiB chunks, 64 MiB files"]
    assert found["onlyNew"] == ["Posix write, 16 KiB chunks, 64 MiB files"]


def test_worst_comes_first(ctl):
    old = [Row(end=10 * (4 * at + i + 1), ms=9000, iteration=i, chunk=chunk)
           for at, chunk in enumerate([4096, 8192, 16384]) for i in range(6)]
    new = [Row(end=row.end, ms=row.ms * {4096: 8, 8192: 12, 16384: 10}[row.chunk] // 10,
               iteration=row.iteration, chunk=row.chunk) for row in old]
    write(ctl.folder / "old.csv", old)
    write(ctl.folder / "new.csv", new)
    found, _ = compare(ctl, "old.csv", "new.csv")
    ratios = [test["ratio"] for test in found["tests"]]
    assert len(ratios) == 3 and ratios == sorted(ratios)
    assert ctl.run("compare", "old.csv", "new.csv").stdout.splitlines()[0] == (
        "3 tests in both: 1 slower, 1 faster, 1 the same.")
