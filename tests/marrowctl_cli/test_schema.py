"""The JSON of each command, by the schema that is given out."""

import json

import pytest

from conftest import ROOT
from tables import Row, perfect_fleet, write

jsonschema = pytest.importorskip("jsonschema", reason="needs jsonschema")



def schema(name):
    return json.loads((ROOT / f"docs/schemas/{name}.schema.json").read_text())


SCHEMA = schema("check")

FILES = {
    "good": "",
    "empty": "\n",
    "comments": "# one\n # two\n# marrowctl: allow no-log nonsense\n",
    "refused": "posix;0;0;0;x;0;128;1;0;MEMORY;out.bin;log.txt;results.csv;true\nnothing\n;;;\n",
    "chain": "posix;0;0;0;1;0;1;1;0;MEMORY;/tmp/a.bin;;;1\n[cfgPath]next.bst\nbehind\n",
    "cycle": "[cfgPath]cycle.bst\n",
    "no utf-8": "posix;0;0;0;1;0;1;3;0;MEMORY;/tmp/\udcff_[host]_[iter].bin;\udc80;\udcfe;true\n",
    "mark": "\ufeffposix;0;0;0;1;0;1;1;0;MEMORY;a;b;c;true\n",
    "large": "posix;0;0;-5;99999999999;9;99999999999;2147483647;0;MEMORY;MEMORY;/dev/null;/tmp;true\n",
}


@pytest.mark.parametrize("name", FILES)
@pytest.mark.parametrize("options", [[], ["--hosts", "c[1-3]"], ["--clients", "50"], ["--summary"]])
def test_document_follows_the_schema(ctl, name, options):
    path = ctl.good(f"{name}.bst")
    if FILES[name]:
        path.write_bytes(FILES[name].encode(errors="surrogateescape"))
    document = json.loads(ctl.run("check", "--json", *options, path).stdout)
    jsonschema.Draft202012Validator.check_schema(SCHEMA)
    jsonschema.validate(document, SCHEMA)


def test_schema_refuses_what_is_no_document(ctl):
    document = json.loads(ctl.run("check", "--json", ctl.good()).stdout)
    for name in document:
        with pytest.raises(jsonschema.ValidationError):
            jsonschema.validate({key: value for key, value in document.items() if key != name}, SCHEMA)
    document["files"][0]["lines"][0]["type"] = "erase"
    with pytest.raises(jsonschema.ValidationError):
        jsonschema.validate(document, SCHEMA)


TABLES = {
    "fleet": perfect_fleet(),
    "one row": [Row(end=1)],
    "system": [Row(end=1, method="System", ms=0)],
    "torn": [*perfect_fleet(), "Nov 16. 02:00.41,Posix", "\udcff"],
    "errors": [*perfect_fleet(), *(Row(end=41, host=f"c{i:02}", ms=0, error="ERROR: x '{host}'") for i in (1, 2))],
    "late": [*perfect_fleet(), *(Row(end=500 + 10 * i, ms=9000, host="c06", iteration=i) for i in range(4))],
    "reads": [Row(end=i, ms=900, type="Read", source="/x/{host}", dest="MEMORY") for i in range(5)],
}


@pytest.fixture
def table(ctl, request):
    path = ctl.folder / "a.csv"
    write(path, [])
    rows = [row if isinstance(row, str) else row.text() for row in TABLES[request.param]]
    path.write_bytes(path.read_bytes() + "\n\n".join([*rows, ""]).encode(errors="surrogateescape"))
    return path


@pytest.mark.parametrize("table", TABLES, indirect=True)
@pytest.mark.parametrize("options", [[], ["--hosts", "c0[1-9]"], ["--link", "1M"], ["--settings", "run.bst"]])
def test_report_follows_its_schema(ctl, table, options):
    ctl.write("run.bst", "posix;0;0;0;64;0;65536;4;0;MEMORY;/share/data_[host]/file_[iter].bin;;a.csv;true\n")
    document = json.loads(ctl.run("report", "--json", table, *options).stdout)
    jsonschema.Draft202012Validator.check_schema(schema("report"))
    jsonschema.validate(document, schema("report"))
    for name in document:
        with pytest.raises(jsonschema.ValidationError):
            jsonschema.validate({key: value for key, value in document.items() if key != name}, schema("report"))


@pytest.mark.parametrize("table", TABLES, indirect=True)
def test_comparison_follows_its_schema(ctl, table):
    other = write(ctl.folder / "b.csv", perfect_fleet())
    jsonschema.Draft202012Validator.check_schema(schema("compare"))
    for pair in ((table, other), (other, table), (table, table)):
        document = json.loads(ctl.run("compare", "--json", *pair).stdout)
        jsonschema.validate(document, schema("compare"))
    del document["tests"]
    with pytest.raises(jsonschema.ValidationError):
        jsonschema.validate(document, schema("compare"))
