// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "station/synth/Instruments.h"
#include "station/synth/pieces/Pieces.h"

namespace sorakaze::station {
namespace {

// Two players with one pattern of twelve notes. The second moves on by a note every other round, until after
// twelve steps both would be together again; the harmony underneath changes four times.
constexpr int kPattern = 12;

Line Pattern(const char* pitches) {
    Line line = Notes(pitches);
    for (std::size_t i = 0; i < line.size(); ++i) {
        line[i].beat = static_cast<double>(i) * 0.5;
        line[i].beats = 0.5;
        line[i].velocity = i % 6 == 0 ? 0.85 : i % 2 == 0 ? 0.66 : 0.54;
    }
    return line;
}

Line Rotated(const Line& line, int steps) {
    Line turned = line;
    for (int i = 0; i < kPattern; ++i) {
        turned[static_cast<std::size_t>(i)].pitch =
            line[static_cast<std::size_t>((i + steps) % kPattern)].pitch;
    }
    return turned;
}

}  // namespace

Stereo PlayMarimbas() {
    Stage stage({178}, 61);
    const char* patterns[] = {
        "E4 B4 F#4 A4 E4 C#5 B4 F#4 E5 A4 B4 C#5",
        "F#4 B4 D5 A4 F#4 C#5 B4 E4 D5 A4 F#4 C#5",
        "D4 A4 E4 F#4 D4 C#5 A4 E4 D5 F#4 A4 C#5",
        "E4 B4 G#4 A4 E4 C#5 B4 G#4 E5 A4 B4 C#5",
    };
    const char* chords[] = {"A2+E3:18 ", "B2+F#3:18", "D2+A2:18", "E2+B2:12 A2+E3:6"};
    const char* held[] = {"C#5:9, B4:9,", "D5:9, C#5:9,", "F#5:9, E5:9,", "B4:12, C#5:6,"};
    const double round = kPattern * 0.5;
    double beat = 0;
    int step = 0;
    for (int part = 0; part < 4; ++part) {
        const Line pattern = Pattern(patterns[part]);
        // The second player comes in with the second chord.
        for (int i = 0; i < 3; ++i) {
            stage.Play(Later(pattern, beat), {Marimba, 0.36, {-0.62}, 0.3, 1, 0.003});
            if (part > 0)
                stage.Play(Later(Rotated(pattern, step), beat), {Marimba, 0.33, {0.62}, 0.3, 1, 0.003});
            if (part > 0) step += 2;
            beat += round;
        }
        const double begin = beat - 3 * round;
        stage.Play(Notes(chords[part], begin), {Marimba, 0.5, {0}, 0.25, 1, 0.003});
        if (part > 0) stage.Play(Notes(held[part], begin), {Vibraphone, 0.20, {0.1}, 0.5, 1, 0.01});
    }
    // All of it once more, thinner, down to the last note.
    const Line last = Pattern(patterns[0]);
    stage.Play(Later(last, beat) + Later(Softer(last, 0.8), beat + round),
               {Marimba, 0.36, {-0.62}, 0.3, 1, 0.003});
    stage.Play(Later(Softer(Rotated(last, 6), 0.8), beat), {Marimba, 0.33, {0.62}, 0.3, 1, 0.003});
    stage.Play(Notes("F#4:1.5 A4 B4 C#5", beat), {Vibraphone, 0.16, {0.1}, 0.5, 1, 0.01});
    stage.Play(Notes("A2+E3:12", beat), {Marimba, 0.5, {0}, 0.25, 1, 0.003});
    beat += 2 * round;
    stage.Play(Notes("A2+A3+E4+C#5:6^", beat), {Marimba, 0.38, {0}, 0.5, 1, 0});
    stage.Play(Notes("E5+B5:7,", beat), {Vibraphone, 0.2, {0.1}, 0.6, 1, 0.01});
    return stage.InRoom({2.1, 6200, 0.02, 1.1});
}

}  // namespace sorakaze::station
