"""The distribution functions at high precision, by methods of their own.

The arguments are exact doubles, and nothing of the library is used: the incomplete gamma and beta
functions are series of positive terms, which cannot cancel, or integrals of the density where the
series would be too long. Every value is computed at growing precision until two of them agree.
"""

from mpmath import mp, mpf

AGREEMENT = mpf(2) ** -80
LONGEST_SERIES = 20_000


class NotFound(Exception):
    """No reference value that two precisions agree on."""


def stable(compute):
    """compute() at growing precision until two successive values agree to 80 bits."""
    last = None
    for precision in (150, 240, 400, 700, 1200, 2000):
        with mp.workprec(precision):
            value = compute()
        # A 0 may be what cancellation has left at two precisions.
        if last is not None and value != 0 and abs(value - last) <= AGREEMENT * abs(value):
            return value
        last = value
    if last == 0:
        return last
    raise NotFound


def sum_series(ratio):
    """1 + ratio(0) + ratio(0) ratio(1) + ... for ratios that end below 1."""
    term = total = mpf(1)
    small = mp.eps / 2**20
    n = 0
    while term > total * small:
        term *= ratio(n)
        total += term
        n += 1
    return total


def integral(log_density, x, end):
    """Of the density from x to an end some standard deviations off, in units of the density at x:
    the quadrature aims at an absolute error, so that the integrand must be near 1."""
    at_x = log_density(x)
    points = [x + (end - x) * i / 10 for i in range(11)]
    area = mp.quad(lambda t: mp.exp(log_density(t) - at_x), points, method="gauss-legendre")
    return mp.exp(at_x) * abs(area)


def gamma_lower(a, x):
    """P(a, x)"""
    if x <= 0:
        return mpf(0)
    if 15 * mp.sqrt(max(a, x)) > LONGEST_SERIES:
        log_gamma = mp.loggamma(a)
        width = 20 * mp.sqrt(a)

        def log_density(t):
            return (a - 1) * mp.log(t) - t - log_gamma

        if x < a:
            return integral(log_density, x, max(x - width, 0))
        return 1 - integral(log_density, x, x + width)
    factor = mp.exp(a * mp.log(x) - x - mp.loggamma(a + 1))
    return factor * sum_series(lambda n: x / (a + 1 + n))


def beta_lower(x, y, a, b):
    """I_x(a, b) where y = 1 - x"""
    if x <= 0:
        return mpf(0)
    if y <= 0:
        return mpf(1)
    log_beta = mp.loggamma(a) + mp.loggamma(b) - mp.loggamma(a + b)

    def length(x, b):
        return min(110 / -mp.log(x), 1e9) + 3 * b * x

    def series(x, y, a, b):
        factor = mp.exp(a * mp.log(x) + b * mp.log(y) - log_beta) / a
        return factor * sum_series(lambda n: (a + b + n) / (a + 1 + n) * x)

    if min(length(x, b), length(y, a)) > LONGEST_SERIES:
        mode = (a - 1) / (a + b - 2)
        width = 20 * mp.sqrt(mode * (1 - mode) / (a + b))

        def log_density(t):
            return (a - 1) * mp.log(t) + (b - 1) * mp.log(1 - t) - log_beta

        if x < mode:
            return integral(log_density, x, max(x - width, 0))
        return 1 - integral(log_density, x, min(x + width, 1))
    if length(x, b) < length(y, a):
        return series(x, y, a, b)
    return 1 - series(y, x, b, a)


def normal_cdf(z):
    return mp.erfc(-z / mp.sqrt(2)) / 2


def f_cdf(x, df1, df2):
    t = df2 + df1 * x
    return beta_lower(df1 * x / t, df2 / t, df1 / 2, df2 / 2)


def t_tail(x, df):
    """P(T > x) for x > 0"""
    t = df + x * x
    return beta_lower(df / t, x * x / t, df / 2, mpf(1) / 2) / 2


def t_cdf(x, df):
    return t_tail(-x, df) if x < 0 else 1 - t_tail(x, df)


def binomial_cdf(k, n, p):
    return beta_lower(1 - p, p, n - k, k + 1) if k < n else mpf(1)


def binomial_pdf(k, n, p):
    log = mp.loggamma(n + 1) - mp.loggamma(k + 1) - mp.loggamma(n - k + 1)
    return mp.exp(log + k * mp.log(p) + (n - k) * mp.log(1 - p))


