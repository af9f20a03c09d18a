# SPDX-FileCopyrightText: The Sorakaze developers
# SPDX-License-Identifier: GPL-3.0-or-later
"""The parts of an hour of show: what each is, how loud it is, and the steps and gaps between them."""
import itertools
import subprocess

import numpy as np

import meters

TEXT = """personality: Samantha Reed
mode: minites 60
opening: 0, play Sounds/opening.aiff
opening: 0, wait 8
opening: 0, say Good morning. This is [[program]], on Windowsill Radio.
opening: 0, say The kettle is on, the window is open, and there is an hour of music in front of us.
intro: 0, say Next on the desk is a record that I have not heard for a long time.
intro: 0, play [[iTunes]]
intro: 1, play [[iTunes]]
intro: 1, wait 8
intro: 1, say You are listening to Windowsill Radio. That was the beginning, and the rest will be as good.
intro: 2, say That makes [[trackno]] this morning. I keep the count so that you need not.
intro: 2, wait 0.5
intro: 2, say Here is another one, and I shall say no more about it.
intro: 2, play [[iTunes]]
intro: 2, say Except for this: somebody wrote a letter to ask for it.
intro: 3, play [[iTunes]]
intro: 3, wait 22
intro: 3, say In the middle of it I should like to say good morning to everybody who has just come in.
jingle: 0, play Sounds/jingles
jingle: 0, wait 6
jingle: 1, play Sounds/ident.aiff
jingle: 1, wait 5
jingle: 1, say Windowsill Radio. The weather is outside, where it belongs.
jingle: 2, say A listener writes that the neighbours have begun to dance. Please go on.
jingle: 2, play Sounds/sting-soft.aiff
jingle: 2, wait 5
ending: 0, say That was the hour. Thank you for keeping me company, and come back soon.
ending: 0, play Sounds/closing.aiff
ending: 0, wait 8
"""


def timeline(show):
    """Runs of (kind, number of the part, first second, last second) of what is in the foreground; talk is speech over music
    or a jingle."""
    label = np.zeros(int(show.seconds * 100) + 1, np.int32)  # of each 10 ms: kind and part
    def mark(begin, end, kind, number): label[round(begin * 100):round(end * 100)] = kind * 10000 + number
    for number, track in enumerate(show.played()):
        mark(track["time"], track["until"], 1, number)
    others = show.of("say", "track", "block", "sound", "end")
    for number, (event, following) in enumerate(itertools.pairwise(others)):
        if event["what"] == "sound":
            length = float(subprocess.run(["ffprobe", "-v", "error", "-show_entries", "format=duration", "-of", "csv=p=0", event["path"]],
                                          capture_output=True, check=True).stdout)
            mark(event["time"], min(event["time"] + length, following["time"]), 2, number)
    for number, say in enumerate(show.of("say")):
        end = say["time"] + say["seconds"]
        mark(say["time"], end, 4 if label[round((say["time"] + end) * 50)] else 3, number)
    edges = np.concatenate([[0], np.flatnonzero(np.diff(label)) + 1, [len(label)]])
    kinds = ("", "music", "jingle", "speech", "talk")
    return [(kinds[label[first] // 10000], label[first] % 10000, first / 100, last / 100)
            for first, last in itertools.pairwise(edges) if label[first] and last - first >= 100]


def measure(show):
    loudness, tracks, steps = [], {}, []
    for kind, number, begin, end in timeline(show):
        if kind == "music" and begin > 2:
            # The music comes back after speech, and the jingle before it is faded.
            settle = begin + min(1.5, (end - begin) / 2)
            tracks.setdefault(number, []).append(meters.blocks(meters.steps(show.sound(settle, end))))
        near = 6
        loudness.append((kind, begin, end, meters.integrated(show.sound(begin, end)),
                         meters.integrated(show.sound(begin, min(end, begin + near))),
                         meters.integrated(show.sound(max(begin, end - near), end))))
    for before, after in itertools.pairwise(loudness):
        if after[1] - before[2] < 6:
            steps.append(((before[0], after[0]), after[3] - before[3], after[4] - before[5], after[1]))
    parts = [meters.gated(np.concatenate(blocks)) for blocks in tracks.values() if sum(map(len, blocks)) >= 50]
    return {"parts": np.array(parts), "steps": steps, "speech": [part[3] for part in loudness if part[0] == "speech"],
            "jingles": [part[3] for part in loudness if part[0] == "jingle"]}


def gaps(show, tracks):
    """Begin and length in seconds of what is below -50 dBFS for longer than a second, and no `wait` asks for. Pauses
    within a track's music are apart."""
    power = np.concatenate([(show.sound(second, second + 60)[:2880000 // 2400 * 2400].reshape(-1, 4800) ** 2).mean(1)
                            for second in range(0, int(show.seconds) - 60, 60)])
    silent = meters.decibels(power) < -50  # each 50 ms
    for line in show.of("line"):
        if line["text"].startswith("wait "):
            silent[round(line["time"] * 20):round((line["time"] + float(line["text"][5:])) * 20)] = False
    found = [(begin / 20, (end - begin) / 20) for begin, end in meters.runs(silent) if end - begin > 20]
    files = {str(track.path): track for track in tracks}
    def is_pause(gap):
        for event in show.played():
            if event["time"] <= gap[0] and sum(gap) <= event["until"]:
                begin, end = (round((second - event["time"]) * 100) for second in (gap[0], sum(gap)))
                peak = files[event["path"]].peak
                return peak[:begin].max(initial=0) > 0.01 and peak[end:].max(initial=0) > 0.01
        return False
    return [gap for gap in found if not is_pause(gap)], [gap for gap in found if is_pause(gap)]
