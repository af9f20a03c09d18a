# SPDX-FileCopyrightText: The Sorakaze developers
# SPDX-License-Identifier: GPL-3.0-or-later
"""Talk over each track's intro and body, rendered with the speech in both polarities, so that speech and music can be
measured apart; and what each track's gain does meanwhile, against what ffmpeg makes of the file."""
import concurrent.futures
import subprocess

import numpy as np
from scipy import signal

import meters
import shows
from material import PROCESSES, WORK

SENTENCES = ("This is Windowsill Radio, and that record has been on my desk all week.",
             "Somebody wrote to ask for this one. So stay where you are, and turn it up a little.")
TEXT = f"""personality: Samantha Reed
mode: all
opening: 0, wait 1
intro: 0, play [[iTunes]]
intro: 0, wait 1
intro: 0, say {SENTENCES[0]}
intro: 0, wait 18
intro: 0, say {SENTENCES[1]}
intro: 0, wait 6
jingle: 0, wait 1
ending: 0, wait 1
"""
WINDOW = 960  # frames: 20 ms
NO_TONE = signal.firwin(2047, 1900, pass_zero=False, window=("kaiser", 12), fs=meters.RATE)


def dry_sentences():
    """The sentences as spoken, from their first frame to their last that isn't silence."""
    found = []
    for sentence in SENTENCES:
        file = WORK / "sentence.aiff"
        subprocess.run([shows.APP / "Resources/say", "-v", "Samantha", sentence, "-o", file], check=True)
        sound = meters.decode(file)
        heard = np.flatnonzero(np.abs(sound[:, 0]) > 0.003)
        found.append(sound[heard[0]:heard[-1]])
    return found


def windows(power):
    return power[:len(power) // WINDOW * WINDOW].reshape(-1, WINDOW, 2).mean((1, 2))


def measure_sentence(speech, music, reference, dry, begin):
    """`speech` begins shortly before the sentence at frame `begin` of `music`, which plays `reference`."""
    at = meters.delay(dry, speech)
    speech = speech[at:at + len(dry)]
    first, last = begin + at, begin + at + len(dry)
    band = [windows(signal.sosfilt(meters.SPEECH_BAND, sound, axis=0) ** 2) for sound in (speech, music[first:last])]
    active = band[0] > band[0].max() * 10 ** -2.5
    loud = windows(dry ** 2)
    loud = loud > loud.max() * 10 ** -1.5
    gain = meters.gain(speech, dry, WINDOW)[:len(loud)]
    result = {"ratio": float(meters.decibels(band[0][active].mean()) - meters.decibels(band[1][active].mean())),
              "speech_gain": gain[loud[:len(gain)]], "undone": np.nan, "back": np.nan}
    duck = meters.gain(music[first - 2 * WINDOW:first + 30 * WINDOW], reference[first - 2 * WINDOW:], WINDOW)
    if np.isfinite(duck[1]):
        result["undone"] = float(duck[1] - np.nanmedian(duck[4:25]))
    after = meters.gain(music[last:last + 216000], reference[last:], WINDOW * 5)  # 4.5 s in tenths
    settled = np.nanmedian(after[25:])
    if not (np.abs(after[25:] - settled) > 0.1).any() and np.isfinite(after[:25]).mean() > 0.8:
        # A lift that is being given back is above the level, a duck below it.
        result["back"] = float(np.argmax(after > settled - 0.1)) / 10
    return result


def measure(track, event, says, dry):
    begin, end = event["time"], min(event["end"], PAIR[0].seconds)
    both = [show.sound(begin, end) for show in PAIR]
    music, speech = (both[0] + both[1]) / 2, (both[0] - both[1]) / 2
    reference = meters.decode(track.path, 90)
    # Between the two sentences nothing but the track is heard.
    first, last = (round((seconds - begin) * meters.RATE) for seconds in (says[0]["time"] + says[0]["seconds"] + 3, says[1]["time"] - 1))
    # At most half a minute is skipped.
    skipped = max(0, meters.delay(music[first:last], reference[:last + 30 * meters.RATE]) - first)
    reference = reference[skipped:]
    body = meters.gain(music[first:last], reference[first:last], meters.RATE)
    result = {"name": track.path.name, "skipped": skipped, "moves": float(np.nanmax(np.abs(np.diff(body)))), "gain": float(np.nanmedian(body)),
              "sentences": []}
    if np.isfinite(body[-1]):
        start = meters.gain(music[:first], reference[:first], meters.RATE)
        result["lift"] = float(np.nanmax(start) - body[-1])
    for say, sentence in zip(says, dry):
        at = max(0, round((say["time"] - begin - 0.3) * meters.RATE))
        length = round((say["seconds"] + 2) * meters.RATE)
        result["sentences"].append(measure_sentence(speech[at:at + length], music, reference, sentence, at))
    if "tone" in track.path.name:
        result["click"] = click(music[meters.RATE // 2:])
    return result


def click(tone):
    """The largest component above 2 kHz in dBFS."""
    rest = signal.fftconvolve(tone[:, 0], NO_TONE, "valid")
    return float(meters.decibels(np.max(rest ** 2)))


def measure_all(tracks, pair):
    """`pair` is the same show with speech in each polarity."""
    global PAIR  # for the processes that are forked below
    PAIR = pair
    dry = dry_sentences()
    jobs = []
    with concurrent.futures.ProcessPoolExecutor(PROCESSES) as pool:
        for event in pair[0].played():
            says = [say for say in pair[0].of("say") if event["time"] <= say["time"] < event["end"]]
            if len(says) == 2 and event["until"] > says[1]["time"] + says[1]["seconds"]:
                track = next(track for track in tracks if str(track.path) == event["path"])
                jobs.append(pool.submit(measure, track, event, says, dry))
        return [job.result() for job in jobs]
