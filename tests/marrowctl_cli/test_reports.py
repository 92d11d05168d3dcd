"""What report finds in tables with known answers, against a calculation of its own."""

import csv
import dataclasses
import io
import json

import pytest

from tables import EPOCH, HEADER, Row, figures, perfect_fleet, rates, write

HALF_HOUR = 1800


def report(ctl, *arguments, status=None):
    done = ctl.run("report", "--json", *arguments)
    assert done.stderr == ""
    if status is not None:
        assert done.returncode == status, done.stdout
    return json.loads(done.stdout)


def close(expected):
    return {key: value if value is None or isinstance(value, bool) else pytest.approx(value, rel=1e-9)
            for key, value in expected.items()}


def expect_figures(test, rows):
    moved = [row for row in rows if row.moved()]
    assert test["mibPerSecond"] == close(figures([row.mib_per_second() for row in moved]))
    assert test["milliseconds"] == close(figures([row.ms for row in moved]))


def expect_rates(test, rows, left_out=()):
    expected = rates(rows, left_out)
    # Seconds since the epoch leave about 1e-7 s of a double.
    assert test["overlap"] == pytest.approx(expected["overlap"], abs=1e-6)
    for name in ("allActive", "toTheLast"):
        if expected[name] is None:
            assert test[name] is None
            continue
        assert test[name] == {key: pytest.approx(value, rel=1e-6) for key, value in expected[name].items()}


def test_a_perfect_fleet(ctl):
    rows = perfect_fleet()
    found = report(ctl, write(ctl.folder / "a.csv", rows), status=0)
    assert found["verdict"]["complete"] is None
    assert found["verdict"]["concurrent"] is True and found["verdict"]["clean"] is True
    assert found["clients"] == {"expected": None, "found": 5, "missing": []}
    assert (found["rows"]["read"], found["runs"], found["rows"]["unusable"]) == (20, 1, [])
    (test,) = found["tests"]
    assert (test["rows"], test["clients"], test["leftOut"], test["stragglers"]) == (20, 5, [], [])
    expect_figures(test, rows)
    expect_rates(test, rows)
    assert test["firstStart"].startswith("2026-11-16T02:00:00")
    assert test["lastEnd"].startswith("2026-11-16T02:00:40")


@pytest.mark.parametrize("hosts, complete, missing", [
    ("c0[1-5]", None, []), ("c0[1-6]", False, ["c06"]), ("c0[1-5].example.org", None, [])])
def test_expected_clients(ctl, hosts, complete, missing):
    found = report(ctl, write(ctl.folder / "a.csv", perfect_fleet()), "--hosts", hosts)
    assert found["verdict"]["complete"] is complete
    assert found["clients"]["missing"] == missing
    assert [each["name"] for each in found["suspicions"] if missing] == ["missing-hosts"] * len(missing)


@pytest.mark.parametrize("hosts, clients, strangers", [
    ("c0[1-4]", "4 of 4 clients, 20 rows, ", "c05"), ("d01,c01", "1 of 2 clients, 20 rows, ", "c02, c03, c04, c05"),
    ("d01", "0 of 1 client, 20 rows, ", "c01, c02, c03, c04, c05")])
def test_clients_that_are_not_expected_are_named(ctl, hosts, clients, strangers):
    write(ctl.folder / "a.csv", perfect_fleet())
    pattern = ("--host-pattern", "data_([^/]*)/")
    said = " ".join(ctl.run("report", "a.csv", "--hosts", hosts, *pattern).stdout.split())
    assert said.startswith(clients) and f"; not expected {strangers}." in said, said
    more = " ".join(ctl.run("report", "a.csv", "--hosts", hosts, "--clients", "5", *pattern).stdout.split())
    assert more.startswith("5 of 5 clients") and "not expected" not in more


def test_rows_without_a_name_are_none_of_the_expected_clients(ctl):
    write(ctl.folder / "a.csv", perfect_fleet())
    said = " ".join(ctl.run("report", "a.csv", "--hosts", "d01").stdout.split())
    assert said.startswith("0 of 1 client, 20 rows, ") and "; missing d01." in said, said


SETTINGS = "posix;0;0;0;64;0;65536;4;0;MEMORY;/share/data_[host]/file_[iter].bin;;results.csv;true\n"


