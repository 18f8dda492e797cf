"""Turns the figures of a run into the tables of docs/benchmarks.md, in place.

usage: report.py DATA_PASS.json NUMPY.tsv ACCREDITATION.json PROGRAM.tsv docs/benchmarks.md
"""
import json
import re
import sys


def least(path, counter):
    """Of each benchmark the least of its repetitions: what others do on the machine only adds to it."""
    found = {}
    with open(path) as file:
        for run in json.load(file)["benchmarks"]:
            if run["run_type"] == "iteration":
                name = run["run_name"]
                found[name] = min(run[counter], found.get(name, run[counter]))
    return found


def data_pass_table(passes, python):
    lines = ["| Data | Cut points | ns a value | of these, handing over | of a plain sum | NumPy takes | "
             "pandas takes |", "|---|---|---|---|---|---|---|"]
    for name, value in passes.items():
        how, shape, missing = name.split("/")
        if how in ("Sum", "Records"):
            continue
        limit = passes[f"Sum/{shape}/{missing}"]
        peers = python[name]
        given = how == "GivenCutPoints"
        cuts = "given" if given else "computed"
        # Without continuous variables there is nothing to read twice for.
        passes_made = 1 if given or "categorical" in shape else 2
        handing_over = passes_made * passes[f"Records/{shape}/{missing}"]
        data = shape + (", a tenth missing" if missing == "missing" else "")
        lines.append(f"| {data} | {cuts} | {value:.1f} | {handing_over:.1f} | {value / limit:.1f} times | "
                     f"{peers['NumPy'] / value:.1f} times as long | {peers['pandas'] / value:.0f} times as long |")
    return lines


def accreditation_table(runs):
    lines = ["| Operation | a variable |", "|---|---|"]
    for name, value in runs.items():
        text = f"{value:.0f} ns" if value < 2000 else f"{value / 1000:.1f} µs"
        lines.append(f"| {name} | {text} |")
    return lines


def program_table(path):
    lines = ["| What | seconds | processor seconds | peak memory |", "|---|---|---|---|"]
    with open(path) as file:
        for line in file:
            what, seconds, processor, kilobytes = line.rstrip("\n").split("\t")
            lines.append(f"| {what} | {float(seconds):.1f} | {float(processor):.1f} | "
                         f"{int(kilobytes) / 1024:.0f} MiB |")
    return lines


def main():
    pass_path, python_path, accreditation_path, program_path, page_path = sys.argv[1:]
    python = {}
    with open(python_path) as file:
        for line in file:
            name, tool, value = line.rstrip("\n").split("\t")
            python.setdefault(name, {})[tool] = float(value)
    # Google Benchmark gives inverted counters in seconds; these were scaled to nanoseconds.
    tables = {
        "data passes": data_pass_table(least(pass_path, "ns/value"), python),
        "accreditation": accreditation_table(least(accreditation_path, "ns/variable")),
        "program": program_table(program_path),
    }
    with open(page_path) as file:
        page = file.read()
    for name, lines in tables.items():
        begin, end = f"<!-- begin {name} -->\n", f"<!-- end {name} -->"
        page, count = re.subn(re.escape(begin) + ".*?" + re.escape(end),
                              lambda _: begin + "\n".join(lines) + "\n" + end, page, flags=re.S)
        if count != 1:
            sys.exit(f"{page_path} has no place for '{name}'")
    with open(page_path, "w") as file:
        file.write(page)


main()
