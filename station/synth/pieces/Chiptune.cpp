// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include <initializer_list>

#include "station/synth/Instruments.h"
#include "station/synth/pieces/Pieces.h"

namespace sorakaze::station {
namespace {

Line Theme() {
    return Notes(
        "A4:.5^ C5:.5 E5:1 D5:.5 C5:.5 B4:.5 C5:.5 | A4:1.5^ G4:.5 F4:1 A4:1 | G4:.5^ C5:.5 E5:1 G5:1 E5:.5 "
        "C5:.5 | "
        "D5:1.5^ B4:.5 G4:1 B4:1 | A4:.5^ C5:.5 E5:1 A5:.5 G5:.5 E5:.5 D5:.5 | C5:1.5^ A4:.5 F4:.5 A4:.5 "
        "C5:.5 F5:.5 | "
        "E5:.5^ D5:.5 C5:.5 D5:.5 E5:.5 G5:.5 B5:.5 G5:.5 | A5:2^ r:1 E5:.5 G5:.5");
}

Line Bridge() {
    return Notes(
        "F5:.75^ F5:.75 E5:.5 D5:1 C5:1 | G5:.75^ G5:.75 F5:.5 E5:1 D5:1 | E5:.75^ G#5:.75 B5:.5 A5:.5 "
        "G#5:.5 E5:.5 "
        "D5:.5 | C5:.5^ D5:.5 E5:.5 A5:.5 E5:1.5 r:.5 | F5:.75^ A5:.75 C6:.5 B5:.5 A5:.5 G5:.5 F5:.5 | "
        "E5:.75^ G5:.75 "
        "C6:.5 B5:.5 A5:.5 G5:.5 E5:.5 | D5:.5^ E5:.5 F5:.5 G#5:.5 B5:.5 A5:.5 G#5:.5 F5:.5 | E5:1^ G#5:.5 "
        "B5:.5 E6:2");
}

/// A chord broken up so fast that it sounds like one, as a machine with few voices does it.
Line Broken(std::initializer_list<const char*> chords) {
    Line line;
    double beat = 0;
    for (const char* chord : chords) {
        const Line notes = Notes(chord);
        for (int i = 0; i < 32; ++i) {
            Note note = notes[static_cast<std::size_t>(i) % notes.size()];
            note.beat = beat + i * 0.125;
            note.beats = 0.125;
            note.velocity = i % 8 == 0 ? 0.8 : 0.55;
            line.push_back(note);
        }
        beat += 4;
    }
    return line;
}

Line Bass(std::initializer_list<const char*> roots) {
    Line line;
    double beat = 0;
    for (const char* root : roots) {
        const Note note = Notes(root).front();
        const double steps[] = {0, 0, 12, 0, 7, 0, 12, 7};
        for (int i = 0; i < 8; ++i) line.push_back({beat + i * 0.5, 0.45, note.pitch + steps[i], 0.75});
        beat += 4;
    }
    return line;
}

}  // namespace

Stereo PlayChiptune() {
    Stage stage({154}, 37);
    const auto chordsOfTheme = {"A3+C4+E4", "F3+A3+C4", "G3+C4+E4", "G3+B3+D4",
                                "A3+C4+E4", "F3+A3+C4", "G3+C4+E4", "A3+C4+E4"};
    const auto chordsOfBridge = {"A3+D4+F4", "B3+D4+G4", "B3+E4+G#4", "A3+C4+E4",
                                 "A3+C4+F4", "G3+C4+E4", "B3+D4+F4",  "G#3+B3+E4"};
    const Line bass = Bass({"A1", "F1", "C2", "G1", "A1", "F1", "G1", "A1"});
    const Line bridgeBass = Bass({"D2", "G1", "E2", "A1", "F1", "C2", "D2", "E2"});
    const double part = 32;

    const Line lead = Theme() + Later(Bridge(), part) + Later(Theme(), 2 * part) + Notes("A5:3^", 3 * part);
    stage.Play(lead, {ChipPulse(0.25), 0.20, {-0.12}, 0.16, 0.85, 0});
    const Stereo echo = stage.Solo(Later(lead, 0.75), {ChipPulse(0.125), 0.05, {0.75}, 0, 0.7, 0});
    stage.Add(echo, 1, 0.1);
    // The last time round a second voice joins a third below, as far as the scale has it.
    Line second = Transposed(Theme(), -12);
    stage.Play(Later(second, 2 * part), {ChipPulse(0.5), 0.09, {0.35}, 0.1, 0.8, 0});

    const Line broken = Broken(chordsOfTheme) + Later(Broken(chordsOfBridge), part) +
                        Later(Broken(chordsOfTheme), 2 * part) + Notes("A3+C4+E4:3", 3 * part);
    stage.Play(broken, {ChipPulse(0.5), 0.065, {0.45}, 0.08, 0.95, 0});
    stage.Play(bass + Later(bridgeBass, part) + Later(bass, 2 * part) + Notes("A1:3", 3 * part),
               {ChipTriangle, 0.30, {0}, 0.02, 0.9, 0});

    Line low = Repeat(Steps("X...x...X...x...", 0.25), 4, 24);
    for (Note& note : low) note.pitch = note.velocity > 0.9 ? 30 : 45;
    stage.Play(low, {ChipNoise, 0.14, {0}, 0.06, 1, 0});
    Line high = Repeat(Steps("..x...x...x...xo", 0.25), 4, 24);
    for (Note& note : high) note.pitch = 90;
    stage.Play(high, {ChipNoise, 0.06, {-0.4}, 0.06, 1, 0});
    return stage.InRoom({0.7, 6500, 0.008, 0.5});
}

}  // namespace sorakaze::station
