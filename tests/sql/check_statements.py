#!/usr/bin/env python3
"""Checks the road without a connection through the clients of engines.

Usage: check_statements.py PROGRAM [DIALECT=COMMAND]... [--nodes COMMAND]...

COMMAND is the engine's client, which reads a statement from standard input, in one word for the
shell: "sqlite=sqlite3 FILE", "postgresql=psql -X -q -v ON_ERROR_STOP=1 ...", "mysql=mariadb ...",
"clickhouse=clickhouse-client ...". Every --nodes is the client of a node of the ClickHouse cluster
"three", to which the first one belongs. Tables are made whose names begin with "accredit_test".

The report of `check` through a statement is that of the CSV file with the same rows, but for the
moments, which are compared with exact arithmetic; a reference that is learned through statements
has the counts of the one from the file.
"""
import csv
import fractions
import json
import math
import os
import random
import re
import shlex
import sqlite3
import struct
import subprocess
import sys
import tempfile

TABLE = "accredit_test"
QUOTE = {"mysql": "`", "clickhouse": "`"}


def run(command, stdin="", status=0, shell=False):
    done = subprocess.run(command, input=stdin, capture_output=True, text=True, shell=shell)
    assert done.returncode in (status if isinstance(status, tuple) else (status,)), f"{command}: {done.returncode}\n{done.stderr[-3000:]}"
    return done.stderr if status == 2 else done.stdout


def quoted(dialect, name):
    quote = QUOTE.get(dialect, '"')
    if dialect == "clickhouse":
        return quote + name.replace("\\", "\\\\").replace("`", "\\`") + quote
    return quote + name.replace(quote, quote * 2) + quote


def number_literal(dialect, value):
    """A literal that the engine reads as this double, written in another way than by the program."""
    if dialect == "clickhouse":
        return "reinterpretAsFloat64(unhex('%s'))" % struct.pack("<d", value).hex()
    if dialect == "postgresql":
        return "'%r'::float8" % value
    return "%.17e" % value


def text_literal(dialect, value):
    if dialect == "postgresql":
        return "convert_from('\\x%s', 'UTF8')" % value.encode().hex()
    if dialect == "mysql":
        return "CONVERT(X'%s' USING utf8mb4)" % value.encode().hex() if value else "''"
    return "unhex('%s')" % value.encode().hex()


TYPES = {
    "sqlite": ("REAL", "TEXT"),
    "postgresql": ("double precision", "text"),
    "mysql": ("double", "varchar(30)"),
    "clickhouse": ("Nullable(Float64)", "Nullable(String)"),
}


class Client:
    def __init__(self, dialect, command, nodes=()):
        self.dialect, self.command, self.nodes = dialect, command, nodes

    def __call__(self, sql, status=0, options="", node=None):
        return run(f"{node or self.command} {options}", sql, status, shell=True)

    def execute(self, statements, node=None):
        if self.dialect == "clickhouse":
            for statement in statements:
                self(statement, node=node)
        else:
            self(";\n".join(statements) + ";\n")

    def load(self, names, rows, types=None):
        """Makes the table anew. A float is stored as a number, any other text as a text."""
        dialect = self.dialect
        if types is None:
            types = [TYPES[dialect][any(isinstance(row[i], str) for row in rows)]
                     for i in range(len(names))]
        columns = ", ".join(f"{quoted(dialect, n)} {t}" for n, t in zip(names, types))
        if dialect == "sqlite":
            # The client's own literals are not always read as the nearest double.
            with sqlite3.connect(shlex.split(self.command)[-1]) as file:
                file.execute(f"DROP TABLE IF EXISTS {TABLE}")
                file.execute(f"CREATE TABLE {TABLE} ({columns})")
                marks = ", ".join("?" * len(names))
                file.executemany(f"INSERT INTO {TABLE} VALUES ({marks})", rows)
            return
        tables = self.nodes or [None]
        for k, node in enumerate(tables):
            name = TABLE + ("_part" if self.nodes else "")
            engine = {"clickhouse": " ENGINE = MergeTree ORDER BY tuple()",
                      "mysql": " ENGINE = Aria" if len(names) > 300 else ""}.get(dialect, "")
            statements = [f"DROP TABLE IF EXISTS {name}", f"CREATE TABLE {name} ({columns}){engine}"]
            part = rows[k::len(tables)]
            for at in range(0, len(part), 200):
                values = ", ".join(
                    "(" + ", ".join("NULL" if v is None else number_literal(dialect, v)
                                    if isinstance(v, float) else text_literal(dialect, v)
                                    for v in row) + ")" for row in part[at:at + 200])
                statements.append(f"INSERT INTO {name} VALUES {values}")
            self.execute(statements, node)
        if self.nodes:
            self.execute([f"DROP TABLE IF EXISTS {TABLE}",
                          f"CREATE TABLE {TABLE} AS {TABLE}_part "
                          f"ENGINE = Distributed(three, default, {TABLE}_part, rand())"])


