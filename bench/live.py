#!/usr/bin/env python3
"""Measures live captures of 5 s: bench/live.py LIRVOX LIVE_CAPTURE MUSIC... [--captures N]

Indexes the music, plays it into a sound server of its own (pulseaudio, a null sink) and lets
lirvox_live_capture hear the sink's monitor: processor time of its whole process, and how often
one of its threads woke up, as lines for bench/figures.py. Of the captures that recognise
something the cheapest counts. Needs ffmpeg.
"""
import argparse
import contextlib
import os
import subprocess
import tempfile
import time

from figures import figure
from indexing import checked, ffmpeg, leave_tidily, positive, sound_files


def own_environment(folder):
    """Nothing of the caller's leads to a sound server or an installed database."""
    inherited = {name: value for name, value in os.environ.items()
                 if not name.startswith(("LIRVOX_", "PULSE_"))}
    return dict(inherited, PULSE_SERVER=f"unix:{folder}/native", LIRVOX_CACHES_DIR=folder,
                HOME=folder, XDG_CACHE_HOME=folder, XDG_CONFIG_HOME=folder,
                XDG_RUNTIME_DIR=folder)


@contextlib.contextmanager
def running(command, environment, messages=None):
    process = subprocess.Popen(command, env=environment, stdout=subprocess.DEVNULL,
                               stderr=messages)
    try:
        yield
    finally:
        process.kill()
        process.wait()


def sound_server(environment):
    return running(
        ["pulseaudio", "-n", "--daemonize=no", "--use-pid-file=no", "--exit-idle-time=-1",
         "-L", "module-native-protocol-unix auth-anonymous=1 socket=" +
         environment["PULSE_SERVER"].removeprefix("unix:"),
         "-L", "module-null-sink sink_name=music"], environment, subprocess.DEVNULL)


def wait_for_server(environment):
    for _ in range(100):
        if subprocess.run(["pactl", "info"], env=environment, stdout=subprocess.DEVNULL,
                          stderr=subprocess.DEVNULL, check=False).returncode == 0:
            return
        time.sleep(0.05)
    raise SystemExit("the sound server does not start")


def install(lirvox, files, folder, environment):
    database, archive = folder + "/music.sqlite", folder + "/music.zip"
    checked([lirvox, "index", "-d", database, *files])
    checked([lirvox, "pack", "-d", database, "-o", archive])
    checked([lirvox, "install", archive], environment)


def main():
    arguments = argparse.ArgumentParser()
    arguments.add_argument("lirvox")
    arguments.add_argument("live_capture")
    arguments.add_argument("music", nargs="+")
    arguments.add_argument("--captures", type=positive, default=5)
    options = arguments.parse_args()
    leave_tidily()
    files = sound_files(options.music)
    longest = 60 + 10 * options.captures
    with tempfile.TemporaryDirectory() as folder:
        environment, wave = own_environment(folder), folder + "/music.wav"
        install(options.lirvox, files, folder, environment)
        # Not the quiet beginning; looped, a short file lasts as long as the captures.
        ffmpeg("-stream_loop", "-1", "-i", files[0], "-ss", "30", "-t", longest, wave)
        with sound_server(environment):
            wait_for_server(environment)
            with running(["paplay", "--device=music", wave], environment):
                time.sleep(1)
                lines = subprocess.run([options.live_capture, str(options.captures)],
                                       env=environment, check=True, stdout=subprocess.PIPE,
                                       timeout=longest)
    captures = [tuple(map(float, line.split())) for line in lines.stdout.splitlines()]
    recognised = [(cpu, wake_ups) for cpu, wake_ups, track in captures if track]
    if not recognised:
        raise SystemExit("nothing was recognised")
    figure("live capture, processor", f"{min(c[0] for c in recognised):.1f} ms", reach="30 ms")
    figure("live capture, wake-ups", f"{min(c[1] for c in recognised):.1f} /s", reach="30 /s")


if __name__ == "__main__":
    main()
