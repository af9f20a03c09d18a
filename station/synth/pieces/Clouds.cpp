// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include <algorithm>

#include "station/synth/Instruments.h"
#include "station/synth/pieces/Pieces.h"

namespace sorakaze::station {
namespace {

// Six slow chords, each held a little over into the next. A beat is a second.
struct Chord {
    const char* low;
    const char* high;
    const char* bells;
};
constexpr Chord kChords[] = {
    {"E2+B2", "G#3+D#4+F#4+B4", "B5 F#5 G#5 D#6"}, {"C#2+G#2", "E3+B3+D#4+F#4", "G#5 E5 D#6 F#5"},
    {"A1+E2", "C#3+G#3+B3+D#4", "D#6 B5 C#6 G#5"}, {"F#2+C#3", "A3+E4+G#4+B4", "C#6 G#5 A5 E6"},
    {"B1+F#2", "A3+C#4+E4+F#4", "F#5 C#6 E6 A5"},  {"E2+B2", "F#3+G#3+B3+D#4", "B5 D#6 F#6 G#6"},
};
constexpr double kChordBeats = 6.5;

Mono Rain(double seconds, Random& random) {
    Mono drops(Samples(seconds), 0.0F);
    for (double at = 0; at < seconds - 0.05; at += 0.004 + 0.05 * random.Next()) {
        const double pitch = 1800 + 5200 * random.Next();
        const double level = 0.15 * random.Next() * random.Next();
        const std::size_t from = Samples(at), length = Samples(0.006 + 0.01 * random.Next());
        for (std::size_t i = 0; i < length && from + i < drops.size(); ++i) {
            const double t = static_cast<double>(i) / static_cast<double>(length);
            drops[from + i] += static_cast<float>(level * t * (1 - t) * (1 - t) * 6 *
                                                  Sine(pitch * static_cast<double>(i) / kRate));
        }
    }
    // It comes and goes with the music.
    for (std::size_t i = 0; i < drops.size(); ++i) {
        const double t = static_cast<double>(i) / kRate;
        drops[i] *= static_cast<float>(std::min({1.0, t / 4, (seconds - t) / 6}));
    }
    return drops;
}

}  // namespace

Stereo PlayClouds() {
    Stage stage({60}, 23);
    double beat = 0;
    for (const Chord& chord : kChords) {
        const double held = kChordBeats + 1;
        const Line low = Notes(chord.low, beat), high = Notes(chord.high, beat);
        const auto lengthen = [&](Line line) {
            for (Note& note : line) note.beats = held;
            return line;
        };
        stage.Play(lengthen(low), {Pad(480, 1.8, 2.8), 0.25, {0}, 0.3, 1, 0.05});
        stage.Play(lengthen(high), {Pad(2100, 2.2, 3.0), 0.20, {-0.7}, 0.6, 1, 0.15});
        stage.Play(lengthen(high), {Pad(2800, 2.6, 3.0), 0.18, {0.7}, 0.6, 1, 0.25});

        Line bells = Notes(chord.bells);
        const double places[] = {1.0, 2.75, 3.9, 5.6};
        for (std::size_t i = 0; i < bells.size(); ++i) {
            bells[i].beat = beat + places[i] + 0.3 * stage.Chance().Signed();
            bells[i].velocity = 0.4 + 0.3 * stage.Chance().Next();
        }
        const double side = stage.Chance().Signed() * 0.6;
        const Stereo struck = stage.Solo(bells, {Bell, 0.11, {side}, 0, 1, 0.05});
        stage.Add(struck, 1, 1.2);
        stage.Add(PingPong(struck, {0.61, 0.5, 2600}), 0.6, 0.5);
        beat += kChordBeats;
    }
    stage.Add(Rain(beat + 5, stage.Chance()), 0, 0.30, {-0.5}, 0.4);
    stage.Add(Rain(beat + 5, stage.Chance()), 0, 0.30, {0.5}, 0.4);
    return stage.InRoom({4.5, 3600, 0.04, 1.4});
}

}  // namespace sorakaze::station
