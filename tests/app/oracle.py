"""What `accredit check` must report, computed from the cells of two tables.

Shares nothing with the program. Probabilities are taken to 30 digits, and counts are compared as whole
numbers. Means and deviations follow the recurrence that settles the cut points to the last bit.
"""

import bisect
import collections
import fractions
import functools
import math
import re

import mpmath

mpmath.mp.dps = 30

OK, ABSENT, NO_CASES, FEW_CASES, UNKNOWN_CATEGORY = 0, 180015, 180018, 180019, 180020
VERDICTS = ("unchanged", "minor", "moderate", "not tested", "major")
NAMED = 20
USUAL_MISSING = {"", "NA", "NaN", "nan", "NULL", "null", "N/A", "n/a", "#N/A", "<NA>"}
DAY = re.compile("[0-9]{4}-[0-9]{2}-[0-9]{2}")
DECIMAL = re.compile(r"[+-]?([0-9]+\.?[0-9]*|\.[0-9]+)([eE][+-]?[0-9]+)?")


class Options:
    """What a user may settle; `missing` are the tokens besides the usual ones."""

    def __init__(self, missing=(), categorical=(), weights=None, alpha=0.01, fail_on=None,
                 fail_below=None):
        self.missing = {*USUAL_MISSING, *missing}
        self.categorical = set(categorical)
        self.weights = weights or {}
        self.alpha = alpha
        self.fail_on = fail_on
        self.fail_below = fail_below

    def of_learn(self):
        """The arguments of a command that learns a reference."""
        return [*(f"--missing={token}" for token in sorted(self.missing - USUAL_MISSING)),
                *(f"--categorical={name}" for name in sorted(self.categorical))]

    def of_check(self):
        """The arguments that remain for a stored reference."""
        given = [f"--weight={name}={weight}" for name, weight in self.weights.items()]
        if self.alpha != 0.01:
            given.append(f"--alpha={self.alpha}")
        if self.fail_on:
            given.append(f"--fail-on={self.fail_on}")
        if self.fail_below is not None:
            given.append(f"--fail-below={self.fail_below}")
        return given


@functools.cache
def number(text):
    """The number that a text without blanks around it spells, or None."""
    value = float(text) if DECIMAL.fullmatch(text) else math.inf
    return value if math.isfinite(value) else None


class Sample:
    """One column of one file."""

    def __init__(self, cells, kind, missing):
        self.values = []
        self.missing = 0
        self.unreadable = 0 if kind != "text" else None
        self.first_line = self.first_text = None
        for line, cell in enumerate(cells, 2):
            text = cell.strip(" \t")
            if text in missing:
                self.missing += 1
            elif kind == "text":
                self.values.append(cell)
            elif number(text) is not None:
                self.values.append(number(text))
            else:
                self.unreadable += 1
                if self.first_line is None:
                    self.first_line, self.first_text = line, text
        self.cases = len(self.values)
        self.rows = self.cases + self.missing + (self.unreadable or 0)
        self.mean = self.deviation = None
        if kind == "numbers" and self.values:
            self.set_moments()

    def set_moments(self):
        mean = squares = 0.0
        for n, value in enumerate(self.values, 1):
            step = value - mean
            mean += step / n
            squares += (n - 1) / n * (step * step)
        self.mean = mean
        if self.cases > 1:
            varies = max(self.values) != min(self.values)
            self.deviation = math.sqrt(squares / (self.cases - 1)) if varies else 0.0


def order_of(value):
    """Texts in the order of their UTF-8, numbers ascending."""
    return value.encode() if isinstance(value, str) else value