def test_settings_and_hosts_make_it_complete(ctl):
    settings = ctl.write("run.bst", SETTINGS)
    table = write(ctl.folder / "a.csv", perfect_fleet())
    found = report(ctl, table, "--settings", settings, "--hosts", "c0[1-5]", status=0)
    assert found["verdict"]["complete"] is True
    assert found["rows"]["expected"] == 20
    (test,) = found["tests"]
    assert (test["settingsFile"], test["configIndex"]) == (str(settings), 0)
    assert report(ctl, table, settings, "--clients", "5")["verdict"]["complete"] is True
    assert report(ctl, table, settings, "--clients", "6", status=1)["verdict"]["complete"] is False


def test_rows_that_nobody_asked_for_are_not_among_the_expected(ctl):
    ctl.write("run.bst", SETTINGS)
    others = [dataclasses.replace(row, method="AnsiC") for row in perfect_fleet()][:7]
    write(ctl.folder / "a.csv", perfect_fleet() + others)
    text = text_of(ctl, "a.csv", "run.bst", "--hosts", "c0[1-5]")
    assert text.startswith("5 of 5 clients, 20 of 20 rows, ") and "complete, " in text
    assert "; 7 rows of tests that are not in the settings. " in text, text
    assert report(ctl, "a.csv", "run.bst", "--hosts", "c0[1-5]")["rows"] == {
        "expected": 20, "read": 27, "errors": 0, "nullData": 0, "unusable": []}
    # c05 was not asked for.
    text = text_of(ctl, "a.csv", "run.bst", "--hosts", "c0[1-4]")
    assert text.startswith("4 of 4 clients, 16 of 16 rows, "), text
    write(ctl.folder / "a.csv", perfect_fleet()[:-1] + others)
    assert text_of(ctl, "a.csv", "run.bst", "--hosts", "c0[1-5]").startswith("5 of 5 clients, 19 of 20 rows, ")


def test_of_all_runs_each_should_have_its_rows(ctl):
    ctl.write("run.bst", SETTINGS)
    again = perfect_fleet()
    for row in again:
        row.end += 45
    words = ("a.csv", "run.bst", "--hosts", "c0[1-5]", "--all-runs")
    write(ctl.folder / "a.csv", perfect_fleet() + again)
    text = text_of(ctl, *words)
    assert text.startswith("5 of 5 clients, 40 of 40 rows, ") and " complete, " in text, text
    write(ctl.folder / "a.csv", perfect_fleet() + [row for row in again if (row.host, row.iteration) != ("c03", 2)])
    text = text_of(ctl, *words)
    assert text.startswith("5 of 5 clients, 39 of 40 rows, ") and ": not complete, " in text, text
    assert " Rows that are missing c03: 1 of 8 rows of Posix write, " in text, text


def test_a_lost_row(ctl):
    settings = ctl.write("run.bst", SETTINGS)
    rows = [row for row in perfect_fleet() if (row.host, row.iteration) != ("c03", 2)]
    found = report(ctl, write(ctl.folder / "a.csv", rows), "--settings", settings, "--hosts", "c0[1-5]",
                   status=1)
    assert found["verdict"]["complete"] is False
    assert (found["rows"]["expected"], found["rows"]["read"]) == (20, 19)
    # It has 3 of 4 rows.
    assert found["tests"][0]["leftOut"] == ["c03"]
    expect_rates(found["tests"][0], rows, left_out=["c03"])
    expect_figures(found["tests"][0], rows)


def test_a_late_client(ctl):
    rows = perfect_fleet()
    for row in rows:
        if row.host == "c05":
            row.end += 70
    found = report(ctl, write(ctl.folder / "a.csv", sorted(rows, key=lambda row: row.end)), status=1)
    assert found["verdict"]["concurrent"] is False
    (test,) = found["tests"]
    assert (test["overlap"], test["allActive"]) == (0, None)
    expect_rates(test, rows)
    (late,) = [each for each in found["suspicions"] if each["name"] == "late-start"]
    assert late["hosts"] == ["c05"]


def test_a_client_ten_times_slower(ctl):
    rows = perfect_fleet(clients=8)
    for row in rows:
        if row.host == "c03":
            row.ms, row.end = 10 * (9000 + 300), 100 * (row.iteration + 1)
    found = report(ctl, write(ctl.folder / "a.csv", sorted(rows, key=lambda row: row.end)))
    (slow,) = found["tests"][0]["stragglers"]
    assert slow["host"] == "c03"
    assert slow["ratio"] == pytest.approx(0.1, abs=0.01)
    expect_rates(found["tests"][0], rows)


