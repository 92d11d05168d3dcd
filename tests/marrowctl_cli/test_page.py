"""The pages of report --html and compare --html: what they hold, and their charts, drawn without a browser."""

import base64
import hashlib
import json
import os
import pathlib
import re
import shutil
import subprocess
import xml.etree.ElementTree

import pytest

import page_charts
from tables import Row, perfect_fleet, write

DRAW = pathlib.Path(__file__).with_name("draw_charts.mjs")
SVG = "{http://www.w3.org/2000/svg}"
needs_node = pytest.mark.skipif(not shutil.which("node"), reason="needs node, which npm brings")


def drawings_of(path):
    """Each chart as SVG."""
    done = subprocess.run(["node", DRAW, path], capture_output=True, text=True, timeout=300)
    assert (done.returncode, done.stderr) == (0, "")
    answer = json.loads(done.stdout)
    assert answer["complaints"] == []
    return {chart: xml.etree.ElementTree.fromstring(svg) for chart, svg in answer["drawings"].items()}


def marks_of(drawing, kinds):
    """How many marks with a shape a drawing has."""
    marks = dict.fromkeys(kinds, 0)
    for group in drawing.iter(f"{SVG}g"):
        classes = group.get("class", "").split()
        for kind in kinds:
            if f"mark-{kind}" in classes and "role-mark" in classes:
                marks[kind] += sum(mark.tag == f"{SVG}line" or bool(mark.get("d")) for mark in group)
    return marks


def expect_drawn(path, sections):
    """Every chart of these sections has its marks."""
    expected, drawings = page_charts.expected_marks(path), drawings_of(path)
    assert {chart: marks_of(drawings[chart], marks) for chart, marks in expected.items()} == expected
    assert set(page_charts.sections_of(path).values()) == set(sections)
    return drawings


@needs_node
def test_report_draws_every_chart(page):
    path, rows = page()
    drawings = expect_drawn(path, page_charts.REPORT)
    assert page_charts.rows_of(path)["timeline-rows"] == rows
    labels = [mark.get("aria-label") for mark in drawings["timeline-rows"].iter(f"{SVG}path") if mark.get("aria-label")]
    assert sum("c01" in label for label in labels) > 0


@needs_node
def test_comparison_draws_every_chart(compared_page):
    expect_drawn(compared_page(), page_charts.COMPARISON)


@pytest.mark.parametrize("end, shown", [(2, ["", "", "", "too short"]), (4, ["42.7", "44.7", "32.0", "50.0 %"])])
def test_a_test_too_short_to_tell_has_no_speed_of_all_together(charts, ctl, end, shown):
    # Of three seconds each two together: 64 MiB by three, times two, by two.
    rows = [Row(end=end - late, host=host, ms=1000 * (end - 1)) for late, host in enumerate(("south", "north"))]
    write(ctl.folder / "a.csv", rows[::-1])
    done = ctl.run("report", "a.csv", "--html", "a.html")
    assert done.returncode in (0, 1), done.stderr
    section = (ctl.folder / "a.html").read_text().split('<section id="tests">')[1]
    assert re.findall(r'<td class="number">(.*?)</td>', section.split("</table>")[0])[-4:] == shown


def test_clients_that_do_not_count_are_told(charts, ctl):
    rows = perfect_fleet(clients=3) + [Row(end=10, host="c04", error="ERROR: no")]
    write(ctl.folder / "a.csv", rows)
    assert ctl.run("report", "a.csv", "--html", "a.html").returncode == 1
    section = (ctl.folder / "a.html").read_text().split('<section id="tests">')[1]
    assert re.findall(r'<td class="number">(.*?)</td>', section)[0] == "3 of 4"


@needs_node
@pytest.mark.parametrize("clients", [1, 300])
def test_few_and_many_clients_are_drawn(page, clients):
    path, _ = page([f"c{number:03d}" for number in range(1, clients + 1)])
    assert all(rows <= 5000 for rows in page_charts.rows_of(path).values())
    expected, drawings = page_charts.expected_marks(path), drawings_of(path)
    assert {chart: marks_of(drawings[chart], marks) for chart, marks in expected.items()} == expected


def test_policy_names_what_the_page_holds(page):
    path, _ = page()
    text = path.read_text()
    scripts = re.findall(r"<script>(.*?)</script>", text, re.S) + re.findall(r"<style>(.*?)</style>", text, re.S)
    hashes = [f"'sha256-{base64.b64encode(hashlib.sha256(each.encode()).digest()).decode()}'" for each in scripts]
    policy = re.search(r'http-equiv="Content-Security-Policy" content="(.*?)"', text)[1]
    assert policy == (f"default-src 'none'; script-src {hashes[0]} {hashes[1]}; style-src {hashes[2]}; "
                      "base-uri 'none'; form-action 'none'")
    outside = re.sub(r"<(script|style)>.*?</\1>", "", text, flags=re.S)
    assert re.findall(r"\s(?:on[a-z]+|src|href|style)=\"(?!#)", outside.split('<script type="application/json"')[0]) == []


@pytest.mark.skipif(not os.environ.get("MARROWBENCH_ALL"), reason="needs minutes: set MARROWBENCH_ALL")
def test_a_million_rows_make_a_small_page(page):
    path, rows = page([f"c{number:04d}" for number in range(1, 1001)], iterations=50)
    assert rows == 1_000_000
    print(f"FIGURE page of a million rows: {path.stat().st_size / 1e6:.1f} MB")
    assert path.stat().st_size < 5_000_000
    drawings_of(path)


def test_many_rows_make_a_small_page(page):
    path, _ = page([f"c{number:03d}" for number in range(1, 301)], iterations=20)
    assert path.stat().st_size < 5_000_000
    assert all(rows <= 5000 for rows in page_charts.rows_of(path).values())
    assert "too many for a bar each" in path.read_text()


def test_a_page_is_not_overwritten_unasked(ctl, page, compared_page):
    path, _ = page()
    before = path.read_text()
    done = ctl.run("report", "--html", "page.html", "results.csv")
    assert (done.returncode, path.read_text()) == (2, before)
    assert done.stderr.startswith("marrowctl report: page.html: ")

    path = compared_page()
    before = path.read_text()
    done = ctl.run("compare", "--html", "compared.html", "old.csv", "new.csv")
    assert (done.returncode, path.read_text()) == (2, before)
    assert done.stderr.startswith("marrowctl compare: compared.html: ")
    assert done.stdout == ""
