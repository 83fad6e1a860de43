#!/usr/bin/env python3
"""References for Law: probability, exceedance and logarithm of the density of each type, whole and
between limits as deep as 35 standard deviations of a normal law, computed with 60 digits.

    tests/data/law.py > tests/data/law.csv

Columns: type, four parameters (of a Johnson law gamma, delta, lambda, xi and the curve in the type),
limits, x, P(X <= x), P(X > x), ln density, the condition numbers of the first two and of the
density (how much a relative change of x, of a limit or of a parameter that is subtracted from x
changes them, relatively), and the density."""

from mpmath import mp, mpf, erfc, exp, expm1, log, sqrt, pi, gammainc, hyp2f1, asinh, inf, loggamma, floor, ldexp

mp.dps = 60


def normal_tails(z):
    return erfc(-z / sqrt(2)) / 2, erfc(z / sqrt(2)) / 2


def log_phi(z):
    return -z * z / 2 - log(2 * pi) / 2


class Law:
    """tails(x), log density and its slope at x, support, and what is subtracted from x: `origin`, or the
    parameters that are `located` like x."""

    def __init__(self, name, p):
        self.name, self.given = name, p
        self.p = p = [mpf(v) for v in p]
        self.origin = mpf(0)
        self.located = []
        self.low, self.high = -inf, inf
        self.extra = lambda x: 0  # further conditioning of the argument of a logarithm
        if name == "Normal":
            self.origin = p[0]
            self.tails = lambda x: normal_tails((x - p[0]) / p[1])
            self.logf = lambda x: log_phi((x - p[0]) / p[1]) - log(p[1])
        elif name == "Uniform":
            self.origin, self.low, self.high = p[0], p[0], p[1]
            w = p[1] - p[0]
            self.tails = lambda x: ((x - p[0]) / w, (p[1] - x) / w)
            self.logf = lambda x: -log(w)
        elif name == "Triangular":
            a, m, b = p
            self.low, self.high, self.located = a, b, [0, 1, 2]

            def tails(x):
                # The other tail is that at m and the trapezium between.
                if x <= m and m > a:
                    return ((x - a) ** 2 / ((m - a) * (b - a)),
                            ((b - m) + (m - x) * (x - a + m - a) / (m - a)) / (b - a))
                return (((m - a) + (x - m) * (b - x + b - m) / (b - m)) / (b - a),
                        (b - x) ** 2 / ((b - m) * (b - a)))

            self.tails = tails
            self.logf = lambda x: log(2 * (x - a) / ((m - a) * (b - a)) if x <= m and m > a
                                      else 2 * (b - x) / ((b - m) * (b - a)))
        elif name == "Lognormal":
            self.origin = self.low = p[2]
            self.tails = lambda x: normal_tails((log(x - p[2]) - p[0]) / p[1])
            self.logf = lambda x: (log_phi((log(x - p[2]) - p[0]) / p[1]) - log(p[1]) -
                                   log(x - p[2]))
            self.extra = lambda x: (abs(p[0]) + abs(log(x - p[2]))) * (x - p[2])
        elif name == "Exponential":
            self.origin = self.low = p[1]
            self.tails = lambda x: (-expm1(-p[0] * (x - p[1])), exp(-p[0] * (x - p[1])))
            self.logf = lambda x: log(p[0]) - p[0] * (x - p[1])
        elif name == "Weibull":
            self.origin = self.low = p[2]
            z = lambda x: (x - p[2]) / p[1]
            self.tails = lambda x: (-expm1(-z(x) ** p[0]), exp(-z(x) ** p[0]))
            self.logf = lambda x: log(p[0] / p[1]) + (p[0] - 1) * log(z(x)) - z(x) ** p[0]
        elif name == "Gamma":
            self.origin = self.low = p[2]
            z = lambda x: (x - p[2]) / p[1]

            def tails(x):
                # The smaller one directly; the other is its complement.
                if z(x) < p[0]:
                    low = gammainc(p[0], 0, z(x), regularized=True)
                    return low, 1 - low
                high = gammainc(p[0], z(x), inf, regularized=True)
                return 1 - high, high

            self.tails = tails
            self.logf = lambda x: (p[0] - 1) * log(z(x)) - z(x) - loggamma(p[0]) - log(p[1])
        elif name == "Beta":
            a, b, self.low, self.high = p
            self.located = [] if (self.low, self.high) == (0, 1) else [2, 3]
            w = p[3] - p[2]

            log_beta = loggamma(a) + loggamma(b) - loggamma(a + b)

            def ratio(a, b, u):  # by a series whose terms are all positive, in integers of 2^-260
                power = exp(a * log(u) + b * log(1 - u) - log_beta) / a
                if u > 0.95:
                    return power * hyp2f1(1, a + b, a + 1, u)
                above, below, u = (int(floor(ldexp(v, 260))) for v in (a + b, a + 1, u))
                term = total = 1 << 260
                while term:
                    term = term * above // below * u >> 260
                    total += term
                    above, below = above + (1 << 260), below + (1 << 260)
                return power * ldexp(mpf(total), -260)

            def tails(x):
                u = (x - p[2]) / w
                if u < a / (a + b):
                    low = ratio(a, b, u)
                    return low, 1 - low
                high = ratio(b, a, 1 - u)
                return 1 - high, high

            self.tails = tails
            self.logf = lambda x: ((a - 1) * log((x - p[2]) / w) + (b - 1) * log((p[3] - x) / w) -
                                   log(w) - log_beta)
        elif name[:8] == "Johnson ":
            g, d, l, xi = p
            self.origin = xi
            if name[8:] == "SU":
                u = lambda x: (x - xi) / l
                self.z = lambda x: g + d * asinh(u(x))
                self.logdz = lambda x: log(d / l) - log(1 + u(x) ** 2) / 2
                self.extra = lambda x: (abs(g / d) + abs(asinh(u(x)))) * l * sqrt(1 + u(x) ** 2)
            elif name[8:] == "SL":
                self.low, self.high = (xi, inf) if l > 0 else (-inf, xi)
                self.z = lambda x: l * (g + d * log(l * (x - xi)))
                self.logdz = lambda x: log(d) - log(l * (x - xi))
                self.extra = lambda x: (abs(g / d) + abs(log(l * (x - xi)))) * abs(x - xi)
            else:
                self.low, self.high = xi, xi + l
                self.located = [2]
                self.z = lambda x: g + d * log((x - xi) / (xi + l - x))
                self.logdz = lambda x: log(d * l) - log(x - xi) - log(xi + l - x)
                self.extra = lambda x: ((abs(g / d) + abs(log((x - xi) / (xi + l - x)))) *
                                        (x - xi) * (xi + l - x) / l)
            self.tails = lambda x: normal_tails(self.z(x))
            self.logf = lambda x: log_phi(self.z(x)) + self.logdz(x)

    def between(self, x, y):
        """The probability between x and y, None for an end."""
        lower = (mpf(0), mpf(1)) if x is None else self.tails(x)
        upper = (mpf(1), mpf(0)) if y is None else self.tails(y)
        return upper[0] - lower[0] if upper[0] < lower[1] else lower[1] - upper[1]

    def change(self, of, x):
        """The change of of(law, x) for relative changes of the located parameters."""
        total, h = mpf(0), mpf(10) ** -25
        for i in self.located:
            p = [v * (1 + h) if j == i else v for j, v in enumerate(self.p)]
            total += abs(of(Law(self.name, p), x) - of(self, x)) / h
        return total

    def weight(self, x):
        """The absolute change of a tail for a relative change of x and what is subtracted."""
        smaller = min((0, 1), key=lambda i: self.tails(x)[i])
        return (exp(self.logf(x)) * (abs(x) + abs(self.origin) + self.extra(x)) +
                self.change(lambda law, x: law.tails(x)[smaller], x))


