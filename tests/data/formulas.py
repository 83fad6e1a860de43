#!/usr/bin/env python3
"""Writes formulas/<routine>.csv: the elementary and the complete gamma functions.

Each row: the arguments, the value of the published formula (with its coefficients as printed, evaluated in
50 digits), and how far the true function lies from it, relative. Needs mpmath.
"""
import math
import os
import random

from mpmath import erf, erfc, exp, expm1, floor, log, loggamma, mp, mpf, nint, rgamma, sin, sqrt
from mpmath import gamma as true_gamma

mp.dps = 50

# The coefficients as printed.
REXP = dict(line.split() for line in """
p1 .914041914819518e-09
p2 .238082361044469e-01
q1 -.499999999085958e+00
q2 .107141568980644e+00
q3 -.119041179760821e-01
q4 .595130811860248e-03
""".split("\n") if line)

ERF = dict(line.split() for line in """
c .564189583547756e0
a1 .771058495001320e-04
a2 -.133733772997339e-02
a3 .323076579225834e-01
a4 .479137145607681e-01
a5 .128379167095513e+00
b1 .301048631703895e-02
b2 .538971687740286e-01
b3 .375795757275549e+00
p1 -1.36864857382717e-07
p2 5.64195517478974e-01
p3 7.21175825088309e+00
p4 4.31622272220567e+01
p5 1.52989285046940e+02
p6 3.39320816734344e+02
p7 4.51918953711873e+02
p8 3.00459261020162e+02
q1 1.00000000000000e+00
q2 1.27827273196294e+01
q3 7.70001529352295e+01
q4 2.77585444743988e+02
q5 6.38980264465631e+02
q6 9.31354094850610e+02
q7 7.90950925327898e+02
q8 3.00459260956983e+02
r1 2.10144126479064e+00
r2 2.62370141675169e+01
r3 2.13688200555087e+01
r4 4.65807828718470e+00
r5 2.82094791773523e-01
s1 9.41537750555460e+01
s2 1.87114811799590e+02
s3 9.90191814623914e+01
s4 1.80124575948747e+01
""".split("\n") if line)

RLOG = dict(line.split() for line in """
a .566749439387324e-01
b .456512608815524e-01
p0 .333333333333333e+00
p1 -.224696413112536e+00
p2 .620886815375787e-02
q1 -.127408923933623e+01
q2 .354508718369557e+00
""".split("\n") if line)

ALNREL = dict(line.split() for line in """
p1 -.129418923021993e+01
p2 .405303492862024e+00
p3 -.178874546012214e-01
q1 -.162752256355323e+01
q2 .747811014037616e+00
q3 -.845104217945565e-01
""".split("\n") if line)

GAMMA = dict(line.split() for line in """
pi 3.1415926535898e0
d .41893853320467274178e0
p1 .539637273585445e-03
p2 .261939260042690e-02
p3 .204493667594920e-01
p4 .730981088720487e-01
p5 .279648642639792e+00
p6 .553413866010467e+00
p7 1.0e0
q1 -.832979206704073e-03
q2 .470059485860584e-02
q3 .225211131035340e-01
q4 -.170458969313360e+00
q5 -.567902761974940e-01
q6 .113062953091122e+01
q7 1.0e0
r1 .820756370353826e-03
r2 -.595156336428591e-03
r3 .793650663183693e-03
r4 -.277777777770481e-02
r5 .833333333333333e-01
""".split("\n") if line)

GAMLN1 = dict(line.split() for line in """
p0 .577215664901533e+00
p1 .844203922187225e+00
p2 -.168860593646662e+00
p3 -.780427615533591e+00
p4 -.402055799310489e+00
p5 -.673562214325671e-01
p6 -.271935708322958e-02
q1 .288743195473681e+01
q2 .312755088914843e+01
q3 .156875193295039e+01
q4 .361951990101499e+00
q5 .325038868253937e-01
q6 .667465618796164e-03
r0 .422784335098467e+00
r1 .848044614534529e+00
r2 .565221050691933e+00
r3 .156513060486551e+00
r4 .170502484022650e-01
r5 .497958207639485e-03
s1 .124313399877507e+01
s2 .548042109832463e+00
s3 .101552187439830e+00
s4 .713309612391000e-02
s5 .116165475989616e-03
""".split("\n") if line)

