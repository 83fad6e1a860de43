"""Writes normal.csv: reference values of the standard normal, 60 digits rounded to double.

    /usr/bin/python3 tests/data/normal.py > tests/data/normal.csv

cdf,x,lower tail,upper tail   x exactly as printed
inv,p,quantile                p exactly as printed
"""
import random
from mpmath import mp, mpf, erfc, sqrt, findroot, erfinv, log

mp.dps = 60
random.seed(1)


def tail(x):  # probability above x
    return erfc(x / sqrt(mpf(2))) / 2


def quantile(p):
    if p > 0.01 and p < 0.99:
        return sqrt(mpf(2)) * erfinv(2 * mpf(p) - 1)
    small = mpf(p) if p < 0.5 else 1 - mpf(p)
    start = sqrt(-2 * log(small))
    z = findroot(lambda t: log(tail(t)) - log(small), start)
    return -z if p < 0.5 else z


borders = [0.66291, 5.656854248, 1.1102230246251565e-16, 37.5, 38.4]
points = [random.uniform(-8, 8) for _ in range(400)] + [random.uniform(-38.4, 38.4) for _ in range(300)]
points += [s * b * (1 + d) for b in borders for s in (-1, 1) for d in (-1e-12, 0, 1e-12)]
points += [s * 10.0 ** -random.uniform(1, 20) for s in (-1, 1) for _ in range(40)]
for x in points:
    print(f"cdf,{x!r},{float(tail(-mpf(x)))!r},{float(tail(mpf(x)))!r}")

chances = [random.random() for _ in range(400)] + [10.0 ** -random.uniform(0, 307) for _ in range(300)]
chances += [1 - 10.0 ** -random.uniform(0, 15) for _ in range(100)]
chances += [0.075, 0.925, 0.0749999999, 0.0750000001, 0.9249999, 0.92500001, 1.3887943864964021e-11, 1.3887e-11, 1.38880e-11,
            2.2250738585072014e-308, 1 - 2.0**-53]
for p in chances:
    print(f"inv,{p!r},{float(quantile(p))!r},0")
