#!/usr/bin/env python3
"""Turns the JSON of palvex_bench and the table of simulate.py into docs/performance.md.

Usage: report.py bench.json simulation.md performance.md.in > performance.md
"""

import json
import statistics
import sys
from collections import defaultdict

BLOCK = 1000  # values that a block of Laws.cpp has
UNIT = {"ns": 1.0, "us": 1e3, "ms": 1e6, "s": 1e9}


def medians(report):
    """{what: {case: {who: nanoseconds}}}, each the median over the repetitions."""
    times = defaultdict(list)
    for run in sorted(report["benchmarks"], key=lambda run: run["family_index"]):
        if run["run_type"] == "iteration":
            name = tuple(run["run_name"].split("/")[:3])
            times[name].append(run["cpu_time"] * UNIT[run["time_unit"]])
    table = defaultdict(lambda: defaultdict(dict))
    for (what, case, who), values in times.items():
        table[what][case][who] = statistics.median(values)
    return table


def number(value, digits=2):
    return f"{value:.{digits}f}" if value < 100 else f"{value:.0f}"


def row(cells):
    return "| " + " | ".join(cells) + " |"


def grid(head, rows):
    return "\n".join([row(head), row(["---"] + ["---:"] * (len(head) - 1)), *map(row, rows), ""])


def beside(table, what, columns):
    """Nanoseconds of all that do the same work."""
    rows = [[case] + [number(times[who], 1) if who in times else "" for who in columns.values()]
            for case, times in table[what].items()]
    return grid(["", *columns], rows)


def within_limits(table):
    """Law and members, whole and between limits, in nanoseconds."""
    rows = []
    for case, draw in table["draw"].items():
        times = [draw["Law"], table["between"][case]["Law"], table["outside"][case]["Law"],
                 draw["object"], table["between"][case]["limits"], table["outside"][case]["limits"],
                 table["cdf"][case]["Law"], table["cdf between"][case]["Law"], table["cdf outside"][case]["Law"]]
        rows.append([case] + [number(time, 1) for time in times])
    return grid(["", "`quantile`", "between", "outside", "`RandVal`", "between", "outside",
                 "`probability`", "between", "outside"], rows)


def blocks(table):
    rows = []
    for case, times in table["block"].items():
        law, loop = times["Law"] / BLOCK, times["object"] / BLOCK
        rows.append([case, number(law, 1), number(loop, 1), number(loop / law, 1)])
    return grid(["", "`quantiles`, ns", "`RandVal` in a loop, ns", "times as fast"], rows)


def overhead(table):
    """What makes a draw of the object cost more, in draws."""
    rows = []
    for case, draw in table["draw"].items():
        inside = table["between"][case]
        first = table["afresh"][case]["1"] - table["afresh"][case]["0"]
        rows.append([case, number(table["dynamic"][case]["on"] / draw["object"], 1),
                     number(table["validate"][case]["object"] / draw["object"], 0),
                     number(first / inside["limits"], 1)])
    return grid(["", "`Dynamic` on", "`ParamsOK`", "first draw after it"], rows)


def flatness(table):
    powers = sorted({int(power) for case in table["many"].values() for power in case})
    rows = []
    for case, times in table["many"].items():
        each = {int(power): time / 10 ** int(power) for power, time in times.items()}
        rows.append([case, number(each[4], 1)]
                    + [number(each[power] / each[4]) if power in each else "" for power in powers])
    return grid(["", "10^4, ns"] + [f"10^{power}" for power in powers], rows)


