# SPDX-FileCopyrightText: The Sorakaze developers
# SPDX-License-Identifier: GPL-3.0-or-later
"""What the desk does to a show of real music, beside the same show without it: a table with the goals. Everything is
measured on what sorakaze-studio renders, with ffmpeg and meters of this folder. SORAKAZE_DESK_TRACKS limits the tracks."""
import concurrent.futures
import hashlib
import os
import platform
import statistics
import sys
import warnings

import numpy as np

import material
import meters
import parts
import shows
import talk
import tails

sys.path.insert(0, str(material.ROOT / "bench/air"))
import air  # noqa: E402


GOALS = {
    "integrated": "-16 +-0.5 LUFS", "parts played": "<= 0.5 LU", "jingle to speech": "<= 1.5 LU", "speech to speech": "<= 1.5 LU",
    "steps over 6 LU": "<= 2", "speech over music": ">= 10 dB on 99 %", "music within": "<= 1.2 s", "duck still": "none",
    "limiter below": "<= 1 %", "true peak, WAV": "<= -1.0 dBTP", "true peak, MP3": "<= -0.5 dBTP", "gaps": "0",
    "component above 2 kHz": "< -75 dBFS", "tracks whose head": "0; 0", "render time": "<= 1.05", "renders of": "0", "music's gain": "<= 6 dB of lift", "processor on the air": "<= 0.6",
}


def hours(real, masters):
    ordinary = shows.Show("Hour", parts.TEXT, real * 3, 60, limit=4200)
    by_level = sorted(real, key=lambda track: track.loudness)
    extremes = [track for pair in zip([masters[name] for name in ("loud", "low", "quiet-beginning", "silence", "surround", "vanishing")] +
                                      by_level[::-1], by_level) for track in pair]
    return ordinary, shows.Show("Extremes", parts.TEXT, extremes, 100, limit=4200)


def worst(values):
    return max(values, key=abs) if len(values) else np.nan


def hour_rows(hour, extremes, station):
    show, other = (each.render(station)[0] for each in (hour, extremes))
    coded = shows.Show("Coded", hour.text, hour.tracks, hour.song_seconds, limit=1500)
    with concurrent.futures.ThreadPoolExecutor(material.PROCESSES) as pool:
        *meter, (_, mp3), (_, opus) = pool.map(lambda make: meters.ffmpeg_meter(make()), (
            lambda: show.output, lambda: other.output, lambda: coded.render(station, "mp3")[0].output,
            lambda: coded.render(station, "opus")[0].output))
    part = [parts.measure(each) for each in (show, other)]
    gap = [parts.gaps(each, each_show.tracks) for each, each_show in ((show, hour), (other, extremes))]
    rows = {"integrated, one hour (of extremes)": f"{meter[0][0]:.1f} ({meter[1][0]:.1f}) LUFS",
            "parts played, standard deviation (of extremes)": f"{part[0]['parts'].std():.2f} ({part[1]['parts'].std():.2f}) LU"}
    for name, kinds in (("jingle to speech", {"jingle", "speech"}), ("speech to speech", {"speech"})):
        found = [step[1] for each in part for step in each["steps"] if set(step[0]) == kinds]
        rows[name + ": worst, median"] = f"{abs(worst(found)):.1f}, {np.median(np.abs(found)):.1f} LU"
    for name, which in (("by whole parts", 1), ("by the 6 s next to it", 2)):
        rows["steps over 6 LU, speech to music and back, " + name] = " (".join(
            str(sum(abs(step[which]) > 6 for step in each["steps"] if "music" in step[0] and len(set(step[0])) == 2 and "jingle" not in step[0])) for each in part) + ")"
    rows["true peak, WAV (of extremes)"] = f"{meter[0][1]:+.1f} ({meter[1][1]:+.1f}) dBTP"
    rows["true peak, MP3; Opus decoded"] = f"{mp3:+.1f}; {opus:+.1f} dBTP"
    rows["gaps over 1 s that no program asks for (in extremes)"] = f"{len(gap[0][0])} ({len(gap[1][0])}); pauses within tracks {len(gap[0][1])} ({len(gap[1][1])})"
    details = []
    for each, rendered, found, (silent, _) in zip((hour, extremes), (show, other), part, gap):
        details += [f"{each.name}: gap of {length:.1f} s at {begin:.0f} s, track {title(rendered, begin)}" for begin, length in silent[:10]]
        details += [f"{each.name}: step of {step[1]:+.1f} LU ({step[2]:+.1f} near it) {step[0]} at {step[3]:.0f} s, track {title(rendered, step[3])}"
                    for step in sorted(found["steps"], key=lambda step: -abs(step[2]))[:10]]
    for each, found in zip((hour, extremes), part):
        far = sorted(found["parts"] - np.median(found["parts"]), key=abs)[-5:]
        details.append(f"{each.name}: parts around {np.median(found['parts']):.1f} LUFS, farthest {np.round(far, 1)}; speech "
                       f"{np.median(found['speech']):.1f} ({min(found['speech']):.1f} to {max(found['speech']):.1f}), jingles "
                       f"{np.median(found['jingles']):.1f} ({min(found['jingles']):.1f} to {max(found['jingles']):.1f})")
    return rows, details


def title(show, second):
    before = [event for event in show.of("track") if event["time"] <= second + 3]
    return before[-1]["path"].rsplit("/", 1)[1] if before else "none yet"