class Table:
    """The cells of a variable with the counts of both samples."""

    def __init__(self, kind, reference, new):
        self.cuts = []
        if kind != "numbers":
            before, after = map(collections.Counter, (reference.values, new.values))
            self.names = [{"value": value} for value in [*before, *sorted(set(after) - set(before), key=order_of)]]
            self.r = [before[name["value"]] for name in self.names]
            self.o = [after[name["value"]] for name in self.names]
            self.library_r = [before[value] for value in before]
            return
        self.library_r = []
        if reference.deviation:
            mean, one = reference.mean, reference.deviation
            self.cuts = [mean - (one + one), mean - one, mean, mean + one, mean + (one + one)]
        elif reference.values:
            value = reference.values[0]
            self.cuts = [math.nextafter(value, -math.inf), value]
        ends = [None, *self.cuts, None]
        self.names = [{"lower": low, "upper": high} for low, high in zip(ends, ends[1:])]
        self.r, self.o = (self.count(sample.values) for sample in (reference, new))
        if not self.cuts:
            self.names = self.r = self.o = []
        if reference.deviation:
            self.library_r = self.r

    def count(self, values):
        counts = [0] * (len(self.cuts) + 1)
        for value in values:
            counts[bisect.bisect_left(self.cuts, value)] += 1
        return counts


def exceeds(statistic, freedom):
    """The chance that a chi-square exceeds the statistic."""
    return float(mpmath.gammainc(mpmath.mpf(freedom) / 2, statistic / 2, regularized=True))


def fit(table):
    """p-value, statistic and degrees of freedom of the new counts against the reference's."""
    counts = list(zip(table.r, table.o))[:len(table.library_r)]
    n, m = (sum(side) for side in zip(*counts))
    if any(r == 0 and o > 0 for r, o in counts):
        return 0.0, None, None
    scale = mpmath.mpf(m) / n
    statistic = mpmath.fsum((o - r * scale) ** 2 / (r * scale) for r, o in counts if r)
    return exceeds(statistic, len(counts) - 1), float(statistic), len(counts) - 1


def library_test(kind, reference, new, table):
    """The status code, and what fit gives."""
    none = None, None, None
    if kind == "numbers":
        if reference.cases < 2 or new.cases < 2:
            return FEW_CASES, none
        if reference.deviation and new.deviation:
            return OK, fit(table)
        same = reference.deviation == new.deviation == 0 and reference.mean == new.mean
        return OK, (1.0 if same else 0.0, None, None)
    if not reference.cases or not new.cases:
        return NO_CASES, none
    if len(table.names) > len(table.library_r):
        return UNKNOWN_CATEGORY, none
    return OK, fit(table) if len(table.library_r) > 1 else (1.0, None, None)


def expected_p(table):
    """P(F(k, k') > (1 + M/N) k'/k)."""
    freedom = len(table.library_r) - 1
    filled = sum(r > 0 for r in table.library_r) - 1
    if filled < 1:
        return 1.0
    bound = (1 + mpmath.mpf(sum(table.o)) / sum(table.r)) * filled / freedom
    # P(F(a, b) > x) is the regularised incomplete beta function of b/2, a/2 at b / (b + a x).
    return float(mpmath.betainc(mpmath.mpf(filled) / 2, mpmath.mpf(freedom) / 2, 0,
                                filled / (filled + freedom * bound), regularized=True))


def two_sample(r, o):
    """The test of homogeneity and the stability index; (None, None) if no cell reaches 5."""
    n, m = sum(r), sum(o)
    cells = [cell for cell in zip(r, o) if any(cell)]

    def is_small(cell):
        return min(n, m) * sum(cell) < 5 * (n + m)

    large = [cell for cell in cells if not is_small(cell)]
    small = [cell for cell in cells if is_small(cell)]
    if not large:
        return None, None
    pooled = len(small)
    if small:
        pool = tuple(map(sum, zip(*small)))
        if is_small(pool):
            least = large.pop(large.index(min(large, key=sum)))
            pool = pool[0] + least[0], pool[1] + least[1]
            pooled += 1
        large.append(pool)
    count = len(large)
    statistic = index = mpmath.mpf(0)
    for cell in large:
        for observed, size in zip(cell, (n, m)):
            expected = mpmath.mpf(size) * sum(cell) / (n + m)
            statistic += (observed - expected) ** 2 / expected
        p = (cell[0] + mpmath.mpf(1) / 2) / (n + mpmath.mpf(count) / 2)
        q = (cell[1] + mpmath.mpf(1) / 2) / (m + mpmath.mpf(count) / 2)
        index += (q - p) * mpmath.log(q / p)
    return {"statistic": float(statistic), "degrees_of_freedom": count - 1,
            "p_value": exceeds(statistic, count - 1) if count > 1 else 1.0,
            "adjusted_p_value": None, "cells": count, "pooled_cells": pooled}, float(index)


