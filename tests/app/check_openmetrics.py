"""Holds `accredit check --format openmetrics` against the JSON of the same files.

Usage: check_openmetrics.py PROGRAM. The text is read by a parser of OpenMetrics and by one of the older
text format; both must find the samples that the JSON gives, with the same labels and values, and no
other.
"""

import csv
import json
import os
import subprocess
import sys
import tempfile

from prometheus_client.openmetrics.parser import text_string_to_metric_families as openmetrics
from prometheus_client.parser import text_string_to_metric_families as older_format

VERDICTS = ("unchanged", "minor", "moderate", "not tested", "major")
NAMES = ["plain", 'quo"te', "back\\slash", "new\nline", "\\", '\\"', "\\n", "tab\tand {braces},=#",
         "carriage\rreturn", "Größe 年齢 \U0001f600 e\u0301 \u2028", " ", "# EOF", "\\x41",
         "bell\x07", "byte \udcff", "half \udce2\udc82 mark"]
FILES = ["a.csv", 'a "quoted\\\nfile".csv', "other \udcfe.csv", "a.csv", "empty.csv"]


def make_files(folder):
    """A reference and new files whose columns change, vanish, lack cells and have unreadable ones."""
    def write(name, rows):
        with open(os.path.join(os.fsencode(folder), os.fsencode(name)), "w", newline="",
                  encoding="utf-8", errors="surrogateescape") as file:
            csv.writer(file).writerows(rows)

    def cell(row, column, shift):
        if column % 3 == 0:
            return f"category {(row * 7 + shift) % (4 + 15 * shift)}"
        if column == 4:
            return 8  # a constant
        if column == 5:
            return 1e9 if row == 0 else row % 9
        if shift and row % 10 == 0:
            return "n/a" if column == 7 else ""
        return (row * 37 % 101) * (1 + column) / 7 + shift * column

    write("reference.csv", [NAMES, *([cell(row, column, 0) for column in range(len(NAMES))]
                                     for row in range(300))])
    for shift, name in enumerate(dict.fromkeys(FILES[:-1])):
        kept = [column for column in range(len(NAMES)) if (column, shift) != (8, 1)]
        write(name, [[NAMES[column] for column in kept],
                     *([cell(row, column, shift) for column in kept] for row in range(200))])
    write(FILES[-1], [NAMES])


def wanted_samples(report, files):
    """What the samples of a report must be: {(name, labels): value}."""
    samples = {}

    def add(name, labels, value):
        if value is not None:
            samples["accredit_" + name, frozenset(labels.items())] = float(value)

    for check, file in zip(report["checks"], files, strict=True):
        label = {"file": file}
        variables = check["variables"]
        add("accreditation_ratio", label, check["accreditation"])
        add("expected_accreditation_ratio", label, check["expected_if_unchanged"])
        add("alpha", label, check["alpha"])
        add("failed_rules", label, len(check["failed_rules"]))
        for verdict in VERDICTS:
            add("variables", label | {"verdict": verdict},
                sum(variable["verdict"] == verdict for variable in variables))
        for variable in variables:
            add_variable(add, label | {"variable": variable["name"]}, variable)
    return samples


def add_variable(add, label, variable):
    for verdict in VERDICTS:
        add("variable_verdict", label | {"verdict": verdict}, variable["verdict"] == verdict)
    add("variable_p_value", label, variable["p_value"])
    add("variable_mean_shift_standard_deviations", label, variable["mean_shift"])
    add("variable_deviation_ratio", label, variable["deviation_ratio"])
    add("variable_crowded_bin_ratio", label, variable["crowded_bin_share"])
    if variable["kind"] == "categorical":
        sides = [(cell["reference_count"], cell["new_count"]) for cell in variable["categories"]]
        add("variable_unknown_categories", label, sum(before == 0 for before, _ in sides))
        add("variable_vanished_categories", label, sum(after == 0 for _, after in sides))
    for sample in ("reference", "new"):
        with_sample = label | {"sample": sample}
        add("variable_cases", with_sample, variable[sample + "_cases"])
        for data in ("missing", "unreadable"):
            add(f"variable_{data}_cells", with_sample, variable[data][sample + "_count"])
            add(f"variable_{data}_ratio", with_sample, variable[data][sample + "_share"])
    for data in ("values", "missing", "unreadable"):
        with_data = label | {"data": data}
        change = variable if data == "values" else variable[data]
        test = change["two_sample"] or {"p_value": None, "adjusted_p_value": None}
        add("variable_two_sample_p_value", with_data, test["p_value"])
        add("variable_adjusted_p_value", with_data, test["adjusted_p_value"])
        add("variable_stability_index", with_data, change["stability_index"])
        add("variable_share_moved_ratio", with_data, change["share_moved"])


def parsed_samples(families):
    samples = {}
    names = set()
    for family in families:
        assert family.type == "gauge" and family.documentation, family
        assert family.name.startswith("accredit_") and family.name not in names, family
        assert not family.unit or family.name.endswith("_" + family.unit), family
        names.add(family.name)
        for sample in family.samples:
            key = sample.name, frozenset(sample.labels.items())
            assert sample.name == family.name and key not in samples, sample
            assert sample.timestamp is None, sample
            samples[key] = sample.value
    return samples


def run(program, folder, *arguments):
    files = [os.fsencode(name) for name in FILES]
    return subprocess.run([program, "check", *arguments, "reference.csv", *files], cwd=folder,
                          stdout=subprocess.PIPE, stderr=subprocess.PIPE, check=False)


def main():
    program = os.path.abspath(sys.argv[1])
    with tempfile.TemporaryDirectory() as folder:
        make_files(folder)
        figures = run(program, folder, "--fail-on", "major", "--format", "json")
        metrics = run(program, folder, "--fail-on", "major", "--format", "openmetrics")
    assert figures.returncode == metrics.returncode == 1, (figures.stderr, metrics.stderr)
    report = json.loads(figures.stdout)
    files = [check["file"] for check in report["checks"]]
    assert files == [name.replace("\udcfe", "\\xFE") for name in FILES], files
    files[3] += " (2)"  # the same file once more
    wanted = wanted_samples(report, files)
    text = metrics.stdout.decode("utf-8")
    assert text.endswith("\n# EOF\n"), text
    # Every family has samples here, and each that is a share or a number of deviations its unit.
    names = {name for name, _ in wanted}
    assert len(names) == text.count("# TYPE ") == text.count("# HELP ") == 21, sorted(names)
    with_unit = [name for name in names if name.endswith(("_ratio", "_standard_deviations"))]
    assert len(with_unit) == text.count("# UNIT ") == 8, with_unit
    for parse in (openmetrics, older_format):
        got = parsed_samples(parse(text))
        assert got == wanted, (parse.__module__, got.items() ^ wanted.items())
    told = metrics.stderr.decode("utf-8")
    assert told.count("failed: --fail-on major\n") == sum(
        bool(check["failed_rules"]) for check in report["checks"]), told
    print(f"{len(wanted)} samples")


if __name__ == "__main__":
    main()
