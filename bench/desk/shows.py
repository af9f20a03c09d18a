# SPDX-FileCopyrightText: The Sorakaze developers
# SPDX-License-Identifier: GPL-3.0-or-later
"""Stations with the desk on and off, and shows rendered with them by sorakaze-studio."""
import json
import os
import pathlib
import shutil
import subprocess
import time

import numpy as np

from material import ROOT, WORK

APP = ROOT / "build/Sorakaze/Sorakaze.app/Contents"
TICK = 800  # frames


def deployments():
    """What deployment.json says, by the table's column; a studio without a desk has one column."""
    probe = Show("Probe", "opening: 0, wait 1\n", [], 60, limit=1)
    try:
        probe.render(make_station("probe", {"loudness": "off"}), "none")
    except SystemExit as error:
        if "no member" in str(error):
            return {"off": {}}
        raise
    return {"off": {"loudness": "off"}, "on": {}}


def make_station(name, deployment, inverted=False):
    """A station of its own; with `inverted`, its speech has the other polarity."""
    folder = WORK / name
    shutil.rmtree(folder, ignore_errors=True)
    for part in ("Programs", "Music", "Sorakaze.app/Contents"):
        (folder / part).mkdir(parents=True)
    (folder / "Sounds").symlink_to(ROOT / "build/Sorakaze/Sounds")
    resources = folder / "Sorakaze.app/Contents/Resources"
    shutil.copytree(APP / "Resources", resources)
    (resources / "deployment.json").write_text(json.dumps(deployment))
    if inverted:
        # Beside `say` its process sees nothing of the station but a dictionary's folder.
        (resources / "ipadic").mkdir()
        (resources / "say").rename(resources / "ipadic/say")
        shutil.copy(pathlib.Path(__file__).with_name("say.py"), resources / "say")
    return folder


class Show:
    """A program and the tracks that it plays."""

    def __init__(self, name, text, tracks, song_seconds, limit=None, seed=1):
        self.name, self.text, self.tracks, self.song_seconds = name, text, tracks, song_seconds
        self.limit, self.seed = limit, seed

    def render(self, station, ending="wav"):
        """The rendering, and how many seconds it took."""
        (station / f"Programs/{self.name}.txt").write_text(f"program: {self.name}\nstation: Windowsill Radio\n{self.text}")
        (station / f"Music/{self.name}.m3u").write_text("".join(f"{track.path}\n" for track in self.tracks))
        base = WORK / f"{self.name}-{station.name}-{ending}"
        output = "none" if ending == "none" else base.with_suffix("." + ending)
        command = [APP / "Linux/sorakaze-studio", "render", "--station", station, "--program", self.name, "--playlist", self.name,
                   "--song-seconds", self.song_seconds, "--seed", self.seed, "--offline", "--quiet", "--output", output,
                   "--trace", base.with_suffix(".jsonl")]
        begin = time.monotonic()
        done = subprocess.run([str(word) for word in command + (["--limit", self.limit] if self.limit else [])], capture_output=True,
                              text=True)
        if done.returncode != 0:
            raise SystemExit(f"desk: {self.name} on {station.name} could not be rendered: {done.stderr[-500:]}")
        return Rendered(output, base.with_suffix(".jsonl")), time.monotonic() - begin


class Rendered:
    """A show's sound (frames x 2, 16 bits, mapped, where it was written as WAV) and its trace; times are in seconds."""

    def __init__(self, output, trace):
        self.output = output
        self.events = [json.loads(line) for line in trace.read_text().splitlines()]
        for event in self.events:
            event["time"] = event["ticks"] / 60
        if str(output).endswith(".wav"):
            with open(output, "rb") as file:
                begin = file.read(200).index(b"data") + 8
            frames = (os.path.getsize(output) - begin) // 4
            self.samples = np.memmap(output, "<i2", "r", begin, (frames, 2))
            self.seconds = frames / 48000

    def sound(self, begin, end):
        return self.samples[max(0, round(begin * 48000)):max(0, round(end * 48000))] / np.float32(32768)

    def of(self, *kinds):
        return [event for event in self.events if event["what"] in kinds]

    def played(self):
        """Each track's `track` event with the `until` of its fade or end, the `end` of its sound and its `position` there."""
        tracks = []
        for event in self.of("track", "fade", "ended"):
            if event["what"] == "track":
                tracks.append({**event, "until": None, "end": None, "position": None})
            elif tracks:
                tracks[-1]["until"] = tracks[-1]["until"] or event["time"]
                if event["what"] == "ended":
                    tracks[-1]["end"], tracks[-1]["position"] = event["time"], event.get("position")
        return [track for track in tracks if track["end"]]
