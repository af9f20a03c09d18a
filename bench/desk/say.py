#!/usr/bin/python3
# SPDX-FileCopyrightText: The Sorakaze developers
# SPDX-License-Identifier: GPL-3.0-or-later
"""Stands as `say` in a station of this benchmark: what the real one speaks, with its polarity inverted. Half the sum of a
show with the real one and of the same show with this one is the music, half the difference the speech."""
import array
import os
import subprocess
import sys

status = subprocess.run([os.path.join(os.path.dirname(os.path.abspath(__file__)), "ipadic/say"), *sys.argv[1:]]).returncode
if status == 0:
    with open(sys.argv[sys.argv.index("-o") + 1], "r+b") as file:
        content = file.read()
        begin = content.index(b"SSND") + 16  # AIFF, 16 bits, big-endian
        samples = array.array("h", content[begin:])
        samples.byteswap()
        samples = array.array("h", (-max(sample, -32767) for sample in samples))
        samples.byteswap()
        file.seek(begin)
        file.write(samples.tobytes())
sys.exit(status)