def talk_rows(show, tracks, stations):
    pair = [show.render(station)[0] for station in stations]
    found = talk.measure_all(tracks, pair)
    rows, details = {}, []
    for which, name in enumerate(("intro", "body")):
        ratios = sorted((track["sentences"][which]["ratio"], track["name"]) for track in found)
        values = np.array([ratio for ratio, _ in ratios])
        rows[f"speech over music in 300-3400 Hz, {name}: 10 dB on"] = \
            f"{np.mean(values >= 10) * 100:.0f} % (median {np.median(values):.1f}, worst {values[0]:.1f} dB)"
        details.append(f"{name}: least speech over music: " + ", ".join(f"{track} {ratio:.1f}" for ratio, track in ratios[:8]))
    sentences = [(track["name"], sentence) for track in found for sentence in track["sentences"]]
    back = [(s["back"], name) for name, s in sentences if np.isfinite(s["back"])]
    rows["music within 0.1 dB of its level after the last word"] = \
        f"{np.median([b for b, _ in back]):.1f} s, worst {max(back)[0]:.1f} s ({len(back)} of {len(sentences)} judged)"
    undone = [(s["undone"], name) for name, s in sentences if np.isfinite(s["undone"])]
    rows["duck still to be done at the first word"] = f"worst {max(undone)[0]:.1f} dB, over 0.5 dB {sum(u > 0.5 for u, _ in undone)} of {len(undone)}"
    level = np.median([np.nanpercentile(s["speech_gain"], 90) for _, s in sentences])
    def limited(name):
        gains = np.concatenate([s["speech_gain"] for track, s in sentences if track == name])
        return np.mean(gains < level - 1) * 100
    rows["limiter below -1 dB in talk, -6 LUFS (-30 LUFS) master"] = f"{limited('loud.flac'):.1f} ({limited('low.flac'):.1f}) %"
    rows["music's gain without talk: most in a second; lift"] = \
        f"{max(t['moves'] for t in found):.1f} dB; {max(t.get('lift', 0) for t in found):.1f} dB"
    details += ["gain moves most: " + ", ".join(f"{t['name']} {t['moves']:.1f}" for t in sorted(found, key=lambda t: -t["moves"])[:6]),
                "music is back last: " + ", ".join(f"{name} {b:.1f}" for b, name in sorted(back)[-6:]),
                "duck most late: " + ", ".join(f"{name} {u:.1f}" for u, name in sorted(undone)[-6:]),
                "gains: " + ", ".join(f"{t['name']} {t['gain']:+.1f}" for t in found if t["name"] in
                                      ("loud.flac", "low.flac", "silence.flac", "vanishing.flac", "quiet-beginning.flac", "surround.flac", "tone.flac"))]
    return rows, details, found


def measure(station_name, deployment, hour, extremes, over, tracks):
    plain = shows.make_station(station_name, deployment)
    inverted = shows.make_station(station_name + "-inverted", deployment, inverted=True)
    rows, details = hour_rows(hour, extremes, plain)
    more, lines, found = talk_rows(over, tracks, (plain, inverted))
    rows, details = rows | more, details + lines
    more, lines, clicks = tails.measure(tracks, plain, {track["name"]: track["skipped"] for track in found})
    clicks += [track["click"] for track in found if "click" in track]
    rows["component above 2 kHz at the ramps of a tone"] = f"{max(clicks):.0f} dBFS"
    return rows | more, details + lines


def cost_rows(columns, deployments, hour):
    """What the desk costs, with the shows in turns."""
    stations = {column: material.WORK / column for column in columns}
    times, sums = ({column: [] for column in columns} for _ in range(2))
    for _ in range(5):
        for column, station in stations.items():
            before = os.times()
            show, seconds = hour.render(station)
            after = os.times()
            times[column].append((seconds, after.children_user + after.children_system - before.children_user - before.children_system))
            with open(show.output, "rb") as file:
                sums[column].append(hashlib.file_digest(file, "blake2b").digest())
    middle = {column: [statistics.median(figures) for figures in zip(*rounds)] for column, rounds in times.items()}
    for column, rows in columns.items():
        (wall, processor), off = middle[column], middle["off"]
        rows["render time against off; processor time"] = f"{wall / off[0]:.3f} ({wall:.1f} s); {processor / off[1]:.3f}"
        rows["renders of the same hour that differ"] = f"{len(set(sums[column])) - 1} of {len(sums[column])}"
        figures = air.beside_daemon(deployments[column])
        rows["processor on the air against mpd's"] = f"{figures['Sorakaze'][0] / figures['mpd'][0]:.2f} ({figures['Sorakaze'][0]:.2f} % of a core)"


def main():
    warnings.simplefilter("ignore", RuntimeWarning)  # of silence
    real = material.real_tracks()
    masters = material.made_masters(real[0])
    tracks = real + list(masters.values())
    hour, extremes = hours(real, masters)
    over = shows.Show("Talk", talk.TEXT, tracks, 42)
    columns, details = {}, {}
    deployments = shows.deployments()
    for column, deployment in deployments.items():
        columns[column], details[column] = measure(column, deployment, hour, extremes, over, tracks)
    cost_rows(columns, deployments, hour)
    for column, lines in details.items():
        print(f"\n{column}:\n  " + "\n  ".join(lines))
    print(f"\n{platform.machine()}, {material.PROCESSES} cores; {len(real)} tracks ({sum(t.seconds for t in real) / 3600:.1f} hours) of "
          f"{' '.join(material.packages())}; {len(masters)} masters made here\n")
    width = max(map(len, columns["off"]))
    print(f"{'':{width}}  {'goal':22} {'off':44} on")
    for row, value in columns["off"].items():
        goal = next((goal for name, goal in GOALS.items() if row.startswith(name)), "")
        print(f"{row:{width}}  {goal:22} {value:44} {columns.get('on', {}).get(row, '')}")


if __name__ == "__main__":
    main()
