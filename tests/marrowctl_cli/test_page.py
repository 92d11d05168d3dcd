"""The page of report --html, opened and printed in a browser."""

import base64
import hashlib
import json
import os
import re

import pytest

import browser
from fleet_table import write_fleet

HOSTS = [f"c{number:02d}" for number in range(1, 13)]
HOST_PATTERN = r"([^/]*)_\d+\.bin$"
# A name ends at "/", so none of these has one.
HOSTILE = ["<img src=x onerror=hacked=1>", "\"onload=\"hacked=1", "<script>hacked=1<!--", "a&lt;b\udcff", "pc'--}"]

# Marks of a chart for each row of its table; an area or a line is one mark for many rows.
MARKS = {
    "clients": {"rect": 2, "rule": 1},  # a box and a tick
    "timeline": {"rect": 1},
    "throughput": {"rect": 1},
    "interfaces": {"symbol": 1, "rule": 1},
    "scaling": {"symbol": 1},
    "throttling": {"symbol": 1, "rule": 1},
    "first-iteration": {"symbol": 2},
    "trouble": {"rect": 2},
}

DRAWN = """
Object.fromEntries([...document.querySelectorAll('figure')].map((figure) => [figure.id, {
  section: figure.closest('section').id,
  width: figure.querySelector('svg').getBoundingClientRect().width,
  room: figure.querySelector('.chart').clientWidth,
  marks: Object.fromEntries(['rect', 'rule', 'symbol'].map((kind) => [kind,
    [...figure.querySelectorAll(`.mark-${kind}.role-mark > *`)].filter((mark) => mark.getAttribute('d') !== '' ||
      mark.tagName === 'line').length])),
}]))
"""


@pytest.fixture(scope="module")
def chromium():
    if not browser.PROGRAM:
        pytest.skip("needs chromium")
    opened = browser.Browser()
    yield opened
    opened.close()


@pytest.fixture
def page(ctl):
    """Makes a page of a fleet's table."""
    def make(hosts=HOSTS, **options):
        rows = write_fleet(ctl.folder / "results.csv", hosts, **options)
        done = ctl.run("report", "--html", "page.html", "--force", "--all-runs",
                       "--host-pattern", HOST_PATTERN, "results.csv")
        if "was built without" in done.stderr:
            pytest.skip("needs a program with charts")
        assert done.stderr == "marrowctl report: written: page.html\n", done.stderr
        assert done.returncode in (0, 1)
        return ctl.folder / "page.html", rows
    return make


def columns_of(path):
    """For each chart that the page is to draw the columns of its table."""
    text = re.search(r'<script type="application/json" id="charts">(.*?)</script>', path.read_text(), re.S)[1]
    return {chart["id"]: {column["name"]: column["values"] for column in chart["table"]}
            for chart in json.loads(text)["charts"]}


def charts_of(path):
    """The rows of each chart's table."""
    return {name: len(next(iter(columns.values()))) for name, columns in columns_of(path).items()}


def shown_rows(columns):
    """Rows that have a mark: no row may have been half done while so many clients were active."""
    return sum(value is not None for value in columns.get("each", next(iter(columns.values()))))


def expect_quiet(chromium, path):
    assert chromium.complaints == []
    assert chromium.requests == [path.as_uri()]


def expect_drawn(chromium, path):
    """Every chart has its marks, and is as wide as its place."""
    drawn = chromium.evaluate(DRAWN)
    charts = columns_of(path)
    assert drawn.keys() == charts.keys()
    for name, chart in drawn.items():
        assert abs(chart["width"] - chart["room"]) <= 1, (name, chart)
        for kind, each in MARKS[chart["section"]].items():
            columns = charts[name] if name != "scaling-together" else {"together": charts[name]["together"]}
            assert chart["marks"][kind] == each * shown_rows(columns), (name, kind, chart)
    return {chart["section"] for chart in drawn.values()}


@pytest.mark.parametrize("width", [1280, 700])
@pytest.mark.parametrize("dark", [False, True])
def test_page_draws_every_chart(chromium, page, width, dark):
    path, rows = page()
    chromium.open(path, width, dark=dark)
    expect_quiet(chromium, path)
    assert expect_drawn(chromium, path) == MARKS.keys()
    assert charts_of(path)["timeline-rows"] == rows
    assert chromium.evaluate("document.documentElement.scrollWidth") <= width