def change(r, o):
    """Test and sizes of one table, and its verdict as far as it is known without the other tests."""
    if not sum(r) + sum(o):
        return {"two_sample": None, "share_moved": None, "stability_index": None}, "unchanged"
    test, index = two_sample(r, o)
    moved = None
    if sum(r) and sum(o):
        moved = float(sum(map(abs, share_changes(r, o))) / 2)
    return ({"two_sample": test, "share_moved": moved, "stability_index": index},
            "unchanged" if test else "not tested")


def share_changes(r, o):
    n, m = sum(r), sum(o)
    return [fractions.Fraction(a, n) - fractions.Fraction(b, m) for a, b in zip(r, o)]


def most_changed(table):
    if not sum(table.r) or not sum(table.o):
        return None
    sizes = list(map(abs, share_changes(table.r, table.o)))
    most = sizes.index(max(sizes))
    if not sizes[most]:
        return None
    return {**table.names[most], "reference_share": table.r[most] / sum(table.r),
            "new_share": table.o[most] / sum(table.o)}


def uncounted(reference, new, of):
    """Missing or unreadable data against all other rows."""
    before, after = of(reference), of(new) if new else None
    known = before is not None and after is not None
    found, verdict = (change([before, reference.rows - before], [after, new.rows - after])
                      if known else change([], []))
    return {"reference_count": before, "new_count": after,
            "reference_share": before / reference.rows if before is not None else None,
            "new_share": after / new.rows if after is not None and new.rows else None,
            **found}, verdict


def one_sided(table, side, other):
    """The most frequent categories of one side; a stable sort keeps equal ones in order."""
    cells = sorted((cell for cell in zip(table.names, side, other) if cell[1] and not cell[2]),
                   key=lambda cell: -cell[1])
    return [{**name, "count": count} for name, count, _ in cells[:NAMED]]


def describe(name, kind, reference, new, weight):
    """The report of one variable, with its three verdicts, and the p-value to be expected."""
    table = Table(kind, reference, new) if new else None
    code, (p, statistic, freedom) = (library_test(kind, reference, new, table) if new
                                     else (ABSENT, (None, None, None)))
    values, verdict = change(table.r, table.o) if new else (change([], [])[0], "not tested")
    if new and not table.names and reference.cases + new.cases:
        verdict = "not tested"  # a reference without cases has no bins to count new ones in
    shift = ratio = crowded = None
    if reference.deviation:
        if new and new.cases:
            shift = (new.mean - reference.mean) / reference.deviation
        if new and new.deviation is not None:
            ratio = new.deviation / reference.deviation
        fullest = max(Table(kind, reference, reference).r) / reference.cases
        crowded = fullest if fullest > 0.95 else None
    missing, missing_verdict = uncounted(reference, new, lambda sample: sample.missing)
    unreadable, unreadable_verdict = uncounted(reference, new, lambda sample: sample.unreadable)
    unreadable["count"] = unreadable["new_count"]
    unreadable["first_line"] = new.first_line if new else None
    unreadable["first_text"] = new.first_text if new else None
    is_categorical = kind != "numbers"
    cells = [{**cell, "reference_count": r, "new_count": o}
             for cell, r, o in zip(table.names, table.r, table.o)] if new else []
    variable = {
        "name": name, "kind": "categorical" if is_categorical else "continuous",
        "reference_cases": reference.cases, "new_cases": new.cases if new else 0,
        "p_value": p, "statistic": statistic, "degrees_of_freedom": freedom, "status": code,
        "weight": weight, **values, "most_changed": most_changed(table) if new else None,
        "reference_mean": reference.mean, "reference_standard_deviation": reference.deviation,
        "new_mean": new.mean if new else None,
        "new_standard_deviation": new.deviation if new else None,
        "mean_shift": shift, "deviation_ratio": ratio, "crowded_bin_share": crowded,
        "missing": missing, "unreadable": unreadable,
        "unknown_categories": None if not is_categorical else
                              one_sided(table, table.o, table.r) if new else [],
        "vanished_categories": None if not is_categorical else
                               one_sided(table, table.r, table.o) if new else [],
        "categories" if is_categorical else "bins": cells}
    verdicts = {"values": verdict, "missing": missing_verdict, "unreadable": unreadable_verdict}
    return variable, verdicts, expected_p(table) if new else None


