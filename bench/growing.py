#!/usr/bin/env python3
"""Measures a catalogue as it grows: bench/growing.py LIRVOX MUSIC... [--copies 1,4,16]

Indexes all but ten of the files, merges copies of that database under other names, and adds
the ten files to each. Prints a line of tab-separated figures for each number of copies:
processor time of the merge and of the addition, what each wrote, and the size.
"""
import argparse
import pathlib
import shutil
import sqlite3
import tempfile

from indexing import checked, leave_tidily, sound_files

ADDED = 10


def copies_of(base, count, folder):
    """The same rows as those of other files: a merge takes a file only once."""
    parts = []
    for number in range(count):
        part = folder / f"part{number}.sqlite"
        shutil.copyfile(base, part)
        with sqlite3.connect(part) as database:
            database.execute("UPDATE sources SET path = ? || path", (f"/{number}",))
            database.execute("UPDATE tracks SET path = ? || path", (f"/{number}",))
        database.close()
        parts.append(part)
    return parts


def measure(lirvox, base, added, count):
    with tempfile.TemporaryDirectory(dir="/var/tmp") as name:
        folder = pathlib.Path(name)
        music = folder / "music.sqlite"
        merge = checked([lirvox, "merge", "-o", music, *copies_of(base, count, folder)])
        megabytes = music.stat().st_size / 1e6
        with sqlite3.connect(music) as database:
            tracks, hours = database.execute(
                "SELECT count(*), sum(duration) / 3600 FROM tracks").fetchone()
        database.close()
        addition = checked([lirvox, "index", "-j", 1, "-d", music, *added])
    print(f"{tracks}\t{hours:.1f}\t{megabytes:.1f}\t{merge.cpu:.1f}\t{merge.written:.0f}\t"
          f"{merge.megabytes:.0f}\t{addition.cpu:.1f}\t{addition.written:.0f}\t"
          f"{addition.megabytes:.0f}", flush=True)


def main():
    arguments = argparse.ArgumentParser()
    arguments.add_argument("lirvox")
    arguments.add_argument("music", nargs="+")
    arguments.add_argument("--copies", default="1,4,16")
    options = arguments.parse_args()
    leave_tidily()
    files = sound_files(options.music)
    if len(files) <= ADDED:
        raise SystemExit(f"more than {ADDED} sound files are needed, not {len(files)}")
    print("tracks\thours\tMB\tmerge s\tmerge MB written\tmerge MB memory\t"
          "add s\tadd MB written\tadd MB memory")
    with tempfile.TemporaryDirectory() as folder:
        base = pathlib.Path(folder) / "base.sqlite"
        checked([options.lirvox, "index", "-d", base, *files[:-ADDED]])
        for count in options.copies.split(","):
            measure(options.lirvox, base, files[-ADDED:], int(count))


if __name__ == "__main__":
    main()