class Reference:
    """P(X <= x), P(X > x), the logarithm of the density, and their condition numbers, of the law that
    `pieces` (pairs of ends, None for the law's own) keep, at x in one of them."""

    def __init__(self, law, pieces, x):
        masses = [law.between(*piece) for piece in pieces]
        total = sum(masses)
        below = above = mpf(0)
        weight = law.weight(x)
        for (a, b), mass in zip(pieces, masses):
            if (a is None or a < x) and (b is None or x < b):
                below += law.between(a, x)
                above += law.between(x, b)
            elif b is not None and x >= b:
                below += mass
            else:
                above += mass
            weight += sum(law.weight(c) for c in (a, b) if c is not None)
        h = abs(x) * mpf(10) ** -25
        slope = (law.logf(x + h) - law.logf(x - h)) / (2 * h) if x != 0 else mpf(0)
        self.below, self.above = below / total, above / total
        self.log_density = law.logf(x) - log(total)
        self.density = exp(law.logf(x)) / total
        self.k_below, self.k_above = weight / below, weight / above
        self.k_density = (abs(slope) * (abs(x) + abs(law.origin) + law.extra(x)) +
                          law.change(lambda one, x: one.logf(x), x) +
                          sum(law.weight(c) / total for piece in pieces for c in piece if c is not None))