def root(tail, density, target, sign, guesses):
    """The x > 0 with tail(x) = target, by Newton's method in the logarithms of both. `sign` is 1
    for a tail that rises with x, -1 for one that falls."""

    def miss(x):
        value = tail(x)
        return abs(mp.log(value / target)) if value > 0 else mp.inf

    u = mp.log(min(guesses, key=miss) if len(guesses) > 1 else guesses[0])
    for _ in range(100):
        x = mp.exp(u)
        value = tail(x)
        step = sign * mp.log(target / value) * value / (x * density(x))
        u += max(min(step, 2), -2)
        if abs(step) < mp.eps ** mpf(0.6):
            return mp.exp(u)
    raise NotFound


def quantile(cdf, density, p, guesses):
    """Of a positive variable."""
    if p <= 0.5:
        return root(cdf, density, p, 1, guesses)
    return root(lambda x: 1 - cdf(x), density, 1 - p, -1, guesses)


def quantile_by_symmetry(upper_tail, density, p, guesses):
    """Of a variable that is symmetric about 0."""
    if p == 0.5:
        return mpf(0)
    size = root(upper_tail, density, min(p, 1 - p), -1, [abs(g) for g in guesses])
    return size if p > 0.5 else -size


def normal_quantile(p, guesses):
    return quantile_by_symmetry(lambda x: normal_cdf(-x), mp.npdf, p, guesses)


def chi_quantile(p, df, guesses):
    a = df / 2
    scale = mp.loggamma(a) + mp.log(2)
    return quantile(
        lambda x: gamma_lower(a, x / 2),
        lambda x: mp.exp((a - 1) * mp.log(x / 2) - x / 2 - scale),
        p,
        guesses,
    )


def f_quantile(p, df1, df2, guesses):
    a, b = df1 / 2, df2 / 2
    scale = mp.loggamma(a) + mp.loggamma(b) - mp.loggamma(a + b)

    def density(x):
        t = df2 + df1 * x
        return mp.exp(a * mp.log(df1 * x / t) + b * mp.log(df2 / t) - scale) / x

    return quantile(lambda x: f_cdf(x, df1, df2), density, p, guesses)


def t_quantile(p, df, guesses):
    scale = mp.loggamma(df / 2) + mp.log(df * mp.pi) / 2 - mp.loggamma((df + 1) / 2)
    return quantile_by_symmetry(
        lambda x: t_tail(x, df),
        lambda x: mp.exp(-(df + 1) / 2 * mp.log(1 + x * x / df) - scale),
        p,
        guesses,
    )


def binomial_quantile(prob, n, p, guesses):
    """The largest m with P(X <= m) <= prob, -1 if there is none."""

    def cdf(k):
        return stable(lambda: binomial_cdf(mpf(k), n, p)) if k >= 0 else mpf(0)

    m = int(guesses[0])
    while cdf(m) > prob:
        m -= 1
    while m + 1 <= n and cdf(m + 1) <= prob:
        m += 1
    return mpf(m)


CDF = {
    "CdfStdNorm": normal_cdf,
    "CdfNorm": lambda x, mean, sd: normal_cdf((x - mean) / sd),
    "CdfChi": lambda x, df: gamma_lower(df / 2, x / 2),
    "CdfF": f_cdf,
    "CdfT": t_cdf,
    "CdfBin": binomial_cdf,
    "PdfBin": binomial_pdf,
    "teskdnlgam": mp.loggamma,
}
IDF = {
    "IdfStdNorm": normal_quantile,
    "IdfChi": chi_quantile,
    "IdfF": f_quantile,
    "IdfT": t_quantile,
}
ARGUMENTS = {"CdfStdNorm": 1, "IdfStdNorm": 1, "teskdnlgam": 1, "CdfChi": 2, "IdfChi": 2, "CdfT": 2}
ARGUMENTS["IdfT"] = 2


def reference(function, arguments, answers):
    """The value of the function. The answers of the libraries only start the search for a root;
    what is found does not depend on them."""
    x = [mpf(argument) for argument in arguments[: ARGUMENTS.get(function, 3)]]
    if function in CDF:
        return stable(lambda: CDF[function](*x))
    if function == "IdfNorm":
        p, mean, sd = x
        guesses = [(g - mean) / sd for g in answers]
        z = invert("IdfStdNorm", [p], guesses)
        with mp.workprec(300):
            return mean + sd * z
    if function == "IdfBin":
        return binomial_quantile(*x, guesses=[g for g in answers if abs(g) < 1e300])
    return invert(function, x, answers)


def invert(function, x, answers):
    guesses = [mpf(g) for g in answers if g != 0 and 1e-300 < abs(g) < 1e300] or [mpf(1)]
    if function in ("IdfChi", "IdfF"):
        guesses = [g for g in guesses if g > 0] or [mpf(1)]
    found = []

    def at_precision():
        value = IDF[function](*x, guesses=found[-1:] or guesses)
        found.append(value)
        return value

    return stable(at_precision)
