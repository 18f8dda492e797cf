"""Tables in SQL engines against the files that they were loaded from, and against exact arithmetic."""

import collections
import random
import re
import shlex

from engines import columns_of, run
from exact import Numbers, require, require_moments, require_same_report, require_sizes
from harness import run_checks
import tables

ROWS = 2000


class Connected:
    """A table that the program asks over a connection."""

    def __init__(self, engine, *source):
        self.source = ("--sql", engine.connection(), *source)

    def __str__(self):
        return " ".join(self.source)

    def learn(self, accredit, output, *options):
        return accredit.learn(output, *self.source, *options)

    def check(self, accredit, reference):
        return accredit.check(reference, *self.source)


class Printed:
    """A table that an engine's own client asks by the statements that the program prints."""

    def __init__(self, engine, table):
        self.engine = engine
        self.table = ("--table", table, "--dialect", engine.dialect)

    def __str__(self):
        return " ".join((*self.engine.client()[:1], *self.table))

    def answer(self, accredit, name, *arguments):
        """What the client prints for a statement, in a file."""
        statement = accredit.run("sql", *arguments, *self.table)[0]
        options = re.match("-- clickhouse-client options: (.*)", statement)
        command = [*self.engine.client(), *self.engine.prints, *shlex.split(options.group(1) if options else "")]
        with open(accredit.file(name), "w", encoding="utf-8") as file:
            file.write(run(command, statement))
        return name

    def learn(self, accredit, output, *options):
        answers = []
        for round_ in range(3):
            answers += ["--answers", self.answer(accredit, f"round{round_}", *options, *answers)]
        return accredit.learn(output, *answers, *options)

    def check(self, accredit, reference):
        return accredit.check(reference, "--answers", self.answer(accredit, "answer", reference))


def roads_to(engine, table):
    """The ways to a table that was loaded."""
    quoted = engine.quoted(table)
    found = [Printed(engine, quoted)]
    if engine.name != "clickhouse":
        found += [Connected(engine, "--table", quoted), Connected(engine, "--query", f"SELECT * FROM {quoted};")]
    over = engine.quoted(table + "_nodes")
    if engine.name == "postgresql":
        found.append(Connected(engine, "--table", over, "--shard-by", "shard"))
    if engine.name == "mariadb":
        found.append(Connected(engine, "--table", over, "--ignore", "shard"))
    return found


def held(engine, table, path, target):
    """The file whose cells are what the table holds: the same, unless the engine reads texts as other doubles.

    Then the rows may be in another order, each column by itself.
    """
    cells = tables.read(path)
    names = [column.name for column in columns_of(path) if column.kind == "double"]
    changed = 0
    for name, values in engine.doubles(table, names).items():
        given = sorted(float(cell) for cell in cells[name] if cell)
        found = sorted(value for value in values if value is not None)
        require(len(given) == len(found), table, name, len(given), len(found))
        differing = sum(left != right for left, right in zip(given, found))
        if differing:
            changed += differing
            cells[name] = ["" if value is None else repr(value) for value in values]
    if not changed:
        return path
    require(not engine.reads_exactly, table, f"{changed} numbers were read as others")
    print(f"  {table}: {engine.name} reads {changed} numbers as others")
    tables.write(target, cells)
    return target


def require_learned(got, cells, kinds, *what):
    """A stored reference against the cells. `kinds` are those of the file's own reference."""
    require(set(got) == set(kinds), *what, sorted(got), sorted(kinds))
    for name, variable in got.items():
        here = (*what, name)
        require(variable["kind"] == kinds[name], *here, variable["kind"])
        values, missing, unreadable = tables.numbers_of(cells[name])
        require(variable["missing"] == missing, *here, "missing", variable["missing"], missing)
        if kinds[name] == "categorical":
            wanted = collections.Counter(cell for cell in cells[name] if cell.strip(" \t") not in tables.MISSING)
            found = {each["value"]: each["frequency"] for each in variable["categories"]}
            require(found == wanted, *here, found, wanted)
            require(variable["cases"] == sum(wanted.values()), *here, variable["cases"])
            continue
        require((variable["cases"], variable["unreadable"]) == (len(values), unreadable), *here, variable)
        exact = Numbers(values)
        if values:
            require((variable["minimum"], variable["maximum"]) == (exact.values[0], exact.values[-1]), *here, variable)
        require_moments(exact, variable["mean"], variable["standard_deviation"], *here)
        if variable["cut_points"]:
            bins = exact.bins(variable["cut_points"])
            require(variable["frequencies"] == bins, *here, variable["frequencies"], bins)


