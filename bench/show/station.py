# SPDX-FileCopyrightText: The Sorakaze developers
# SPDX-License-Identifier: GPL-3.0-or-later
"""A station of twelve MP3s of 240 seconds each, made once under build/bench, and how to call the studio on it."""
import os
import pathlib
import subprocess

ROOT = pathlib.Path(__file__).resolve().parents[2]
STATION = ROOT / "build/bench/station"
TRACKS = [STATION / f"Music/{n:02}.mp3" for n in range(1, 13)]
SECONDS = 240


def make():
    """Music-like sound: chords with a beat and some noise, so that decoding costs what it costs for music."""
    for folder in ("Music", "Programs", "Sorakaze.app/Contents"):
        (STATION / folder).mkdir(parents=True, exist_ok=True)
    resources = STATION / "Sorakaze.app/Contents/Resources"
    if not resources.exists():
        resources.symlink_to(ROOT / "build/Sorakaze/Sorakaze.app/Contents/Resources")
    for number, track in enumerate(TRACKS, 1):
        if track.exists():
            continue
        base = 110 + 9 * number
        chord = "+".join(f"0.15*sin(2*PI*{base * ratio}*t)" for ratio in (1, 1.25, 1.5, 2.01))
        beat = "0.3*exp(-12*mod(t,0.5))*(random(0)-0.5)"
        subprocess.run(
            ["ffmpeg", "-loglevel", "error", "-y", "-f", "lavfi", "-i",
             f"aevalsrc='{chord}+{beat}|{chord}-{beat}':s=44100:d={SECONDS}",
             "-metadata", f"title=Track {number}", "-b:a", "192k", str(track) + ".part.mp3"], check=True)
        os.rename(str(track) + ".part.mp3", track)


def program(name, text):
    (STATION / f"Programs/{name}.txt").write_text(text)


def playlist(name, tracks):
    (STATION / f"Music/{name}.m3u").write_text("".join(f"{track.name}\n" for track in tracks))


def studio(*arguments):
    return [str(ROOT / "build/Sorakaze/Sorakaze.app/Contents/Linux/sorakaze-studio"), "render", "--station", str(STATION),
            "--offline", "--quiet", "--seed", "1", *map(str, arguments)]
