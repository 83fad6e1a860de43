"""Reference values of the incomplete beta ratio: python3 beta_ratio.py > beta_ratio.txt

Each line: a, b, u, side, lower, upper, conditioning of lower, of upper. x = u when the side is "x",
1 - u when it is "y"; u is exact. The conditioning of a tail f is |u f'(u)/f|. The ratio comes from its continued fraction (DLMF 8.17.22) on the convergent side of
the mean, in 45 digits beyond any cancellation, checked against mpmath's own betainc.
"""

import random
import sys

from mpmath import betainc, log, loggamma, exp, mp, mpf

mp.dps = 45
random.seed(708)


def fraction(a, b, x):
    """I_x(a, b) / (x^a y^b / (a B(a, b))) by Lentz's method."""
    tiny = mpf(10) ** -200
    c = mpf(1)
    d = 1 - (a + b) * x / (a + 1)
    d = 1 / (d if d else tiny)
    h = d
    m = 0
    while True:
        m += 1
        for numerator in (m * (b - m) * x / ((a + 2 * m - 1) * (a + 2 * m)),
                          -(a + m) * (a + b + m) * x / ((a + 2 * m) * (a + 2 * m + 1))):
            d = 1 + numerator * d
            d = 1 / (d if d else tiny)
            c = 1 + numerator / (c if c else tiny)
            step = c * d
            h *= step
        if abs(step - 1) < mpf(10) ** -35:
            return h


def tails(a, b, x, y):
    a, b = mpf(a), mpf(b)
    power = exp(a * log(x) + b * log(y) + loggamma(a + b) - loggamma(a) - loggamma(b))
    if x * (a + b + 2) < a + 1:
        lower = power * fraction(a, b, x) / a
        return lower, 1 - lower, power
    upper = power * fraction(b, a, y) / b
    return 1 - upper, upper, power


def line(a, b, u, side):
    x, y = (mpf(u), 1 - mpf(u)) if side == "x" else (1 - mpf(u), mpf(u))
    lower, upper, power = tails(a, b, x, y)
    if not 1e-305 < min(lower, upper):
        return None
    slope = power / (y if side == "x" else x)
    text = mp.nstr
    return (f"{a!r} {b!r} {u!r} {side} {text(lower, 18)} {text(upper, 18)} "
            f"{text(slope / lower, 3)} {text(slope / upper, 3)}")


def show(a, b, x):
    """A point given by a double x, or by its complement where that is the smaller one."""
    if not (0 < x < 1):
        return False
    result = line(a, b, x, "x") if x <= 0.5 else line(a, b, 1 - x, "y")
    if result:
        print(result)
    return bool(result)


def log_uniform(low, high):
    return exp(random.uniform(float(log(low)), float(log(high)))).__float__()


def around_mean(a, b):
    mean, spread = a / (a + b), (a * b / (a + b + 1)) ** 0.5 / (a + b)
    return mean + random.choice([1, 1, 3, 10, 30]) * random.gauss(0, 1) * spread


def any_x(a, b):
    return random.choice([lambda: around_mean(a, b), random.random, lambda: log_uniform(1e-12, 0.5),
                          lambda: 1 - log_uniform(1e-12, 0.5)])()


def repeat(count, shapes, place=any_x):
    done = 0
    while done < count:
        a, b = shapes()
        done += show(a, b, place(a, b))