def require_like(wanted, got, cells, *what):
    """A summary with the bins of a reference against the same of the file."""
    require(set(wanted) == set(got), *what, sorted(wanted), sorted(got))
    for name, left in wanted.items():
        right = got[name]
        for key, value in left.items():
            if key in ("mean", "standard_deviation"):
                continue
            if key == "categories":
                value, right[key] = ({each["value"]: each["frequency"] for each in side}
                                     for side in (value, right[key]))
            require(repr(right[key]) == repr(value) or right[key] == value, *what, name, key, right[key], value)
        if left["kind"] == "continuous":
            require_moments(Numbers(tables.numbers_of(cells[name])[0]), right["mean"], right["standard_deviation"],
                            *what, name)


def check_table(accredit, road, wanted, exact, *what):
    got = road.check(accredit, "reference.pmml")
    require_same_report(wanted, got, *what, road)
    for variable in got["variables"]:
        if variable["name"] in exact:
            require_sizes(exact[variable["name"]], variable, *what, road, variable["name"])


def compare(accredit, engine, findings, name, reference, new, options=()):
    """Everything that is said of two tables, by every road to them."""
    paths = {}
    for side, columns in (("reference", reference), ("new", new)):
        path = accredit.file(f"{side}.csv")
        tables.write(path, columns)
        engine.load(path, name + side, columns_of(path))
        paths[side] = held(engine, name + side, path, accredit.file(f"held_{side}.csv"))
    learned = accredit.learn("reference.pmml", paths["reference"], *options)
    kinds = {variable["name"]: variable["kind"] for variable in learned.values()}
    cells = {side: tables.read(path) for side, path in paths.items()}
    wanted = accredit.check("reference.pmml", paths["new"])
    summary = accredit.learn("summary.pmml", "--bins-of", "reference.pmml", paths["new"])
    exact = {variable["name"]: Numbers(tables.numbers_of(cells["new"][variable["name"]])[0])
             for variable in wanted["variables"] if variable["kind"] == "continuous"}

    def learn(road):
        require_learned(road.learn(accredit, "table.pmml", *options), cells["reference"], kinds, name, road)

    def summarise(road):
        got = road.learn(accredit, "table_summary.pmml", "--bins-of", "reference.pmml")
        require_like(summary, got, cells["new"], name, road)

    for road in roads_to(engine, name + "reference"):
        findings.attempt(learn, road)
    for road in roads_to(engine, name + "new"):
        findings.attempt(check_table, accredit, road, wanted, exact, name)
        if isinstance(road, Connected):
            findings.attempt(summarise, road)
    print(f"  {name}: {len(kinds)} variables")


def learn_alone(accredit, engine, findings, name, columns):
    """What a file's own pass rounds otherwise."""
    path = accredit.file("reference.csv")
    tables.write(path, columns)
    engine.load(path, name, columns_of(path))
    cells = tables.read(held(engine, name, path, accredit.file("held.csv")))
    for road in roads_to(engine, name):
        findings.attempt(lambda way: require_learned(way.learn(accredit, "table.pmml"), cells,
                                                     dict.fromkeys(columns, "continuous"), name, way), road)


def every_table(accredit, engine, findings, given):
    def both(name, reference, new):
        if given.only in name:
            findings.attempt(compare, accredit, engine, findings, name, reference, new)

    rng = random.Random(12)
    both("numbers ", tables.numbers(rng, ROWS, False), tables.numbers(rng, ROWS // 2, True))
    both("texts ", tables.texts(rng, ROWS, False), tables.texts(rng, ROWS // 2, True))
    numbers = tables.numbers(rng, ROWS // 4, False)
    both('odd "`.é ', tables.with_odd_names(numbers), tables.with_odd_names(numbers))
    if given.only in "tiny":
        findings.attempt(learn_alone, accredit, engine, findings, "tiny", tables.tiny(rng, ROWS))
    columns = 40 if given.quick else 500
    both("wide", tables.wide(rng, 100, columns), tables.wide(rng, 50, columns))


if __name__ == "__main__":
    run_checks(__doc__, every_table, "postgresql", "mariadb", "clickhouse", "sqlite")