def write_csv(path, names, rows):
    with open(path, "w", newline="", encoding="utf-8") as file:
        writer = csv.writer(file)
        writer.writerow(names)
        for row in rows:
            writer.writerow(["" if v is None else repr(v) if isinstance(v, float) else v
                             for v in row])


# How every client is made to print what `check --answers` reads.
FORMS = {
    "sqlite": ["", "-csv", "-csv -header", "-tabs", "-header -separator ';'"],
    "postgresql": ["--csv", "-A", "-A -t", "-t", "", "-A -F ' ' -t --csv"],
    "mysql": ["--batch", "--batch --skip-column-names", "--batch --raw"],
    "clickhouse": ["--format CSV", "--format TSV", "--format CSVWithNames",
                   "--format TSVWithNames", "--format TSVRaw"],
}


MOMENTS = ("new_mean", "new_standard_deviation", "mean_shift", "deviation_ratio")


def comparable(report):
    """A report without what rounding, the order of rows and the road may change; and the moments."""
    moments = {}
    report.pop("new", None)
    for variable in report["variables"]:
        moments[variable["name"]] = [variable.pop(key, None) for key in MOMENTS]
        variable["unreadable"]["first_line"] = variable["unreadable"]["first_text"] = None
        for key in ("categories", "unknown_categories", "vanished_categories"):
            variable[key] = sorted(map(str, variable.get(key) or []))
        variable.pop("notes", None)
    return report, moments


def numbers_of(values):
    """The doubles, and those that texts spell."""
    numbers = []
    for value in values:
        try:
            numbers.append(float(value))
        except (TypeError, ValueError):
            pass
    return numbers


def exact_moments(values):
    """The mean and the sample deviation, as fractions and a double."""
    numbers = [fractions.Fraction(v) for v in numbers_of(values)]
    if not numbers:
        return None, None
    mean = sum(numbers) / len(numbers)
    squares = sum((x - mean) ** 2 for x in numbers)
    if len(numbers) < 2:
        return mean, None
    variance = squares / (len(numbers) - 1)
    return mean, math.sqrt(variance) if variance < 1e300 and (variance == 0 or variance > 1e-300) \
        else None