def test_a_torn_last_row(ctl):
    path = write(ctl.folder / "a.csv", perfect_fleet())
    torn = perfect_fleet()[-1].text()[:100]
    path.write_text(path.read_text() + torn)
    found = report(ctl, path, status=1)
    assert found["rows"]["read"] == 20
    assert found["rows"]["unusable"] == [{"file": str(path), "line": 42, "reason": "torn: the file ends in it"}]
    assert found["verdict"]["clean"] is False


def test_commas_in_paths(ctl):
    rows = perfect_fleet(dest="/share/a, b,c/data_{host}/file_{iteration}.bin")
    path = write(ctl.folder / "a.csv", [
        *rows, Row(end=41, dest="/share/x,,y/file"), Row(end=42, source=",in", type="Copy", dest="/out"),
        Row(end=43, source="/in", type="Copy", dest="/out,")])
    found = report(ctl, path)
    assert found["clients"]["found"] == 5
    assert found["rows"]["read"] == 20
    reasons = [(each["line"], each["reason"].split(":")[0]) for each in found["rows"]["unusable"]]
    assert reasons == [(42, "ambiguous"), (44, "ambiguous"), (46, "ambiguous")]
    expect_figures(found["tests"][0], rows)


def test_two_header_lines_blank_lines_and_semicolons(ctl):
    rows = perfect_fleet()
    path = write(ctl.folder / "a.csv", [HEADER, *rows[:10], "", HEADER.replace(",", ";"), "  ",
                                        *(row.text(";") for row in rows[10:])], changed=EPOCH + 40)
    found = report(ctl, path, status=0)
    assert (found["rows"]["read"], found["rows"]["unusable"], len(found["tests"])) == (20, [], 1)
    expect_figures(found["tests"][0], rows)


@pytest.mark.parametrize("line, reason", [
    ("what is this,1,2,3", 'no date in its first cell: "what is this"'),
    ("Nov 31. 02:00.00,Posix", 'no date in its first cell: "Nov 31. 02:00.00"'),
    ("Nov 16. 02:00.00|Posix", "no separator behind its date"),
    ("Nov 16. 02:00.00,Posix,Write,", "3 cells instead of 33"),
    (Row(end=0, method="Magic").text(), 'Method is unknown: "Magic"'),
    (Row(end=0, null="x").text(), 'Zero test is no number: "x"'),
    (Row(end=0, ms=-5, speed=1).text(), "Time ms is impossible: -5"),
    (Row(end=0, dest="/" + 40000 * "x").text(), "longer than a row can be"),
])
def test_rows_that_can_not_be_used_are_listed(ctl, line, reason):
    path = write(ctl.folder / "a.csv", [*perfect_fleet(), line, Row(end=40, host="c01")])
    found = report(ctl, path, status=1)
    assert found["rows"]["read"] == 21
    assert found["rows"]["unusable"] == [{"file": str(path), "line": 42, "reason": reason}]


def test_new_year(ctl):
    # From the last hour of a year into the next one, and a row that is a little older than the next.
    eve = 45 * 86400 + 21 * 3600 + 1800  # December 31, 23:30
    rows = [Row(end=eve + 600 * i, iteration=i, iterations=6) for i in range(6)]
    rows.insert(4, Row(end=eve + 1790, iteration=0, host="c02", iterations=6))
    found = report(ctl, write(ctl.folder / "a.csv", rows))
    (test,) = found["tests"]
    assert test["firstStart"].startswith("2026-12-31T23:29:59")
    assert test["lastEnd"].startswith("2027-01-01T00:20:00")
    assert found["runs"] == 1


def test_a_system_row_moves_nothing(ctl):
    rows = [*perfect_fleet(), Row(end=40, method="System", ms=0)]
    found = report(ctl, write(ctl.folder / "a.csv", rows), status=0)
    system = found["tests"][1]
    assert (system["method"], system["rows"], system["mibPerSecond"], system["overlap"]) == ("System", 1, None, None)
    expect_figures(found["tests"][0], rows[:-1])


def text_of(ctl, *arguments):
    return " ".join(ctl.run("report", *arguments).stdout.split())