def test_page_prints_on_a4(chromium, page):
    path, _ = page()
    chromium.open(path, 1280)
    pdf = chromium.pdf()
    assert pdf.startswith(b"%PDF-")
    sizes = {tuple(map(float, box.split())) for box in re.findall(rb"/MediaBox \[([\d. ]+)\]", pdf)}
    assert {(round(width), round(height)) for _, _, width, height in sizes} == {(595, 842)}
    expect_quiet(chromium, path)


def test_charts_have_the_paper_s_width_when_printed(chromium, page):
    path, _ = page()
    chromium.open(path, 1280)
    widths = chromium.evaluate("""
        dispatchEvent(new Event('beforeprint'));
        Promise.resolve().then(() => new Promise((done) => setTimeout(done, 100))).then(() =>
          [...document.querySelectorAll('.chart svg')].map((svg) => +svg.getAttribute('width')))""")
    assert set(widths) == {760}
    chromium.evaluate("dispatchEvent(new Event('afterprint'))")
    expect_drawn(chromium, path)


def test_tables_open_beside_their_charts(chromium, page):
    path, _ = page()
    chromium.open(path, 1280)
    chromium.evaluate("for (const each of document.querySelectorAll('figure details')) each.open = true;"
                      "new Promise((done) => setTimeout(done, 300))")
    counted = chromium.evaluate("Object.fromEntries([...document.querySelectorAll('figure')].map((figure) =>"
                                "[figure.id, figure.querySelectorAll('tbody tr').length]))")
    assert counted == charts_of(path)
    expect_quiet(chromium, path)


def test_hostile_names_are_text(chromium, page):
    path, _ = page(HOSTILE)
    chromium.open(path, 1280)
    expect_quiet(chromium, path)
    expect_drawn(chromium, path)
    assert chromium.evaluate("typeof hacked") == "undefined"
    assert chromium.evaluate("document.querySelectorAll('img, iframe, [onerror], [onload]').length") == 0
    assert chromium.evaluate("document.scripts.length") == 3
    axis = chromium.evaluate("[...document.querySelectorAll('#timeline .role-axis-label text')]"
                             ".map((label) => label.textContent)")
    shown = {name.replace("\udcff", "\ufffd") for name in HOSTILE}
    assert shown <= set(axis), axis


def test_a_script_that_is_not_the_page_s_own_does_not_run(chromium, page):
    path, _ = page()
    text = path.read_text()
    path.write_text(text.replace("<header>", "<script>hacked = 1</script><header onclick='hacked = 1'>", 1))
    chromium.open(path, 1280)
    assert chromium.evaluate("document.querySelector('header').click(); typeof hacked") == "undefined"
    assert len(chromium.complaints) >= 1


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


def test_many_rows_make_a_small_page(chromium, page):
    path, _ = page([f"c{number:03d}" for number in range(1, 301)], iterations=20)
    assert path.stat().st_size < 5_000_000
    assert all(rows <= 5000 for rows in charts_of(path).values())
    chromium.open(path, 1280)
    expect_quiet(chromium, path)
    assert "too many for a bar each" in chromium.evaluate("document.body.textContent")


@pytest.mark.skipif(not os.environ.get("MARROWBENCH_ALL"), reason="needs minutes: set MARROWBENCH_ALL")
def test_a_million_rows_make_a_small_page(chromium, page):
    path, rows = page([f"c{number:04d}" for number in range(1, 1001)], iterations=50)
    assert rows == 1_000_000
    print(f"FIGURE page of a million rows: {path.stat().st_size / 1e6:.1f} MB")
    assert path.stat().st_size < 5_000_000
    chromium.open(path, 1280)
    expect_quiet(chromium, path)


def test_a_page_is_not_overwritten_unasked(ctl, page):
    path, _ = page()
    before = path.read_text()
    done = ctl.run("report", "--html", "page.html", "results.csv")
    assert (done.returncode, path.read_text()) == (2, before)
    assert done.stderr.startswith("marrowctl report: page.html: ")
