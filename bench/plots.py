#!/usr/bin/env python3
"""Draws how costs grow: bench/plots.py FIGURES OUTPUT

FIGURES is a folder with growth.tsv (what lirvox_growth prints), growing.tsv (bench/growing.py)
and lengths.tsv (bench/lengths.py); OUTPUT gets an SVG for each. Needs matplotlib (Debian's
python3-matplotlib).
"""
import csv
import pathlib
import sys

import matplotlib

matplotlib.use("svg")
import matplotlib.pyplot as plt  # noqa: E402

# Told apart by colour-blind people (Okabe and Ito), and by their marks.
STYLES = [("#0072B2", "o"), ("#D55E00", "s"), ("#009E73", "^"), ("#CC79A7", "D")]


def table(path):
    with open(path) as lines:
        rows = list(csv.DictReader(lines, delimiter="\t"))
    return {name: [float(row[name]) for row in rows] for name in rows[0]}


def panel(axes, figures, x, ys, title, x_label, y_label, log_y=False):
    for (colour, mark), (name, label) in zip(STYLES, ys.items()):
        axes.plot(figures[x], figures[name], color=colour, marker=mark, label=label)
    axes.set_title(title)
    axes.set_xlabel(x_label)
    axes.set_ylabel(y_label)
    axes.set_xscale("log")
    if log_y:
        axes.set_yscale("log")
    else:
        axes.set_ylim(bottom=0)
    axes.grid(True, which="major", color="#DDDDDD")
    if len(ys) > 1:
        axes.legend(frameon=False, loc="upper center", bbox_to_anchor=(0.5, -0.17), ncol=2)


def save(figure, path):
    figure.tight_layout()
    figure.savefig(path, metadata={"Date": None})
    plt.close(figure)


def draw_growth(figures, output):
    figure, (left, right) = plt.subplots(1, 2, figsize=(11, 4))
    panel(left, figures, "rows", {"lookup ms": "lookup, warm", "vote ms": "hits and vote",
                                  "cold ms": "lookup, file not in memory"},
          "Time of one recognition", "rows", "milliseconds", log_y=True)
    panel(right, figures, "rows", {"rows/query": "rows"}, "Rows that a capture finds", "rows",
          "rows found", log_y=True)
    save(figure, output / "lookup.svg")
    figure, (left, right) = plt.subplots(1, 2, figsize=(11, 4))
    panel(left, figures, "tracks", {"right": "clean", "noisy right": "in noise, 10 dB"},
          "Recognised, of excerpts of known tracks", "tracks", "%")
    panel(right, figures, "tracks",
          {"absent": "absent track, clean", "noisy absent": "absent track, in noise",
           "wrong": "known track, clean", "noisy wrong": "known track, in noise"},
          "Answered wrongly", "tracks", "%")
    save(figure, output / "recognition.svg")


def draw_growing(figures, output):
    hours = "hours of sound in the database"
    figure, (left, middle, right) = plt.subplots(1, 3, figsize=(15, 4))
    panel(left, figures, "hours", {"add s": "adding ten tracks", "merge s": "merging all"},
          "Processor time", hours, "seconds", log_y=True)
    panel(middle, figures, "hours",
          {"add MB written": "adding ten tracks", "MB": "whole database"},
          "Written", hours, "megabytes", log_y=True)
    panel(right, figures, "hours",
          {"add MB memory": "adding ten tracks", "merge MB memory": "merging all"},
          "Peak memory", hours, "megabytes")
    save(figure, output / "indexing.svg")


def draw_lengths(figures, output):
    figure, (left, right) = plt.subplots(1, 2, figsize=(11, 4))
    panel(left, figures, "hours", {"index MB": "index", "scan MB": "scan"}, "Peak memory",
          "hours of one recording", "megabytes")
    panel(right, figures, "hours", {"index s": "index", "scan s": "scan"}, "Processor time",
          "hours of one recording", "seconds", log_y=True)
    save(figure, output / "lengths.svg")


def main():
    figures, output = map(pathlib.Path, sys.argv[1:3])
    plt.rcParams.update({"font.size": 11, "svg.fonttype": "path", "svg.hashsalt": "lirvox"})
    for name, draw in (("growth", draw_growth), ("growing", draw_growing),
                       ("lengths", draw_lengths)):
        draw(table(figures / f"{name}.tsv"), output)


if __name__ == "__main__":
    main()