def test_who_is_left_out_is_not_called_active(ctl):
    rows = [row for row in perfect_fleet() if row.host != "c02" or row.iteration == 0]
    ctl.write("run.bst", SETTINGS)
    write(ctl.folder / "a.csv", rows)
    text = text_of(ctl, "a.csv", "--settings", "run.bst")
    counted = rates(rows, ["c02"])["allActive"]["mibPerSecond"]
    assert f" 4 of 5 active: {counted:.1f} MiB/s" in text, text
    assert " without c02: too many rows failed or are missing " in text
    assert "without" not in text_of(ctl, write(ctl.folder / "b.csv", perfect_fleet()), "--settings", "run.bst")


def test_rows_that_are_missing_are_named(ctl):
    rows = [row for row in perfect_fleet() if (row.host, row.iteration) not in (("c03", 2), ("c04", 0), ("c04", 1))]
    ctl.write("run.bst", SETTINGS)
    write(ctl.folder / "a.csv", rows)
    text = text_of(ctl, "a.csv", "--settings", "run.bst", "--hosts", "c0[1-5]")
    name = "of Posix write, 64 KiB chunks, 64 MiB files"
    assert f" Rows that are missing c03: 1 of 4 rows {name} c04: 2 of 4 rows {name} A row is" in text, text


def test_of_many_missing_rows_the_first_are_named(ctl):
    ctl.write("run.bst", SETTINGS)
    write(ctl.folder / "a.csv", [row for row in perfect_fleet(clients=12) if row.iteration])
    assert " c10: 1 of 4 rows of Posix write, 64 KiB chunks, 64 MiB files and 2 more " in text_of(
        ctl, "a.csv", "--settings", "run.bst")


def test_null_data_is_told_with_its_place(ctl):
    rows = perfect_fleet(clients=1)
    rows[2].null = "4096"
    write(ctl.folder / "a.csv", rows)
    assert (" Rows with null data a.csv:6: zeros in front of byte 4,096 of /share/data_c01/file_2.bin (?) "
            in text_of(ctl, "a.csv")), text_of(ctl, "a.csv")
    rows[2].type, rows[2].source, rows[2].dest = "Read", "/share/read.bin", "MEMORY"
    write(ctl.folder / "a.csv", rows)
    assert "byte 4,096 of /share/read.bin" in text_of(ctl, "a.csv")


def test_a_transfer_without_time_is_not_called_nothing(ctl):
    write(ctl.folder / "a.csv", [Row(end=1, ms=0)])
    assert " 0 ms, or nothing moved 1" in text_of(ctl, "a.csv")
    write(ctl.folder / "a.csv", [Row(end=1, error="ERROR: no")])
    assert " nothing was moved 1" in text_of(ctl, "a.csv")


def test_a_test_too_short_to_tell_is_not_said_to_be_concurrent(ctl):
    short = [Row(end=60, host=host, chunk=1024) for host in ("c01", "c02", "c03", "c04", "c05")]
    write(ctl.folder / "a.csv", perfect_fleet() + short)
    assert "yes in each test of 3 s or more all were active" in text_of(ctl, "a.csv")


@pytest.mark.parametrize("kind, name", [("Write", "Posix write, 64 KiB chunks, 1 KiB files"),
                                        ("Read", "Posix read, 64 KiB chunks"), ("Copy", "Posix copy, 64 KiB chunks")])
def test_only_what_is_written_has_its_size_in_its_name(ctl, kind, name):
    cells = Row(end=10, type=kind).text().split(",")
    cells[HEADER.split(",").index("Filesize KiB")] = "1"
    (test,) = report(ctl, write(ctl.folder / "a.csv", [",".join(cells)]))["tests"]
    assert test["name"] == name


def test_null_data_is_not_clean(ctl):
    rows = perfect_fleet()
    rows[7].null = "4096"
    rows[8].null = ""
    found = report(ctl, write(ctl.folder / "a.csv", rows), status=1)
    assert found["rows"]["nullData"] == found["tests"][0]["nullData"] == 1
    assert found["verdict"]["clean"] is False


def test_errors_are_grouped_without_host_and_iteration(ctl):
    rows = perfect_fleet()
    for row in rows:
        if row.iteration >= 2 and row.host in ("c01", "c02"):
            row.ms, row.null = 0, ""
            row.error = "ERROR: Unable to open destination file '" + row.dest + "' ! No space left on device"
    found = report(ctl, write(ctl.folder / "a.csv", rows), status=1)
    (group,) = found["errors"]
    assert group["text"] == ("ERROR: Unable to open destination file '/share/data_[host]/file_[iter].bin' ! "
                             "No space left on device")
    assert (group["rows"], group["hosts"]) == (4, ["c01", "c02"])
    expect_figures(found["tests"][0], rows)
    expect_rates(found["tests"][0], rows)


