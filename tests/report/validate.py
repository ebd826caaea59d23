#!/usr/bin/env python3
"""Validates JSON documents with a JSON Schema.

Usage: validate.py SCHEMA DOCUMENT...

Prints each fault as FILE: MEMBER: message; the exit status is 1 if there is one, or if the schema itself is invalid.
"""

import json
import pathlib
import sys

import jsonschema


def read(path):
    with open(path, encoding="utf-8") as file:
        return json.load(file)


def bundled(schema, path):
    """The schema with the other schemas of its directory as $defs, and with references to these."""
    others = [read(other) for other in sorted(pathlib.Path(path).parent.glob("*.schema.json"))]
    prefixes = {other["$id"]: "#/$defs/" + other["$id"].replace(":", "-") for other in others}

    def rewritten(node, prefix):
        if isinstance(node, list):
            return [rewritten(one, prefix) for one in node]
        if not isinstance(node, dict):
            return node
        copy = {key: rewritten(value, prefix) for key, value in node.items()}
        if isinstance(node.get("$ref"), str):
            name, fragment = node["$ref"].split("#")
            copy["$ref"] = (prefixes[name] if name else prefix) + fragment
        return copy

    result = rewritten(schema, "#")
    for other in others:
        if other["$id"] == schema.get("$id"):
            continue
        copy = rewritten(other, prefixes[other["$id"]])
        del copy["$id"]
        result.setdefault("$defs", {})[prefixes[other["$id"]].rsplit("/", 1)[1]] = copy
    return result


def main():
    schema = read(sys.argv[1])
    kind = jsonschema.validators.validator_for(schema)
    kind.check_schema(schema)
    validator = kind(bundled(schema, sys.argv[1]))
    faults = 0
    for path in sys.argv[2:]:
        for fault in validator.iter_errors(read(path)):
            print(f"{path}: {'.'.join(map(str, fault.absolute_path))}: {fault.message[:500]}")
            faults += 1
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main())