class Checker:
    def __init__(self, program, folder):
        self.program, self.folder = program, folder
        self.count = 0

    def path(self, name):
        return os.path.join(self.folder, name)

    def accredit(self, *arguments, status=0):
        return run([self.program, *arguments], status=status)

    def answer(self, client, statement, form=None, status=0):
        path = self.path("answer")
        form = FORMS[client.dialect][0] if form is None else form
        options = re.match("-- clickhouse-client options: (.*)", statement)
        form += " " + options.group(1) if options else ""
        printed = client(statement, options=form, status=status)
        with open(path, "w", encoding="utf-8") as file:
            file.write(printed)
        return path

    def check(self, client, names, train, rows, forms=None, types=None, label="",
              edit=None):
        train_csv, new_csv, reference = map(self.path, ("train.csv", "new.csv", "ref.pmml"))
        write_csv(train_csv, names, train)
        write_csv(new_csv, names, rows)
        self.accredit("learn", train_csv, "--output", reference)
        if edit:
            with open(reference, encoding="utf-8") as file:
                text = edit(file.read())
            with open(reference, "w", encoding="utf-8") as file:
                file.write(text)
        client.load(names, rows, types)
        expected, _ = comparable(json.loads(
            self.accredit("check", reference, new_csv, "--format", "json", status=(0, 1))))
        statement = self.accredit("sql", reference, "--table", TABLE, "--dialect", client.dialect)
        for form in forms or FORMS[client.dialect][:1]:
            answer = self.answer(client, statement, form)
            found, moments = comparable(json.loads(
                self.accredit("check", reference, "--answers", answer, "--format", "json",
                              status=(0, 1))))
            if found != expected:
                for name, report in (("expected", expected), ("found", found)):
                    with open(self.path(name), "w", encoding="utf-8") as file:
                        json.dump(report, file, indent=1)
                raise AssertionError(f"{client.dialect} {form}: {label}: the reports differ: "
                                     f"diff {self.path('expected')} {self.path('found')}")
            self.compare_moments(names, rows, moments, f"{client.dialect}: {label}")
            self.count += 1

    def learn(self, client, names, rows, options=(), label="", types=None):
        """Learns by rounds of statements, and compares with what is learned of the file."""
        path, by_file, by_engine = map(self.path, ("train.csv", "file.pmml", "engine.pmml"))
        write_csv(path, names, rows)
        self.accredit("learn", path, *options, "--output", by_file)
        client.load(names, rows, types)
        answers = []
        for number in range(3):
            statement = self.accredit("sql", "--table", TABLE, "--dialect", client.dialect,
                                      *options, *answers)
            answer = self.answer(client, statement)
            kept = self.path(f"answer{number}")
            os.replace(answer, kept)
            answers += ["--answers", kept]
        self.accredit("learn", *answers, *options, "--output", by_engine)
        expected, found = (json.loads(self.accredit("show", each, "--format", "json"))
                           for each in (by_file, by_engine))
        assert [v["name"] for v in expected["variables"]] == [v["name"] for v in found["variables"]]
        for theirs, ours in zip(expected["variables"], found["variables"]):
            where = f"{client.dialect}: {label}: {ours['name']}"
            values = [row[names.index(ours["name"])] for row in rows]
            for key in ("kind", "cases", "missing", "unreadable", "minimum", "maximum"):
                assert theirs.get(key) == ours.get(key), f"{where}: {key}"
            if ours["kind"] == "categorical":
                sort = lambda v: sorted(map(str, v["categories"]))
                assert sort(theirs) == sort(ours), f"{where}: categories"
                continue
            cuts = ours["cut_points"]
            numbers = numbers_of(values)
            counts = ours["frequencies"]
            if cuts:
                at_most = [sum(v <= c for v in numbers) for c in cuts] + [len(numbers)]
                exact = [b - a for a, b in zip([0] + at_most, at_most)]
                assert counts == exact, f"{where}: bins {counts}, not {exact}"
        moments = {v["name"]: [v["mean"], v["standard_deviation"], None, None]
                   for v in found["variables"] if v["kind"] != "categorical"}
        self.compare_moments(names, rows, moments, f"{client.dialect}: {label}")
        self.count += 1

    @staticmethod
    def compare_moments(names, rows, moments, label):
        for name, (mean, deviation, _, _) in moments.items():
            values = [row[names.index(name)] for row in rows] if name in names else []
            exact_mean, exact_deviation = exact_moments(values)
            if mean is None or exact_mean is None:
                continue
            size = exact_deviation or abs(float(exact_mean)) or 1.0
            error = abs(float(fractions.Fraction(mean) - exact_mean))
            assert error <= 1e-11 * size or error <= 2.3e-16 * abs(mean), \
                f"{label}: {name}: mean {mean!r}, not {float(exact_mean)!r}"
            if deviation is not None and exact_deviation is not None:
                assert abs(deviation - exact_deviation) <= 1e-11 * exact_deviation, \
                    f"{label}: {name}: deviation {deviation!r}, not {exact_deviation!r}"


NASTY_TEXTS = ["a", "a  ", "A", "\u00e1", "e", "\u00e9", "\u00df", "ss", "  b", "x,y", 'q"q', "it's",
               "back\\slash", "tab\there", "line\nend", "cr\rhere", "%41", "[x]", "NULL", "\\N", "0",
               "=1", "1.50", "null", "(1 row)", "\u65e5\u672c\U0001f600", "semi;colon", "up|right"]