def test_a_client_whose_rows_all_failed_is_left_out(ctl):
    rows = perfect_fleet()
    for row in rows:
        if row.host == "c04":
            row.ms, row.error = 0, "ERROR: Unable to open"
    found = report(ctl, write(ctl.folder / "a.csv", rows))
    assert found["tests"][0]["leftOut"] == ["c04"]
    assert found["tests"][0]["clients"] == 5


def two_runs():
    later = perfect_fleet(clients=3)
    for row in later:
        row.end += HALF_HOUR + 60
    return perfect_fleet(), later


def test_the_newest_of_two_runs_is_judged(ctl):
    old, new = two_runs()
    path = write(ctl.folder / "a.csv", old + new)
    found = report(ctl, path)
    assert (found["runs"], found["rows"]["read"], found["clients"]["found"]) == (2, 12, 3)
    expect_figures(found["tests"][0], new)
    together = report(ctl, path, "--all-runs")
    assert (together["runs"], together["rows"]["read"]) == (2, 32)
    expect_figures(together["tests"][0], old + new)
    assert report(ctl, path, "--gap", "60")["runs"] == 1


def test_settings_tell_runs_without_a_gap(ctl):
    settings = ctl.write("run.bst", SETTINGS)
    old, new = perfect_fleet(), perfect_fleet()
    for row in new:
        row.end += 45
    path = write(ctl.folder / "a.csv", old + new)
    assert report(ctl, path)["runs"] == 1
    found = report(ctl, path, settings)
    assert (found["runs"], found["rows"]["read"]) == (2, 20)
    assert found["tests"][0]["firstStart"].startswith("2026-11-16T02:00:45")


def test_alike_lines_are_told_apart_by_their_order(ctl):
    settings = ctl.write("run.bst", SETTINGS * 2)
    rows = perfect_fleet()
    again = perfect_fleet()
    for row in again:
        row.end += 40
        row.ms -= 2000
    found = report(ctl, write(ctl.folder / "a.csv", rows + again), settings, "--clients", "5", status=0)
    assert found["runs"] == 1
    assert [test["configIndex"] for test in found["tests"]] == [0, 1]
    expect_figures(found["tests"][0], rows)
    expect_figures(found["tests"][1], again)


def lines_of(*tests):
    """A settings file with a line for each pair of method and table."""
    return "".join(SETTINGS.replace("posix;0;0", f"{method};0;0").replace("results.csv", table)
                   for method, table in tests)


def rows_of(method, begin):
    rows = perfect_fleet(clients=2)
    for row in rows:
        row.method = method
        row.end += begin
    return rows


@pytest.mark.parametrize("second", ["a.csv", "y.csv"])
def test_clients_go_from_table_to_table(ctl, second):
    settings = ctl.write("run.bst", lines_of(("posix", "z.csv"), ("ansic", second), ("stream", "z.csv")))
    runs = [[rows_of(method, begin + 300 * run) for method, begin in (("Posix", 0), ("AnsiC", 60), ("Stream", 120))]
            for run in range(2)]
    write(ctl.folder / "z.csv", runs[0][0] + runs[0][2])
    write(ctl.folder / second, runs[0][1])
    tables = ("z.csv", second, settings, "--clients", "2")
    once = report(ctl, *tables, status=0)
    assert (once["runs"], once["rows"]["expected"], once["rows"]["read"]) == (1, 24, 24)
    write(ctl.folder / "z.csv", [row for run in runs for row in run[0] + run[2]])
    write(ctl.folder / second, runs[0][1] + runs[1][1])
    twice = report(ctl, *tables, status=0)
    assert (twice["runs"], twice["rows"]["expected"], twice["rows"]["read"]) == (2, 24, 24)
    for test, rows in zip(twice["tests"], runs[1]):
        expect_figures(test, rows)
        expect_rates(test, rows)