GAM1 = dict(line.split() for line in """
p1 .577215664901533e+00
p2 -.409078193005776e+00
p3 -.230975380857675e+00
p4 .597275330452234e-01
p5 .766968181649490e-02
p6 -.514889771323592e-02
p7 .589597428611429e-03
q1 .100000000000000e+01
q2 .427569613095214e+00
q3 .158451672430138e+00
q4 .261132021441447e-01
q5 .423244297896961e-02
r1 -.422784335098468e+00
r2 -.771330383816272e+00
r3 -.244757765222226e+00
r4 .118378989872749e+00
r5 .930357293360349e-03
r6 -.118290993445146e-01
r7 .223047661158249e-02
r8 .266505979058923e-03
r9 -.132674909766242e-03
s1 .273076135303957e+00
s2 .559398236957378e-01
""".split("\n") if line)

GAMLN = dict(line.split() for line in """
d .418938533204673e0
c0 .833333333333333e-01
c1 -.277777777760991e-02
c2 .793650666825390e-03
c3 -.595202931351870e-03
c4 .837308034031215e-03
c5 -.165322962780713e-02
""".split("\n") if line)


def poly(table, names, x):
    """c0 + c1 x + ... with the coefficients of these names, a number standing for itself."""
    return sum(mpf(table[n] if n in table else n) * x**i for i, n in enumerate(names.split()))


def rational(table, top, bottom, x):
    return poly(table, top, x) / poly(table, bottom, x)


def rlog(x):
    if x < mpf(0.61) or x > mpf(1.57):
        return x - 1 - log(x)
    if x < mpf(0.82):
        u = (x - mpf("0.7")) / mpf("0.7")
        up = mpf(RLOG["a"]) - mpf("0.3") * u
    elif x > mpf(1.18):
        u = mpf("0.75") * x - 1
        up = mpf(RLOG["b"]) + u / 3
    else:
        u, up = x - 1, 0
    r = u / (u + 2)
    return 2 * r * r * (1 / (1 - r) - r * rational(RLOG, "p0 p1 p2", "1 q1 q2", r * r)) + up


def true_rlog(x):
    return x - 1 - log(x)


def rlog1(x):
    return x - log(1 + x)


def rexp(x):
    if abs(x) <= mpf(0.15):
        return x * rational(REXP, "1 p1 p2", "1 q1 q2 q3 q4", x)
    return exp(x) - 1


def alnrel(a):
    if abs(a) <= mpf(0.375):
        t = a / (a + 2)
        return 2 * t * rational(ALNREL, "1 p1 p2 p3", "1 q1 q2 q3", t * t)
    return log(1 + a)


def near_erf(x):
    return x * (1 + poly(ERF, "a5 a4 a3 a2 a1", x * x)) / poly(ERF, "1 b3 b2 b1", x * x)


def scaled_erfc(y):
    if y <= 4:
        return rational(ERF, "p8 p7 p6 p5 p4 p3 p2 p1", "q8 q7 q6 q5 q4 q3 q2 q1", y)
    t = 1 / (y * y)
    return (mpf(ERF["c"]) - t * rational(ERF, "r5 r4 r3 r2 r1", "1 s4 s3 s2 s1", t)) / y


def erf_formula(x):
    if abs(x) <= mpf(0.5):
        return near_erf(x)
    if abs(x) >= mpf(5.8):
        return mpf(1 if x > 0 else -1)
    return (1 - exp(-x * x) * scaled_erfc(abs(x))) * (1 if x > 0 else -1)


