#!/usr/bin/env python3
"""Validates JSON documents with a JSON Schema.

Usage: validate.py SCHEMA DOCUMENT...

Prints each fault as FILE: MEMBER: message; the exit status is 1 if there is one, or if the schema itself is invalid.
"""

import json
import sys

import jsonschema


def read(path):
    with open(path, encoding="utf-8") as file:
        return json.load(file)


def main():
    schema = read(sys.argv[1])
    kind = jsonschema.validators.validator_for(schema)
    kind.check_schema(schema)
    validator = kind(schema)
    faults = 0
    for path in sys.argv[2:]:
        for fault in validator.iter_errors(read(path)):
            print(f"{path}: {'.'.join(map(str, fault.absolute_path))}: {fault.message[:500]}")
            faults += 1
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main())