def test_the_order_of_tables_outlives_a_clock_that_is_wrong(ctl):
    settings = ctl.write("run.bst", lines_of(("posix", "z.csv"), ("ansic", "a.csv")))
    tests = [rows_of("Posix", 0), rows_of("AnsiC", 60)]
    for row in [row for rows in tests for row in rows if row.host == "c02"]:
        row.end += 3600
    for name, rows in zip(("z.csv", "a.csv"), tests):
        write(ctl.folder / name, rows)
    found = report(ctl, "z.csv", "a.csv", settings, "--clients", "2")
    assert (found["runs"], found["rows"]["read"], found["verdict"]["complete"]) == (1, 16, True)


def test_of_one_second_the_row_of_the_earlier_line_is_the_earlier_one(ctl):
    settings = ctl.write("run.bst", lines_of(("posix", "z.csv"), ("ansic", "a.csv")))
    for name, method in (("z.csv", "Posix"), ("a.csv", "AnsiC")):
        rows = rows_of(method, 0)
        for row in rows:
            row.end, row.ms = 5, 20
        write(ctl.folder / name, rows)
    found = report(ctl, "a.csv", "z.csv", settings, "--clients", "2")
    assert (found["runs"], found["verdict"]["complete"]) == (1, True)


def test_alike_lines_are_told_apart_by_their_tables(ctl):
    settings = ctl.write("run.bst", lines_of(("posix", "z.csv"), ("posix", "a.csv"), ("posix", "z.csv")))
    tests = [rows_of("Posix", begin) for begin in (0, 60, 120)]
    # A client whose second test is lost.
    tests[1] = [row for row in tests[1] if row.host != "c02"]
    write(ctl.folder / "z.csv", tests[0] + tests[2])
    write(ctl.folder / "a.csv", tests[1])
    found = report(ctl, "z.csv", "a.csv", settings, "--clients", "2", status=1)
    assert (found["runs"], [test["rows"] for test in found["tests"]]) == (1, [8, 4, 8])
    for test, rows in zip(found["tests"], tests):
        expect_figures(test, rows)
    # One table alone, seen through another mount, tells whose line it is.
    (ctl.folder / "mount").mkdir()
    write(ctl.folder / "mount/a.csv", tests[1])
    found = report(ctl, "mount/a.csv", settings, "--clients", "2", status=1)
    assert [test["rows"] for test in found["tests"]] == [0, 4, 0]
    # One that was renamed does not: the order does.
    found = report(ctl, write(ctl.folder / "all.csv", [row for rows in tests for row in rows]), settings)
    assert [test["rows"] for test in found["tests"]] == [8, 8, 4]


def test_alike_lines_are_told_apart_by_the_folders_of_their_tables(ctl):
    settings = ctl.write("run.bst", lines_of(("posix", f"{ctl.folder}/one/r.csv"), ("posix", f"{ctl.folder}/two/r.csv")))
    for name in ("one", "two"):
        (ctl.folder / name).mkdir()
    path = write(ctl.folder / "two/r.csv", rows_of("Posix", 0))
    assert [test["rows"] for test in report(ctl, path, settings)["tests"]] == [0, 8]


def test_clients_that_mount_the_share_elsewhere(ctl):
    settings = ctl.write("run.bst", SETTINGS.replace("/share/", "[cfgPath]"))
    rows = perfect_fleet()
    for row in rows:
        row.dest = "/mnt/of_" + row.host + "/data_{host}/file_{iteration}.bin"
    found = report(ctl, write(ctl.folder / "a.csv", rows), settings, "--hosts", "c0[1-5]", status=0)
    assert len(found["tests"]) == 1
    assert found["verdict"]["complete"] is True


def test_hosts_by_the_names_of_tables(ctl):
    for host in ("alpha", "beta", "gamma"):
        rows = [Row(end=10 * (i + 1), ms=9000, iteration=i, dest="/share/file_{iteration}.bin")
                for i in range(4)]
        write(ctl.folder / f"tables/results_{host}.csv", rows)
    found = report(ctl, "tables", "--hosts", "alpha,beta,gamma,delta")
    assert (found["clients"]["found"], found["clients"]["missing"]) == (3, ["delta"])
    found = report(ctl, "tables/results_*.csv", status=0)
    assert (found["clients"]["found"], found["tests"][0]["clients"], found["rows"]["read"]) == (3, 3, 12)


def test_hosts_by_a_pattern(ctl):
    rows = [Row(end=10 * (i + 1), ms=9000, iteration=i, host=host, dest="/share/x{host}x{iteration}.bin")
            for i in range(4) for host in ("7a", "8b")]
    found = report(ctl, write(ctl.folder / "a.csv", rows), "--host-pattern", r"x(\d[ab])x\d+\.bin$")
    assert found["tests"][0]["clients"] == 2


