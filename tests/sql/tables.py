"""Tables that are made to show differences between engines, files and exact arithmetic."""

import csv
import re

NUMBER = re.compile(r"[+-]?([0-9]+\.?[0-9]*|\.[0-9]+)([eE][+-]?[0-9]+)?")
MISSING = {"", "NA", "NaN", "nan", "NULL", "null", "N/A", "n/a", "#N/A", "<NA>"}
ODD_NAMES = ('a "quoted" name', "with `ticks`", "it's", "a.b", "naïve 名", "per cent %", "question ?", "back\\slash",
             "semi; colon", "SELECT", "1st", "{brace}", ":colon", "--dash", "tab\there")


def write(path, columns):
    """A CSV file of lists of cells. What is None is an empty field; texts that a loader may spoil are quoted."""
    def field(cell):
        if cell is None:
            return ""
        return '"' + cell.replace('"', '""') + '"' if cell == "" or re.search(r"""[",'\\\n\r]|^ | $""", cell) else cell

    with open(path, "w", encoding="utf-8", newline="") as file:
        for row in [tuple(columns), *zip(*columns.values())]:
            file.write(",".join(map(field, row)) + "\n")


def read(path):
    """The cells of a CSV file, by column."""
    with open(path, encoding="utf-8", newline="") as file:
        names, *rows = csv.reader(file)
    return {name: [row[i] for row in rows] for i, name in enumerate(names)}


def thinned(rng, cells, share):
    return [None if rng.random() < share else cell for cell in cells]


def numbers(rng, rows, moved):
    """Number columns of many kinds; with `moved` their distribution differs somewhat."""
    def many(make):
        return [make() for _ in range(rows)]

    shift = 0.1 if moved else 0.0
    balanced = [("-1", "0", "1")[i % 3] for i in range(rows)]
    return {
        "normal": [repr(rng.gauss(shift, 1)) for _ in range(rows)],
        "far": [repr(1e9 + rng.gauss(shift, 1)) for _ in range(rows)],
        "farther": [repr(-4e15 + rng.gauss(0, 3)) for _ in range(rows)],
        "whole": many(lambda: str(rng.randrange(-5, 6 + moved))),
        "above": many(lambda: str(2**53 + rng.randrange(-9, 10))),
        "at_cuts": balanced[:-1] + ["0"],
        "wide": many(lambda: repr(rng.choice([-1, 1]) * 10 ** rng.uniform(-150, 150))),
        "large": many(lambda: repr(rng.uniform(-1, 1) * 1e150)),
        "constant": ["7.25"] * rows,
        "zeros": many(lambda: rng.choice(["0", "-0.0", "0.0"])),
        "gaps": thinned(rng, [f"{rng.uniform(0, 10):.2f}" for _ in range(rows)], 0.2 + shift),
        "few": [None] * (rows - 2) + ["3.5", "4.25"],
        "digits": many(lambda: f"{rng.random():.19f}" + str(rng.randrange(10**9))),
        "exponents": many(lambda: f"{rng.randrange(1, 100)}E{rng.randrange(-3, 4):+}"),
    }


def tiny(rng, rows):
    """Numbers of which the squares vanish."""
    return {"small": [repr(rng.gauss(0, 1) * 1e-200) for _ in range(rows)],
            "smallest": [repr(rng.randrange(1, 50) * 5e-324) for _ in range(rows)],
            "around": [repr(rng.gauss(0, 1) * 1e-155) for _ in range(rows)]}


def texts(rng, rows, moved):
    """Categories: texts that quoting, collations and clients spoil, and those that are missing values."""
    def column(cells, rare=()):
        weights = [1 / (i + 1) for i in range(len(cells))]
        picked = rng.choices(cells, weights, k=rows)
        for i, cell in enumerate(rare):
            picked[i] = cell
        return picked

    new = ["only new", "auch neu ß"] if moved else []
    return {
        "plain": column(["north", "south", "west", *new]),
        "alike": column(["a", "A", "á", "Á", "e", "é", "ß", "s", "ss", "i", "ı", "İ"]),
        "blanks": column(["x", " x", "x ", "x  ", "\u00a0x"]),
        "quotes": column(["it's", 'say "so"', "back\\slash", "\\", "\\N", "`", "''", "%s", "?", "{d '2020-01-01'}"]),
        "lines": column(["one\ntwo", "one\ttwo", "one,two", "a\r\nb", "x;y"]),
        "tokens": column(["NA", "null", "N/A", "?", "-", "none", "yes", "NaN"]),
        "beyond": column(["日本", "😀", "e\u0301", "é", "\U0001d4d0", "\u200b", "Ω", "ω"]),
        "numbers": column(["1", "1.0", "01", "x1", "1e0", "one"]),
        "gaps": thinned(rng, column(["u", "v", *new]), 0.3),
        "empty": column(["w", "", None]),
        "many": [f"k{rng.randrange(500)}" for _ in range(rows)] if not moved else
                [f"k{rng.randrange(600)}" for _ in range(rows)],
    }


def with_odd_names(columns):
    """The same columns under names that have to be quoted."""
    return {ODD_NAMES[i] if i < len(ODD_NAMES) else name: cells for i, (name, cells) in enumerate(columns.items())}


def wide(rng, rows, count):
    return {f"v{i}": [repr(rng.gauss(i, 1 + i)) for _ in range(rows)] for i in range(count)}


def numbers_of(cells):
    """The numbers of the cells, how many are missing, and how many neither."""
    found, missing, unreadable = [], 0, 0
    for cell in cells:
        text = cell.strip(" \t")
        if text in MISSING:
            missing += 1
        elif NUMBER.fullmatch(text) and abs(float(text)) != float("inf"):
            found.append(float(text))
        else:
            unreadable += 1
    return found, missing, unreadable