def marks(table):
    """(mark, at most, where it is worst, measured there, what it would take where it is missed)"""
    draw = table["draw"]

    def against(case, who):
        return draw[case]["object"] / draw[case][who]

    def worst(pairs):
        case, value = max(pairs, key=lambda pair: pair[1])
        return case, value

    yield ("`Law::quantile`, ns more than `RandVal`, with limits or without", 5.0,
           *worst((f"{what} {case}", times["Law"] - times["object" if what == "draw" else "limits"])
                  for what in ("draw", "between", "outside") for case, times in table[what].items()),
           "*`Law::quantile` beside `RandVal`*: where a quantile takes more than 100 ns, as those of gamma laws do, 5 ns are "
           "less than what two runs differ by.")
    beta = [(case, times["Law"] / min(times[who] for who in ("object", "Boost", "R")))
            for case, times in draw.items() if case.startswith("Beta")]
    yield ("beta `Law::quantile`, times the fastest of `RandVal`, Boost and R", 1.0,
           *worst(pair for pair in beta if pair[0] != "Beta 0.5 0.5"), "")
    yield ("the same for beta 0.5 0.5, the arcsine law", 1.0,
           *worst(pair for pair in beta if pair[0] == "Beta 0.5 0.5"),
           "The *arcsine law* has the closed form sin²(πp/2), here as in Boost. What is left is that a `Law` may be any law, "
           "behind a pointer, while Boost's type is known to the compiler, which inlines it into the loop.")
    yield ("`Law::quantiles`, times `RandVal` in a loop: uniform, triangular, normal", 0.5,
           *worst((case, times["Law"] / times["object"]) for case, times in table["block"].items()
                  if case in ("Uniform", "Triangular", "Normal")),
           "")
    yield ("normal draw, times the bare AS 241", 1.6, "Normal", against("Normal", "formula"), "")
    yield ("uniform draw, times the bare formula", 3.0, "Uniform", against("Uniform", "formula"),
           "A *uniform draw*'s formula is one product and one sum, half a nanosecond when inlined; two calls (object, "
           "family) take more than three times that. It would take the formula in the header, inlined into the "
           "caller's loop: `Law::quantiles` does that for blocks.")
    yield ("triangular draw, times the bare formula", 3.0, "Triangular", against("Triangular", "formula"),
           "A *triangular draw* divides to find the share below the likely value, because the error of that division "
           "comes before p is looked at. It would take the share prepared once for the parameters, as `Law` does.")
    # Beside a slow routine the object's share drowns in the noise of the measurement.
    fast = 5 * draw["Normal"]["formula"]
    yield ("what the object adds to a routine, times the bare AS 241 (10 ns for 14)", 10 / 14,
           *worst((f"{what} {case}",
                   (times["object"] - times["routine"]) / draw["Normal"]["formula"])
                  for what in ("pdf", "cdf", "draw") for case, times in table[what].items()
                  if times.get("routine", fast) < fast),
           "*What the object adds*: it calls the family through one pointer and adds its line to the trace of a "
           "failure. Beyond that, a density has its limits to look at.")
    for what in ("between", "outside"):
        name = "two limits" if what == "between" else "reversed limits"
        yield (f"draw with {name}, times one without at the same mapped probabilities", 1.25,
               *worst((case, times["limits"] / times["none"])
                      for case, times in table[what].items()),
               "*Draws with limits*: the mapping into the kept band is one product and one sum for two limits; for "
               "reversed limits one or two quotients and a branch that no predictor can learn. For the cheapest "
               "draws that is more than a quarter of the whole, whatever the code. It would take the quotients "
               "prepared as factors, whose rounding differs from the stateless routines.")
    for family in ("Gamma", "Beta"):
        for who in ("R", "GSL", "Boost"):
            yield (f"{family.lower()} `cdf` and `RandVal`, times {who}", 1.0,
                   *worst((f"{what} {case}", times["object"] / times[who])
                          for what in ("cdf", "draw") for case, times in table[what].items()
                          if case.startswith(family) and who in times),
                   "*Gamma and beta members*: Boost has closed forms for special shapes (beta 0.5 0.5 is the arcsine "
                   "law) and finite sums for whole ones. A beta `RandVal` keeps to Brent's root finder with its "
                   "tolerance of 1e-8; `Law::quantile` is the other inverse that this would take.")
    yield ("cost per draw, largest over smallest from 10^4 draws on", 1.1,
           *worst((case, max(each) / min(each)) for case, each in (
               (case, [time / 10 ** int(power) for power, time in times.items()])
               for case, times in table["many"].items())), "")


def verdicts(table):
    """The marks, and what the missed ones would take."""
    rows, missed = [], []
    for mark, limit, case, value, takes in marks(table):
        verdict = "reached" if value <= limit else f"missed by {100 * (value / limit - 1):.0f} %"
        rows.append([mark, number(limit), number(value), case, verdict])
        if value > limit and takes not in missed:
            missed.append(takes)
    text = grid(["mark", "at most", "measured", "worst at", ""], rows)
    if any(missed):
        text += "\nWhere a mark is missed, this is what it would take:\n\n"
        text += "".join(f"- {takes}\n" for takes in missed if takes)
    return text


OTHERS = {who: who for who in ("Boost", "R", "GSL", "routine", "formula")}


def main():
    texts = []
    for name in sys.argv[1:4]:
        with open(name, encoding="utf-8") as file:
            texts.append(file.read())
    report = json.loads(texts[0])
    table = medians(report)
    context = report["context"]
    machine = (f"{context['processor']}, {context['num_cpus']} cores, {context['compiler']}, "
               f"{context['date'][:10]}, load {context['load_avg'][0]:.1f} at the start")
    print(texts[2].format(
        machine=machine, verdicts=verdicts(table), simulation=texts[1],
        draw=beside(table, "draw", {"`quantile`": "Law", "`RandVal`": "object"} | OTHERS),
        cdf=beside(table, "cdf", {"`probability`": "Law", "`exceedance`": "Law, above", "`cdf`": "object"} | OTHERS),
        pdf=beside(table, "pdf", {"`density`": "Law", "`pdf`": "object"} | OTHERS),
        limits=within_limits(table), blocks=blocks(table), overhead=overhead(table),
        flatness=flatness(table)), end="")


if __name__ == "__main__":
    main()
