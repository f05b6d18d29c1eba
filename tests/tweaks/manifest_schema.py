"""Checks that the schema of manifests and the library agree on documents: manifest_schema.py SCHEMA TAVLEN EXAMPLES"""
import copy
import json
import pathlib
import subprocess
import sys
import tempfile

import jsonschema

schema_file, tavlen, examples = sys.argv[1:]
schema = json.loads(pathlib.Path(schema_file).read_text())
jsonschema.Draft202012Validator.check_schema(schema)
validator = jsonschema.Draft202012Validator(schema)
failures = []


def expect(title, document, is_valid):
    errors = [error.message for error in validator.iter_errors(document)]
    with tempfile.TemporaryDirectory() as folder:
        (pathlib.Path(folder) / "Manifest.json").write_text(json.dumps(document))
        read = subprocess.run([tavlen, "hook", "list", folder], capture_output=True, text=True)
    if (not errors, read.returncode == 0) != (is_valid, is_valid):
        failures.append(f"{title}: schema: {errors or 'valid'}; library: {read.stderr or 'valid'}")


def changed(document, path, value):
    """A copy of `document` with `value` at `path`; without that member where `value` is `...`."""
    document = copy.deepcopy(document)
    place = document
    for key in path[:-1]:
        place = place[key]
    if value is ...:
        del place[path[-1]]
    else:
        place[path[-1]] = value
    return document


manifests = sorted(pathlib.Path(examples).glob("tweaks/*/Manifest.json"))
for file in manifests:
    expect(file.parent.name, json.loads(file.read_text()), True)
assert len(manifests) >= 2

HOOK = {"className": "C", "selector": "s", "signature": "v16@0:8", "isClassMethod": False, "args": {}}
BASE = {"configuration": {"name": "", "color": "darkRed", "bundleID": ""}, "overrides": [], "hooks": [HOOK]}
ARGS = ("hooks", 0, "args")
INT, UINT = "_ValueParameter<Int64>", "_ValueParameter<UInt64>"
NIL = {"type": "Nil"}

VALID = [
    (("more",), {"unknown": 1}),
    (("hooks", 0), None),
    (("hooks", 0, "customName"), None),
    (("configuration", "glyph"), None),
    (("configuration", "glyph"), {"icon": "x", "style": "y"}),
    (("overrides",), [{"type": "MinimumOSVersion"}, {"type": "MinimumOSVersion", "value": None}]),
    (ARGS, {"-1": {"type": INT, "value": -(2**63)}, "+5": {"type": INT, "value": 2**63 - 1}, "007": NIL}),
    (ARGS, {"0": {"type": UINT, "value": 2**64 - 1}, "1": {"type": "Date", "date": -0.5, "more": []}}),
    (ARGS, {"0": {"type": "Array", "items": [{"type": "Dictionary", "items": [{"key": NIL, "value": NIL}]}]}}),
]
INVALID = [
    (("hooks",), ...),
    (("hooks",), {}),
    (("hooks", 0, "args"), []),
    (("hooks", 0, "selector"), None),
    (("hooks", 0, "isClassMethod"), 0),
    (("configuration", "color"), "darkBlue"),
    (("configuration", "glyph"), {"icon": "x"}),
    (("overrides",), [None]),
    (("overrides",), [{"type": "Version"}]),
    (("overrides",), [{"type": "MinimumOSVersion", "value": "14.0-"}]),
    (("overrides",), [{"type": "Orientations", "value": ["Portrait"]}]),
    (ARGS, {"": NIL}),
    (ARGS, {"0x1": NIL}),
    (ARGS, {"0": {}}),
    (ARGS, {"0": {"type": "nil"}}),
    (ARGS, {"0": {"type": INT, "value": 2**63}}),
    (ARGS, {"0": {"type": UINT, "value": -1}}),
    (ARGS, {"0": {"type": INT, "value": 0.5}}),
    (ARGS, {"0": {"type": "Data", "file": "x"}}),
    (ARGS, {"0": {"type": "Array", "items": [{"type": "Array", "items": [None]}]}}),
    (ARGS, {"0": {"type": "Dictionary", "items": [{"key": NIL}]}}),
]
for rows, is_valid in ((VALID, True), (INVALID, False)):
    for path, value in rows:
        expect(f"{path} = {value}", changed(BASE, path, value), is_valid)

print("\n".join(failures))
sys.exit(1 if failures else 0)
