"""The formula columns in NumPy and SciPy, timed like the programs beside it and written in the same shape.

usage: peers_numpy.py <result file> [part of a workload's name]
"""
import json
import math
import statistics
import sys
import time

import numpy
import scipy
from scipy.special import ndtr

COUNT, REPETITIONS, MIN_SECONDS = 1_000_000, 5, 0.05


def cases():
    """The splitmix64 stream of make_cases in formula_bench.cpp."""
    with numpy.errstate(over="ignore"):
        z = numpy.uint64(1) + numpy.arange(1, 2 * COUNT + 1, dtype=numpy.uint64) * numpy.uint64(0x9E3779B97F4A7C15)
        z = (z ^ (z >> numpy.uint64(30))) * numpy.uint64(0xBF58476D1CE4E5B9)
        z = (z ^ (z >> numpy.uint64(27))) * numpy.uint64(0x94D049BB133111EB)
        z ^= z >> numpy.uint64(31)
    u = 3 * (((z >> numpy.uint64(11)) + numpy.uint64(1)).astype(float) * 2.0**-53)
    x, y = u[0::2].copy(), u[1::2].copy()
    y[7::8] = x[7::8]
    return x, y


FORMULAS = {
    "formula1": (lambda x, y: x + y * 2 - 3 / x, lambda x, y: x + y * 2 - 3 / x),
    "formula2": (lambda x, y: numpy.sqrt(x**2 + y**2) * numpy.sin(x) - numpy.log(numpy.abs(y) + 1),
                 lambda x, y: math.hypot(x, y) * math.sin(x) - math.log(abs(y) + 1)),
    "formula3": (lambda x, y: (x > 1) & (y < 2) | ~(x == y), lambda x, y: x > 1 and y < 2 or x != y),
    "formula4": (lambda x, y: ndtr(x) * 2 - numpy.exp(-x**2 / 2),
                 lambda x, y: math.erfc(-x / math.sqrt(2)) - math.exp(-x * x / 2)),
}


def seconds_per_run(evaluate, x, y):
    runs, start = 0, time.process_time()
    while (spent := time.process_time() - start) < MIN_SECONDS:
        evaluate(x, y)
        runs += 1
    return spent / runs


def main():
    part = sys.argv[2] if len(sys.argv) > 2 else ""
    x, y = cases()
    results = []
    for name, (evaluate, truth) in FORMULAS.items():
        run_name = f"{name}_column_1e6/numpy"
        if part not in run_name:
            continue
        values = evaluate(x[:1024], y[:1024])
        right = all(math.isclose(v, truth(a, b), rel_tol=1e-12, abs_tol=1e-12) for v, a, b in zip(values, x, y))
        entry = {"name": run_name, "run_name": run_name}
        if not right:
            results.append(entry | {"error_occurred": True, "error_message": "wrong value: not timed"})
            continue
        evaluate(x, y)
        times = [seconds_per_run(evaluate, x, y) for _ in range(REPETITIONS)]
        nanoseconds = statistics.median(times) * 1e9 / COUNT
        results.append(entry | {"name": run_name + "_median", "run_type": "aggregate", "aggregate_name": "median",
                                "cpu_time": nanoseconds, "real_time": nanoseconds, "time_unit": "ns"})
        print(f"{run_name:40}{nanoseconds:10.2f} ns", flush=True)
    with open(sys.argv[1], "w") as file:
        json.dump({"context": {"numpy": numpy.__version__, "scipy": scipy.__version__}, "benchmarks": results}, file)


if __name__ == "__main__":
    main()
