#!/usr/bin/env python3
"""Adds one track to a fingerprint database: write_database.py DATABASE ID TITLE < ROWS

ROWS are lines whose last two numbers are the time in the track, in frames, and the hash, as
`lirvox fingerprint FILE` prints them. Needs nothing but Python. See docs/database.md.
"""
import sqlite3
import sys

TABLES = """
CREATE TABLE IF NOT EXISTS db(track_id INTEGER NOT NULL, num1 INTEGER NOT NULL,
    num2 INTEGER NOT NULL, PRIMARY KEY(num2, track_id, num1)) WITHOUT ROWID;
CREATE TABLE IF NOT EXISTS tracks(track_id INTEGER PRIMARY KEY, title TEXT NOT NULL,
    artist TEXT NOT NULL, path TEXT NOT NULL, duration REAL NOT NULL);
"""
SECONDS_PER_FRAME = 256 / 11025


def rows(lines, track):
    for line in lines:
        try:
            time, hash_value = map(int, line.split()[-2:])
        except ValueError:
            time = hash_value = -1
        if time < 0 or not 0 <= hash_value < 1 << 20:
            sys.exit("no row: " + line.rstrip())
        yield track, time, hash_value


def write(path, track, title, lines):
    # In the order of the table: written from front to back, and its pages are full.
    ordered = sorted(set(rows(lines, track)), key=lambda row: (row[2], row[0], row[1]))
    if not ordered:
        sys.exit("no rows: nothing was changed")
    database = sqlite3.connect(path)
    with database:  # all of it or nothing
        database.executescript("BEGIN;" + TABLES)
        database.execute("DELETE FROM db WHERE track_id = ?", (track,))
        database.executemany("INSERT INTO db(track_id, num1, num2) VALUES(?, ?, ?)", ordered)
        last = max(time for _, time, _ in ordered)
        database.execute("INSERT OR REPLACE INTO tracks VALUES(?, ?, '', '', ?)",
                         (track, title, last * SECONDS_PER_FRAME))
    database.close()
    return len(ordered)


if __name__ == "__main__":
    if len(sys.argv) != 4:
        sys.exit(__doc__)
    count = write(sys.argv[1], int(sys.argv[2]), sys.argv[3], sys.stdin)
    print("%d rows of track %s" % (count, sys.argv[2]))
