"""Compares `accredit check` with a computation that shares nothing with it.

Usage: check_oracle.py PROGRAM WEATHER_FOLDER REPORT_FOLDER [DATA_FOLDER]. The weather is that of
examples/; with a folder that has them, the census files adult-train.csv and adult-test.csv are compared
as well. The reports are left in REPORT_FOLDER, where another test validates them.

A stored reference and a stored summary of the new data must give what their data give, to the last byte.
"""

import copy
import csv
import itertools
import json
import math
import os
import pathlib
import random
import subprocess
import sys
import tempfile

import oracle
from oracle import Options

CHANGES = ("minor", "moderate", "major")


def read(path):
    with open(path, newline="", encoding="utf-8") as file:
        heading, *rows = csv.reader(file)
    return heading, rows


def write(path, table):
    with open(path, "w", newline="", encoding="utf-8") as file:
        csv.writer(file).writerows([table[0], *table[1]])


class Program:
    """The program, in a folder where the new data is the file `new` in one folder and its stored
    summary the file of the same name in another."""

    def __init__(self, path, folder, reports):
        self.path = os.path.abspath(path)
        self.folder = pathlib.Path(folder)
        self.reports = pathlib.Path(reports)
        self.reports.mkdir(parents=True, exist_ok=True)
        self.kept = itertools.count()
        for name in ("data", "stored"):
            (self.folder / name).mkdir()

    def run(self, where, *arguments):
        run = subprocess.run([self.path, *arguments], cwd=self.folder / where, check=False,
                             stdout=subprocess.PIPE, stderr=subprocess.PIPE)
        if run.returncode not in (0, 1):
            raise RuntimeError(f"{arguments}: {run.stderr.decode()}")
        return run.returncode, run.stdout, run.stderr

    def report(self, *arguments, keep=True):
        """The exit status and the report of the data."""
        status, out, _ = self.run("data", "check", "--format=json", *arguments)
        if keep:
            (self.reports / f"oracle-{next(self.kept)}.json").write_bytes(out)
        return status, json.loads(out)

    def unlike_stored(self, options, has_summary):
        """The ways in which what is stored gives anything else than the data."""
        self.run("stored", "learn", *options.of_learn(), "../reference.csv",
                 "--output=../reference.pmml")
        if has_summary:
            self.run("data", "learn", "--bins-of=../reference.pmml", "new", "--output=../stored/new")
        for form in ("json", "text"):
            given = ["check", f"--format={form}", "--all", *options.of_check()]
            status, out, err = self.run("data", *given, *options.of_learn(), "../reference.csv",
                                        "new")
            # What is said of the reference's data was said when it was learned.
            lines = [line for line in err.splitlines(keepends=True)
                     if not line.startswith(b"accredit: ../reference.csv: column ")]
            wanted = status, out, b"".join(lines)
            for where in ("data", "stored") if has_summary else ("data",):
                stored = self.run(where, *given, "../reference.pmml", "new")
                if stored != wanted:
                    yield f"{form} of a stored reference and {where}", "other bytes", "the same"


def unlike(path, got, wanted):
    """Where two parts of a report differ: the place, what it is and what it must be."""
    if path.endswith(".status"):
        got = got["code"]
    elif path.endswith(".reason"):
        got = got is not None
    if isinstance(wanted, dict) and isinstance(got, dict) and wanted.keys() == got.keys():
        for key in wanted:
            yield from unlike(f"{path}.{key}", got[key], wanted[key])
    elif isinstance(wanted, list) and isinstance(got, list) and len(wanted) == len(got):
        for index, each in enumerate(wanted):
            name = each["name"] if isinstance(each, dict) and "name" in each else index
            yield from unlike(f"{path}[{name}]", got[index], each)
    elif isinstance(wanted, float) and isinstance(got, float):
        if not math.isclose(got, wanted, rel_tol=1e-10, abs_tol=1e-12):
            yield path, got, wanted
    elif type(got) is not type(wanted) or got != wanted:
        yield path, got, wanted


