"""The JSON of check, by the schema that is given out."""

import json

import pytest

from conftest import ROOT

jsonschema = pytest.importorskip("jsonschema", reason="needs jsonschema")

SCHEMA = json.loads((ROOT / "docs/schemas/check.schema.json").read_text())

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
