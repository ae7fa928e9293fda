#!/usr/bin/env python3
"""Measures `lirvox index`: bench/indexing.py LIRVOX MUSIC... [--repeat N] [--shifts 8,4,1]

Processor time against fpcalc over the same files in the same run, with each number of
alignments, and the gain of a second worker over the same music cut to pieces of two minutes,
as lines for bench/figures.py. Needs ffmpeg and fpcalc (package libchromaprint-tools). Of
several repetitions the fastest counts: what other programs on the machine add to a time is
never negative.
"""
import argparse
import os
import pathlib
import signal
import subprocess
import tempfile
import time

from figures import figure

KINDS = {".aac", ".flac", ".m4a", ".mp3", ".ogg", ".opus", ".wav"}


def leave(number, _):
    # Another signal does not disturb the removal of temporary folders.
    signal.signal(number, signal.SIG_IGN)
    raise SystemExit(128 + number)


def leave_tidily():
    """From here on a signal ends the script as an exception does: nothing temporary stays."""
    for number in (signal.SIGHUP, signal.SIGINT, signal.SIGTERM):
        if signal.getsignal(number) != signal.SIG_IGN:  # under nohup
            signal.signal(number, leave)


def positive(text):
    number = int(text)
    if number < 1:
        raise ValueError
    return number


class Run:
    """One run of a command: seconds of processor time and on the wall, peak megabytes of
    memory, megabytes written to files."""

    def __init__(self, command, environment=None):
        start = time.monotonic()
        process = subprocess.Popen(command, env=environment, stdout=subprocess.DEVNULL,
                                   stderr=subprocess.PIPE)
        try:
            self.messages = process.stderr.read().decode(errors="replace")
            _, self.status, usage = os.wait4(process.pid, 0)
        except SystemExit:
            process.kill()
            process.wait()
            raise
        process.returncode = self.status
        self.wall = time.monotonic() - start
        self.cpu = usage.ru_utime + usage.ru_stime
        self.megabytes = usage.ru_maxrss * 1024 / 1e6
        self.written = usage.ru_oublock * 512 / 1e6


def checked(command, environment=None):
    run = Run([str(word) for word in command], environment)
    if run.status != 0:
        raise SystemExit(run.messages.rstrip() or f"{command[0]} failed")
    return run


def ffmpeg(*arguments):
    checked(["ffmpeg", "-nostdin", "-y", "-v", "error", *arguments])


def index(lirvox, paths, jobs=1, shifts=8):
    with tempfile.TemporaryDirectory() as folder:
        return checked([lirvox, "index", "-j", jobs, "--shifts", shifts,
                        "-d", folder + "/music.sqlite", *paths])


def fastest(runs, key):
    return min(getattr(run, key) for run in runs)


def in_folder(folder):
    return [p for p in sorted(folder.rglob("*")) if p.suffix.lower() in KINDS and p.is_file()]


def sound_files(paths):
    """The files among the paths, of whatever name, and the sound files in the folders."""
    files = []
    for path in map(pathlib.Path, paths):
        files += [path] if path.is_file() else in_folder(path)
    if not files:
        raise SystemExit("no sound files in " + ", ".join(paths))
    return [str(file) for file in files]


def compare(lirvox, files, repeat, numbers_of_shifts):
    ours, theirs = {shifts: [] for shifts in numbers_of_shifts}, []
    for _ in range(repeat):
        theirs.append(sum(Run(["fpcalc", "-length", "0", "-raw", f]).cpu for f in files))
        for shifts, runs in ours.items():
            runs.append(index(lirvox, files, shifts=shifts))
    for shifts, runs in ours.items():
        cpu = fastest(runs, "cpu")
        figure(f"index, {len(files)} files, {shifts} alignments", f"{cpu:.2f} s", "fpcalc",
               f"{min(theirs):.2f} s", cpu / min(theirs), "1.0")


def compare_workers(lirvox, files, repeat):
    """A few long files could not be divided evenly between two workers: pieces can."""
    with tempfile.TemporaryDirectory() as folder:
        for number, file in enumerate(files):
            piece = f"{folder}/{number:03}-%03d{pathlib.Path(file).suffix}"
            ffmpeg("-i", file, "-vn", "-c", "copy", "-f", "segment", "-segment_time", "120", piece)
        pieces = sorted(pathlib.Path(folder).iterdir())
        one, two = [], []
        for _ in range(repeat):
            one.append(index(lirvox, pieces))
            two.append(index(lirvox, pieces, jobs=2))
    wall = fastest(one, "wall")
    figure(f"index -j 1, {len(pieces)} pieces, on the wall", f"{wall:.2f} s", "-j 2",
           f"{fastest(two, 'wall'):.2f} s", wall / fastest(two, "wall"), "at least 1.8")


def main():
    arguments = argparse.ArgumentParser()
    arguments.add_argument("lirvox")
    arguments.add_argument("music", nargs="+")
    arguments.add_argument("--repeat", type=positive, default=3)
    arguments.add_argument("--shifts", default="8,1")
    options = arguments.parse_args()
    leave_tidily()
    files = sound_files(options.music)
    compare(options.lirvox, files, options.repeat, [int(n) for n in options.shifts.split(",")])
    compare_workers(options.lirvox, files, options.repeat)


if __name__ == "__main__":
    main()
