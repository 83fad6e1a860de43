"""Writes moments.csv: mean and standard deviation of truncated laws, from arithmetic with 150 to 400 digits.

    /usr/bin/python3 tests/data/moments.py > tests/data/moments.csv

type,parameter 1..4,lower limit,upper limit,mean,standard deviation     all exactly as printed; empty: none
A histogram's first parameter is its bins, lower edge:upper edge:count each, with blanks between.
The moments of a kept interval are differences of incomplete integrals of orders 0, 1 and 2, whose cancellation those
digits outlast; reversed limits keep two intervals.
"""
import random
from mpmath import beta, betainc, erfc, exp, gamma, gammainc, inf, isinf, log, mp, mpf, pi, sqrt, workdps

mp.dps = 400
random.seed(3)


def phi(z):
    return mpf(0) if isinf(z) else exp(-z * z / 2) / sqrt(2 * pi)


def normal_probability(a, b):
    tail = lambda z: mpf(0) if z == inf else mpf(1) if z == -inf else erfc(z / sqrt(mpf(2))) / 2
    return tail(a) - tail(b) if a > 0 else tail(-b) - tail(-a)


def normal(lower, upper, mean, sd):
    a, b = (lower - mean) / sd, (upper - mean) / sd
    mass = normal_probability(a, b)
    times = lambda z: mpf(0) if isinf(z) else z * phi(z)
    first, second = phi(a) - phi(b), mass + times(a) - times(b)
    return mass, mean * mass + sd * first, mean**2 * mass + 2 * mean * sd * first + sd**2 * second


def shifted(raw, minimum):
    m0, m1, m2 = raw
    return m0, minimum * m0 + m1, minimum**2 * m0 + 2 * minimum * m1 + m2


def uniform(lower, upper, a, b):
    return tuple((upper ** (j + 1) - lower ** (j + 1)) / (j + 1) / (b - a) for j in range(3))


def triangular(lower, upper, a, c, b):
    def side(lo, hi, end, peak):  # density proportional to the distance from `end`
        if not lo < hi:
            return (mpf(0),) * 3
        power = lambda x, j: x ** (j + 2) / (j + 2) - end * x ** (j + 1) / (j + 1)
        slope = 2 / ((b - a) * (peak - end))
        return tuple(slope * (power(hi, j) - power(lo, j)) for j in range(3))

    left = side(lower, min(upper, c), a, c)
    right = side(max(lower, c), upper, b, c)
    return tuple(l + r for l, r in zip(left, right))


def exponential(lower, upper, rate, m):
    return weibull(lower, upper, mpf(1), 1 / rate, m)


def weibull(lower, upper, k, s, m):
    end = lambda x: inf if isinf(x) else ((x - m) / s) ** k
    return shifted(tuple(s**j * gammainc(1 + j / k, end(lower), end(upper)) for j in range(3)), m)


def lognormal(lower, upper, mu, s, m):
    z = lambda x: inf if isinf(x) else -inf if x == m else (log(x - m) - mu) / s
    part = lambda j: exp(j * mu + (j * s) ** 2 / 2) * normal_probability(z(lower) - j * s, z(upper) - j * s)
    return shifted(tuple(part(j) for j in range(3)), m)


def gamma_law(lower, upper, a, s, m):
    end = lambda x: inf if isinf(x) else (x - m) / s
    return shifted(tuple(s**j * gammainc(a + j, end(lower), end(upper)) / gamma(a) for j in range(3)), m)


def beta_law(lower, upper, a, b, lo, hi):
    w = hi - lo
    with workdps(150):
        raw = tuple(w**j * betainc(a + j, b, (lower - lo) / w, (upper - lo) / w) / beta(a, b) for j in range(3))
    return shifted(raw, lo)


def histogram(lower, upper, bins):
    bins = [tuple(mpf(x) for x in b.split(":")) for b in bins.split()]
    total = sum(count for _, _, count in bins)
    raw = [mpf(0)] * 3
    for lo, hi, count in bins:
        a, b = max(lo, lower), min(hi, upper)
        if a < b:
            raw = [r + count / total * (b ** (j + 1) - a ** (j + 1)) / (j + 1) / (hi - lo) for j, r in enumerate(raw)]
    return tuple(raw)


