#!/usr/bin/env python3
"""Prints the figures of a benchmark run (Google Benchmark's JSON on standard input), each as a
line for bench/figures.py: bench/report.py [SUFFIX], which is added to the names.

Of each benchmark the fastest repetition counts: what other programs on the machine add to a
time is never negative. Times are CPU time, but where somebody waits: there they are what a
clock shows.
"""
import json
import sys

from figures import figure

MICROSECONDS = {"ns": 1e-3, "us": 1.0, "ms": 1e3}

# What is measured, against what, and the ratio to reach (None: for orientation).
RATIOS = [
    ("extraction", "bareFrames", 1.5),
    ("extraction", "bareTransforms", None),
    ("extraction", "plainFrames", None),
    ("trackOneShift", "trackChromaprint", 1.57),
    ("lookup", "bareSqlite", 1.15),
    ("bareSqliteShuffled", "bareSqlite", None),
    ("hitsAndVote", "lookup", 0.25),
    ("transformOurs", "transformKissFft", None),
    ("transformOfPairOurs", "transformOurs", None),
    ("transformEigen", "transformKissFft", None),
    ("logarithmsOurs", "logarithmsLibm", None),
    ("logarithmsSleef", "logarithmsLibm", None),
]

# Times to reach.
DURATIONS = {"captureEnd": "10 ms"}


def duration(microseconds):
    return f"{microseconds / 1e3:.2f} ms" if microseconds >= 1e3 else f"{microseconds:.2f} us"


def main():
    suffix = sys.argv[1] if len(sys.argv) > 1 else ""
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

    compared = set()
    for name, floor, limit in RATIOS:
        if name in fastest and floor in fastest:
            compared |= {name, floor}
            figure(name + suffix, duration(fastest[name]), floor, duration(fastest[floor]),
                   fastest[name] / fastest[floor], limit or "")
    for name in sorted(fastest.keys() - compared):
        figure(name + suffix, duration(fastest[name]), reach=DURATIONS.get(name, ""))
    for name, values in counters.items():
        if "seconds" in values:
            speed = values["seconds"] * 1e6 / fastest[name]
            figure(name + suffix, f"{speed:.0f} x real time")
        if "rows" in values:
            figure(name + suffix, f"{values['rows']:.0f} rows")


if __name__ == "__main__":
    main()
