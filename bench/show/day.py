# SPDX-FileCopyrightText: The Sorakaze developers
# SPDX-License-Identifier: GPL-3.0-or-later
"""A show of 24 hours rendered to nothing: memory at the end of the first and of the last hour."""
import json
import pathlib
import subprocess
import time

import station

DAY = 24 * 60 * 60
TRACE = station.ROOT / "build/bench/day.jsonl"


def resident(pid):
    for line in pathlib.Path(f"/proc/{pid}/status").read_text().splitlines():
        if line.startswith("VmRSS"):
            return int(line.split()[1])
    return 0


def last_tick():
    """The tick of the trace's last whole line."""
    with open(TRACE, "rb") as file:
        file.seek(0, 2)
        file.seek(max(0, file.tell() - 4000))
        for line in reversed(file.read().splitlines()[:-1]):
            try:
                return json.loads(line)["ticks"]
            except (ValueError, KeyError):
                continue
    return 0


station.make()
station.program("Day", "mode: minites 1440\nopening: 0, wait 1\nintro: 0, say Track [[trackno]].\nintro: 0, play [[iTunes]]\n"
                       "jingle: 0, wait 2\nending: 0, wait 1\n")
station.playlist("Day", station.TRACKS * 60)
TRACE.unlink(missing_ok=True)
begin = time.monotonic()
show = subprocess.Popen(station.studio("--program", "Day", "--playlist", "Day", "--output", "none", "--trace", TRACE),
                        stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
samples = []
while show.poll() is None:
    time.sleep(0.1)
    try:
        samples.append((last_tick() / 60, resident(show.pid)))
    except (OSError, ValueError):
        pass
wall = time.monotonic() - begin
first = max(r for t, r in samples if t <= 3600)
last = max(r for t, r in samples if t >= DAY - 3600 and r)
print(f"exit status {show.returncode}, {DAY / wall:.0f} times real time")
print(f"resident in the first hour {first} kB, in the last {last} kB: {last - first:+} kB")
