"""Compares `accredit check` with a computation that shares nothing with it.

Usage: check_oracle.py PROGRAM WEATHER_FOLDER [DATA_FOLDER]. The weather is that of examples/; with a
folder that has them, the census files adult-train.csv and adult-test.csv are compared as well. Means
and deviations are summed exactly here, and p-values are taken to 30 digits.
"""

import bisect
import collections
import csv
import json
import math
import os
import subprocess
import sys
import tempfile

import mpmath

MISSING = {"", "NA", "?"}
TOLERANCE = 1e-12


def read(path):
    with open(path, newline="", encoding="utf-8") as file:
        heading, *rows = csv.reader(file)
    return heading, rows


def column(rows, index):
    return [row[index] for row in rows if row[index].strip() not in MISSING]


def is_number(text):
    try:
        return math.isfinite(float(text))
    except ValueError:
        return False


def chi_square_fit(reference, observed):
    scale = mpmath.mpf(sum(observed)) / sum(reference)
    if any(r == 0 and o > 0 for r, o in zip(reference, observed)):
        return 0.0
    statistic = sum((o - r * scale) ** 2 / (r * scale) for r, o in zip(reference, observed) if r)
    return float(mpmath.gammainc((len(reference) - 1) / mpmath.mpf(2), statistic / 2,
                                 regularized=True))


def moments(values):
    mean = math.fsum(values) / len(values)
    return mean, math.sqrt(math.fsum((v - mean) ** 2 for v in values) / (len(values) - 1))


def bins(values, cuts):
    counts = [0] * (len(cuts) + 1)
    for value in values:
        counts[bisect.bisect_left(cuts, value)] += 1
    return counts


def continuous(reference, new):
    """The status code and the p-value."""
    if len(reference) < 2 or len(new) < 2:
        return 180019, None
    mean, deviation = moments(reference)
    new_mean, new_deviation = moments(new)
    if not (deviation and new_deviation):
        return 0, float(deviation == new_deviation and mean == new_mean)
    cuts = [mean - 2 * deviation, mean - deviation, mean, mean + deviation, mean + 2 * deviation]
    return 0, chi_square_fit(bins(reference, cuts), bins(new, cuts))


def categorical(reference, new):
    """The status code and the p-value."""
    if not reference or not new:
        return 180018, None
    counts, new_counts = collections.Counter(reference), collections.Counter(new)
    if set(new_counts) - set(counts):
        return 180020, None
    if len(counts) == 1:
        return 0, 1.0
    return 0, chi_square_fit(list(counts.values()), [new_counts[key] for key in counts])


def expected(heading, reference, new):
    for index, name in enumerate(heading):
        ref, other = column(reference, index), column(new, index)
        if all(map(is_number, ref)):
            yield name, continuous([float(v) for v in ref], [float(v) for v in other])
        else:
            yield name, categorical(ref, other)


def differences(program, heading, reference, new, folder):
    paths = []
    for label, rows in (("reference", reference), ("new", new)):
        paths.append(os.path.join(folder, label + ".csv"))
        with open(paths[-1], "w", newline="", encoding="utf-8") as file:
            csv.writer(file).writerows([heading, *rows])
    run = subprocess.run([program, "check", "--missing", "?", "--format", "json", *paths],
                         stdout=subprocess.PIPE, check=False)
    report = json.loads(run.stdout)
    wanted = list(expected(heading, reference, new))
    for variable, (name, (code, p)) in zip(report["variables"], wanted, strict=True):
        got = variable["status"]["code"], variable["p_value"]
        close = got[1] is p is None or (None not in (got[1], p) and abs(got[1] - p) <= TOLERANCE)
        if variable["name"] != name or got[0] != code or not close:
            yield name, got, (code, p)
    first = next((code for _, (code, _) in wanted if code), 0)
    mean = None if first else sum(p for _, (_, p) in wanted) / len(wanted)
    got = report["status"]["code"], report["accreditation"]
    if got[0] != first or (got[1] is None) != (mean is None) or (
            mean is not None and abs(got[1] - mean) > TOLERANCE):
        yield "accreditation", got, (first, mean)
    if run.returncode != (1 if first else 0):
        yield "exit status", run.returncode, first


def weather_pairs(folder):
    names = ("seattle-2012-2014.csv", "seattle-2015.csv", "new-york.csv")
    (heading, old), (_, new), (_, york) = (read(os.path.join(folder, name)) for name in names)
    # The place and the day have categories that the other file has not.
    yield heading, old, new
    yield heading, old, old[::5]
    heading, old, new, york = heading[2:], *([row[2:] for row in rows] for rows in (old, new, york))
    rain = [row for row in old if row[4] == "rain"]
    for reference, other in ((old, new), (new, old), (old, york), (york, old), (old, old),
                             (old, old[:100]), (old[:30], new), (york, new[::40]), (rain, rain[::2]),
                             (old, new[:1]), (sorted(old)[:900], new), (old, [])):
        yield heading, reference, other


def census_pairs(folder):
    files = [os.path.join(folder, name) for name in ("adult-train.csv", "adult-test.csv")]
    (heading, train), (_, test) = map(read, files)
    for reference, new in ((train, test), (test, train), (train, train[::7]),
                           (train[:2000], train[2000:3000]), (train, test[:1]),
                           (test, train[100:130]), (train[:500], []), (train[5000:], test[::50]),
                           (sorted(train)[:9000], sorted(test)[9000:]),
                           ([row for row in train if row[9] == "Female"], test)):
        yield heading, reference, new


def main():
    program, weather, *census = sys.argv[1:]
    mpmath.mp.dps = 30
    pairs = list(weather_pairs(weather))
    if census and census[0]:
        pairs += census_pairs(census[0])
    else:
        print("ACCREDIT_TEST_DATA names no folder, so the census files were not compared")
    failures = 0
    with tempfile.TemporaryDirectory() as folder:
        for number, (heading, reference, new) in enumerate(pairs):
            for name, got, wanted in differences(program, heading, reference, new, folder):
                print(f"pair {number}, {name}: got {got}, expected {wanted}")
                failures += 1
    print(f"{len(pairs)} pairs, {failures} differences")
    return 1 if failures else 0


if __name__ == "__main__":
    sys.exit(main())