def differences(program, reference, new, options):
    write(program.folder / "reference.csv", reference)
    write(program.folder / "data/new", new)
    status, report = program.report(*options.of_learn(), *options.of_check(), "../reference.csv",
                                    "new")
    wanted = oracle.report(reference, new, options)
    yield from unlike("", report, wanted)
    if status != bool(wanted["failed_rules"]):
        yield "exit status", status, wanted["failed_rules"]
    for bound in CHANGES:
        options = copy.copy(options)
        options.fail_on = bound
        status, report = program.report(*options.of_learn(), *options.of_check(),
                                        "../reference.csv", "new", keep=False)
        rules = oracle.failed_rules(wanted["accreditation"], wanted["variables"], options)
        if (status, report["failed_rules"]) != (bool(rules), rules):
            yield f"with --fail-on {bound}", (status, report["failed_rules"]), rules
    # There is no summary of a file without any of the columns.
    yield from program.unlike_stored(options, not set(reference[0]).isdisjoint(new[0]))


def of_several(program, reference, tables):
    """Several files in one call give the reports that each gives alone."""
    write(program.folder / "reference.csv", reference)
    names = [f"new {number}" for number in range(len(tables))]
    for name, table in zip(names, tables):
        write(program.folder / "data" / name, table)
    status, report = program.report("../reference.csv", *names)
    alone = [program.report("../reference.csv", name) for name in names]
    checks = [{"file": name, **{key: value for key, value in single.items() if key != "schema"}}
              for name, (_, single) in zip(names, alone)]
    if report != {"schema": 2, "checks": checks} or status != max(status for status, _ in alone):
        yield "several files", report, checks


def changed(table, column, new_cell):
    """The table with other cells in one column; `new_cell` takes the row's number and the cell."""
    heading, rows = table
    at = heading.index(column)
    return heading, [[*row[:at], str(new_cell(number, row[at])), *row[at + 1:]]
                     for number, row in enumerate(rows)]


def with_columns(table, **columns):
    """The table with more columns; of each a function that takes the row's number."""
    heading, rows = table
    return [*heading, *columns], [[*row, *(str(cell(number)) for cell in columns.values())]
                                  for number, row in enumerate(rows)]


def without_columns(table, *names):
    heading, rows = table
    kept = [at for at, name in enumerate(heading) if name not in names]
    return [heading[at] for at in kept], [[row[at] for at in kept] for row in rows]


def weather_pairs(folder):
    names = ("seattle-2012-2014.csv", "seattle-2015.csv", "new-york.csv")
    (heading, old), (_, new), (_, york) = (read(os.path.join(folder, name)) for name in names)
    # The place and the day have categories that the other file has not.
    yield (heading, old), (heading, new)
    yield (heading, old), (heading, old[::5])
    heading, old, new, york = heading[2:], *([row[2:] for row in rows] for rows in (old, new, york))
    rain = [row for row in old if row[4] == "rain"]
    for reference, other in ((old, new), (new, old), (old, york), (york, old), (old, old),
                             (old, old[:100]), (old[:30], new), (york, new[::40]), (rain, rain[::2]),
                             (old, new[:1]), (sorted(old)[:900], new), (old, [])):
        yield (heading, reference), (heading, other)
    yield from broken_pairs((heading, old), (heading, new))
    yield from tiny_pairs(heading, old)