laws = {"Normal": normal, "Uniform": uniform, "Triangular": triangular, "Exponential": exponential, "Weibull": weibull,
        "Lognormal": lognormal, "Gamma": gamma_law, "Beta": beta_law, "Histogram": histogram}


def support(name, p):
    if name in ("Normal", "Histogram"):
        return -inf, inf
    if name in ("Uniform", "Triangular"):
        return p[0], p[-1]
    if name == "Beta":
        return p[2], p[3]
    return p[-1], inf


def moments(name, p, ltl, utl):
    p = [x if isinstance(x, str) else mpf(x) for x in p]
    lowest, highest = support(name, p)
    lower = lowest if ltl is None else max(lowest, mpf(ltl))
    upper = highest if utl is None else min(highest, mpf(utl))
    reverse = ltl is not None and utl is not None and ltl > utl
    intervals = [(lowest, upper), (lower, highest)] if reverse else [(lower, upper)]
    parts = [laws[name](a, b, *p) for a, b in intervals if a < b]
    m0, m1, m2 = (sum(part[j] for part in parts) for j in range(3))
    mean = m1 / m0
    return m0, mean, sqrt(m2 / m0 - mean**2)


def magnitude(low, high):
    return 10.0 ** random.uniform(low, high)


def random_bins():
    edges = sorted(random.uniform(-5, 5) for _ in range(12))
    return " ".join(f"{a!r}:{b!r}:{random.randint(1, 30)}" for a, b in zip(edges, edges[1:]) if random.random() < 0.8)


def parameters(name):
    m = random.choice([0.0, random.uniform(-10, 10)])
    w = magnitude(-2, 3)
    return {
        "Normal": lambda: (m, w),
        "Uniform": lambda: (m, m + w),
        "Triangular": lambda: (m, m + w * random.random(), m + w),
        "Exponential": lambda: (1 / w, m),
        "Weibull": lambda: (magnitude(-0.5, 1.5), w, m),
        "Lognormal": lambda: (random.uniform(-4, 4), magnitude(-2, 0.4), m),
        "Gamma": lambda: (magnitude(-1, 2.5), w, m),
        "Beta": lambda: (magnitude(-1, 1.5), magnitude(-1, 1.5), m, m + w),
        "Histogram": lambda: (random_bins(),),
    }[name]()


def write(name, p, ltl=None, utl=None):
    try:
        mass, mean, sd = moments(name, p, ltl, utl)
    except ZeroDivisionError:
        return  # the limits keep a gap of a histogram
    assert mass > mpf(10) ** -306, (name, p, ltl, utl)
    fields = [*p, *[None] * (4 - len(p)), ltl, utl, float(mean), float(sd)]
    print(",".join([name, *("" if f is None else f if isinstance(f, str) else repr(f) for f in fields)]))


for name in laws:
    for kind in ["none", "lower", "upper", "both", "reversed", "narrow"] * 4:
        p = parameters(name)
        lowest, highest = support(name, [x if isinstance(x, str) else mpf(x) for x in p])
        _, mean, sd = moments(name, p, None, None)

        def limit():
            x = float(mean + sd * random.uniform(-3, 5))
            if lowest < x < highest:
                return x
            share = random.random()
            return float((1 - share) * max(lowest, mean - sd) + share * min(highest, mean + sd))

        a, b = sorted([limit(), limit()])
        if kind == "narrow":
            b = float(a + sd * magnitude(-9, -2))
            if b >= highest:
                a, b = float(a - sd * mpf(10) ** -3), a
        limits = {"none": (), "lower": (a,), "upper": (None, b), "both": (a, b), "reversed": (b, a), "narrow": (a, b)}
        write(name, p, *limits[kind])

# Far tails, ends of supports, extreme shapes.
for limits in [(31.0,), (None, -28.0), (37.0,), (30.0, 30.5), (30.0, -31.0), (9.0, 9.001), (1e-9, 2e-9)]:
    write("Normal", (1.0, 1.0), *((None if x is None else x + 1) for x in limits))
