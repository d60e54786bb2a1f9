"""What --json prints, held against the published schema."""
import json
from pathlib import Path

import jsonschema

SCHEMA = json.loads((Path(__file__).resolve().parents[2] / "docs/qvpctl.schema.json").read_text())


def _validator(definition):
    return jsonschema.Draft202012Validator({**SCHEMA, "anyOf": [{"$ref": f"#/$defs/{definition}"}]})


def _check(definitions, line):
    record = json.loads(line)
    faults = [error for name in definitions for error in _validator(name).iter_errors(record)]
    fitting = [name for name in definitions if _validator(name).is_valid(record)]
    assert fitting, f"{line} is none of {definitions}: {faults}"
    return record


def check_output(command, out, err):
    """Every line of both streams has to be what the schema says of that command; returns the objects of each."""
    records = [_check([command], line) for line in out.splitlines()]
    return records, [_check(["error", "note"], line) for line in err.splitlines()]
