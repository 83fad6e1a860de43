#!/usr/bin/env python3
"""Writes docs/accuracy.md: the largest errors of the law, the members, Boost.Math, R and SciPy against arbitrary precision.

  bench/accuracy.py LIBRARY PAGE      LIBRARY: palvex_accuracy, built from Accuracy.cpp
"""
import ctypes
import math
import os
import random
import subprocess
import sys
import warnings
from collections import defaultdict

import mpmath
import numpy
import scipy
from mpmath import mpf
from scipy import stats

sys.path.insert(0, os.path.join(os.path.dirname(__file__), "../tests/data"))
import law as reference  # noqa: E402

EPS = sys.float_info.epsilon
LOST = 0.1  # a relative error of which nothing is right

# Shapes of the benchmark and of the tests, near 0 and far from it. Johnson's curves by their moments. Others, by chance,
# are added.
LAWS = {
    "Normal": [(0, 1), (-3, 0.125), (1e6, 2.5)],
    "Uniform": [(0, 1), (1, 5), (-5, 1000)],
    "Triangular": [(1, 2, 5), (0, 2, 10), (0, 0, 1), (-1, 3, 3)],
    "Exponential": [(1, 0), (2, 0), (0.7, 1), (0.0078125, 100)],
    "Weibull": [(0.5, 2, 0), (1.5, 2, 1), (3.5, 1, 2), (20, 3, 0)],
    "Lognormal": [(0, 1, 0), (0.5, 0.8, 0), (3, 0.25, -4)],
    "Gamma": [(0.05, 1, 0), (0.5, 1, 0), (2.5, 1, 0), (50, 1, 0), (5000, 1, 0), (3, 2, 1), (200, 0.125, 0)],
    "Beta": [(0.5, 0.5, 0, 1), (2, 3, 0, 1), (2.2, 3.3, 0, 1), (30, 70, 0, 1), (200, 5000, 0, 1), (0.05, 4, 0, 1),
             (7, 1, 0, 1), (2.5, 4, -2, 6)],
    "Johnson": [(0, 2, 1.75, 8.898357624544985), (3, 1, 0.5, 5), (3, 1, 0.5, 2.5), (0, 1, -1, 4.83)],
    "Histogram": [()],
}
COUNTS = [1 + b * (20 - b) for b in range(20)]  # of the benchmark's histogram, bins from 0 to 20


def add_random_laws(rng):
    def around(size):
        return float(f"{rng.gauss(0, size):.4g}")

    def between(lowest, greatest):  # evenly in the logarithm
        return float(f"{math.exp(rng.uniform(math.log(lowest), math.log(greatest))):.4g}")

    for _ in range(6):
        low, middle, high = sorted([around(10), around(10), around(10)])
        skewness = around(0.8)
        LAWS["Normal"].append((around(10), between(0.01, 100)))
        LAWS["Uniform"].append((low, high))
        LAWS["Triangular"].append((low, middle, high))
        LAWS["Exponential"].append((between(0.01, 100), around(3)))
        LAWS["Weibull"].append((between(0.2, 50), between(0.1, 10), around(1)))
        LAWS["Lognormal"].append((around(2), between(0.05, 3), around(1)))
        LAWS["Gamma"] += [(between(0.02, 1e6), 1, 0), (between(0.02, 1e3), between(0.1, 10), around(1))]
        LAWS["Beta"] += [(between(0.05, 5e3), between(0.05, 5e3), 0, 1), (between(0.05, 5), between(0.05, 50), 0, 1),
                         (between(0.5, 100), between(0.5, 100), low, high)]
        LAWS["Johnson"].append((around(5), between(0.1, 10), skewness, skewness**2 + between(1.3, 6)))


DEPTHS = [3, 6, 10, 20, 35]
COLUMNS = ["none", "two limits", "reversed", *map(str, DEPTHS)]


# ---- who is asked: density(x), tail(x, upper), quantile(p, upper); NaN for a failure ----