write("Normal", (-594831.69738075375, 9.8e-5), -594831.69720166305, -594831.69954137225)
write("Uniform", (0.0, 1.0), 0.5, 0.5000000000000002)
write("Uniform", (0.0, 1.0), 1e-300, 2e-300)
write("Uniform", (-1.7e308, 1.7e308))
write("Triangular", (0.0, 1.0, 1.0), None, 1e-100)
write("Triangular", (0.0, 1.7e308, 1.7e308))
write("Triangular", (0.0, 0.0, 1.0), 0.999999999)
write("Triangular", (-1.0, 0.0, 1.0), 0.9, -0.95)
write("Exponential", (2.0, 1.0), 300.0)
write("Exponential", (2.0, 0.0), 300.0, 300.0000001)
write("Exponential", (2.0, 0.0), 300.0, 1e-40)
write("Exponential", (1e-170, 0.0), None, 100.0)
write("Weibull", (0.05, 1.0, 0.0))
write("Weibull", (2000.0, 1.0, 0.0))
write("Weibull", (1e7, 5.0, 1.0), 5.9999999)
write("Weibull", (2.0, 1.0, 0.0), 25.0)
write("Weibull", (0.5, 1.0, 0.0), None, 1e-100)
write("Weibull", (0.5, 1.0, 0.0), 4e5, 1e-100)
write("Weibull", (3.0, 1.0, 0.0), 1.0, 1.0000000001)
write("Weibull", (2.35, 1.0, 0.0), None, 5e-75)
write("Lognormal", (0.0, 15.0, 0.0))
write("Lognormal", (0.0, 5.0, 0.0), 1e10)
write("Lognormal", (0.0, 1e-6, 0.0), 1.000001)
write("Lognormal", (-800.0, 20.0, 0.0), None, 1.0)
write("Lognormal", (0.0, 0.1, 0.0), 15.0)
write("Lognormal", (40.0, 18.2, 0.0), None, 20.0)
write("Gamma", (2.0, 1.0, 0.0), 480.0)
write("Gamma", (2.0, 1.0, 0.0), 600.0, 600.001)
write("Gamma", (0.01, 1.0, 0.0))
write("Gamma", (0.01, 1.0, 0.0), None, 1e-50)
write("Gamma", (1e6, 1.0, 0.0), 1.01e6)
write("Gamma", (1e6, 1.0, 0.0), 1.001e6, 0.999e6)
write("Gamma", (50.0, 1.0, 3.0), None, 3.001)
write("Gamma", (5.0, 1.0, 0.0), None, 2e-46)
write("Gamma", (1.4e-36, 3e300, 0.0), 1e282, 0.02)
write("Beta", (2.0, 3.0, 0.0, 1.0), 0.9999999)
write("Beta", (0.01, 0.02, 0.0, 1.0))
write("Beta", (0.01, 0.02, 0.0, 1.0), 0.3, 1e-60)
write("Beta", (400.0, 800.0, 0.0, 1.0), 0.5)
write("Beta", (50.0, 2.0, -1.0, 1.0), None, -0.999)
write("Beta", (3.0, 0.5, 0.0, 1.0), 0.999999999999)
write("Beta", (2.5, 6e-7, 0.0, 1.0), 0.2)
write("Beta", (1.0, 2e-7, 0.0, 1.0), 0.2)
write("Beta", (1.0, 1e-15, 97.0, 194.0))
write("Beta", (4e12, 8.0, -20.0, 0.5))
for limits in [(None, 0.5), (0.25, 0.5), (0.5, 0.25), (0.7,), (0.9, 0.1)]:
    write("Histogram", ("0.0:0.3:1 0.4:1.0:2 1.0:1e10:1e-5",), *limits)
write("Histogram", ("-1000000000000.0:-999999999997.0:1e-300 0.0:0.1:1 0.1:0.3:2",))
write("Histogram", ("4503599627370496:4503599627370497:8 4503599627370497:4503599627370498:1 "
                    "4503599627370498:4503599627370499:8",))
