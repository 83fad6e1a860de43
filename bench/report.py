#!/usr/bin/env python3
"""Turns the JSON of palvex_bench into docs/performance.md: tables of ratios, marks and how to repeat.

Usage: report.py bench.json performance.md.in > performance.md
"""

import json
import statistics
import sys
from collections import defaultdict

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


def beside(table, what):
    """The object in nanoseconds, and how many times as long the others take."""
    others = ["routine", "formula", "Boost", "R", "GSL"]
    rows = []
    for case, times in table[what].items():
        mine = times["object"]
        rows.append([case, number(mine, 1)]
                    + [number(times[who] / mine) if who in times else "" for who in others])
    return grid(["", "object, ns"] + others, rows)


def overhead(table):
    rows = []
    for case, draw in table["draw"].items():
        inside, outside = table["between"][case], table["outside"][case]
        first = table["afresh"][case]["1"] - table["afresh"][case]["0"]
        rows.append([case,
                     number(inside["limits"] / inside["none"]),
                     number(outside["limits"] / outside["none"]),
                     number(table["dynamic"][case]["on"] / draw["object"], 1),
                     number(table["validate"][case]["object"] / draw["object"], 0),
                     number(first / inside["limits"], 1)])
    return grid(["", "between two limits", "reversed limits", "`Dynamic` on", "`ParamsOK`",
                 "first draw after it"], rows)


def flatness(table):
    powers = sorted({int(power) for case in table["many"].values() for power in case})
    rows = []
    for case, times in table["many"].items():
        each = {int(power): time / 10 ** int(power) for power, time in times.items()}
        rows.append([case, number(each[4], 1)]
                    + [number(each[power] / each[4]) if power in each else "" for power in powers])
    return grid(["", "10^4, ns"] + [f"10^{power}" for power in powers], rows)


def marks(table):
    """(mark, upper bound, where it is worst, measured there)."""
    draw = table["draw"]

    def against(case, who):
        return draw[case]["object"] / draw[case][who]

    def worst(pairs):
        case, value = max(pairs, key=lambda pair: pair[1])
        return case, value

    yield ("normal draw, times the bare AS 241", 1.6, "Normal", against("Normal", "formula"))
    for case in ("Uniform", "Triangular"):
        yield (f"{case.lower()} draw, times the bare formula", 3.0, case, against(case, "formula"))
    # Beside a slow routine the object's share drowns in the noise of the measurement.
    fast = 5 * draw["Normal"]["formula"]
    yield ("what the object adds to a routine, times the bare AS 241 (10 ns for 14)", 10 / 14,
           *worst((f"{what} {case}",
                   (times["object"] - times["routine"]) / draw["Normal"]["formula"])
                  for what in ("pdf", "cdf", "draw") for case, times in table[what].items()
                  if times.get("routine", fast) < fast))
    for what in ("between", "outside"):
        name = "two limits" if what == "between" else "reversed limits"
        yield (f"draw with {name}, times one without at the same mapped probabilities", 1.25,
               *worst((case, times["limits"] / times["none"])
                      for case, times in table[what].items()))
    for family in ("Gamma", "Beta"):
        for who in ("R", "GSL", "Boost"):
            yield (f"{family.lower()} probability and draw, times {who}", 1.0,
                   *worst((f"{what} {case}", times["object"] / times[who])
                          for what in ("cdf", "draw") for case, times in table[what].items()
                          if case.startswith(family) and who in times))
    yield ("cost per draw, largest over smallest from 10^4 draws on", 1.1,
           *worst((case, max(each) / min(each)) for case, each in (
               (case, [time / 10 ** int(power) for power, time in times.items()])
               for case, times in table["many"].items())))


def verdicts(table):
    rows = []
    for mark, limit, case, value in marks(table):
        verdict = "reached" if value <= limit else f"missed by {100 * (value / limit - 1):.0f} %"
        rows.append([mark, number(limit), number(value), case, verdict])
    return grid(["mark", "at most", "measured", "worst at", ""], rows)


def main():
    with open(sys.argv[1], encoding="utf-8") as file:
        report = json.load(file)
    with open(sys.argv[2], encoding="utf-8") as file:
        text = file.read()
    table = medians(report)
    context = report["context"]
    machine = (f"{context['processor']}, {context['num_cpus']} cores, {context['compiler']}, "
               f"{context['date'][:10]}, load {context['load_avg'][0]:.1f} at the start")
    print(text.format(machine=machine, verdicts=verdicts(table), pdf=beside(table, "pdf"),
                      cdf=beside(table, "cdf"), draw=beside(table, "draw"),
                      overhead=overhead(table), flatness=flatness(table)), end="")


if __name__ == "__main__":
    main()
