#!/usr/bin/env python3
"""Writes gratio.csv and gaminv.csv: incomplete gamma ratios and their inverse, from arbitrary precision.

gratio.csv: a, x, P, Q, conditioning of P, conditioning of Q
gaminv.csv: a, p, q, x, conditioning of x
The conditioning is |x f'(x)/f|; for the inverse, the larger of |v f'(v)/f| over a and the smaller of p and q.
Needs mpmath.
"""
import math
import random
import sys

from mpmath import exp, log, loggamma, mp, mpf

mp.prec = 260
BITS = 260


def fixed(v, bits):
    return int(mp.floor(v * mpf(2) ** bits))


def tails(a, x):
    """P, Q and x^a exp(-x)/Gamma(a), each to about 60 digits."""
    a, x = mpf(a), mpf(x)
    mp.prec = BITS
    density = exp(a * log(x) - x - loggamma(a))
    if a >= 300 and x > a:  # the finite part of the expansion in 1/x, complete to exp(-a)
        bits = 200
        one, big_x, big_a = 1 << bits, fixed(x, bits), fixed(a, bits)
        term = total = one
        k = 0
        while term > 0 and k < a - 1:
            k += 1
            term = term * (big_a - (k << bits)) // big_x
            total += term
        q = density / x * total / one
        return 1 - q, q, density
    # Taylor's series; the complement of a tiny Q needs as many more digits as Q has zeros.
    extra = 0
    if x > a:
        extra = max(0, int(-mp.log(density / x + mpf(10) ** -330, 2))) + 40
    bits = 200 + extra
    one, big_x, big_a = 1 << bits, fixed(x, bits), fixed(a, bits)
    term = total = one
    k = 0
    while term > 0:
        k += 1
        term = term * big_x // (big_a + (k << bits))
        total += term
    mp.prec = BITS + extra
    p = exp(a * log(x) - x - loggamma(a)) / a * total / one
    q = 1 - p
    mp.prec = BITS
    return +p, +q, density


def conditioning(a, x):
    p, q, density = tails(a, x)
    h = mpf(a) * mpf(10) ** -20
    slope = (tails(a + h, x)[0] - tails(a - h, x)[0]) / (2 * h) if min(p, q) > mpf(10) ** -30 else None
    if slope is None:  # difference the small tail itself
        i = 0 if p < q else 1
        slope = (tails(a + h, x)[i] - tails(a - h, x)[i]) / (2 * h) * (1 if i == 0 else -1)
    return p, q, density, abs(a * slope)


def short(v):
    return mp.nstr(v, 3, min_fixed=0, max_fixed=0)


def full(v):
    return mp.nstr(v, 17)


def fits(p, q):
    return min(p, q) > mpf(10) ** -300


def points(rng, count):
    """Shapes 1e-3 .. 1e7, tails from the middle to 1e-300."""
    made = 0
    while made < count:
        a = float("%.6g" % math.exp(rng.uniform(math.log(1e-3), math.log(1e7))))
        if rng.random() < 0.12:
            a = rng.randint(1, 40) / 2
        kind = rng.random()
        if kind < 0.45:
            z = rng.gauss(0, 1.5)
        else:
            z = rng.uniform(-37, 37)
        root = 1 - 1 / (9 * a) + z / (3 * math.sqrt(a))
        x = a * root**3 if a >= 0.5 and root > 0 else 0
        if x < 0.3 * a or x > 4 * a:
            if kind < 0.7:
                tail = rng.uniform(-690, 0) if rng.random() < 0.5 else math.log(rng.random())
                exponent = (tail + math.lgamma(a + 1)) / a
                if exponent < -680 or exponent > math.log(a + 1):
                    continue
                x = math.exp(exponent)
            else:
                x = math.exp(rng.uniform(math.log(max(a, 1e-2)), math.log(a + 700)))
        yield a, float("%.7g" % x)
        made += 1


def borders():
    """Both sides of every border between two methods."""

    def around(v):
        return math.nextafter(v, 0), v, math.nextafter(v, math.inf)

    for a in (1e-3, 0.05, 0.2, 0.3, 0.4247, 0.45, 0.5, 0.7, 0.9, math.nextafter(1, 0)):
        for border in (0.25, 1.1, 2.59 * a, math.exp(-0.13394 / a) if a > 1e-2 else 0.5):
            for x in around(border):
                yield a, x
    for x in (0.2, 0.26, 1, 1.2, 5, 40):
        for a in around(0.5) + around(1):
            yield a, x
    for x in (10, 12.9, 13.2, 20, 26.9, 27.1, 30.9, 31, 31.1, 60):
        for a in around(20) + around(30) + around(x / 2.59):
            yield a, x
    for a in (1, 1.5, 2, 2.3, 2.5, 7, 7.25, 15.5, 19, math.nextafter(20, 0), 20, 22, 25, math.nextafter(30, 0), 30, 31,
              100, 5000, 1e5, 1e7):
        for border in (a, 2.30258509299405, 31, 1.4 * a, 0.6 * a, 1.35 * a, 0.65 * a, 1.57 * a, 0.61 * a, 700):
            if a < 400 or border == a:
                for x in around(border):
                    yield a, x
        for sd in (-3, -1, 1, 3):
            yield a, a + sd * math.sqrt(a)
    for n in range(2, 60, 3):
        for a in around(n / 2):
            yield a, a * 1.2
            for x in around(a - 0.7 * math.sqrt(a)):
                yield a, x
    for a in (1.7, 3.9, 4, 4.1):
        for border in (0.125, 8):
            for x in around(border):
                yield a, x
    for a in (999, 1000, 1001):
        for sd in (-5, -1, 0, 1, 5):
            yield a, a + sd * math.sqrt(a)
    for a in (1e5, 1e6, 1e7):  # x/a near 1
        for s in (-1e-3, -2.5e-7, 2.5e-7, 1e-3, -1e-9, 1e-9):
            yield a, a * (1 + s)


