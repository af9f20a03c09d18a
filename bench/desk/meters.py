# SPDX-FileCopyrightText: The Sorakaze developers
# SPDX-License-Identifier: GPL-3.0-or-later
"""Meters on arrays of samples (frames x 2, 48 kHz, full scale 1), independent of the project's own measuring code."""
import re
import subprocess

import numpy as np
from scipy import fft, signal

RATE = 48000
# The two stages of ITU-R BS.1770's weighting at 48 kHz.
WEIGHTING = np.array([[1.53512485958697, -2.69169618940638, 1.19839281085285, 1, -1.69065929318241, 0.73248077421585],
                      [1, -2, 1, 1, -1.99004745483398, 0.99007225036621]])
SPEECH_BAND = signal.butter(4, (300, 3400), "bandpass", fs=RATE, output="sos")


def decibels(power):
    return 10 * np.log10(np.maximum(power, 1e-20))


def decode(file, seconds=None):
    """What ffmpeg makes of the file: stereo at 48 kHz."""
    length = ["-t", str(seconds)] if seconds else []
    raw = subprocess.run(["ffmpeg", "-loglevel", "error", *length, "-i", str(file), "-map", "0:a:0", "-ac", "2", "-ar", str(RATE),
                          "-f", "f32le", "-"], check=True, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL).stdout
    return np.frombuffer(raw, np.float32).reshape(-1, 2)


def steps(sound):
    """The weighted power of each 100 ms, both channels together."""
    if len(sound) < 4800:
        return np.array([])
    weighted = signal.sosfilt(WEIGHTING, sound.astype(np.float64), axis=0)
    whole = len(weighted) // 4800 * 4800
    return (weighted[:whole].reshape(-1, 4800, 2) ** 2).mean(1).sum(1)


def blocks(power):
    """The loudness of each 400 ms, every 100 ms; of less than that where there is less."""
    width = min(4, len(power))
    return -0.691 + decibels(np.convolve(power, np.ones(width) / width, "valid")) if width else np.array([])


def gated(loudness):
    """Integrated loudness of blocks in LUFS, -70 for silence."""
    heard = loudness[loudness > -70]
    if not len(heard):
        return -70.0
    def mean(values): return float(decibels(np.mean(10 ** (values / 10))))
    return mean(heard[heard > mean(heard) - 10])


def integrated(sound):
    return gated(blocks(steps(sound)))


def ffmpeg_meter(file):
    """Integrated loudness in LUFS and true peak in dBTP, as ffmpeg's ebur128 gives them."""
    text = subprocess.run(["ffmpeg", "-hide_banner", "-nostats", "-i", str(file), "-filter:a", "ebur128=peak=true:framelog=verbose",
                           "-f", "null", "-"], capture_output=True, text=True, check=True).stderr
    return (float(re.findall(r"I:\s+(-?[\d.]+) LUFS", text)[-1]), float(re.findall(r"Peak:\s+(-?[\d.]+|-inf) dBFS", text)[-1]))


def delay(sound, reference):
    """How many frames of `reference` pass before `sound` begins in it: the first place where both are alike, whatever the
    gain between them."""
    a, b = sound.mean(1, dtype=np.float64), reference.mean(1, dtype=np.float64)
    size = fft.next_fast_len(len(a) + len(b), real=True)
    places = max(1, len(b) - len(a) + 1)
    correlation = fft.irfft(fft.rfft(b, size) * np.conj(fft.rfft(a, size)), size)[:places]
    energy = np.concatenate([[0], np.cumsum(np.pad(b, (0, len(a))) ** 2)])
    energy = energy[len(a):len(a) + places] - energy[:places]
    alike = correlation / np.sqrt(np.maximum(energy, energy.max() * 1e-4 + 1e-20))
    return int(np.argmax(alike >= alike.max() * 0.9999))


def gain(sound, reference, window):
    """The gain in dB from `reference` to `sound` in each window of frames; NaN where the reference is below -60 dBFS."""
    whole = min(len(sound), len(reference)) // window * window
    def sums(product): return product[:whole].reshape(-1, window * 2).astype(np.float64).sum(1)
    reference, sound = reference[:whole], sound[:whole]
    power = sums(reference ** 2)
    ratio = sums(sound * reference) / np.maximum(power, 1e-12)
    return np.where(power > window * 2 * 1e-6, 2 * decibels(np.maximum(ratio, 1e-9)), np.nan)


def runs(flags):
    """First and past-the-end index of each run of true flags."""
    edges = np.flatnonzero(np.diff(np.concatenate([[0], np.asarray(flags, np.int8), [0]])))
    return edges.reshape(-1, 2)
