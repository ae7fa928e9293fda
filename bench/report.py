#!/usr/bin/env python3
"""Prints the figures of a benchmark run (Google Benchmark's JSON on standard input) as a table.

Of each benchmark the fastest repetition counts: what other programs on the machine add to a
time is never negative. Times are CPU time, but where somebody waits: there they are what a
clock shows.
"""
import json
import sys

MICROSECONDS = {"ns": 1e-3, "us": 1.0, "ms": 1e3}

# What is measured, against what, and the ratio to reach (None: for orientation).
RATIOS = [
    ("extraction", "bareFrames", 1.5),
    ("extraction", "bareTransforms", None),
    ("extraction", "plainFrames", None),
    ("trackOneShift", "trackChromaprint", 1.57),
    ("lookup", "bareSqlite", 1.15),
    ("hitsAndVote", "lookup", 0.25),
    ("transformOurs", "transformKissFft", None),
    ("transformOfPairOurs", "transformOurs", None),
    ("transformEigen", "transformKissFft", None),
    ("logarithmsOurs", "logarithmsLibm", None),
    ("logarithmsSleef", "logarithmsLibm", None),
]


def main():
    fastest = {}
    counters = {}
    for run in json.load(sys.stdin)["benchmarks"]:
        if run["run_type"] != "iteration":
            continue
        name = run["run_name"].split("/")[0]
        kind = "real_time" if "manual_time" in run["run_name"] else "cpu_time"
        time = run[kind] * MICROSECONDS[run["time_unit"]]
        fastest[name] = min(time, fastest.get(name, time))
        counters[name] = {key: run[key] for key in ("rows", "seconds") if key in run}

    print(f"{'benchmark':<22}{'time':>14}")
    for name in sorted(fastest):
        print(f"{name:<22}{fastest[name]:>11.2f} us")
    print()
    for name, floor, limit in RATIOS:
        if name in fastest and floor in fastest:
            ratio = fastest[name] / fastest[floor]
            wanted = f"   (to reach: {limit})" if limit else ""
            print(f"{name:<22}{ratio:>8.2f} x {floor}{wanted}")
    for name, values in counters.items():
        if "seconds" in values:
            speed = values["seconds"] * 1e6 / fastest[name]
            print(f"{name:<22}{speed:>8.0f} x real time")
        if "rows" in values:
            print(f"{name:<22}{values['rows']:>8.0f} rows")


if __name__ == "__main__":
    main()
