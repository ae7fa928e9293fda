#!/usr/bin/env python3
"""Measures live captures of 5 s: bench/live.py LIRVOX LIVE_CAPTURE MUSIC... [--captures N]

Indexes the music, plays it into a sound server of its own (pulseaudio, a null sink) and lets
lirvox_live_capture hear the sink's monitor: processor time of its whole process, and how often
one of its threads woke up, as lines for bench/figures.py. Of several captures the cheapest
counts.
"""
import argparse
import os
import subprocess
import tempfile
import time

from figures import figure
from indexing import checked, sound_files


def sound_server(environment):
    server = subprocess.Popen(
        ["pulseaudio", "-n", "--daemonize=no", "--use-pid-file=no", "--exit-idle-time=-1",
         "-L", "module-native-protocol-unix auth-anonymous=1 socket=" +
         environment["PULSE_SERVER"].removeprefix("unix:"),
         "-L", "module-null-sink sink_name=music"],
        env=environment, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
    for _ in range(100):
        if subprocess.run(["pactl", "info"], env=environment, stdout=subprocess.DEVNULL,
                          stderr=subprocess.DEVNULL, check=False).returncode == 0:
            return server
        time.sleep(0.05)
    server.kill()
    raise SystemExit("the sound server does not start")


def main():
    arguments = argparse.ArgumentParser()
    arguments.add_argument("lirvox")
    arguments.add_argument("live_capture")
    arguments.add_argument("music", nargs="+")
    arguments.add_argument("--captures", type=int, default=5)
    options = arguments.parse_args()
    files = sound_files(options.music)
    with tempfile.TemporaryDirectory() as folder:
        environment = dict(os.environ, PULSE_SERVER=f"unix:{folder}/native", HOME=folder,
                           XDG_CACHE_HOME=folder, XDG_CONFIG_HOME=folder, XDG_RUNTIME_DIR=folder)
        database, archive, wave = (f"{folder}/music.{kind}" for kind in ("sqlite", "zip", "wav"))
        checked([options.lirvox, "index", "-d", database, *files])
        checked([options.lirvox, "pack", "-d", database, "-o", archive])
        subprocess.run([options.lirvox, "install", archive], env=environment, check=True,
                       stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        subprocess.run(["ffmpeg", "-v", "quiet", "-ss", "30", "-i", files[0], wave], check=True)
        server = sound_server(environment)
        player = subprocess.Popen(["paplay", "--device=music", wave], env=environment)
        try:
            time.sleep(1)
            lines = subprocess.run([options.live_capture, str(options.captures)],
                                   env=environment, check=True, stdout=subprocess.PIPE,
                                   timeout=60 + 10 * options.captures)
        finally:
            player.kill()
            server.kill()
    captures = [tuple(map(float, line.split())) for line in lines.stdout.splitlines()]
    if not any(track for _, _, track in captures):
        raise SystemExit("nothing was recognised")
    figure("live capture, processor", f"{min(c[0] for c in captures):.1f} ms", reach="30 ms")
    figure("live capture, wake-ups", f"{min(c[1] for c in captures):.1f} /s", reach="30 /s")


if __name__ == "__main__":
    main()
