"""What `palvex simulate` is to print for given trials: random numbers, moments, percentiles' intervals, ranks and
sensitivities, worked out anew from their definitions. tests/simulation-check compares."""
import math


# The random numbers: Philox4x32-10.


def philox(seed, trial, stream):
    c = [trial & 0xFFFFFFFF, trial >> 32, stream & 0xFFFFFFFF, stream >> 32]
    k = [seed & 0xFFFFFFFF, seed >> 32]
    for _ in range(10):
        a, b = 0xD2511F53 * c[0], 0xCD9E8D57 * c[2]
        c = [(b >> 32) ^ c[1] ^ k[0], b & 0xFFFFFFFF, (a >> 32) ^ c[3] ^ k[1], a & 0xFFFFFFFF]
        k = [(k[0] + 0x9E3779B9) & 0xFFFFFFFF, (k[1] + 0xBB67AE85) & 0xFFFFFFFF]
    return (((c[1] << 32 | c[0]) >> 12) + 0.5) * 2.0**-52


def triangular(u, a, m, b):
    share = (m - a) / (b - a)
    return a + math.sqrt(u * (b - a) * (m - a)) if u < share else b - math.sqrt((1 - u) * (b - a) * (b - m))


# The figures of a run from its trials.


def moments(x):
    n, mean = len(x), math.fsum(x) / len(x)
    m2, m3, m4 = (math.fsum((v - mean) ** k for v in x) / n for k in (2, 3, 4))
    spread = min(x) < max(x)
    sd = None if n < 2 else math.sqrt(m2 * n / (n - 1)) if spread else 0
    return {
        "mean": mean,
        "sd": sd,
        "standardError": sd if sd is None else sd / math.sqrt(n),
        "skewness": m3 / m2**1.5 if spread else None,
        "kurtosis": m4 / m2**2 - 3 if spread else None,
        "min": min(x),
        "max": max(x),
    }


def interval(percent, n):
    """Ranks of the interval, from the binomial distribution added up term by term."""
    p = percent / 100
    if p in (0, 1):
        return (1, 1) if p == 0 else (n, n)
    term = [math.exp(math.lgamma(n + 1) - math.lgamma(k + 1) - math.lgamma(n - k + 1)
                     + k * math.log(p) + (n - k) * math.log1p(-p)) for k in range(n + 1)]
    low = 1
    below = 0.0  # P(B < l)
    for l in range(1, n + 1):
        below += term[l - 1]
        if below > 0.025:
            break
        low = l
    high = n
    above = 0.0  # P(B >= u)
    for u in range(n, 0, -1):
        above += term[u]
        if above > 0.025:
            break
        high = u
    return low, high


def ranks(x):
    order = sorted(range(len(x)), key=x.__getitem__)
    rank = [0.0] * len(x)
    i = 0
    while i < len(x):
        j = i
        while j < len(x) and x[order[j]] == x[order[i]]:
            j += 1
        for k in range(i, j):
            rank[order[k]] = (i + 1 + j) / 2
        i = j
    return rank


def correlation(a, b):
    ma, mb = math.fsum(a) / len(a), math.fsum(b) / len(b)
    aa = math.fsum((x - ma) ** 2 for x in a)
    bb = math.fsum((x - mb) ** 2 for x in b)
    if aa == 0 or bb == 0:
        return None
    return math.fsum((x - ma) * (y - mb) for x, y in zip(a, b)) / math.sqrt(aa * bb)


def sensitivity(x, y, position):
    mean = math.fsum(y) / len(y)
    total = math.fsum((v - mean) ** 2 for v in y)
    between = []
    for share in range(32):
        inside = [v for v, u in zip(y, position) if int(u * 32) == share]
        if inside:
            between.append(len(inside) * (math.fsum(inside) / len(inside) - mean) ** 2)
    tenth = lambda k: [v for v, u in zip(y, position) if int(u * 10) == k]
    mean_of = lambda v: math.fsum(v) / len(v) if v else None
    return {
        "rankCorrelation": correlation(ranks(x[:100000]), ranks(y[:100000])),
        "varianceShare": math.fsum(between) / total if min(y) < max(y) else None,
        "meanLow": mean_of(tenth(0)),
        "meanHigh": mean_of(tenth(9)),
    }