class Palvex:
    """The law between its limits; the members, with the limits for RandVal; or a whole law of Boost."""
    library = None

    def __init__(self, who, name, parameters, limits=(None, None)):
        call = self.library
        numbers = (ctypes.c_double * 4)(*parameters)
        ends = (ctypes.c_double * 2)(*(math.nan if limit is None else limit for limit in limits))
        self.handle = call.palvexSource(who.encode(), name.encode(), numbers, ends)
        if not self.handle:
            raise LookupError(f"{who} has no {name}")

    def __del__(self):
        if self.handle:
            self.library.palvexForget(self.handle)

    def density(self, x):
        return self.library.palvexDensity(self.handle, x)

    def tail(self, x, upper):
        return self.library.palvexTail(self.handle, x, upper)

    def quantile(self, p, upper):
        return self.library.palvexQuantile(self.handle, p, upper)


def load(path):
    Palvex.library = library = ctypes.CDLL(path)
    double, pointer = ctypes.c_double, ctypes.c_void_p
    library.palvexSource.restype = pointer
    library.palvexForget.argtypes = [pointer]
    for function in ("Density", "Tail", "Quantile"):
        called = getattr(library, "palvex" + function)
        called.restype, called.argtypes = double, [pointer, double] + [ctypes.c_int] * (function != "Density")


def johnson_curve(moments):
    constants = (ctypes.c_double * 4)()
    code = Palvex.library.palvexJohnson((ctypes.c_double * 4)(*moments), constants)
    return ["Johnson SL", "Johnson SU", "Johnson SB", "Normal"][code - 1], list(constants)


class R:
    """R's standalone library."""
    functions = {
        "Normal": ("dnorm4 pnorm5 qnorm5", lambda mean, sd: ([mean, sd], 0, 1)),
        "Uniform": ("dunif punif qunif", lambda low, high: ([low, high], 0, 1)),
        "Exponential": ("dexp pexp qexp", lambda rate, low: ([1 / rate], low, 1)),
        "Weibull": ("dweibull pweibull qweibull", lambda shape, scale, low: ([shape, scale], low, 1)),
        "Lognormal": ("dlnorm plnorm qlnorm", lambda mu, sigma, low: ([mu, sigma], low, 1)),
        "Gamma": ("dgamma pgamma qgamma", lambda shape, scale, low: ([shape, scale], low, 1)),
        "Beta": ("dbeta pbeta qbeta", lambda a, b, low, high: ([a, b], low, high - low)),
    }

    def __init__(self, name, parameters):
        names, arranged = self.functions[name]
        given, self.origin, self.unit = arranged(*parameters)
        self.given = [ctypes.c_double(number) for number in given]
        library = ctypes.CDLL("libRmath.so.1")
        self.d, self.p, self.q = (getattr(library, function) for function in names.split())
        for function in (self.d, self.p, self.q):
            function.restype = ctypes.c_double

    def density(self, x):
        return self.d(ctypes.c_double((x - self.origin) / self.unit), *self.given, 0) / self.unit

    def tail(self, x, upper):
        return self.p(ctypes.c_double((x - self.origin) / self.unit), *self.given, int(not upper), 0)

    def quantile(self, p, upper):
        return self.origin + self.unit * self.q(ctypes.c_double(p), *self.given, int(not upper), 0)


class SciPy:
    laws = {
        "Normal": lambda mean, sd: stats.norm(mean, sd),
        "Uniform": lambda low, high: stats.uniform(low, high - low),
        "Triangular": lambda low, likely, high: stats.triang((likely - low) / (high - low), low, high - low),
        "Exponential": lambda rate, low: stats.expon(low, 1 / rate),
        "Weibull": lambda shape, scale, low: stats.weibull_min(shape, low, scale),
        "Lognormal": lambda mu, sigma, low: stats.lognorm(sigma, low, math.exp(mu)),
        "Gamma": lambda shape, scale, low: stats.gamma(shape, low, scale),
        "Beta": lambda a, b, low, high: stats.beta(a, b, low, high - low),
        "Johnson SU": lambda gamma, delta, unit, xi: stats.johnsonsu(gamma, delta, xi, unit),
        "Johnson SB": lambda gamma, delta, unit, xi: stats.johnsonsb(gamma, delta, xi, unit),
        "Histogram": lambda: stats.rv_histogram((COUNTS, range(len(COUNTS) + 1)), density=False),
    }

    def __init__(self, name, parameters):
        self.law = self.laws[name](*parameters)

    def density(self, x):
        return self.law.pdf(x)

    def tail(self, x, upper):
        return self.law.sf(x) if upper else self.law.cdf(x)

    def quantile(self, p, upper):
        return self.law.isf(p) if upper else self.law.ppf(p)


