"""What a summary of a table must say, by exact arithmetic, and how near the program must come to it."""

import bisect
import fractions
import math

UNITS = 1 << 1074  # every finite double is a whole number of 2^-1074


def in_units(value):
    numerator, denominator = value.as_integer_ratio()
    return numerator * (UNITS // denominator)


def root(value):
    """The square root of a fraction, to 60 digits."""
    shift = 400 + 2 * max(0, value.denominator.bit_length() - value.numerator.bit_length())
    return fractions.Fraction(math.isqrt((value.numerator << 2 * shift) // value.denominator), 1 << shift)


class Numbers:
    """The numbers of a column. `mean` and `deviation` are fractions; None where there is none."""

    def __init__(self, values):
        self.values = sorted(values)
        n = len(values)
        units = [in_units(value) for value in values]
        total = sum(units)
        self.mean = fractions.Fraction(total, n * UNITS) if n else None
        self.deviation = None
        if n > 1:
            # The sum of squared differences is whole in units of n * 2^-2148.
            squares = n * sum(each * each for each in units) - total * total
            self.deviation = root(fractions.Fraction(squares, n * (n - 1) * UNITS * UNITS))

    def bins(self, cuts):
        up_to = [0, *(bisect.bisect_right(self.values, cut) for cut in cuts), len(self.values)]
        return [after - before for before, after in zip(up_to, up_to[1:])]


def rounding(value):
    """Half of a unit in the last place of a double near a fraction, and as much again for the last sum."""
    return fractions.Fraction(math.ulp(float(value)))


def require(holds, *what):
    if not holds:
        raise AssertionError(": ".join(map(str, what))[:3000])


def require_moments(exact, mean, deviation, *what):
    """Of a stored reference."""
    if not exact.values:
        require(mean is None and deviation is None, *what, mean, deviation)
        return
    least = exact.deviation / 10**12 if exact.deviation else 0
    require(abs(fractions.Fraction(mean) - exact.mean) <= max(rounding(exact.mean), least),
            *what, "mean", mean, float(exact.mean))
    if exact.deviation is None:
        require(deviation is None, *what, deviation)
    elif not exact.deviation:
        require(deviation == 0, *what, deviation)
    else:
        require(abs(fractions.Fraction(deviation) - exact.deviation) <= max(exact.deviation / 10**11,
                                                                            rounding(exact.deviation)),
                *what, "deviation", deviation, float(exact.deviation))


def require_sizes(exact, variable, *what):
    """Shift and ratio that a check reports."""
    shift, ratio = variable["mean_shift"], variable["deviation_ratio"]
    mean, one = variable["reference_mean"], variable["reference_standard_deviation"]
    tolerance = fractions.Fraction(1, 10**11)
    require((shift is None) == (not one or not exact.values), *what, "shift", shift)
    require((ratio is None) == (not one or exact.deviation is None), *what, "ratio", ratio)
    if shift is not None:
        one = fractions.Fraction(one)
        right = (exact.mean - fractions.Fraction(mean)) / one
        require(abs(fractions.Fraction(shift) - right) <= max(tolerance, tolerance * abs(right),
                                                              rounding(exact.mean) / one),
                *what, "shift", shift, float(right))
    if ratio is not None:
        right = exact.deviation / one
        require(abs(fractions.Fraction(ratio) - right) <= max(tolerance, tolerance * right),
                *what, "ratio", ratio, float(right))


NEAR = {"new_mean", "new_standard_deviation", "mean_shift", "deviation_ratio"}
# A table has no lines, and which text is shown of those that are no numbers is up to the road.
OF_FILES = {"first_line", "first_text"}


def without_order(report):
    """The report without what is near, and with categories that the reference lacks in one order."""
    if isinstance(report, list):
        return [without_order(each) for each in report]
    if not isinstance(report, dict):
        return report
    found = {}
    for name, value in report.items():
        if name in NEAR or name in OF_FILES:
            value = value is None if name in NEAR else None
        elif name == "categories":
            known = [each for each in value if each["reference_count"]]
            value = known + sorted((each for each in value if not each["reference_count"]),
                                   key=lambda each: str(each["value"]))
        elif name == "unknown_categories" and value:
            # Equal ones may come in any order, and the last of those shown may be any of its equals.
            last = value[-1]["count"]
            value = [sorted(str(each["value"]) for each in value if each["count"] > last),
                     [each["count"] for each in value]]
        found[name] = without_order(value)
    return found


def require_same_report(wanted, got, *what):
    """Equal to the last bit but for what is near; a path names the first difference."""
    difference(without_order(wanted), without_order(got), what)


def difference(wanted, got, what):
    if isinstance(wanted, dict) and isinstance(got, dict):
        require(list(wanted) == list(got), *what, wanted, got)
        for name, value in wanted.items():
            difference(value, got[name], (*what, name))
    elif isinstance(wanted, list) and isinstance(got, list):
        require(len(wanted) == len(got), *what, wanted, got)
        for number, (left, right) in enumerate(zip(wanted, got)):
            difference(left, right, (*what, number))
    else:
        require(repr(wanted) == repr(got), *what, wanted, got)
