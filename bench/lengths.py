#!/usr/bin/env python3
"""Measures what long recordings cost: bench/lengths.py LIRVOX MUSIC... [--hours 1,10] [--table]

Loops the first file to recordings of so many hours, indexes each, and scans it with a database
of all files. Prints a line of tab-separated figures for each length: processor time and peak of
memory; with --table, the longest against the shortest as lines for bench/figures.py, their ratio
that of the times of an hour. Needs ffmpeg.
"""
import argparse
import tempfile

from figures import figure
from indexing import checked, ffmpeg, index, leave_tidily, sound_files


def measure(lirvox, files, hours):
    """Pairs of runs, of index and scan, for each length."""
    with tempfile.TemporaryDirectory(dir="/var/tmp") as folder:
        music, recording = folder + "/music.sqlite", folder + "/recording.wav"
        checked([lirvox, "index", "-d", music, *files])
        for length in hours:
            ffmpeg("-stream_loop", "-1", "-i", files[0], "-t", length * 3600, "-ac", "1",
                   "-ar", "11025", recording)
            yield index(lirvox, [recording]), checked([lirvox, "scan", "-d", music, recording])


def compare(hours, runs):
    shortest, longest = min(hours), max(hours)
    of_length = dict(zip(hours, runs))
    for command, short, long in zip(("index", "scan"), of_length[shortest], of_length[longest]):
        figure(f"{command} of {longest:g} h, time", f"{long.cpu:.1f} s", f"{shortest:g} h",
               f"{short.cpu:.1f} s", long.cpu / longest / (short.cpu / shortest), "1.0")
        figure(f"{command} of {longest:g} h, memory", f"{long.megabytes:.0f} MB",
               f"{shortest:g} h", f"{short.megabytes:.0f} MB", reach="100 MB")


def main():
    arguments = argparse.ArgumentParser()
    arguments.add_argument("lirvox")
    arguments.add_argument("music", nargs="+")
    arguments.add_argument("--hours", default="0.1,0.25,0.5,1,2.5,5,10")
    arguments.add_argument("--table", action="store_true")
    options = arguments.parse_args()
    leave_tidily()
    hours = [float(h) for h in options.hours.split(",")]
    runs = measure(options.lirvox, sound_files(options.music), hours)
    if options.table:
        compare(hours, runs)
        return
    print("hours\tindex s\tindex MB\tscan s\tscan MB", flush=True)
    for length, (indexed, scanned) in zip(hours, runs):
        print(f"{length:g}\t{indexed.cpu:.1f}\t{indexed.megabytes:.1f}\t"
              f"{scanned.cpu:.1f}\t{scanned.megabytes:.1f}", flush=True)


if __name__ == "__main__":
    main()
