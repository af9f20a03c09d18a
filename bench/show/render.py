# SPDX-FileCopyrightText: The Sorakaze developers
# SPDX-License-Identifier: GPL-3.0-or-later
"""Renders a show of twelve tracks, cut at 180 seconds, to WAV, beside ffmpeg decoding, fading, concatenating and writing
the same minutes. The two take turns, so that a machine that changes its speed changes both; the ratio is of medians."""
import os
import statistics
import subprocess
import time
import wave

import station

ROUNDS = 5
OUT = station.ROOT / "build/bench"


def run(command):
    before = os.times()
    begin = time.monotonic()
    subprocess.run(command, check=True, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
    wall = time.monotonic() - begin
    after = os.times()
    return wall, after.children_user + after.children_system - before.children_user - before.children_system


def seconds(path):
    with wave.open(str(path)) as file:
        return file.getnframes() / file.getframerate()


station.make()
station.program("Twelve", "mode: songs 12\nopening: 0, play [[iTunes]]\nintro: 0, play [[iTunes]]\n")
station.playlist("Twelve", station.TRACKS)
ours = station.studio("--program", "Twelve", "--playlist", "Twelve", "--song-seconds", 180, "--output", OUT / "ours.wav")
theirs = ["ffmpeg", "-loglevel", "error", "-y"]
for track in station.TRACKS:
    theirs += ["-t", "184.2", "-i", str(track)]
fades = "".join(f"[{n}]afade=t=out:st=180:d=4[f{n}];" for n in range(12))
theirs += ["-filter_complex", fades + "".join(f"[f{n}]" for n in range(12)) + "concat=n=12:v=0:a=1[out]",
           "-map", "[out]", "-ar", "48000", "-c:a", "pcm_s16le", str(OUT / "theirs.wav")]

results = {"ours": [], "theirs": []}
for _ in range(ROUNDS):
    results["ours"].append(run(ours))
    results["theirs"].append(run(theirs))
wall = {name: statistics.median(r[0] for r in rounds) for name, rounds in results.items()}
cpu = {name: statistics.median(r[1] for r in rounds) for name, rounds in results.items()}
length = {"ours": seconds(OUT / "ours.wav"), "theirs": seconds(OUT / "theirs.wav")}
for name, label in (("ours", "sorakaze-studio"), ("theirs", "ffmpeg")):
    print(f"{label:16} {length[name]:7.1f} s of sound in {wall[name]:6.2f} s wall, {cpu[name]:6.2f} s processor: "
          f"{length[name] / wall[name]:6.0f} times real time")
print(f"speed against ffmpeg, wall: {(length['ours'] / wall['ours']) / (length['theirs'] / wall['theirs']):.2f}")