def test_one_client_that_writes_several_files_is_one_client(ctl):
    rows = [Row(end=10 * (4 * part + i + 1), ms=9900, iteration=i,
                dest=f"/share/part_{part}/file_{{iteration}}.bin") for part in (1, 2) for i in range(4)]
    found = report(ctl, write(ctl.folder / "a.csv", rows))
    assert (found["clients"]["found"], len(found["tests"])) == (1, 2)
    assert found["verdict"]["concurrent"] is None


def test_reads_and_copies_have_their_bytes_by_speed_and_time(ctl):
    rows = [Row(end=10 * (i + 1), host=host, iteration=i, ms=8000 + i, type=kind, speed=12345 + i,
                source="/share/{host}/{iteration}.bin", dest=dest)
            for kind, dest in (("Read", "MEMORY"), ("Copy", "/share/{host}/copy_{iteration}.bin"))
            for i in range(4) for host in ("c01", "c02")]
    for row in rows[8:]:
        row.end += 50
    found = report(ctl, write(ctl.folder / "a.csv", rows))
    assert [test["fileBytes"] for test in found["tests"]] == [None, None]
    for test, part in zip(found["tests"], (rows[:8], rows[8:])):
        expect_figures(test, part)
        expect_rates(test, part)


def test_reads_from_the_clients_own_memory_are_suspected(ctl):
    reads = [Row(end=50 + 5 * (row.iteration + 1), host=row.host, iteration=row.iteration, ms=2000,
                 type="Read", speed=32768, source=row.dest, dest="MEMORY") for row in perfect_fleet()]
    path = write(ctl.folder / "a.csv", perfect_fleet() + reads)
    (cache,) = report(ctl, path)["suspicions"]
    assert (cache["name"], cache["hosts"]) == ("client-cache", ["c01", "c02", "c03", "c04", "c05"])
    names = [each["name"] for each in report(ctl, path, "--link", "100M")["suspicions"]]
    assert names == ["client-cache"]
    names = [each["name"] for each in report(ctl, path, "--link", "40M")["suspicions"]]
    assert names == ["impossible-rate", "client-cache"]


@pytest.mark.parametrize("last, is_suspected", [(5000, False), (4500, True)])
def test_a_first_iteration_is_held_against_the_median_of_the_later_ones(ctl, last, is_suspected):
    # 1.46 and 1.56 times as fast.
    rows = [Row(end=10 * (index + 1), ms=ms, iteration=index) for index, ms in enumerate((9000, 8000, last))]
    found = report(ctl, write(ctl.folder / "a.csv", rows))
    assert ("first-iteration" in [each["name"] for each in found["suspicions"]]) is is_suspected


def test_a_lock_that_was_left_is_told(ctl):
    path = write(ctl.folder / "a.csv", perfect_fleet())
    ctl.write("a.csv_lock.txt", "")
    assert [each["name"] for each in report(ctl, path)["suspicions"]] == ["lock-left"]


def test_done_markers(ctl):
    path = write(ctl.folder / "a.csv", perfect_fleet())
    for host in ("c01", "c02", "c03", "c04"):
        ctl.write(f"_run_log/done__{host}", "")
    found = report(ctl, path, "--done", "_run_log", status=1)
    assert found["verdict"]["complete"] is False
    assert found["verdict"]["text"].endswith("no done marker of c05")
    ctl.write("_run_log/done__c05", "")
    assert report(ctl, path, "--done", "_run_log", status=0)["verdict"]["complete"] is None


def test_tidy_rows_are_the_rows(ctl):
    rows = perfect_fleet()
    rows[3].error, rows[3].ms, rows[3].null = 'ERROR: "quoted", and more', 0, ""
    path = write(ctl.folder / "a, b.csv", rows)
    done = ctl.run("report", "--tidy", path)
    assert done.returncode == 1
    tidy = list(csv.DictReader(io.StringIO(done.stdout)))
    assert len(tidy) == 20
    for number, (line, row) in enumerate(zip(tidy, rows)):
        assert (line["host"], line["iteration"], line["method"], line["type"]) == (
            row.host, str(row.iteration), "Posix", "write")
        assert (line["dest"], line["table"]) == (f"/share/data_{row.host}/file_{row.iteration}.bin", str(path))
        assert line["table_line"] == str(2 * number + 2)
        assert line["file_bytes"] == "67108864"
        assert (line["flush"], line["settings"], line["line"]) == ("false", "", "")
        if row.error:
            assert (line["error"], line["bytes"], line["mib_per_second"], line["null_position"]) == (
                row.error, "", "", "")
        else:
            assert int(line["bytes"]) == row.bytes()
            assert float(line["mib_per_second"]) == pytest.approx(row.mib_per_second(), abs=1e-6)