def erfc0(x):
    if abs(x) <= mpf(0.5):
        return 1 - near_erf(x)
    tail = exp(-x * x) * scaled_erfc(abs(x))
    if x <= mpf(-5.6):
        return mpf(2)
    return tail if x > 0 else 2 - tail


def erfc1(x):
    return erfc0(x) * exp(x * x) if x < 4 else scaled_erfc(x)


def gamma(a):
    if abs(a) >= 15:
        x = abs(a)
        if a < 0:
            n = nint(x)
            s = sin(mpf(GAMMA["pi"]) * (x - n)) / mpf(GAMMA["pi"]) * (-1 if n % 2 == 0 else 1)
        g = poly(GAMMA, "r5 r4 r3 r2 r1", 1 / (x * x)) / x
        g = exp(g + mpf("0.418938533204673") + (x - mpf("0.5")) * (log(x) - 1))
        return g if a > 0 else 1 / (g * s) / x
    if a >= 1:
        t, x = mpf(1), a
        for _ in range(int(floor(a)) - 1):
            x -= 1
            t *= x
        return t * rational(GAMMA, "p7 p6 p5 p4 p3 p2 p1", "q7 q6 q5 q4 q3 q2 q1", x - 1)
    t, x = a, a
    if a < 0:
        for _ in range(int(-floor(a))):
            x += 1
            t *= x
        x += 1
        t *= x
    return rational(GAMMA, "p7 p6 p5 p4 p3 p2 p1", "q7 q6 q5 q4 q3 q2 q1", x) / t


def gamln1(a):
    if a < mpf(0.6):
        return -a * rational(GAMLN1, "p0 p1 p2 p3 p4 p5 p6", "1 q1 q2 q3 q4 q5 q6", a)
    return (a - 1) * rational(GAMLN1, "r0 r1 r2 r3 r4 r5", "1 s1 s2 s3 s4 s5", a - 1)


def gam1(a):
    t = a if a <= mpf(0.5) else a - 1
    if t >= 0:
        w = rational(GAM1, "p1 p2 p3 p4 p5 p6 p7", "q1 q2 q3 q4 q5", t)
        return a * w if a <= mpf(0.5) else t / a * (w - 1)
    w = rational(GAM1, "r1 r2 r3 r4 r5 r6 r7 r8 r9", "1 s1 s2", t)
    return a * (w + 1) if a <= mpf(0.5) else t * w / a


def gamln(a):
    if a <= mpf(0.8):
        return gamln1(a) - log(a)
    if a <= mpf(2.25):
        return gamln1(a - 1)
    if a < 10:
        t, w = a, mpf(1)
        for _ in range(int(nint(a - mpf("1.25")))):
            t -= 1
            w *= t
        return gamln1(t - 1) + log(w)
    w = poly(GAMLN, "c0 c1 c2 c3 c4 c5", 1 / (a * a)) / a
    return mpf(GAMLN["d"]) + w + (a - mpf("0.5")) * (log(a) - 1)


def rcomp(a, x):
    if a < 20:
        t = a * log(x) - x
        return a * exp(t) * (1 + gam1(a)) if a < 1 else exp(t) / gamma(a)
    t = 1 / (a * a)
    t1 = (((mpf("0.75") * t - 1) * t + mpf("3.5")) * t - 105) / (a * 1260) - a * rlog(x / a)
    return mpf("0.398942280401433") * sqrt(a) * exp(t1)