def judge(described, alpha):
    """Holm's method over all tests of more than one cell, and the verdicts that follow."""
    tests = []
    for variable, verdicts, _ in described:
        for part in verdicts:
            found = variable if part == "values" else variable[part]
            if found["two_sample"] and found["two_sample"]["cells"] > 1:
                tests.append((found["two_sample"], found["stability_index"], verdicts, part))
    tests.sort(key=lambda entry: entry[0]["p_value"])
    least = 0.0
    for rank, (test, index, verdicts, part) in enumerate(tests):
        least = max(least, min(1.0, (len(tests) - rank) * test["p_value"]))
        test["adjusted_p_value"] = least
        if least < alpha:
            verdicts[part] = "minor" if index < 0.1 else "moderate" if index < 0.25 else "major"
    for variable, verdicts, _ in described:
        variable["verdict"] = max(verdicts.values(), key=VERDICTS.index)
        variable["reason"] = variable["verdict"] == "not tested" or variable["p_value"] is None


def failed_rules(accreditation, variables, options):
    failed = []
    if options.fail_on:
        bound = VERDICTS.index(options.fail_on)
        if any(VERDICTS.index(variable["verdict"]) >= bound for variable in variables):
            failed.append(f"--fail-on {options.fail_on}")
    if accreditation is None:
        if options.fail_below is not None or not options.fail_on:
            failed.append("no accreditation")
    elif options.fail_below is not None and accreditation < options.fail_below:
        failed.append(f"--fail-below {options.fail_below}")
    return failed


def kind_of(cells, name, options):
    """That of a reference's column, None if it is left out."""
    present = [cell for cell in cells if cell.strip(" \t") not in options.missing]
    odd = sum(number(cell.strip(" \t")) is None for cell in present)
    if name in options.categorical:
        return "text" if odd else "categories"
    if odd <= min(100, len(present) / 1000):
        return "numbers"
    keys = len(set(present)) > 1000 and len(set(present)) > len(present) / 2
    return None if keys or all(map(DAY.fullmatch, present)) else "text"


def report(reference, new, options):
    """The report on two tables, each a heading and rows. In the place of a status is its code, in
    that of a reason whether there must be one."""
    columns = [dict(zip(heading, zip(*rows) if rows else [()] * len(heading)))
               for heading, rows in (reference, new)]
    described = []
    for name in reference[0]:
        kind = kind_of(columns[0][name], name, options)
        if kind is None:
            continue
        before = Sample(columns[0][name], kind, options.missing)
        after = (Sample(columns[1][name], kind, options.missing) if name in columns[1] else None)
        described.append(describe(name, kind, before, after,
                                  float(options.weights.get(name, 1.0))))
    judge(described, options.alpha)
    variables = [variable for variable, _, _ in described]
    codes = [variable["status"] for variable in variables]
    # The columns are matched before anything is tested.
    code = ABSENT if ABSENT in codes else next((code for code in codes if code), OK)
    weights = [variable["weight"] for variable in variables]
    accreditation = expected = None
    if code == OK and sum(weights):
        accreditation, expected = (
            math.fsum(w * p for w, p in zip(weights, each)) / sum(weights)
            for each in ([variable["p_value"] for variable in variables],
                         [p for _, _, p in described]))
    return {"schema": 2, "accreditation": accreditation, "expected_if_unchanged": expected,
            "status": code, "alpha": options.alpha,
            "failed_rules": failed_rules(accreditation, variables, options),
            "variables": variables}
