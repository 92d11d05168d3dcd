"""What the charts of a page are to look like, by what the page holds."""

import json
import re

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
    "ratios": {"symbol": 1, "rule": 1},
    "medians": {"symbol": 2},
}
REPORT = MARKS.keys() - {"ratios", "medians"}
COMPARISON = {"ratios", "medians"}
# More clients than these are points in the order of their speeds.
MOST_BOXES = 40
RANKS = {"symbol": 1, "rule": 1}
# Marks that stand in a chart whatever its rows are: the band and the line of what is the same.
FIXED = {"ratios-tests": {"rect": 1, "rule": 1}}
# Columns with gaps: a row has the mark where there is a value. No row may have been half done while so many
# clients were active; few rows have no interval.
GAPS = {("scaling-each", "symbol"): "each", ("ratios-tests", "rule"): "low"}


def columns_of(page):
    """For each chart that the page is to draw the columns of its table."""
    text = re.search(r'<script type="application/json" id="charts">(.*?)</script>', page.read_text(), re.S)[1]
    return {chart["id"]: {column["name"]: column["values"] for column in chart["table"]}
            for chart in json.loads(text)["charts"]}


def rows_of(page):
    """The rows of each chart's table."""
    return {chart: len(next(iter(columns.values()))) for chart, columns in columns_of(page).items()}


def sections_of(page):
    """The section that each chart stands in."""
    found, section = {}, None
    for kind, name in re.findall(r'<(section|figure) id="(.*?)">', page.read_text()):
        if kind == "section":
            section = name
        else:
            found[name] = section
    return found


def expected_marks(page):
    """How many marks of each kind each chart has."""
    expected, sections = {}, sections_of(page)
    for chart, columns in columns_of(page).items():
        rows = len(next(iter(columns.values())))
        is_ranked = sections[chart] == "clients" and rows > MOST_BOXES
        expected[chart] = dict(FIXED.get(chart, {}))
        for kind, each in (RANKS if is_ranked else MARKS[sections[chart]]).items():
            gaps = GAPS.get((chart, kind))
            marked = rows - columns[gaps].count(None) if gaps else rows
            expected[chart][kind] = expected[chart].get(kind, 0) + each * marked
    return expected
