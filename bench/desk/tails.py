# SPDX-FileCopyrightText: The Sorakaze developers
# SPDX-License-Identifier: GPL-3.0-or-later
"""What isn't played of each file at its head and tail, compared with the file itself: no music may be cut."""
import numpy as np

import meters
import shows
import talk

TEXT = "mode: all\nopening: 0, wait 1\nintro: 0, play [[iTunes]]\njingle: 0, wait 1\nending: 0, wait 1\n"
LONGEST = 600  # seconds: the slider's end
SILENCE = 0.00105  # -60 dBFS, and what two resamplers may differ by


def is_silent(track, begin, end):
    peaks = track.peak[round(begin * 100):round(end * 100)]
    return not len(peaks) or peaks.max() < SILENCE


def is_faded(track, begin):
    """From there on the file stays 25 LU below its body."""
    rest = meters.blocks(track.power[round(begin * 10):])
    return not len(rest) or rest.max() <= track.loudness - 25


def fade(show, event, track, skipped):
    """Where in the file the fade of an early end begins, and the largest component above 2 kHz of a tone's."""
    sound = show.sound(max(event["time"], event["end"] - 40), event["end"])
    reference = meters.decode(track.path)
    behind = max(0, round((event["end"] - event["time"] - 40) * meters.RATE)) + skipped
    gain = meters.gain(sound, reference[behind:], 2400)
    level = np.nanmedian(gain[:200])
    full = np.flatnonzero(gain > level - 0.5)
    return (behind + (full[-1] + 1) * 2400) / meters.RATE, talk.click(sound) if "tone" in track.path.name else None


def measure(tracks, station, skipped):
    """`skipped`: frames at each file's head that weren't played, by the file's name."""
    by_path = {str(track.path): track for track in tracks if track.seconds < LONGEST - 1}
    whole, _ = shows.Show("Whole", TEXT, by_path.values(), LONGEST).render(station, "none")
    heads = [track.path.name for track in by_path.values() if not is_silent(track, 0, skipped.get(track.path.name, 0) / meters.RATE)]
    early, cut = [], []
    for event in whole.played():
        track = by_path[event["path"]]
        played = max(0, skipped.get(track.path.name, 0)) / meters.RATE + event["end"] - event["time"]
        if track.seconds - played > 0.1:
            early.append((track.seconds - played, track))
            if not is_silent(track, played, track.seconds) and not is_faded(track, played):
                cut.append(track.path.name)
    details, clicks = [f"not played at the head, seconds: " + ", ".join(
        f"{name} {frames / meters.RATE:.2f}" for name, frames in skipped.items() if abs(frames) > 480)], []
    early.sort(key=lambda pair: -pair[0])
    if early:
        longest = [track for _, track in early if "tone" in track.path.name or track in [t for _, t in early[:20]]]
        show, _ = shows.Show("Tails", TEXT, longest, LONGEST).render(station)
        for event in show.played():
            track = by_path[event["path"]]
            begin, component = fade(show, event, track, max(0, skipped.get(track.path.name, 0)))
            clicks += [component] if component else []
            if not is_faded(track, begin) and not is_silent(track, begin, track.seconds):
                cut.append(f"{track.path.name} (faded from {begin:.1f} s)")
    details += ["not played at the tail, seconds: " + ", ".join(f"{track.path.name} {seconds:.1f} of {track.seconds:.0f}" for seconds, track in early[:20])]
    details += ["head that is music: " + ", ".join(heads), "tail that is music: " + ", ".join(cut)]
    rows = {"tracks whose head or tail is cut": f"{len(heads)}; {len(set(cut))} of {len(by_path)}",
            "tracks that end early": f"{len(early)}, {sum(s for s, _ in early):.0f} s in all"}
    return rows, details, clicks