def nearest(law, target, upper):
    """A double near the value with that tail."""
    low, high = law.low, law.high
    mp.dps = 20
    tail = lambda x: law.tails(x)[1 if upper else 0]
    if law.high == inf:
        step = mpf(1)
        start = law.low if law.low > -inf else law.origin
        while (tail(start + step) > target) == upper and step < mpf(10) ** 300:
            step *= 2
        high = start + step
    if law.low == -inf:
        step = mpf(1)
        start = law.high if law.high < inf else law.origin
        while (tail(start - step) < target) == upper and step < mpf(10) ** 300:
            step *= 2
        low = start - step
    for _ in range(70):
        # Beside 0 halve the logarithm.
        if law.low == 0 and low < high / 4:
            middle = sqrt(max(low, mpf(10) ** -320) * high)
        else:
            middle = (low + high) / 2
        if (tail(middle) > target) == upper:
            low = middle
        else:
            high = middle
    mp.dps = 60
    x = mpf(float(low))
    return x if law.low < x < law.high else None


def short(v, digits=20):
    return mp.nstr(v, digits, min_fixed=1, max_fixed=0)


LAWS = [
    ("Normal", ["0", "1"]), ("Normal", ["-3", "0.125"]), ("Normal", ["1000000", "2.5"]),
    ("Uniform", ["0", "1"]), ("Uniform", ["-5", "1000"]),
    ("Triangular", ["0", "2", "10"]), ("Triangular", ["0", "0", "1"]),
    ("Triangular", ["-1", "3", "3"]),
    ("Lognormal", ["0", "1", "0"]), ("Lognormal", ["3", "0.25", "-4"]),
    ("Exponential", ["2", "0"]), ("Exponential", ["0.0078125", "100"]),
    ("Weibull", ["0.5", "2", "0"]), ("Weibull", ["3.5", "1", "2"]),
    ("Beta", ["2", "3", "0", "1"]), ("Beta", ["0.3125", "0.75", "0", "1"]),
    ("Beta", ["200", "5000", "0", "1"]), ("Beta", ["2.5", "4", "-2", "6"]),
    ("Gamma", ["0.5", "1", "0"]), ("Gamma", ["3", "2", "1"]), ("Gamma", ["200", "0.125", "0"]),
    ("Gamma", ["10000", "1", "0"]),
    ("Johnson SU", ["-0.75", "1.5", "2", "1"]), ("Johnson SB", ["0.5", "1.25", "10", "-3"]),
    ("Johnson SL", ["1.5", "2.5", "1", "-1"]), ("Johnson SL", ["1.5", "2.5", "-1", "4"]),
]


def main():
    for name, given in LAWS:
        law = Law(name, given)
        cases = [(None, None)]
        for depth in (3, 6, 10, 20, 35):
            tail = normal_tails(mpf(-depth))[0]
            for upper in (True, False):
                end, other = (law.high, law.low) if upper else (law.low, law.high)
                # Beside a finite end other than 0 the doubles are too far apart for a far tail.
                if abs(end) != inf and end != 0 and depth > 3:
                    continue
                limit = nearest(law, tail, upper)
                if limit is not None and law.between(*((limit, None) if upper else (None, limit))) > 1e-306:
                    cases.append((limit, None) if upper else (None, limit))
        quartiles = [nearest(law, mpf(t), False) for t in (0.3, 0.6)]
        cases += [tuple(quartiles), tuple(reversed(quartiles))]
        for lower, upper in cases:
            is_reversed = lower is not None and upper is not None and lower > upper
            pieces = [(None, upper), (lower, None)] if is_reversed else [(lower, upper)]
            masses = [law.between(*piece) for piece in pieces]
            total = sum(masses)
            for share in ("1e-9", "0.125", "0.5", "0.875", "1e-9 above"):
                from_above = share.endswith("above")
                p = mpf(share.split()[0]) * total
                # The tail of the whole law at this share of what is kept.
                if not from_above:
                    x = (nearest(law, p, False) if pieces[0][0] is None and p < masses[0] else
                         nearest(law, (total - p) + (0 if pieces[-1][1] is None else
                                                     law.tails(pieces[-1][1])[1]), True))
                else:
                    x = nearest(law, p + (0 if pieces[-1][1] is None else
                                          law.tails(pieces[-1][1])[1]), True)
                if x is None or 0 < abs(x) < mpf(10) ** -307:
                    continue
                if not any((a is None or a < x) and (b is None or x < b) for a, b in pieces):
                    continue
                found = Reference(law, pieces, x)
                if min(found.below, found.above) < 1e-306:
                    continue
                fields = [name, *given, *[""] * (4 - len(given)),
                          *("" if c is None else repr(float(c)) for c in (lower, upper)),
                          repr(float(x)), short(found.below), short(found.above),
                          short(found.log_density), short(found.k_below, 3),
                          short(found.k_above, 3), short(found.k_density, 3),
                          short(found.density, 8)]
                print(",".join(fields))


if __name__ == "__main__":
    main()