def borders():
    """Both sides of every border between two methods, as (a, b, x)."""
    both = (1 - 1e-9, 1 + 1e-9)
    u = random.uniform
    for s in both:
        yield u(0.1, 0.9), u(0.1, 3), 0.5 * s
        yield log_uniform(1e-3, 1), 1e-15 * s, u(0.01, 0.5)
        yield log_uniform(1, 1e3), 1e-15 * s, u(0.01, 0.5)
        yield 1e-15 * s, log_uniform(1, 1e2), 0.9e-2 * u(0, 1)
        b = log_uniform(1e-3, 1)
        yield 1e-15 * b * s, b, u(0.01, 0.5)
        b = log_uniform(2, 1e4)
        yield 1e-16, b, s / b
        yield 1e-18 * s, u(0.1, 1) * 1e-18, u(0.01, 0.5)
        yield 1.0 * s, u(0.1, 1), u(0, 0.5)
        yield u(0.1, 1), 1.0 * s, u(0, 0.5)
        yield 1.0 * s, u(1, 50), u(0, 1)
        yield u(1, 50), 1.0 * s, u(0, 1)
        yield 0.2 * s, u(0.2, 1), u(0.3, 0.5)
        yield 0.2 * s, u(0.2, 1), log_uniform(1e-3, 0.3)
        b = u(0.01, 0.19)
        yield b * s, b, u(0.01, 0.5)
        a = u(0.01, 0.15)
        yield a, u(0.3, 1), 0.9 ** (1 / a) * s
        a = u(0.01, 0.08)
        yield a, u(0.3, 1), 0.3 * s
        yield u(0.1, 1), u(1, 50), 0.3 * s
        yield u(0.1, 1), u(1, 50), 0.1 * s
        a, b = u(0.05, 1), u(8, 80)
        yield a, b, 0.7 ** (1 / a) / b * s
        yield u(0.1, 1), 15 * s, u(0.1, 0.3)
        a, b = log_uniform(1.1, 200), log_uniform(1.1, 200)
        yield a, b, a / (a + b) * s
        a = log_uniform(1.1, 500)
        yield a, 40 * s, around_mean(a, 40)
        a = log_uniform(1.1, 500)
        yield 40 * s, a, around_mean(40, a)
        b = u(1.5, 40)
        yield b * u(1, 20), b, 0.7 / b * s
        b = u(2, 38)
        yield b * u(2.4, 6), b, 0.7 * s
        yield 15 * s, u(1.1, 5), u(0.71, 0.77)
        b = log_uniform(100, 1e4)
        yield 100 * s, b, 100 / (100 + b) * u(0.97, 1)
        yield b, 100 * s, b / (100 + b) * u(0.999, 1)
        a, b = log_uniform(101, 1e5), log_uniform(101, 1e5)
        low = min(a, b)
        yield a, b, (a - 0.03 * low * s) / (a + b)
        yield 8 * s, log_uniform(1.1, 1e4), None
        yield log_uniform(0.1, 8), 8 * s, None
        yield 1.5 * s, u(1, 8), None
        n = random.randint(2, 39)
        yield u(1, 60), n * s, None
        yield u(1, 60), float(n), None
        yield u(0.5, 9), u(0.5, 9), 0.375 * s


def far_tails(count):
    """Tails down to 1e-300 that are well conditioned all the same, as (a, b, u, side)."""
    yield 22.457241195254223, 3990.972614655684, 2.1160495459163014e-13, "x"
    yield 47640.35, 1.7647, 6.967e-136, "y"
    yield 20.0, 76.6, 6.19e-14, "x"
    yield 9.0954, 222093.0, 8.2e-37, "x"
    yield 3.1304, 1.0000000000000002, 2.9136e-299, "y"
    yield 100.0, 60.2466, 2.428e-6, "y"
    for i in range(count):
        if i % 2 == 0:
            a, b = log_uniform(1e-3, 105), log_uniform(1e-3, 1e6)
            u = 10 ** random.uniform(max(-300 / a, -300), 0) * a / (a + b)
        else:
            a, b = log_uniform(5, 1e6), log_uniform(1e-3, 1e6)
            u = (a - random.uniform(0, 110) * b / (a + b)) / (a + b)
        u, side = (u, "x") if u <= 0.5 else (1 - u, "y")
        if u > 0:
            yield (a, b, u, side) if i % 4 < 2 else (b, a, u, "y" if side == "x" else "x")


def main():
    for a, b, x in ((2.5, 3.5, 0.3), (0.01, 7.0, 0.9), (120.0, 130.0, 0.5)):
        difference = tails(a, b, mpf(x), 1 - mpf(x))[0] / betainc(a, b, 0, mpf(x), regularized=True) - 1
        assert abs(difference) < 1e-30, difference

    wide = lambda: (log_uniform(1e-3, 1e6), log_uniform(1e-3, 1e6))
    repeat(900, wide)
    repeat(350, wide, around_mean)
    repeat(150, lambda: (log_uniform(1e-3, 1), log_uniform(1e-3, 1)))
    repeat(150, lambda: (log_uniform(1e-3, 1), log_uniform(1, 100)))
    repeat(300, lambda: (random.uniform(1, 60), random.uniform(1, 60)))
    repeat(100, lambda: (log_uniform(1e-25, 1), log_uniform(1e-25, 10)))

    def similar():
        a = log_uniform(60, 1e6)
        return a, a * log_uniform(0.3, 3)
    repeat(250, similar, around_mean)
    for _ in range(4):
        for a, b, x in borders():
            x = around_mean(a, b) if x is None else x
            show(a, b, x)
            show(b, a, 1 - x)
    for point in far_tails(700):
        if result := line(*point):
            print(result)
    sys.stdout.flush()


main()
