"""The reference values against themselves: series against quadrature, and against mpmath's own."""

import random

from mpmath import mp, mpf

import reference


def by_series_and_quadrature(compute):
    values = []
    for reference.LONGEST_SERIES in (mp.inf, 0):
        values.append(reference.stable(compute))
    reference.LONGEST_SERIES = 20_000
    return values


def main():
    random.seed(1)
    pairs = []
    for _ in range(20):
        a, b = mpf(10) ** random.uniform(2.5, 4), mpf(10) ** random.uniform(2.5, 4)
        z = random.uniform(-12, 12)
        mean = a / (a + b)
        x = mean + z * mp.sqrt(mean * (1 - mean) / (a + b))
        pairs.append(by_series_and_quadrature(lambda: reference.beta_lower(x, 1 - x, a, b)))
        x = a + z * mp.sqrt(a)
        pairs.append(by_series_and_quadrature(lambda: reference.gamma_lower(a, x)))

        a, b, x = random.uniform(0.1, 50), random.uniform(0.1, 50), mpf(random.random())
        with mp.workprec(250):
            beta = mp.betainc(a, b, 0, x, regularized=True)
            gamma = mp.gammainc(a, 0, 50 * x, regularized=True)
        a, b = mpf(a), mpf(b)
        pairs.append((reference.stable(lambda: reference.beta_lower(x, 1 - x, a, b)), beta))
        pairs.append((reference.stable(lambda: reference.gamma_lower(a, 50 * x)), gamma))
    worst = max(abs(one - other) / abs(other) for one, other in pairs)
    if worst > mpf(2) ** -80:
        raise SystemExit(f"The references contradict one another: {mp.nstr(worst, 3)}")


if __name__ == "__main__":
    main()