def nasty_table(random_numbers, rows):
    names = ["x y", 'quo"te', "back`tick", "offset", "huge", "tiny", "whole", "sparse", "kind", "flag"]
    gauss = random_numbers.gauss
    table = []
    for i in range(rows):
        table.append([gauss(0, 1), gauss(5, 0.001), -0.0 if i % 7 == 0 else gauss(0, 1e-9),
                      1e9 + gauss(0, 1), gauss(0, 1) * 1e120, gauss(0, 1) * 1e-130,
                      float(random_numbers.randrange(5)),
                      None if random_numbers.random() < 0.9 else gauss(-3, 1),
                      random_numbers.choice(NASTY_TEXTS),
                      random_numbers.choice(["yes", "no", "", None])])
    return names, table


def random_double(random_numbers):
    while True:
        value = struct.unpack("<d", random_numbers.getrandbits(64).to_bytes(8, "little"))[0]
        if math.isfinite(value):
            return value


def check_types(checker, client, numbers):
    """Texts, dates, NaN and infinities where numbers belong."""
    dialect = client.dialect
    names = ["x", "y"]
    train = [[1e9 + numbers.gauss(0, 1), numbers.gauss(0, 1)] for _ in range(200)]
    mixed = [[numbers.choice(["n/a", "zz", "", None, " 12.5", "1e3", 7.5, 1e9]), numbers.gauss(0, 1)]
             for _ in range(90)]
    texts = [[v if v is None or isinstance(v, str) else repr(v), y] for v, y in mixed]
    if dialect == "sqlite":
        checker.check(client, names, train, mixed, types=["", "REAL"], label="texts among numbers")
        few = train + [["oops", 1.0]] + train * 5
        checker.learn(client, names, few, types=["", "REAL"], label="a text among numbers")
        many = [[numbers.choice(["a", "b", 1.5, 2.5]), 1.0 + i] for i in range(300)]
        checker.learn(client, names, many, types=["", "REAL"], label="numbers among texts")
    if dialect == "mysql":
        checker.check(client, names, train, texts, types=["varchar(20)", "double"], label="texts")
    if dialect in ("mysql", "sqlite"):
        checker.learn(client, names, [[repr(x), y] for x, y in train],
                      types=["varchar(40)", "double"], label="numbers as texts")
    reference = checker.path("ref.pmml")
    write_csv(checker.path("train.csv"), names, train)
    checker.accredit("learn", checker.path("train.csv"), "--output", reference)
    bad = {"sqlite": ["9e999", "-9e999"],
           "postgresql": ["'NaN'", "'Infinity'", "'-Infinity'"],
           "clickhouse": ["nan", "inf", "-inf"], "mysql": []}[dialect]
    dated = {"mysql": ("date", "'2024-01-31'"),
             "clickhouse": ("Date", "toDate('2024-01-31')")}.get(dialect)
    cases = [(TYPES[dialect][0], value, "NaN or an infinity") for value in bad]
    cases += [dated + ("holds dates",)] if dated else []
    for kind, value, words in cases:
        client.load(names, [], [kind, TYPES[dialect][0]])
        client.execute([f"INSERT INTO {TABLE}{'_part' if client.nodes else ''} VALUES ({value}, 1)"])
        statement = checker.accredit("sql", reference, "--table", TABLE, "--dialect", dialect)
        report = json.loads(checker.accredit("check", reference, "--answers",
                                             checker.answer(client, statement), "--format", "json",
                                             status=(0, 1)))
        assert words in report["variables"][0]["reason"], (dialect, value, report["variables"][0])
        checker.count += 1
    if dialect in ("postgresql", "clickhouse"):
        client.load(names, [["n/a", 1.0]])
        statement = checker.accredit("sql", reference, "--table", TABLE, "--dialect", dialect)
        done = subprocess.run(client.command, input=statement, capture_output=True, text=True,
                              shell=True, check=False)
        assert done.returncode != 0, f"{dialect} takes a text for a number"
    # A column that is not there is no text.
    client.load(["x"], [[1.0]])
    statement = checker.accredit("sql", reference, "--table", TABLE, "--dialect", dialect)
    done = subprocess.run(client.command, input=statement, capture_output=True, text=True,
                          shell=True, check=False)
    assert done.returncode != 0, f"{dialect} takes a name for a text"
    with open(checker.path("answer"), "w", encoding="utf-8") as file:
        file.write(done.stdout + done.stderr)
    checker.accredit("check", reference, "--answers", checker.path("answer"), status=2)
    # Neither is an answer about another reference or with other options taken, nor one cut short.
    client.load(names, train)
    statement = checker.accredit("sql", reference, "--table", TABLE, "--dialect", dialect)
    answer = checker.answer(client, statement)
    checker.accredit("check", reference, "--answers", answer)
    with open(answer, encoding="utf-8") as file:
        lines = file.readlines()
    for options, content, words in [
            (["--ignore", "y"], lines, "other options"), (["--table", "t"], lines, "not the table"),
            ([], lines[:-1], "missing"), ([], lines + lines[-1:], "twice"),
            ([], lines + ["ERROR: out of memory\n"], "no row")]:
        with open(answer, "w", encoding="utf-8") as file:
            file.writelines(content)
        error = checker.accredit("check", reference, "--answers", answer, *options, status=2)
        assert words in error, f"{dialect}: {error}, not {words}"