class Cut:
    """What one writes to cut a law that a library offers whole to `pieces`: careful, by whichever tails are smaller;
    or as usual, by differences of the lower ones. `draws`, if given, is asked for quantiles."""

    def __init__(self, whole, pieces, careful=True, draws=None):
        self.whole, self.pieces, self.careful, self.draws = whole, pieces, careful, draws
        self.masses = [self.between(*piece) for piece in pieces]
        self.total = numpy.float64(sum(self.masses))  # 0 divides to infinity or NaN

    def tail(self, x, upper, at_end):
        return at_end if x is None else self.whole.tail(x, upper)

    def between(self, a, b):
        below_a, below_b = self.tail(a, False, 0), self.tail(b, False, 1)
        if not self.careful:
            return below_b - below_a
        above_a, above_b = self.tail(a, True, 1), self.tail(b, True, 0)
        return below_b - below_a if below_b < above_a else above_a - above_b

    def density(self, x):
        return self.whole.density(x) / self.total

    def tails(self, x):
        below = above = 0
        for (a, b), mass in zip(self.pieces, self.masses):
            if (a is None or a < x) and (b is None or x < b):
                below += self.between(a, x)
                above += self.between(x, b)
            elif b is not None and x >= b:
                below += mass
            else:
                above += mass
        return below / self.total, above / self.total

    def quantile(self, p, q):
        if self.draws:
            return self.draws.quantile(p, False)
        first = len(self.pieces) == 1 or p * self.total <= self.masses[0]
        a, b = self.pieces[0 if first else 1]
        below = self.tail(a, False, 0) + (p * self.total - (0 if first else self.masses[0]))
        if not self.careful:
            return self.whole.quantile(min(below, 1), False)
        above = self.tail(b, True, 0) + (q * self.total - (0 if not first else sum(self.masses[1:])))
        return self.whole.quantile(below, False) if below < above else self.whole.quantile(above, True)


def asked(name, parameters, exact, limits, pieces):
    """{who: what answers for the law between its limits}"""
    whole = [(None, None)]
    answers = {"Law": Cut(Palvex("law", name, parameters, limits), whole)}

    def add(who, make):
        try:
            answers[who] = make()
        except LookupError:
            pass

    add("members", lambda: Cut(Palvex("members", name, parameters), pieces, False,
                               Palvex("members", name, parameters, limits)))
    add("Boost", lambda: Cut(Palvex("Boost", name, parameters), pieces))
    add("R", lambda: Cut(R(name, parameters), pieces))
    given = (exact.name, map(float, exact.p)) if name == "Johnson" else (name, parameters)
    add("SciPy", lambda: Cut(SciPy(*given), pieces))
    if pieces != whole and "SciPy" in answers:
        answers["usual formula"] = Cut(answers["SciPy"].whole, pieces, False)
    return answers


# ---- exact values ----

class Histogram(reference.Law):
    """Bins of width 1 from 0 with these counts."""

    def __init__(self, counts):
        super().__init__("Histogram", [])
        self.low, self.high = mpf(0), mpf(len(counts))
        total = sum(counts)

        def tails(x):
            bin_, part = int(x), x - int(x)
            return ((sum(counts[:bin_]) + part * counts[bin_]) / total,
                    (sum(counts[bin_ + 1:]) + (1 - part) * counts[bin_]) / total)

        self.tails = tails
        self.logf = lambda x: mpmath.log(mpf(counts[int(x)]) / total)


