#!/usr/bin/env python3
# SPDX-FileCopyrightText: The Sorakaze developers
# SPDX-License-Identifier: GPL-3.0-or-later
"""How well, how fast and how loud voices speak, and how long a line waits for its sound. voices.py [NAME...]; without names
those of sample announcers. Words that a recogniser gets wrong, words a minute, LUFS, the silence at both ends together (what is
between two lines), the time from the call to the sound of a sentence."""
import os
import pathlib
import re
import statistics
import subprocess
import sys
import tempfile
import time

import recogniser

SAY = pathlib.Path(os.environ.get("SAY") or recogniser.ROOT / "build/Sorakaze/Sorakaze.app/Contents/Resources/say")
NAMES = ["Alex", "Samantha", "Victoria", "Ava", "Emma", "Kate", "Moira", "Karen", "Tom", "David", "Michael", "Steve", "Daniel",
         "Oliver", "George", "en-us", "en-us+klatt", "en-us+f5"]


def audio(*words):
    return subprocess.run(["ffmpeg", "-nostdin", "-hide_banner", *words], check=True, capture_output=True, text=True).stderr


def speak(name, folder):
    """The files of all sentences, and the seconds that each took."""
    files, seconds = [], []
    for number, text in enumerate(recogniser.sentences()):
        files.append(folder / f"{re.sub('[^a-z0-9]', '-', name.lower())}-{number}.wav")
        begin = time.monotonic()
        subprocess.run([SAY, "-v", name, text, "-o", files[-1].with_suffix(".aiff")], check=True)
        seconds.append(time.monotonic() - begin)
        audio("-y", "-i", files[-1].with_suffix(".aiff"), "-ac", "1", "-ar", "16000", "-sample_fmt", "s16", "-fflags", "+bitexact",
              "-map_metadata", "-1", files[-1])
    return files, seconds


def measure(files, folder):
    """Seconds of speech, seconds of silence at both ends of a file, LUFS of all files."""
    speech, silence = 0, []
    for file in files:
        told = audio("-i", file, "-af", "silencedetect=n=-50dB:d=0.02", "-f", "null", "-")
        length = file.stat().st_size / 32000
        begin = re.findall(r"silence_end: ([\d.]+)", told)
        end = re.findall(r"silence_start: ([\d.]+)", told)
        first, last = float(begin[0]), float(end[-1])
        speech += last - first
        silence.append(first + length - last)
    listed = folder / "files.txt"
    listed.write_text("".join(f"file '{file}'\n" for file in files))
    told = audio("-f", "concat", "-safe", "0", "-i", listed, "-af", "ebur128", "-f", "null", "-")
    return speech, statistics.median(silence), float(re.findall(r"I:\s+(-?[\d.]+) LUFS", told)[-1])


def main():
    said = [recogniser.words(text) for text in recogniser.sentences()]
    count = sum(map(len, said))
    print(f"{len(said)} sentences, {count} words")
    print(f"{'voice':14} {'wrong':>6} {'a minute':>8} {'LUFS':>6} {'pause':>7} {'waits':>7}")
    with tempfile.TemporaryDirectory() as name:
        folder = pathlib.Path(name)
        recogniser.write_model(folder)
        for voice in sys.argv[1:] or NAMES:
            files, waits = speak(voice, folder)
            heard = recogniser.recognise(folder, [file.stem for file in files])
            wrong = sum(recogniser.errors(text, heard.get(file.stem, [])) for text, file in zip(said, files))
            speech, silence, loudness = measure(files, folder)
            print(f"{voice:14} {wrong / count:6.1%} {60 * count / speech:8.0f} {loudness:6.1f} {silence * 1000:4.0f} ms "
                  f"{statistics.median(waits) * 1000:4.0f} ms", flush=True)


main()
