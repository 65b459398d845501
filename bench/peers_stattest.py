"""The tests and the smoother in SciPy and R, on the data of stattest_bench.cpp.

usage: peers_stattest.py <result file> [part of a workload's name]

A peer whose statistic is not the one in stattest.json beside the result file is not timed.
"""
import json
import math
import pathlib
import shutil
import statistics
import subprocess
import sys
import time

import numpy
import scipy
from scipy import stats

REPETITIONS, MIN_SECONDS, TOLERANCE = 5, 0.05, 1e-5  # the F tail and the scores are good to six digits


def bells(count, seed):
    state, u = seed, numpy.empty(4 * count)
    for i in range(4 * count):
        state = 16807 * state % 2147483647
        u[i] = state / 2147483647
    return u[0::4] + u[1::4] + u[2::4] + u[3::4] - 2


def workloads(part):
    for n in (50, 500, 5000):
        x = bells(n, n)
        yield f"ks_normal_n{n}", lambda x=x: stats.kstest(x, "norm", (0, 0.6), method="asymp").statistic
        yield f"shapiro_wilk_n{n}", lambda x=x: stats.shapiro(x).statistic
    if any(part in name + "_1e6/scipy" for name in ("anova", "anova_levene", "simple_correlation", "kruskal_wallis")):
        x = bells(1_000_000, 7)
        y = bells(1_000_000, 8) + 0.5 * x
        groups = numpy.split(x, 4)
        yield "anova_1e6", lambda: stats.f_oneway(*groups).statistic
        yield "anova_levene_1e6", lambda: (stats.f_oneway(*groups), stats.levene(*groups, center="mean").statistic)[1]
        yield "simple_correlation_1e6", lambda: stats.pearsonr(x, y)[0]
        yield "kruskal_wallis_1e6", lambda: stats.kruskal(*groups).statistic


def seconds_per_run(call):
    runs, start = 0, time.process_time()
    while (spent := time.process_time() - start) < MIN_SECONDS:
        call()
        runs += 1
    return spent / runs


def measured(part):
    for name, call in workloads(part):
        if part in f"{name}/scipy":
            value = call()
            yield f"{name}/scipy", statistics.median(seconds_per_run(call) for _ in range(REPETITIONS)) * 1e9, value
    if shutil.which("Rscript"):
        script = pathlib.Path(__file__).with_suffix(".R")
        lines = subprocess.run(["Rscript", "--vanilla", script, part.removesuffix("/r")], check=True,
                               capture_output=True, text=True).stdout
        for line in lines.splitlines():
            name, nanoseconds, value = line.split()
            yield f"{name}/r", float(nanoseconds), float(value)


def expected_statistics(file):
    if not file.exists():
        return {}
    entries = json.loads(file.read_text())["benchmarks"]
    return {e["run_name"].split("/")[0]: e["statistic"] for e in entries if e.get("aggregate_name") == "median"}


def main():
    result, part = pathlib.Path(sys.argv[1]), sys.argv[2] if len(sys.argv) > 2 else ""
    expected = expected_statistics(result.with_name("stattest.json"))
    results = []
    for name, nanoseconds, value in measured(part):
        entry = {"name": name, "run_name": name}
        reference = expected.get(name.split("/")[0], value)
        if not math.isclose(value, reference, rel_tol=TOLERANCE):
            results.append(entry | {"error_occurred": True, "error_message": "wrong value: not timed"})
            print(f"{name:40} wrong value: {value}, not {reference}")
            continue
        results.append(entry | {"name": name + "_median", "run_type": "aggregate", "aggregate_name": "median",
                                "cpu_time": nanoseconds, "real_time": nanoseconds, "time_unit": "ns"})
        print(f"{name:40}{nanoseconds:14.0f} ns", flush=True)
    result.write_text(json.dumps({"context": {"numpy": numpy.__version__, "scipy": scipy.__version__},
                                  "benchmarks": results}))


if __name__ == "__main__":
    main()