def test_tidy_lines_end_as_the_standard_has_it(ctl):
    write(ctl.folder / "a.csv", perfect_fleet())
    with open(ctl.folder / "tidy", "wb") as file:
        ctl.run("report", "--tidy", "a.csv", stdout=file)
    lines = (ctl.folder / "tidy").read_bytes().split(b"\r\n")
    assert (len(lines), lines[-1]) == (22, b"")
    assert b"\n" not in b"".join(lines)


def test_text_begins_with_the_verdict_and_names_what_it_shows(ctl):
    write(ctl.folder / "a.csv", perfect_fleet())
    done = ctl.run("report", "a.csv", "--hosts", "c0[1-6]")
    assert done.returncode == 1
    text = " ".join(done.stdout.split())
    assert text.startswith("5 of 6 clients, 20 rows, no error row, no null data, overlap 98 %: not complete, "
                           "concurrent, clean; missing c06.")
    assert "Posix write, 64 KiB chunks, 64 MiB files" in text
    assert max(map(len, done.stdout.splitlines())) <= 100


@pytest.mark.parametrize("clients, ms, is_rough", [(2, 9900, True), (2, 10100, False), (1, 9900, False)])
def test_text_says_where_whole_seconds_tell_little(ctl, clients, ms, is_rough):
    write(ctl.folder / "a.csv", [Row(end=20, host=host, ms=ms) for host in ("north", "south")[:clients]])
    text = " ".join(ctl.run("report", "a.csv").stdout.split())
    assert ("where all were active for less than 10 s, what they got together is rough" in text) is is_rough


@pytest.mark.parametrize("make, problem", [
    (lambda path: path.write_bytes(b"\x89PNG\r\n\x1a\n" + bytes(range(256)) * 400),
     "this is no results table of marrowbench: no header and no row is in it"),
    (lambda path: path.write_bytes(b""), "no usable row is in it"),
    (lambda path: path.write_bytes(bytes(100 * 1024 * 1024)),
     "this is no results table of marrowbench: no header and no row is in it"),
    (lambda path: path.write_text(HEADER + "\n"), "no usable row is in it"),
    (lambda path: path.mkdir(), "no *.csv file is in this folder"),
    (lambda path: None, "No such file or directory"),
])
def test_unusable_input_is_told(ctl, make, problem):
    path = ctl.folder / "a.csv"
    make(path)
    done = ctl.run("report", path)
    assert (done.returncode, done.stdout, done.stderr) == (2, "", f"marrowctl report: {path}: {problem}\n")


def test_standard_input_is_a_table(ctl):
    path = write(ctl.folder / "a.csv", perfect_fleet())
    with open(path, "rb") as file:
        done = ctl.run("report", "--json", "-", stdin=file)
    assert json.loads(done.stdout)["rows"]["read"] == 20


def test_a_byte_order_mark_in_front_is_no_row(ctl):
    path = write(ctl.folder / "a.csv", perfect_fleet())
    path.write_bytes(b"\xef\xbb\xbf" + path.read_bytes())
    found = report(ctl, path)
    assert (found["rows"]["read"], found["rows"]["unusable"]) == (20, [])
    # A row may come first as well.
    path.write_bytes(b"\xef\xbb\xbf" + Row(end=5).text().encode() + b"\n")
    assert report(ctl, path)["rows"]["read"] == 1


def test_bytes_that_are_no_utf8_do_no_harm(ctl):
    path = write(ctl.folder / "a.csv", perfect_fleet(dest="/share/\u00e4/data_{host}/file_{iteration}.bin"))
    path.write_bytes(path.read_bytes().replace("\u00e4".encode(), b"\xff"))
    for form in ([], ["--json"], ["--tidy"]):
        done = ctl.run("report", path, *form)
        assert done.returncode == 0, form
    assert "\ufffd" in ctl.run("report", path, "--tidy").stdout