def exact_law(name, parameters):
    if name == "Histogram":
        return Histogram(COUNTS)
    if name == "Johnson":  # of the fitted curve: the fit is no part of the law
        curve, c = johnson_curve(parameters)
        return reference.Law(curve, [c[2], c[0]] if curve == "Normal" else c)
    return reference.Law(name, parameters)


def cuts(whole, exact):
    """Column and limits; `whole` is the law without any, which says where tails are as small as wanted."""
    low, high = whole.quantile(0.3, False), whole.quantile(0.6, False)
    found = [("none", None, None), ("two limits", low, high), ("reversed", high, low)]
    for depth in DEPTHS:
        tail, next_tail = (float(reference.normal_tails(mpf(-d))[0]) for d in (depth, depth + 1))
        upper = whole.quantile(tail, True)
        found += [(str(depth), None, whole.quantile(tail, False)), (str(depth), upper, None),
                  (str(depth), upper, whole.quantile(next_tail, True))]

    def usable(a, b):
        # Beside an end other than 0 the doubles end before the tail does.
        if not all(limit is None or exact.low < limit < exact.high for limit in (a, b)) or (a is not None and a == b):
            return False
        return a is None or b is None or a > b or exact.between(mpf(a), mpf(b)) > 1e-306

    return [cut for cut in found if usable(*cut[1:])]


def places(source, pieces, exact, rng):
    """Values of all sizes of both tails."""
    tails = [0.5, 0.3, 0.05, 1e-4, 1e-9]
    if pieces == [(None, None)]:
        tails += [1e-15, 1e-50, 1e-150, 1e-290]
    near = [source.quantile(tail * rng.uniform(0.8, 1.2), upper) for tail in tails for upper in (False, True)]
    inside = [x for x in near if exact.low < x < exact.high and x != 0
              and any((a is None or a < x) and (b is None or x < b) for a, b in pieces)]
    return sorted(set(inside))


# ---- errors ----

def departs(name, v, exact, cut, quantity):
    """Whether the settled results of the members are not the law's here: docs/departures.md."""
    if name == "Gamma":
        return quantity != "quantile" and (v[1] != 1 or v[2] != 0)
    if name == "Beta" and v[1] == 1:
        return quantity == "probability" or cut
    if name == "Beta":
        return v[3] - v[2] != 1 and quantity == "density"
    if name == "Johnson" and (exact.name == "Normal" or exact.name == "Johnson SL" and exact.p[2] < 0):
        return quantity != "quantile" or cut
    return name == "Johnson" and exact.name != "Johnson SL" and quantity == "density"


class Table:
    """The largest errors, and how many are within what is asked of Law."""

    def __init__(self):
        self.worst = defaultdict(float)  # by quantity, type, who and column
        self.answers = defaultdict(int)
        self.unanswered = defaultdict(int)
        self.departures = defaultdict(bool)
        self.counts = defaultdict(lambda: [0, 0, 0])  # by quantity and who: all, within, without any digit
        self.misses = []  # of Law: how many times the bound, type, and where
        self.laws = 0

    def add(self, quantity, name, who, column, found, exact, condition, allowed, what):
        condition = max(1, float(condition))
        error = float(abs((mpf(float(found)) - exact) / exact) / condition) if math.isfinite(found) else math.inf
        key = quantity, name, who, column
        self.answers[key] += 1
        self.unanswered[key] += math.isnan(found)
        self.worst[key] = max(self.worst[key], 0 if math.isnan(found) else error)
        count = self.counts[quantity, who]
        count[0] += 1
        bound = allowed(condition) / condition
        count[1] += error <= bound
        count[2] += error >= LOST
        if error > bound and who == "Law":
            self.misses.append((error / bound, name, f"{quantity} {what}: {float(found)!r} for "
                                f"{mpmath.nstr(exact, 17)}, error {error:.2e} x {condition:.3g}"))