def broken_pairs(old, new):
    yield old, changed(new, "temp_max", lambda _, cell: float(cell) + 3.7)
    yield old, changed(new, "wind", lambda _, cell: float(cell) * 2.5)
    yield old, changed(new, "temp_min", lambda row, cell: cell if row % 20 == 0 else " ")
    yield old, changed(new, "weather", lambda row, cell: "NA" if row % 3 else cell)
    gone = changed(new, "precipitation", lambda row, cell: "" if row % 4 else cell)
    yield gone, new
    yield gone, changed(gone, "precipitation", lambda row, cell: cell or ("x" if row % 2 else ""))
    # 27 unknown categories, of which several are as frequent; blanks belong to a category.
    yield old, changed(new, "weather", lambda row, cell: cell if row % 3 else f"kind {row % 81}")
    yield old, changed(new, "weather", lambda row, cell: f"{row % 40 // 3}")
    yield old, changed(new, "weather", lambda row, cell: " " + cell if row % 2 else cell)
    for spared in (["sun"], ["snow", "fog", "drizzle"]):
        kept = [row for row in new[1] if row[4] in spared]
        yield old, (new[0], kept)
    yield old, changed(new, "wind", lambda row, cell: "n.a." if row % 10 == 4 else f"\t{cell} ")
    yield old, changed(new, "wind", lambda row, cell: "1e999" if row == 300 else cell)
    yield old, changed(new, "wind", lambda row, cell: "0x1F")
    # One cell of 1,096 leaves a column one of numbers, two do not.
    few = changed(old, "wind", lambda row, cell: "calm" if row == 400 else cell)
    yield few, changed(new, "wind", lambda row, cell: "calm" if row % 9 == 0 else cell)
    yield changed(few, "wind", lambda row, cell: "storm" if row == 700 else cell), new
    yield (with_columns(old, key=lambda row: f"k{row}", half=lambda row: f"k{row // 2}"),
           with_columns(new, key=lambda row: f"k{row}", half=lambda row: f"k{row // 2}"))
    yield old, without_columns(new, "wind")
    yield old, without_columns(new, "weather", "precipitation")
    yield old, (["another"], [["1"]] * 9)
    yield old, (new[0][::-1], [row[::-1] for row in new[1]])
    # The columns are matched before anything is tested.
    yield old, without_columns((new[0], new[1][:1]), "weather")
    # Ever larger changes, over the bounds between the verdicts.
    yield (graded((old[0], old[1] * 4), lambda step: 0.5),
           graded((new[0], new[1] * 4), lambda step: 0.59 + step / 250))
    yield constants(old, 5, 5, 0.1), constants(new, 5, 6, 0.1)
    vary = with_columns(new, same=lambda row: row % 2, other=lambda row: 5 + row // 360,
                        tenth=lambda row: 0.1 if row % 50 else 0.2, word=lambda row: "ab"[row % 2])
    yield constants(old, 0, 5, 0.1), vary
    yield vary, constants(new, 0, 5, 0.1)
    yield with_columns(old, none=lambda _: ""), with_columns(new, none=lambda _: "NA")
    yield with_columns(old, none=lambda _: ""), with_columns(new, none=lambda row: row % 5)
    yield with_columns(old, one=lambda row: "" if row else 3), with_columns(new, one=lambda _: 3)
    # One value far out puts all others into one bin.
    yield changed(old, "wind", lambda row, cell: cell if row else 1e9), new
    digits = with_columns(old, digit=lambda row: row * row % 10, rating=lambda row: row % 7 / 2)
    for digit in (lambda row: f"{row * row % 10}.0", lambda row: row % 13,
                  lambda row: "?" if row % 6 == 0 else row % 10, lambda row: "many", lambda _: ""):
        yield digits, with_columns(new, digit=digit, rating=lambda row: row % 5 / 2)


def graded(table, share):
    """The table with columns of two categories; of each step the share of the first one."""
    rows = len(table[1])
    return with_columns(table, **{
        f"step {step}": lambda row, bound=share(step) * rows: "ab"[row >= bound]
        for step in range(45)})


def constants(table, same, other, tenth):
    return with_columns(table, same=lambda _: same, other=lambda _: other, tenth=lambda _: tenth,
                        word=lambda _: "a")


def tiny_pairs(heading, rows):
    chance = random.Random(5)
    for before, after in ((3, 3), (4, 40), (40, 4), (7, 9), (10, 10), (12, 15), (20, 20), (25, 11),
                          (30, 40), (40, 40)):
        yield ((heading, chance.sample(rows, before)), (heading, chance.sample(rows, after)))


def census_pairs(files):
    (heading, train), (_, test) = files
    for reference, new in ((train, test), (test, train[::7]), (train[:2000], train[2000:3000]),
                           (train, test[:1]), (test, train[100:130]), (train[:500], []),
                           (sorted(train)[:9000], sorted(test)[9000:]),
                           ([row for row in train if row[9] == "Female"], test)):
        yield (heading, reference), (heading, new)


def options_of_pairs(census):
    """For one pair after the other."""
    number = "temp_max", "age"
    return itertools.cycle(({}, {"fail_below": 0.05}, {"fail_below": 0.7}, {"fail_below": 0.0},
                            {"weights": {number[census]: 2.5}, "alpha": 0.2},
                            {"weights": {number[census]: 0}, "alpha": 1e-9}))


def random_halves(table, seed):
    heading, rows = table
    rows = random.Random(seed).sample(rows, len(rows))
    half = len(rows) * (1 + seed % 3) // 4
    return (heading, rows[:half]), (heading, rows[half:])


