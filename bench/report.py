#!/usr/bin/env python3
"""Prints the figures of a benchmark run (Google Benchmark's JSON on standard input), each as a
line for bench/figures.py: bench/report.py [SUFFIX], which is added to the names.

Of each benchmark the fastest repetition counts: what other programs on the machine add to a
time is never negative. Times are CPU time, but where somebody waits: there they are what a
clock shows, and the median of all repetitions counts.
"""
import json
import statistics
import sys

from figures import figure

MICROSECONDS = {"ns": 1e-3, "us": 1.0, "ms": 1e3}

# What is measured, against what, and the ratio to reach (None: for orientation).
RATIOS = [
    ("extraction", "bareFrames", 1.5),
    ("extraction", "bareTransforms", None),
    ("extraction", "plainFrames", None),
    ("trackOneShift", "trackChromaprint", 1.57),
    ("lookupAndHits", "bareSqlite", 1.15),
    ("lookup", "bareSqlite", None),
    ("bareSqliteShuffled", "bareSqlite", None),
    ("hitsAndVote", "lookup", 0.25),
    ("transformOurs", "transformKissFft", None),
    ("transformOfPairOurs", "transformOurs", None),
    ("transformEigen", "transformKissFft", None),
    ("logarithmsOurs", "logarithmsLibm", None),
    ("logarithmsSleef", "logarithmsLibm", None),
]

# Times to reach.
DURATIONS = {"captureEnd": "10 ms", "extraction": "3.3 ms, for orientation"}


def duration(microseconds):
    return f"{microseconds / 1e3:.2f} ms" if microseconds >= 1e3 else f"{microseconds:.2f} us"


def main():
    suffix = sys.argv[1] if len(sys.argv) > 1 else ""
    repetitions = {}
    awaited = set()
    counters = {}
    for run in json.load(sys.stdin)["benchmarks"]:
        if run["run_type"] != "iteration":
            continue
        name = run["run_name"].split("/")[0]
        if "manual_time" in run["run_name"]:
            awaited.add(name)
        time = run["real_time" if name in awaited else "cpu_time"]
        repetitions.setdefault(name, []).append(time * MICROSECONDS[run["time_unit"]])
        counters[name] = {key: run[key] for key in ("rows", "seconds") if key in run}

    times = {name: statistics.median(all_times) if name in awaited else min(all_times)
             for name, all_times in repetitions.items()}
    compared = set()
    for name, floor, limit in RATIOS:
        if name in times and floor in times:
            compared |= {name, floor}
            figure(name + suffix, duration(times[name]), floor, duration(times[floor]),
                   times[name] / times[floor], limit or "")
    for name in sorted(times.keys() - compared | times.keys() & DURATIONS.keys()):
        figure(name + suffix, duration(times[name]), reach=DURATIONS.get(name, ""))
    for name, values in counters.items():
        if "seconds" in values:
            speed = values["seconds"] * 1e6 / times[name]
            figure(name + suffix, f"{speed:.0f} x real time")
        if "rows" in values:
            figure(name + suffix, f"{values['rows']:.0f} rows")


if __name__ == "__main__":
    main()