def measure(table, name, parameters):
    rng = random.Random(f"{name} {parameters}")
    whole = Palvex("law", name, parameters)
    exact = exact_law(name, parameters)
    ratio = name in ("Gamma", "Beta")
    table.laws += 1

    def tail_bound(condition):
        return 2e-14 if ratio and condition <= 100 else 8 * EPS * condition

    def bound(condition):
        return 1e-13 * condition

    for column, lower, upper in cuts(whole, exact):
        is_reversed = lower is not None and upper is not None and lower > upper
        pieces = [(None, upper), (lower, None)] if is_reversed else [(lower, upper)]
        exact_pieces = [tuple(None if end is None else mpf(end) for end in piece) for piece in pieces]
        answers = asked(name, parameters, exact, (lower, upper), pieces)
        for x in places(Palvex("law", name, parameters, (lower, upper)), pieces, exact, rng):
            r = reference.Reference(exact, exact_pieces, mpf(x))
            if min(r.below, r.above) < 1e-306:
                continue
            p, q = float(r.below), float(r.above)
            what = f"{name} {parameters} between {lower} and {upper} at {x!r}"
            for who, source in answers.items():
                def add(quantity, found, value, condition, allowed):
                    if who == "members" and departs(name, parameters, exact, column != "none", quantity):
                        table.departures[quantity, name] = True
                    else:
                        table.add(quantity, name, who, column, found, value, condition, allowed, what)

                below, above = source.tails(x)
                add("probability", below, r.below, r.k_below, tail_bound)
                if who != "members":  # these have no upper tail
                    add("probability", above, r.above, r.k_above, tail_bound)
                if r.density > sys.float_info.min:
                    add("density", source.density(x), r.density, r.k_density, bound)
                    given = min(p, q) if source.careful else p
                    if given < 1:
                        condition = max(r.k_below * r.below, mpf(given)) / (abs(x) * r.density)
                        add("quantile", source.quantile(p, q), mpf(x), condition, bound)


# ---- the page ----

WHO = ["Law", "members", "Boost", "R", "SciPy", "usual formula"]
QUANTITIES = ["probability", "quantile", "density"]

def shown(error, answers, unanswered):
    if unanswered:
        return f"{max(1, round(100 * unanswered / answers))} % fail"
    return "none" if error >= LOST else f"{error:.1e}" if error else "0"


def grid(head, rows, names=2):
    line = "| " + " | ".join(["---"] * names + ["---:"] * (len(head) - names)) + " |"
    return "\n".join(["| " + " | ".join(head) + " |", line, *("| " + " | ".join(row) + " |" for row in rows)])


def errors(table, quantity):
    rows = []
    for name in LAWS:
        first = True
        for who in WHO:
            keys = [(quantity, name, who, column) for column in COLUMNS]
            departs_here = who == "members" and table.departures[quantity, name]
            if not departs_here and not any(key in table.worst for key in keys):
                continue
            rows.append([name if first else "", who + (" ¹" if departs_here else "")]
                        + [shown(table.worst[key], table.answers[key], table.unanswered[key])
                           if key in table.worst else "" for key in keys])
            first = False
    return grid(["", "", *COLUMNS], rows)


def summary(table):
    rows = []
    for who in WHO:
        row = [who]
        for quantity in QUANTITIES:
            count, within, lost = table.counts[quantity, who]
            row += [f"{100 * within / count:.4g} %", f"{100 * lost / count:.3g} %"]
        rows.append(row)
    return grid(["", "probabilities", "lost", "quantiles", "lost", "densities", "lost"], rows, 1)


def largest(table, quantity, names):
    return max(error for (what, name, who, _), error in table.worst.items()
               if what == quantity and who == "Law" and name in names)


def version(package):
    found = subprocess.run(["dpkg-query", "-W", "-f", "${Version}", package], capture_output=True, text=True).stdout
    return ".".join(found.split("-")[0].split(".")[:3])


