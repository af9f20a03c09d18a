# SPDX-FileCopyrightText: The Sorakaze developers
# SPDX-License-Identifier: GPL-3.0-or-later
"""How long a sayj line takes from its page to its sound, with a service that answers at once and with the application's own:
the first of a run and later ones. And what it costs in memory: nothing of the application's own."""
import pathlib
import statistics
import sys
import time

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[2] / "tests/app/viewer"))
sys.dont_write_bytecode = True
import rig  # noqa: E402

RUNS = 3
PAGES = 5


def memory(pid):
    """Megabytes, what is shared divided among the sharers."""
    rollup = pathlib.Path(f"/proc/{pid}/smaps_rollup").read_text()
    return next(int(line.split()[1]) for line in rollup.splitlines() if line.startswith("Pss:")) / 1024


SENTENCE = "お聴きいただいているのは、金魚すくい同好会で、百年目の風鈴です。"


def run_own(stage, times):
    """With the application's own service, and sentences of ordinary length."""
    station = rig.Station(stage, "root", None, [line for _ in range(PAGES) for line in (f"sayj {SENTENCE}", "wait 8")])
    station.open()
    before = None
    for _ in range(PAGES):
        while (written := station.page_written()) == before:
            time.sleep(0.01)
        before = written
        stage.recorder.forget()
        times.append(stage.recorder.hear()[0] - written)
    station.terminate()
    station.remove()


def run(stage, times, costs):
    service = rig.Service({})
    station = rig.Station(stage, "root", service, [line for page in range(PAGES) for line in (f"sayj {page}", "wait 2")])
    station.open()
    before = memory(station.process.pid)
    for _ in range(PAGES):
        stage.recorder.forget()
        service.posts.get(timeout=rig.PATIENCE)
        written = station.page_written()
        times.append(stage.recorder.hear()[0] - written)
    costs.append((before, memory(station.process.pid), sum(memory(pid) for pid in station.browsers())))
    station.terminate()
    station.remove()


def told(what, runs):
    first, later = [times[0] for times in runs], [time for times in runs for time in times[1:]]
    print(f"from page to sound, {what}: the first {statistics.median(first) * 1000:.0f} ms (at most {max(first) * 1000:.0f}), "
          f"later ones {statistics.median(later) * 1000:.0f} ms (at most {max(later) * 1000:.0f})")


def main():
    ready, own, costs = [[] for _ in range(RUNS)], [[] for _ in range(RUNS)], []
    with rig.Rig() as stage:
        for times in ready:
            run(stage, times, costs)
        for times in own:
            run_own(stage, times)
    told("a service that answers at once", ready)
    told("the application's own", own)
    before, after, viewer = (statistics.median(column) for column in zip(*costs))
    print(f"memory: the application {before:.0f} MB before the first page and {after:.0f} MB after, the page's processes {viewer:.0f} MB")


main()
