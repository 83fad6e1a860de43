#!/usr/bin/env python3
"""Measures `palvex simulate` beside NumPy on the same model, in one run, and writes a section about it.

  bench/simulate.py PROGRAM SECTION [--quick]
"""
import os
import resource
import subprocess
import sys
import tempfile
import time

program, section = os.path.abspath(sys.argv[1]), os.path.abspath(sys.argv[2])
quick = "--quick" in sys.argv[3:]
repetitions = 1 if quick else 5

# Ten inputs: the calls of NumPy, and the rows of the table.
inputs = [("triangular", "Triangular", (8, 10, 15)), ("triangular", "Triangular", (60, 75, 120)),
          ("triangular", "Triangular", (1, 2, 6)), ("normal", "Normal", (620, 45)), ("normal", "Normal", (30, 4)),
          ("normal", "Normal", (0, 12)), ("lognormal", "Lognormal", (2.5, 0.6)), ("lognormal", "Lognormal", (1, 0.3)),
          ("uniform", "Uniform", (18, 26)), ("uniform", "Uniform", (0, 50))]

numpy_program = """
import sys, time
import numpy as np
n = int(sys.argv[1])
calls = {calls}
start = time.perf_counter()
random = np.random.default_rng(1)
total = np.zeros(n)
for name, parameters in calls:
    total += getattr(random, name)(*parameters, n)
middle = time.perf_counter()
np.percentile(total, [5, 10, 50, 80, 90, 95])
end = time.perf_counter()
total.mean(), total.std(ddof=1)
print(time.perf_counter() - start, end - middle)
"""


def run(command):
    """Seconds of the whole process, MiB at its peak, and what it wrote."""
    start = time.perf_counter()
    process = subprocess.Popen(command, stdout=subprocess.PIPE)
    out = process.stdout.read()
    _, status, usage = os.wait4(process.pid, 0)
    if status != 0:
        sys.exit(f"{command}: status {status}")
    return time.perf_counter() - start, usage.ru_maxrss / 1024, out


def best(measure):
    return tuple(map(min, zip(*(measure() for _ in range(repetitions)))))


with tempfile.TemporaryDirectory() as folder:
    os.chdir(folder)
    with open("table.csv", "w") as file:
        file.write("Name,Type,Param1,Param2,Param3\n")
        for i, (_, name, parameters) in enumerate(inputs, 1):
            file.write(",".join(map(str, (f"Input {i}", name, *parameters))) + "\n")
    script = numpy_program.format(calls=[(name, parameters) for name, _, parameters in inputs])

    def numpy_seconds(n):
        _, memory, out = run(["/usr/bin/python3", "-c", script, str(n)])
        seconds, percentiles = map(float, out.split())
        return seconds, percentiles, memory

    def palvex_seconds(n, threads):
        seconds, memory, _ = run([program, "simulate", "table.csv", "-n", str(n), "--threads", str(threads)])
        return seconds, memory

    lines = []
    for n in (100_000, 1_000_000) if quick else (1_000_000, 10_000_000):
        seconds, percentiles, memory = best(lambda: numpy_seconds(n))
        one, one_memory = best(lambda: palvex_seconds(n, 1))
        two, two_memory = best(lambda: palvex_seconds(n, 2))
        each = lambda s: f"{s * 1e9 / n:.0f}"
        lines += [f"| {n:,} | NumPy: draws, sum, percentiles | {seconds:.3f} | {each(seconds)} | 1 | {memory:.0f} |",
                  f"| | palvex, one thread | {one:.3f} | {each(one)} | {seconds / one:.2f} | {one_memory:.0f} |",
                  f"| | palvex, two threads | {two:.3f} | {each(two)} | {seconds / two:.2f} | {two_memory:.0f} |"]
        print(*lines[-3:], sep="\n")
        print(f"NumPy: {percentiles * 1e9 / n:.0f} ns a value for the percentiles")

numpy_version = subprocess.run(["/usr/bin/python3", "-c", "import numpy; print(numpy.__version__)"],
                               capture_output=True, text=True).stdout.strip()
with open(section, "w") as file:
    file.write(f"""Ten inputs (three triangular, three normal, two lognormal, two uniform), their sum, its mean, standard deviation and six
percentiles, the same in both. NumPy {numpy_version} draws whole columns and is timed without its start; `palvex simulate` is timed as a
program, from its start to its exit, and also works out the statistics of the inputs, intervals, and sensitivities. Best of {repetitions} runs;
{os.cpu_count()} processors.

| trials | | seconds | ns a trial | times as fast | MiB at the peak |
| ---: | --- | ---: | ---: | ---: | ---: |
""" + "\n".join(lines) + "\n")