def missed(table):
    if not table.misses:
        return "Law keeps to that at every point."
    worst = max(factor for factor, _, _ in table.misses)
    types = " and ".join(sorted({name.lower() for _, name, _ in table.misses}))
    return (f"{len(table.misses)} of {sum(table.counts[q, 'Law'][0] for q in QUANTITIES):,} answers are beyond that, by a factor of "
            f"{worst:.1f} at most, all of {types} laws between limits, where nearly equal tails are subtracted.")


def page(table):
    ratios = ["Gamma", "Beta"]
    others = [name for name in LAWS if name not in ratios]
    points = table.counts["density", "Law"][0]
    return f"""# Accuracy

How exact probabilities, quantiles and densities are, of whole laws and of laws cut by limits, ever deeper in a tail: `Law`, the members of
`c_Distribution`, and what C++, R and Python people have. Written by `scripts/accuracy`, which compares {points:,} points of {table.laws} laws with
references of 60 digits (mpmath {mpmath.__version__}); two minutes.

| largest error of `Law` | asked | measured |
| --- | ---: | ---: |
| probabilities, both tails | 8 ε = 1.8e-15 | {largest(table, "probability", others):.1e} |
| of gamma and beta laws | 2e-14 for K ≤ 100, else 8 ε K | {largest(table, "probability", ratios):.1e} |
| quantiles | 1e-13 | {largest(table, "quantile", LAWS):.1e} |
| densities | 1e-13 | {largest(table, "density", LAWS):.1e} |

Errors are relative, divided by max(1, K). The condition number K says how much a relative change of the argument, of a limit, of a parameter that
is subtracted, or of the logarithm that a law is made of changes the result: what it costs that numbers have 16 digits.
{missed(table)}

Of the same points, how many have an answer as exact as that, and how many have none of which one digit is right:

{summary(table)}

- **Columns** below: no limits; limits where the probability is 0.3 and 0.6; the same reversed, which cuts out what lies between; and limits
  that keep what lies beyond 3, 6, 10, 20 and 35 standard deviations of a normal law, below, above, and from there to one standard deviation
  further. For other laws: beyond the value with the same tail, 1.3e-3, 1e-9, 7.6e-24, 2.8e-89 and 1.1e-268; beside an end other than 0 doubles are
  too coarse for the deep ones.
- **Points**: at tails from 1e-9 of what is kept; without limits from 1e-290. Quantiles are asked by the smaller of p and 1 - p.
- **Boost**.Math {version("libboost-math-dev")} (as it comes, with long double inside), **R**'s library {version("r-mathlib")} and **SciPy** {scipy.__version__} have no limits. One cuts a law by
  differences of whichever tails are smaller, and inverts in the smaller tail; that is measured, as careful as it can be written.
  **Usual formula** is what is written instead, (F(x) - F(a))/(F(b) - F(a)) and its inverse, with SciPy's functions.
  No row: the library has no such law (SciPy: nor a Johnson SL law with a negative skewness).
- **Members**: `cdf` as in the usual formula (there is no upper tail), `pdf` divided by the same difference, `RandVal` with the limits, asked by p.
  Their results are settled; a beta `RandVal` is a root found to 1e-8.
- **none**: not one digit is right at the worst point. **fail**: at so many points there is no answer, but an error or not a number.
  ¹: without the laws for which the members are by definition not the law's: [where they are not](departures.md).

## Probabilities

Both tails.

{errors(table, "probability")}

## Quantiles

{errors(table, "quantile")}

## Densities

{errors(table, "density")}
"""


def main():
    load(os.path.abspath(sys.argv[1]))
    warnings.simplefilter("ignore")
    numpy.seterr(all="ignore")
    table = Table()
    add_random_laws(random.Random(20261121))
    for name, parameters in LAWS.items():
        for one in parameters:
            print(name, *one, file=sys.stderr)
            try:
                measure(table, name, one)
            except LookupError as refusal:  # moments that no Johnson curve is found for
                print(refusal, file=sys.stderr)
    with open(sys.argv[2], "w", encoding="utf-8") as file:
        file.write(page(table))
    for factor, _, miss in table.misses:
        print(f"{factor:.2f} times what is asked: {miss}", file=sys.stderr)


if __name__ == "__main__":
    main()
