#!/usr/bin/env python3
"""Prints figures of the benchmarks as one table.

Each benchmark prints a figure as a line of tab-separated fields: what was measured, its
value, against what, that one's value, their ratio, and what is to be reached. As a program,
this aligns such lines from standard input.
"""
import signal
import sys

HEADINGS = ("what", "measured", "against", "measured", "ratio", "to reach")
LEFT_ALIGNED = (0, 2)


def figure(what, measured, against="", peer="", ratio=None, reach=""):
    fields = (what, measured, against, peer, "" if ratio is None else f"{ratio:.2f}", reach)
    print("\t".join(map(str, fields)), flush=True)


def main():
    # Ctrl-C ends what measures; what it measured until then is still to be printed.
    signal.signal(signal.SIGINT, signal.SIG_IGN)
    lines = sys.stdin.readlines()
    if not lines:
        return
    rows = [HEADINGS] + [line.rstrip("\n").split("\t") for line in lines]
    rows = [tuple(row) + ("",) * (len(HEADINGS) - len(row)) for row in rows]
    widths = [max(map(len, column)) for column in zip(*rows)]
    for row in rows:
        cells = [field.ljust(width) if i in LEFT_ALIGNED else field.rjust(width)
                 for i, (field, width) in enumerate(zip(row, widths))]
        print("  ".join(cells).rstrip())


if __name__ == "__main__":
    main()