def far_tails(rng, count):
    """Tails down to 1e-300 that are well conditioned all the same."""
    yield 100, 0.25
    yield 43.6077, 1.7348e-5
    for i in range(count):
        small = math.exp(rng.uniform(math.log(1e-3), math.log(110)))
        large = math.exp(rng.uniform(math.log(20), math.log(1e6)))
        yield from ((small, (small + 1) * 10 ** rng.uniform(max(-300 / small, -300), 0)),
                    (large, large - rng.uniform(0, min(110, 0.999 * large))),
                    (small, small + rng.uniform(0, 700)))[i % 3:i % 3 + 1]


def quantile(a, tail, upper):
    """The x with this probability above it (below it), by bisection on its logarithm."""
    low, high = -650.0, math.log(a + 2000)
    for _ in range(60):
        middle = (low + high) / 2
        if (tails(a, math.exp(middle))[1 if upper else 0] > tail) == upper:
            low = middle
        else:
            high = middle
    return math.exp(low)


def cornish_fisher(a, tail, upper):
    """The start of the inverse for a > 1, in double arithmetic."""
    t = math.sqrt(-2 * math.log(tail))
    top = ((0.213623493715853 * t + 4.28342155967104) * t + 11.6616720288968) * t + 3.31125922108741
    bottom = (((0.036117081018842 * t + 1.27364489782223) * t + 6.40691597760039) * t + 6.61053765625462) * t + 1
    s = (t - top / bottom) * (1 if upper else -1)
    root = math.sqrt(a)
    return (a + s * root + (s * s - 1) / 3 + s * (s * s - 7) / (36 * root)
            - ((3 * s * s + 7) * s * s - 16) / (810 * a)
            + s * ((9 * s * s + 256) * s * s - 433) / (38880 * a * root))


def start_borders():
    """Both sides of every border between two starts of the inverse."""
    for a in (0.01, 0.1, 0.2999999, 0.3000001, 0.5, 0.8, 0.99):
        g = math.gamma(1 + a)
        for q in [b * a / g for b in (0.45, 0.35, 0.15, 0.01, 1e-28)] + [0.6 * a / g, 0.1, 0.5]:
            if q <= 0.5:
                yield a, q, True
            else:
                yield a, 1 - q, False
        yield a, 1e-8, False
        yield a, 1e-30, False
    for a in (1.001, 1.5, 2, 4, 8, 12, 40, 300, 500, 2000):
        yield a, 0.5, True
        y = 2.302585 * max(2, a * (a - 1))
        if y + math.lgamma(a) < 660:
            yield a, math.exp(-y - math.lgamma(a)), True
        for border, upper in ((3 * a, True), (0.7 * (a + 1), False), (0.15 * (a + 1), False),
                              (0.01 * (a + 1), False)):
            low, high = math.log(1e-290), math.log(0.5)
            start = [cornish_fisher(a, math.exp(end), upper) - border for end in (low, high)]
            if start[0] * start[1] > 0:
                continue
            for _ in range(60):
                middle = (low + high) / 2
                if (cornish_fisher(a, math.exp(middle), upper) - border) * start[0] > 0:
                    low = middle
                else:
                    high = middle
            yield a, math.exp(low), upper
        for share in (0.01, 0.002):  # of the solution itself
            tail = float(tails(a, share * (a + 1))[0])
            if tail > 1e-280:
                yield a, tail, False


def main():
    rng = random.Random(654)
    chosen = [(a, x) for a, x in points(rng, 2100)] + [(a, x) for a, x in borders() if x > 0]
    for a, tail, upper in start_borders():
        for side in (1 - 1e-9, 1 + 1e-9):
            chosen.append((a, quantile(a, tail * side, upper)))
    chosen += far_tails(rng, 450)
    with open("gratio.csv", "w") as ratios, open("gaminv.csv", "w") as inverses:
        for a, x in chosen:
            p, q, density, by_a = conditioning(a, x)
            if not fits(p, q):
                continue
            ratios.write(",".join([repr(a), repr(x), full(p), full(q), short(density / p), short(density / q)]) + "\n")
            if min(p, q) < mpf(10) ** -290:
                continue
            # The nearest doubles p and q with p + q = 1, and the x that belongs to them.
            if p <= q:
                p0 = float(p)
                q0 = 1 - p0
                moved = mpf(x) * (1 + (mpf(p0) - p) / density)
                by_p = p / density
            else:
                q0 = float(q)
                p0 = 1 - q0
                moved = mpf(x) * (1 - (mpf(q0) - q) / density)
                by_p = q / density
            if abs(moved / x - 1) > mpf(10) ** -9 or p0 in (0, 1) and q0 in (0, 1):
                continue
            inverses.write(",".join([repr(a), repr(p0), repr(q0), full(moved),
                                     short(max(by_p, by_a / density))]) + "\n")
    return 0


if __name__ == "__main__":
    sys.exit(main())
