# SPDX-FileCopyrightText: The Sorakaze developers
# SPDX-License-Identifier: GPL-3.0-or-later
"""What the benchmark plays: real music from the packages in the section [music] of scripts/packages.txt, and masters made
here. What is known of each file is measured once and kept under build/bench/desk."""
import concurrent.futures
import hashlib
import os
import pathlib
import subprocess
import sys

import numpy as np

import meters

ROOT = pathlib.Path(__file__).resolve().parents[2]
WORK = ROOT / "build/bench/desk"
PROCESSES = os.cpu_count()
SHORTEST = 60  # seconds: talk over the intro and the body, and what the music does after it


def packages():
    lines = (ROOT / "scripts/packages.txt").read_text().split("[music]\n")[1].split("\n\n")[0].splitlines()
    return [line.removeprefix("unpacked:") for line in lines]


class Track:
    """A file with what its decoded sound is like: `power` of each 100 ms (see meters.steps), `peak` of each 10 ms."""

    def __init__(self, path):
        self.path = pathlib.Path(path)
        key = str(self.path.relative_to(ROOT / "build")).replace("/", "_")
        cache = WORK / f"measured/{key}.npz"
        if not cache.exists() or cache.stat().st_mtime < self.path.stat().st_mtime:
            try:
                sound = meters.decode(self.path)
            except subprocess.CalledProcessError:
                sound = np.zeros((0, 2), np.float32)
            whole = len(sound) // 480 * 480
            np.savez(cache, power=meters.steps(sound), peak=np.abs(sound[:whole]).reshape(-1, 960).max(1))
        with np.load(cache) as measured:
            self.power, self.peak = measured["power"], measured["peak"]
        self.seconds = len(self.peak) / 100
        self.loudness = meters.gated(meters.blocks(self.power))


def track_list(paths):
    with concurrent.futures.ProcessPoolExecutor(PROCESSES) as pool:
        return list(pool.map(Track, paths))


def real_tracks():
    (WORK / "measured").mkdir(parents=True, exist_ok=True)
    endings = {".ogg", ".opus", ".mp3", ".flac", ".m4a"}
    found = [path for package in packages() for path in sorted((ROOT / "build/unpacked" / package).rglob("*"))
             if path.suffix in endings and path.is_file()]
    # In an order that mixes the packages and is the same each time.
    found = sorted(found, key=lambda path: hashlib.sha256(path.name.encode()).digest())
    limit = int(os.environ.get("SORAKAZE_DESK_TRACKS", "0")) or len(found)
    tracks = [track for track in track_list(found[:limit * 2]) if track.seconds >= SHORTEST and track.loudness > -60][:limit]
    if len(tracks) < min(limit, 100):
        sys.exit(f"desk: only {len(tracks)} tracks of {SHORTEST} s or more in build/unpacked: run `scripts/setup music`; "
                 f"packages: {' '.join(packages())}")
    return tracks


def write(name, sound):
    """FLAC of 24 bits; 2 or 6 channels."""
    layout = {2: "stereo", 6: "5.1"}[sound.shape[1]]
    file = WORK / f"masters/{name}.flac"
    subprocess.run(["ffmpeg", "-loglevel", "error", "-y", "-f", "f32le", "-ar", str(meters.RATE), "-ac", str(sound.shape[1]),
                    "-channel_layout", layout, "-i", "-", "-metadata", f"title={name}", "-c:a", "flac", "-sample_fmt", "s32", str(file)],
                   input=np.clip(sound, -1, 1).astype("<f4").tobytes(), check=True)
    return file


def made_masters(source):
    """The masters by name, made of two minutes of `source`."""
    folder = WORK / "masters"
    names = ["loud", "low", "silence", "vanishing", "quiet-beginning", "surround", "tone", "tone-tail"]
    if not all((folder / f"{name}.flac").exists() for name in names):
        folder.mkdir(exist_ok=True)
        begin = 20 * meters.RATE
        sound = meters.decode(source.path, 140)[begin:].astype(np.float64)
        sound *= 10 ** ((-18 - meters.integrated(sound)) / 20)
        low, high = 1.0, 1000.0
        for _ in range(20):
            middle = np.sqrt(low * high)
            low, high = (middle, high) if meters.integrated(np.clip(sound * middle, -0.99, 0.99)) < -6 else (low, middle)
        write("loud", np.clip(sound * low, -0.99, 0.99))
        write("low", sound * 10 ** (-12 / 20))
        def silence(seconds): return np.zeros((seconds * meters.RATE, 2))
        write("silence", np.concatenate([silence(5), sound[:90 * meters.RATE], silence(12)]))
        time = np.arange(len(sound))[:, None] / meters.RATE
        write("vanishing", sound * np.clip((time[-1] - time) / 40, 0, 1) ** 3)
        write("quiet-beginning", sound * 10 ** (np.interp(time, [0, 18, 24], [-16, -16, 0]) / 20))
        left, right = sound.T * 0.6
        def late(part, seconds): return np.roll(part, int(seconds * meters.RATE)) * 0.7
        write("surround", np.stack([left, right, (left + right) / 2, left * 0.2, late(left, 0.011), late(right, 0.017)], 1))
        tone = 0.1 * np.sin(2 * np.pi * 997 * time) * np.interp(time, [0, 0.2, time[-1, 0] - 0.2, time[-1, 0]], [0, 1, 1, 0])
        write("tone", np.repeat(tone, 2, 1))
        # The tail drops by 40 dB over a second, 20 s before the end: an early end.
        drop = 10 ** (np.interp(time, [0, 70, 71, 200], [0, 0, -40, -40]) / 20)
        write("tone-tail", np.repeat(tone * drop, 2, 1)[:90 * meters.RATE])
    return dict(zip(names, track_list([folder / f"{name}.flac" for name in names])))
