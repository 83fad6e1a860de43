"""Writes closed_forms.csv: the formulas of five families at random arguments, 50 digits rounded to double.

    /usr/bin/python3 tests/data/closed_forms.py > tests/data/closed_forms.csv

routine,arguments...,value,allowed   arguments exactly as printed; `upper` is 0 or 1

`allowed` is the error that rounding explains: four units of 2^-53 of the value and of its change with each argument,
for the lognormal the 4e-15 of the normal integral or quantile, and for the exponential and the Weibull what one unit
of 1 makes of 1 - exp(..) and of ln(1 - p).
"""
import random
from mpmath import mp, mpf, diff, erfc, erfinv, exp, findroot, log, sqrt

mp.dps = 50
random.seed(2)
unit = mpf(2) ** -53
two_pi = mpf(6.28318530717958)


def tail(z):
    return erfc(z / sqrt(mpf(2))) / 2


def deviate(p, upper):
    if 0.01 < p < 0.99:
        z = sqrt(mpf(2)) * erfinv(2 * p - 1)
    else:
        small = min(p, 1 - p)
        z = findroot(lambda t: log(tail(t)) - log(small), sqrt(-2 * log(small)))
        z = -z if p < 0.5 else z
    return -z if upper else z


def triangular_cdf(x, a, c, b):
    return (x - a) ** 2 / ((c - a) * (b - a)) if x <= c else 1 - (b - x) ** 2 / ((b - a) * (b - c))


def triangular_inv(p, a, c, b):
    return a + sqrt((b - a) * p * (c - a)) if p <= (c - a) / (b - a) else b - sqrt((b - a) * (1 - p) * (b - c))


def triangular_pdf(x, a, c, b):
    return 2 * (b - x) / ((b - a) * (b - c)) if x >= c else 2 * (x - a) / ((c - a) * (b - a))


def weibull_pdf(x, k, s, m):
    z = (x - m) / s
    return z ** (k - 1) * (k / s) * exp(-(z**k))


def lognormal_pdf(x, mu, s, m):
    return exp((log(x - m) - mu) ** 2 / (-2 * s**2)) / ((x - m) * s * sqrt(two_pi))


def lognormal_cdf(x, mu, s, m, upper):
    z = (log(x - m) - mu) / s
    return tail(z) if upper else tail(-z)


def normal_part_of_inverse(value, p, mu, s, m, upper):  # change of the value when the deviate changes relatively
    return abs((value - m) * deviate(p, upper) * s)


routines = {
    "UniformPDF": lambda x, a, b: 1 / (b - a),
    "UniformCDF": lambda x, a, b: (x - a) / (b - a),
    "UniformINV": lambda p, a, b: (b - a) * p + a,
    "TriangularPDF": triangular_pdf,
    "TriangularCDF": triangular_cdf,
    "TriangularINV": triangular_inv,
    "ExponentialPDF": lambda x, l, m: l * exp(-l * (x - m)),
    "ExponentialCDF": lambda x, l, m: 1 - exp(-l * (x - m)),
    "ExponentialINV": lambda p, l, m: log(1 - p) * (-1 / l) + m,
    "WeibullPDF": weibull_pdf,
    "WeibullCDF": lambda x, k, s, m: 1 - exp(-(((x - m) / s) ** k)),
    "WeibullINV": lambda p, k, s, m: (-log(1 - p)) ** (1 / k) * s + m,
    "LognormalPDF": lognormal_pdf,
    "LognormalCDF": lognormal_cdf,
    "LognormalINV": lambda p, mu, s, m, upper: exp(deviate(p, upper) * s + mu) + m,
}


def magnitude(low, high):
    return 10.0 ** random.uniform(low, high)


def chance():
    return random.choice([random.random(), magnitude(-15, -1), 1 - magnitude(-15, -1)])


def shift():
    return random.choice([0.0, random.uniform(-10, 10), random.choice([-1, 1]) * magnitude(-3, 6)])


def arguments(name):
    if name.startswith("Uniform") or name.startswith("Triangular"):
        a = shift()
        b = a + magnitude(-3, 6)
        c = a + random.random() * (b - a)
        bounds = (a, b) if name.startswith("U") else (a, c, b)
        point = a + chance() * (b - a)
        return (chance() if name.endswith("INV") else min(max(point, a), b), *bounds)
    m = shift()
    if name.startswith("Exponential"):
        rate = magnitude(-4, 4)
        return (chance() if name.endswith("INV") else m + magnitude(-12, 2) / rate, rate, m)
    if name.startswith("Weibull"):
        shape, scale = magnitude(-0.7, 1.3), magnitude(-4, 4)
        z = magnitude(-12, 2) ** (1 / shape)
        return (chance() if name.endswith("INV") else m + z * scale, shape, scale, m)
    mu, s = random.uniform(-10, 10), magnitude(-3, 0.7)
    upper = () if name.endswith("PDF") else (random.randint(0, 1),)
    x = float(m + exp(mu + s * random.uniform(-8, 8)))
    return (chance() if name.endswith("INV") else x, mu, s, m, *upper)


def changes(f, args):  # |a df/da| of every argument
    for i, a in enumerate(args):
        if isinstance(a, mpf):
            yield abs(a * diff(lambda t: f(*args[:i], t, *args[i + 1:]), a, h=mpf(10) ** -25 * max(abs(a), mpf(10) ** -20)))


for name, routine in routines.items():
    count = 0
    while count < 120:
        args = arguments(name)
        first = args[0]
        if name.endswith("INV"):
            if not 0 < first < 1:
                continue
        elif name.startswith(("U", "T")):
            if not args[1] < first < args[-1]:
                continue
        elif not first > args[2 if name.startswith("E") else 3]:
            continue
        exact = tuple(mpf(a) if isinstance(a, float) else a for a in args)
        value = routine(*exact)
        if not mpf(10) ** -290 < abs(value) < mpf(10) ** 290:
            continue
        allowed = 4 * unit * (abs(value) + sum(changes(routine, exact)))
        if name in ("ExponentialCDF", "WeibullCDF"):
            allowed += unit
        if name in ("ExponentialINV", "WeibullINV"):
            p = exact[0]
            allowed += unit / p * next(changes(routine, exact))
        if name == "LognormalCDF":
            allowed += mpf("4e-15") * abs(value)
        if name == "LognormalINV":
            allowed += mpf("4e-15") * normal_part_of_inverse(value, *exact)
        print(",".join([name, *(repr(a) for a in args), repr(float(value)), f"{float(allowed):.3g}"]))
        count += 1
