"""Compares what `accredit` says of shards that were summarised apart with what it says of all the data.

Usage: check_shards.py PROGRAM WEATHER_FOLDER [DATA_FOLDER]. The shards are summarised at the same time by
`xargs -P`, as on several machines, and merged in several ways. The accreditation and all verdicts must be those
of the whole file to the last digit, and the shift of a mean and the ratio of deviations near.
"""

import itertools
import json
import math
import os
import random
import subprocess
import sys
import tempfile

NEAR = {"new_mean", "new_standard_deviation", "mean_shift", "deviation_ratio"}
SHARDS = 12


class Program:
    """The program in a folder of its own."""

    def __init__(self, path, folder):
        self.path = os.path.abspath(path)
        self.folder = folder

    def write(self, name, lines):
        with open(os.path.join(self.folder, name), "w", encoding="utf-8") as file:
            file.write("".join(line + "\n" for line in lines))

    def run(self, *arguments, given=b"", statuses=(0,)):
        done = subprocess.run([self.path, *arguments], cwd=self.folder, check=False, input=given,
                              stdout=subprocess.PIPE, stderr=subprocess.PIPE)
        assert done.returncode in statuses, (arguments, done)
        return done.stdout

    def summarise(self, names):
        """All at once, each by a program of its own; the files are told by their names alone."""
        script = '"$0" learn --bins-of reference.pmml "$1" --output "$1.pmml"'
        subprocess.run(["xargs", "-P", "4", "-I", "{}", "sh", "-c", script, self.path, "{}"], cwd=self.folder,
                       check=True, input="".join(name + "\n" for name in names).encode(),
                       stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)

    def check(self, name, *options):
        report = self.run("check", "reference.pmml", name, "--format", "json", *options, statuses=(0, 1))
        return json.loads(report, parse_float=str)

    def merge(self, names, output):
        self.run("merge", *names, "--output", output)


def lines_of(path):
    with open(path, encoding="utf-8") as file:
        heading, *rows = file.read().splitlines()
    return heading, rows


def shards_of(rows):
    """Of very different lengths, two of them without rows."""
    edges = sorted([0, 0, len(rows), len(rows), *random.sample(range(len(rows)), SHARDS - 5), 1, 2])
    return [rows[begin:end] for begin, end in itertools.pairwise(edges)]


def with_odd_cells(heading, rows):
    """New categories from the middle on, and cells that are missing or no numbers."""
    odd = []
    for number, row in enumerate(rows):
        cells = row.split(",")
        for i, cell in enumerate(cells):
            if cell == heading.split(",")[i] or random.random() > 0.02:
                continue
            cells[i] = random.choice(["", "NA", "n/a", f"new {number // 400}", "x", "1e999", "-0", "0"])
        odd.append(",".join(cells))
    return odd


def require_same(wanted, got, place=""):
    """Equal but for the figures that are near."""
    if isinstance(wanted, dict):
        assert isinstance(got, dict) and list(wanted) == list(got), (place, wanted, got)
        for key, value in wanted.items():
            if key in NEAR and value is not None:
                assert math.isclose(float(value), float(got[key]), rel_tol=1e-9, abs_tol=1e-9), (place, key, value,
                                                                                                got[key])
            else:
                require_same(value, got[key], f"{place}/{key}")
    elif isinstance(wanted, list):
        assert len(wanted) == len(got), (place, wanted, got)
        for i, (left, right) in enumerate(zip(wanted, got)):
            require_same(left, right, f"{place}/{i}")
    else:
        assert wanted == got, (place, wanted, got)


def check_shards(program, reference, new, *options):
    """The shards merged at once, in groups, one after the other and as they come from a pipe."""
    program.run("learn", reference, "--output", "reference.pmml", *options)
    heading, rows = lines_of(new)
    rows = with_odd_cells(heading, rows)
    shards = shards_of(rows)
    names = [f"shard {i}" for i in range(len(shards))]
    for name, shard in zip(names, shards):
        program.write(name, [heading, *shard])
    program.write("whole", [heading, *rows])
    program.summarise(names + ["whole"])
    parts = [name + ".pmml" for name in names]
    program.merge(parts, "at once.pmml")
    middle = len(parts) // 2
    program.merge(parts[:middle], "first.pmml")
    program.merge(parts[middle:], "second.pmml")
    program.merge(["first.pmml", "second.pmml"], "in groups.pmml")
    program.merge(parts[:1], "one by one.pmml")
    for part in parts[1:]:
        program.merge(["one by one.pmml", part], "next.pmml")
        os.replace(os.path.join(program.folder, "next.pmml"), os.path.join(program.folder, "one by one.pmml"))
    with open(os.path.join(program.folder, parts[3]), "rb") as file:
        piped = program.run("merge", *parts[:3], "-", *parts[4:], "--output", "-", given=file.read())
    with open(os.path.join(program.folder, "piped.pmml"), "wb") as file:
        file.write(piped)
    random.shuffle(parts)
    program.merge(parts, "shuffled.pmml")

    wanted = program.check("whole")
    assert wanted == program.check("whole.pmml")
    variables = wanted["variables"]
    assert any(each["unknown_categories"] for each in variables)
    assert any(each["unreadable"]["count"] for each in variables)
    forget_lines(wanted)
    for merged in "at once", "in groups", "one by one", "piped":
        got = program.check(merged + ".pmml")
        forget_lines(got)
        require_same(wanted, got, merged)
    # The categories that the reference lacks come in another order, and no figure changes.
    got = program.check("shuffled.pmml")
    assert wanted["accreditation"] == got["accreditation"]
    for left, right in zip(variables, got["variables"]):
        assert left["p_value"] == right["p_value"] and left["verdict"] == right["verdict"], (left, right)
    return len(variables)


def forget_lines(report):
    """A shard counts its lines by itself."""
    for variable in report["variables"]:
        for side in variable.values():
            if isinstance(side, dict):
                side.pop("first_line", None)


def main():
    random.seed(37)
    weather = sys.argv[2]
    tables = [(os.path.join(weather, "seattle-2012-2014.csv"), os.path.join(weather, name))
              for name in ("seattle-2015.csv", "new-york.csv", "seattle-2012-2014.csv")]
    if len(sys.argv) > 3 and sys.argv[3]:
        tables.append((os.path.join(sys.argv[3], "adult-train.csv"), os.path.join(sys.argv[3], "adult-test.csv")))
    compared = 0
    for reference, new in tables:
        for options in [], ["--categorical", "date"]:
            if options and "adult" in new:
                continue
            with tempfile.TemporaryDirectory() as folder:
                compared += check_shards(Program(sys.argv[1], folder), os.path.abspath(reference),
                                         os.path.abspath(new), *options)
    print(f"{compared} variables with the same verdicts")


if __name__ == "__main__":
    main()