EDGES = [-1.7976931348623155e308, -1e23, -5e-324, 0.0, 5e-324, 2.0**-1022 - 5e-324, 2.0**-1022,
         2.0**-1022 + 5e-324, 0.1, 0.30000000000000004, 2.0**53, 2.0**53 + 2, 1e23,
         1.7976931348623155e308, 1.7976931348623157e308]


def check_literals(checker, client, numbers, columns=120):
    """Cut points all over the range of doubles, with data on them and beside them."""
    names = [f"c{i}" for i in range(columns)]
    cuts = [sorted(random_double(numbers) for _ in range(5)) for _ in names]
    for i in range(0, len(EDGES), 5):
        cuts[i // 5] = EDGES[i:i + 5]
    train = [[numbers.gauss(0, 1) for _ in names] for _ in range(20)]
    rows = [[] for _ in range(15)]
    for column in cuts:
        values = [y for x in column
                  for y in (math.nextafter(x, -math.inf), x, math.nextafter(x, math.inf))]
        for row, value in zip(rows, values):
            row.append(value if math.isfinite(value) and value > -1.79e308 else None)

    def with_cuts(reference):
        column = iter(cuts)
        parts = reference.split("<ContStats>")
        for k in range(1, len(parts)):
            new = next(column)
            old = re.findall('rightMargin="([^"]*)"', parts[k])
            for before, after in zip(old, range(5)):
                parts[k] = parts[k].replace(f'Margin="{before}"', f'Margin="@{after}"')
            for after, value in enumerate(new):
                parts[k] = parts[k].replace(f'Margin="@{after}"', f'Margin="{value!r}"')
        return "<ContStats>".join(parts)

    checker.check(client, names, train, rows, edit=with_cuts, label="cut points everywhere")


def check_dialect(checker, client):
    numbers = random.Random(7)
    names, train = nasty_table(numbers, 1500)
    _, new = nasty_table(numbers, 1200)
    checker.learn(client, names, train, label="learn nasty texts")
    checker.learn(client, names, train, ["--categorical", "whole", "--ignore", "offset",
                                         "--missing", "no"], label="learn with options")
    checker.check(client, names, train, new, FORMS[client.dialect], label="nasty texts")
    checker.check(client, names, train, [], label="an empty table")
    checker.check(client, names, train, [[None] * len(names)] * 5,
                  types=[TYPES[client.dialect][n in ("kind", "flag")] for n in names],
                  label="nothing but NULL")
    check_types(checker, client, numbers)
    check_literals(checker, client, numbers)
    wide = [f"c{i}" for i in range(500)]
    def row():
        return [numbers.gauss(0, 1) if i % 5 else numbers.choice("abc") for i in range(500)]
    checker.check(client, wide, [row() for _ in range(60)], [row() for _ in range(40)],
                  label="500 columns")


def main():
    program, nodes, clients = sys.argv[1], [], []
    arguments = iter(sys.argv[2:])
    for argument in arguments:
        if argument == "--nodes":
            nodes.append(next(arguments))
        else:
            clients.append(argument.split("=", 1))
    with tempfile.TemporaryDirectory() as folder:
        if os.environ.get("ACCREDIT_KEEP"):
            folder = os.environ["ACCREDIT_KEEP"]
        checker = Checker(program, folder)
        for dialect, command in clients:
            client = Client(dialect, command, nodes if dialect == "clickhouse" else ())
            check_dialect(checker, client)
            print(f"{dialect}: {checker.count} reports are those of the files")


if __name__ == "__main__":
    main()
