#!/usr/bin/env python3
"""Measures live captures of 5 s: bench/live.py LIRVOX HOST MUSIC... [--captures N]

Indexes and installs the music, plays it into a sound server of its own (pulseaudio, a null
sink) and runs HOST, the program of the README, which hears the sink's monitor for one capture:
processor time of the whole process, start included, and how often one of its threads woke up.
Of several captures the cheapest counts.
"""
import argparse
import os
import subprocess
import tempfile
import time

from indexing import checked, sound_files

SECONDS = 5.0


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


def capture(host, environment):
    """Milliseconds of processor time and wake-ups of one recognition."""
    process = subprocess.Popen([host], env=environment, stdout=subprocess.PIPE)
    answer = process.stdout.read().decode()
    _, status, usage = os.wait4(process.pid, 0)
    process.returncode = status
    if status != 0:
        raise SystemExit(f"{host}: {answer or status}")
    return (usage.ru_utime + usage.ru_stime) * 1000, usage.ru_nvcsw, answer.startswith("track")


def main():
    arguments = argparse.ArgumentParser()
    arguments.add_argument("lirvox")
    arguments.add_argument("host")
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
            captures = [capture(options.host, environment) for _ in range(options.captures)]
        finally:
            player.kill()
            server.kill()
    if not any(recognized for _, _, recognized in captures):
        raise SystemExit(f"{options.host} recognised nothing")
    milliseconds, wakeups = min(c[0] for c in captures), min(c[1] for c in captures) / SECONDS
    print(f"live capture of 5 s   processor {milliseconds:6.1f} ms          (to reach: 30)")
    print(f"                      wake-ups  {wakeups:6.1f} a second   (to reach: 30)")


if __name__ == "__main__":
    main()
