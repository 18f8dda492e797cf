"""Validates the reports that the tests left in a folder, and then removes the folder.

Usage: validate_reports.py FOLDER SCHEMA. To show that the schema refuses what is no report, one report
is spoilt key by key first.
"""

import copy
import json
import pathlib
import shutil
import sys

import jsonschema


def places(value):
    """Every object and array in a report, and each of its keys."""
    if isinstance(value, dict | list):
        for key in list(value) if isinstance(value, dict) else range(len(value)):
            yield value, key
            yield from places(value[key])


def abridged(report):
    """A report with one variable of each kind, and one entry of each of its lists."""
    report = copy.deepcopy(report)
    kinds = {variable["kind"]: variable for variable in report["variables"]}
    report["variables"] = list(kinds.values())
    for variable in report["variables"]:
        for key, value in variable.items():
            if isinstance(value, list):
                variable[key] = value[:1]
    return report


def spoilt(report):
    """The report with one thing wrong, for everything that can be wrong."""
    for container, key in places(report):
        value = container[key]
        container[key] = {}
        yield f"{key} is an empty object"
        container[key] = value
        if isinstance(container, dict):
            items = list(container.items())
            del container[key]
            yield f"{key} is not there"
            container[f"{key} "] = value
            yield f"{key} has another name"
            container.clear()
            container.update(items)
            container["more"] = None
            yield f"{key} stands beside a key that does not exist"
            del container["more"]
        for wrong in (-1e9, 1e9) if str(key).endswith(("share", "p_value", "accreditation")) else ():
            container[key] = wrong
            yield f"{key} is {wrong}"
            container[key] = value


def show_that_it_fails(validator, reports):
    tried = 0
    for report in (abridged(report) for report in reports):
        several = {"schema": 2, "checks": [{"file": "a", **report}, {"file": "b", **report}]}
        for check in several["checks"]:
            del check["schema"]
        validator.validate(report)
        validator.validate(several)
        for whole in (report, several):
            for wrong in spoilt(whole):
                assert not validator.is_valid(whole), wrong
                tried += 1
    return tried


def main():
    folder, path = map(pathlib.Path, sys.argv[1:])
    schema = json.loads(path.read_text(encoding="utf-8"))
    jsonschema.Draft202012Validator.check_schema(schema)
    validator = jsonschema.Draft202012Validator(schema)
    failures = 0
    files = sorted(folder.glob("*.json"))
    examples = {}
    for file in files:
        report = json.loads(file.read_text(encoding="utf-8"))
        error = jsonschema.exceptions.best_match(validator.iter_errors(report))
        if error:
            print(f"{file.name}: {error.json_path}: {error.message[:300]}")
            failures += 1
        for check in report.get("checks", [report]):
            kinds = frozenset(variable["kind"] for variable in check["variables"])
            if len(kinds) == 2 and "schema" in check:
                examples[bool(check["failed_rules"])] = check
    print(f"{len(files)} reports, {failures} invalid")
    if failures:
        return 1
    assert examples, "no report has variables of both kinds"
    print(f"{show_that_it_fails(validator, examples.values())} spoilt reports were refused")
    shutil.rmtree(folder)
    return 0


if __name__ == "__main__":
    sys.exit(main())