def alarms_of_splits(program, table, count):
    """Random splits of one table: at most one variable in a hundred may be called changed."""
    verdicts = []
    for seed in range(count):
        before, after = random_halves(table, seed)
        write(program.folder / "reference.csv", before)
        write(program.folder / "data/new", after)
        report = program.report("--missing=?", "../reference.csv", "new")[1]
        verdicts += [variable["verdict"] for variable in report["variables"]]
    alarms = sum(verdict in CHANGES for verdict in verdicts)
    print(f"{alarms} of {len(verdicts)} variables of {count} random splits are called changed")
    if alarms * 100 > len(verdicts):
        yield "random splits", alarms, f"at most 1 % of {len(verdicts)}"


def breaks_of(table, column, numbers):
    """The table with one column broken, in several ways."""
    cells = [row[table[0].index(column)] for row in table[1]]
    yield changed(table, column, lambda row, cell: "" if row % 4 == 0 else cell)
    if numbers:
        sample = oracle.Sample(cells, "numbers", {"", "?"})
        yield changed(table, column, lambda _, cell: float(cell) + sample.deviation / 2)
        yield changed(table, column, lambda row, cell: "n/a" if row % 30 == 0 else cell)
    else:
        yield changed(table, column, lambda row, cell: "never seen" if row % 20 == 0 else cell)
        yield changed(table, column, lambda row, cell: cells[0] if row % 3 == 0 else cell)


def missed_breaks(program, table, ways):
    """A broken column is called changed and named in the first line, and no other is changed. Each
    column is broken in as many ways as are asked for."""
    before, after = random_halves(table, 1)
    write(program.folder / "reference.csv", before)
    for at, column in enumerate(table[0]):
        numbers = all(oracle.number(row[at].strip()) is not None for row in before[1])
        every = list(breaks_of(after, column, numbers))
        for way in range(ways):
            write(program.folder / "data/new", every[(at + way) % len(every)])
            arguments = ["--missing=?", "../reference.csv", "new"]
            report = program.report(*arguments)[1]
            found = [each["name"] for each in report["variables"] if each["verdict"] in CHANGES]
            line = program.run("data", "check", *arguments)[1].decode().splitlines()[0]
            if found != [column] or f'"{column}"' not in line:
                yield f"column {column} broken in way {way}", (found, line), [column]


def main():
    path, weather, reports, *census = sys.argv[1:]
    files = None
    if census and census[0]:
        files = [read(os.path.join(census[0], name)) for name in ("adult-train.csv", "adult-test.csv")]
    else:
        print("ACCREDIT_TEST_DATA names no folder, so the census files were not compared")
    # In the second pair the days are dates, which are left out.
    pairs = [(pair, Options(categorical={"digit", "rating", *(["date"] if index == 0 else [])} &
                            set(pair[0][0]), **more))
             for index, (pair, more) in enumerate(zip(weather_pairs(weather),
                                                      options_of_pairs(False)))]
    if files:
        pairs += [(pair, Options(missing="?", **more))
                  for pair, more in zip(census_pairs(files), options_of_pairs(True))]
    failures = 0

    def tell(label, found):
        nonlocal failures
        for name, got, wanted in found:
            print(f"{label}: {name}: got {got}, expected {wanted}")
            failures += 1

    with tempfile.TemporaryDirectory() as folder:
        program = Program(path, folder, reports)
        for number, ((reference, new), options) in enumerate(pairs):
            tell(f"pair {number}", differences(program, reference, new, options))
        same = [new for (reference, new), _ in pairs if reference == pairs[2][0][0]]
        tell("several files", of_several(program, pairs[2][0][0], same))
        both = pairs[3][0][0][0], pairs[2][0][0][1] + pairs[3][0][0][1]
        tell("weather", alarms_of_splits(program, both, 20))
        tell("weather", missed_breaks(program, both, 3))
        if files:
            both = files[0][0], files[0][1] + files[1][1]
            tell("census", alarms_of_splits(program, both, 20))
            tell("census", missed_breaks(program, both, 1))
    print(f"{len(pairs)} pairs, {failures} differences")
    return 1 if failures else 0


if __name__ == "__main__":
    sys.exit(main())
