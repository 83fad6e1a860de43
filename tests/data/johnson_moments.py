"""Writes johnson_moments.csv: mean and standard deviation of truncated Johnson curves, with 60 digits.

    /usr/bin/python3 tests/data/johnson_moments.py > tests/data/johnson_moments.csv

curve,gamma,delta,lambda,xi,lower limit,upper limit,mean,standard deviation     all exactly as printed; empty: none
Every moment is an integral over the normal deviate, by Gauss-Legendre quadrature over short pieces.
"""
import random
from mpmath import asinh, cosh, exp, inf, log, mp, mpf, quad, sinh, sqrt

mp.dps = 60
random.seed(5)


def value(curve, z, g, d, l, x):
    u = (z - g) / d
    if curve == "SL":
        return x + l * exp((l * z - g) / d)
    return x + l * (sinh(u) if curve == "SU" else 1 / (1 + exp(-u)))


def deviate(curve, v, g, d, l, x):
    if curve == "SL":
        w = (v - x) * l
        return l * (g + d * log(w)) if w > 0 else -inf * l
    u = (v - x) / l
    if curve == "SU":
        return g + d * asinh(u)
    return -inf if u <= 0 else inf if u >= 1 else g + d * log(u / (1 - u))


def moments(curve, c, ltl, utl):
    c = [mpf(v) for v in c]
    z = lambda limit, none: none if limit is None else deviate(curve, mpf(limit), *c)
    a, b = z(ltl, -inf), z(utl, inf)
    reverse = ltl is not None and utl is not None and ltl > utl
    intervals = [(-inf, b), (a, inf)] if reverse else [(a, b)]
    g, d = c[0], c[1]
    tail = 8 / d + 16 if curve != "SB" else mpf(16)  # the square of exp(|z| / d) still fades
    sums = [mpf(0)] * 3
    near = min((max(mpf(0), lo) if lo > 0 else min(mpf(0), hi) for lo, hi in intervals), key=abs)
    centre = value(curve, near, *c)
    for lo, hi in intervals:
        start = max(lo, min(-tail, hi - tail)) if lo == -inf else lo
        end = min(hi, max(tail, lo + tail)) if hi == inf else hi
        if not start < end:
            continue
        pieces = max(1, int((end - start) / min(mpf(1), 2 * d)) + 1)
        points = [start + (end - start) * i / pieces for i in range(pieces + 1)]
        for j in range(3):
            f = lambda t: (value(curve, t, *c) - centre) ** j * exp((near - t) * (near + t) / 2)
            sums[j] += quad(f, points)
    mean = sums[1] / sums[0]
    return centre + mean, sqrt(sums[2] / sums[0] - mean**2)


def write(curve, c, ltl=None, utl=None):
    mean, sd = moments(curve, c, ltl, utl)
    fields = [*c, ltl, utl, float(mean), float(sd)]
    print(",".join([curve, *("" if f is None else repr(float(f)) for f in fields)]))


def constants(curve):
    g = random.uniform(-3, 3)
    d = 10.0 ** random.uniform(-0.1 if curve != "SB" else -0.9, 0.7)
    l = random.choice([1.0, -1.0]) if curve == "SL" else 10.0 ** random.uniform(-2, 3)
    return g, d, l, random.uniform(-10, 10)


for curve in ["SU", "SB", "SL"]:
    for kind in ["none", "lower", "upper", "both", "reversed", "narrow"] * 4:
        c = constants(curve)
        at = lambda z: float(value(curve, mpf(z), *c))
        a, b = sorted([at(random.uniform(-2.5, 2.5)), at(random.uniform(-2.5, 2.5))])
        if kind == "narrow":
            b = float(a + (b - a) * 10.0 ** random.uniform(-7, -2))
        limits = {"none": (), "lower": (a,), "upper": (None, b), "both": (a, b), "reversed": (b, a), "narrow": (a, b)}
        write(curve, c, *limits[kind])

# Far tails and curves close to a point or to two points.
for g, d, l, x in [(0.5, 1.5, 2.0, 1.0), (-2.0, 0.7, 0.1, 0.0), (4.0, 3.0, 10.0, 5.0)]:
    for curve in ["SU", "SB", "SL"]:
        c = (g, d, l if curve != "SL" else 1.0 if l > 1 else -1.0, x)
        at = lambda z: float(value(curve, mpf(z), *c))
        write(curve, c, at(-20))
        if curve != "SB":
            write(curve, c, at(9))
            write(curve, c, at(30), at(31))
            write(curve, c, at(9), at(-9))
        write(curve, c, None, at(-8))
        write(curve, c, at(-25), at(-24))
write("SB", (0.02, 0.05, 1.0, 0.0))
write("SB", (0.3, 0.02, 3.0, -1.0), 0.5, -0.5)
write("SB", (15.0, 2.0, 1.0, 0.0))
write("SB", (-15.0, 2.0, 1.0, 0.0))
write("SU", (-6.0, 0.9, 1.0, 0.0))
write("SU", (0.0, 40.0, 1.0, 0.0), 0.05)
# Limits that are the upper end as far as doubles go, and cut a good part off.
write("SB", (-1.0577996616904923, 0.01277756397871219, 0.091962541279084375, -4.2936713246452998),
      -4.2936713013410142, -4.2017087833662154)
write("SB", (-0.58842786225090782, 0.02904603791864635, 0.44189917131979095, 1.2270435335836518),
      1.227043533595632, 1.6689427049034427)
