"""accuracy.py VALUES PAGE: writes the accuracy tables into a Markdown page.

VALUES is what distfun_values wrote. The error of an answer is its distance from the exact value in
units in the last place of the double nearest to that value.
"""

import math
import multiprocessing
import sys

from mpmath import mp

import reference
import tables

LIBRARIES = ["Accredit", "Boost", "GSL", "R"]
MISSING = -sys.float_info.max


def read(path):
    """(function, region, arguments, {library: answer}) of every line."""
    calls = []
    with open(path, encoding="utf-8") as file:
        for line in file:
            function, region, *rest = line.rstrip("\n").split("\t")
            arguments = [float.fromhex(word) for word in rest[:3]]
            answers = {n: float.fromhex(v) for n, v in zip(rest[3::2], rest[4::2])}
            calls.append((function, region, arguments, answers))
    return calls


def good(answer):
    return math.isfinite(answer) and answer != MISSING


def errors(call):
    """{library: (error in units in the last place, relative error)}, infinite for no answer; None
    without a reference."""
    function, _, arguments, answers = call
    try:
        exact = reference.reference(function, arguments, [a for a in answers.values() if good(a)])
    except reference.NotFound:
        return None
    with mp.workprec(2000):
        unit = math.ulp(float(exact))
        size = abs(float(exact))
        result = {}
        for library, answer in answers.items():
            distance = float(abs(mp.mpf(answer) - exact)) if good(answer) else math.inf
            result[library] = (distance / unit, distance / size if size > 0 else math.inf)
        return result


def cell(results):
    """Median and maximum of the answers there are, and how many are not there."""
    there = sorted(r for r in results if r[0] < math.inf)
    none = len(results) - len(there)
    if not there:
        return "no answer"
    words = [in_words(there[len(there) // 2]), in_words(there[-1])]
    return " / ".join(words) + (f" ({none} without answer)" if none else "")


def in_words(result):
    ulp, relative = result
    return f"{ulp:.1f}" if ulp < 99.95 else f"{ulp:.0f}" if ulp < 1e5 else f"**{relative:.0e}**"


def counts(results):
    """For whole-numbered answers: how many are exact, and the largest distance."""
    there = [r[0] for r in results if r[0] < math.inf]
    return f"{sum(r == 0 for r in there)} of {len(results)}"


def main():
    _, values, page = sys.argv
    calls = read(values)
    with multiprocessing.Pool() as pool:
        results = pool.map(errors, calls, chunksize=4)
    functions = {}
    for (function, region, _, answers), result in zip(calls, results):
        columns = functions.setdefault(function, {}).setdefault(region, {})
        columns["unknown"] = columns.get("unknown", 0) + (result is None)
        for library in answers:
            columns.setdefault(library, []).extend([] if result is None else [result[library]])
    for function, regions in functions.items():
        show = counts if function == "IdfBin" else cell
        libraries = [n for n in LIBRARIES if any(n in columns for columns in regions.values())]
        rows = []
        for region, columns in regions.items():
            unknown = columns["unknown"]
            name = region + (f" ({unknown} without reference)" if unknown else "")
            rows.append([name.replace("|", "\\|")] + [show(columns[n]) for n in libraries])
        tables.put(page, f"accuracy of {function}", tables.markdown(["Region"] + libraries, rows))


if __name__ == "__main__":
    main()