# routine: formula, true function, ranges of the argument, borders
ROUTINES = {
    "rlog": (rlog, true_rlog, [(0.001, 0.61), (0.61, 0.82), (0.82, 1.18), (1.18, 1.57), (1.57, 100)],
             [0.61, 0.82, 1.18, 1.57, 1e-300, 1e300, 0.999999, 1.000001]),
    "rlog1": (rlog1, rlog1, [(-0.999, -0.39), (-0.39, -0.18), (-0.18, 0.18), (0.18, 0.57), (0.57, 100)],
              [-0.39, -0.18, 0.18, 0.57, 1e-6, -1e-6, 1e300]),
    "rexp": (rexp, expm1, [(-0.15, 0.15), (-40, -0.15), (0.15, 709)], [-0.15, 0.15, 1e-300, -1e-10]),
    "alnrel": (alnrel, lambda a: log(1 + a), [(-0.375, 0.375), (0.375, 50), (-0.999, -0.375)],
               [-0.375, 0.375, 1e-12, 1e300]),
    "erf": (erf_formula, erf, [(-0.5, 0.5), (0.5, 4), (-4, -0.5), (4, 5.8), (-5.8, -4)],
            [0.5, -0.5, 4, -4, 5.8, -5.8, 1e-300]),
    "erfc0": (erfc0, erfc, [(-0.5, 0.5), (0.5, 4), (-4, -0.5), (4, 26.6), (-5.8, -4)],
              [0.5, -0.5, 4, -4, -5.6, 1e-300, 26.6]),
    "erfc1": (erfc1, lambda x: exp(x * x) * erfc(x), [(-0.5, 0.5), (0.5, 4), (-4, -0.5), (4, 90), (-26, -4)],
              [0.5, -0.5, 4, -4, -5.6, 1e-300, 26.6, 101]),
    "gamma": (gamma, true_gamma, [(0.001, 1), (1, 15), (15, 171), (-15, 0), (-170, -15)],
              [1, 2, 3, 14, 15, 0.999, 171.5]),
    "gamln": (gamln, loggamma, [(0.001, 0.8), (0.8, 2.25), (2.25, 10), (10, 1e5)],
              [0.8, 2.25, 2.75, 3.75, 4.75, 8.75, 9.75, 10, 2.7, 1e-300, 1e300]),
    "gamln1": (gamln1, lambda a: loggamma(1 + a), [(-0.2, 0.6), (0.6, 1.25)], [-0.2, 0.6, 1.25, 1e-10, 1.0001]),
    "gam1": (gam1, lambda a: rgamma(1 + a) - 1, [(-0.5, 0), (0, 0.5), (0.5, 1), (1, 1.5)],
             [-0.5, 0.5, 1.5, 1e-10, 1.0001, 0.9999, -1e-10]),
}


def row(arguments, formula, true):
    if abs(true) < mpf(10) ** -300 or abs(true) > mpf(10) ** 308:
        return ""
    return ",".join([repr(v) for v in arguments] +
                    [mp.nstr(formula, 17), mp.nstr(true / formula - 1, 3)]) + "\n"


def main():
    rng = random.Random(13)
    os.makedirs("formulas", exist_ok=True)
    for name, (formula, true, ranges, borders) in ROUTINES.items():
        arguments = [float("%.6g" % rng.uniform(*ranges[i % len(ranges)])) for i in range(2010)]
        for border in borders:
            arguments += [math.nextafter(border, -math.inf), border, math.nextafter(border, math.inf)]
        with open(f"formulas/{name}.csv", "w") as out:
            for x in arguments:
                value = formula(mpf(x))
                if value != 0:
                    out.write(row([x], value, true(mpf(x))))
    with open("formulas/rcomp.csv", "w") as out:
        arguments = []
        for _ in range(2100):
            a = math.exp(rng.uniform(math.log(1e-3), math.log(1e7)))
            spread = rng.uniform(-20, 20) if rng.random() < 0.7 else 0
            x = a * math.exp(spread / math.sqrt(a)) if a > 1 else math.exp(rng.uniform(-50, 5))
            arguments.append((float("%.6g" % a), float("%.7g" % x)))
        for a in (1, 20):
            for b in (math.nextafter(a, 0), float(a), math.nextafter(a, math.inf)):
                arguments += [(b, x) for x in (0.01, 0.5, 1.0, 2.0, 20.0, 50.0)]
        for a, x in arguments:
            out.write(row([a, x], rcomp(mpf(a), mpf(x)),
                          exp(mpf(a) * log(mpf(x)) - mpf(x) - loggamma(mpf(a)))))


if __name__ == "__main__":
    main()
