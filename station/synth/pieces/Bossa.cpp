// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include <string>

#include "station/synth/Instruments.h"
#include "station/synth/pieces/Pieces.h"

namespace sorakaze::station {
namespace {

// Sixteen bars and a close. The piano keeps to rootless chords; the bass has the roots.
constexpr double kBars = 16;

Line Chords() {
    struct Bar {
        const char* first;
        const char* second;
    };
    const Bar bars[] = {
        {"F3+A3+C4+E4", "F3+A3+C4+E4"},  {"F3+A3+B3+E4", "F3+A3+B3+E4"},    {"E3+G3+B3+D4", "E3+G3+B3+D4"},
        {"E3+G3+B3+C4", "E3+G3+B3+C4"},  {"F3+A3+C4+E4", "F3+A3+C4+E4"},    {"F3+Ab3+B3+E4", "F3+Ab3+B3+D4"},
        {"E3+G3+B3+D4", "E3+A3+B3+D4"},  {"G3+Bb3+C#4+F4", "G3+A3+C#4+E4"}, {"F3+A3+C4+E4", "F3+A3+C4+E4"},
        {"F3+A3+B3+E4", "F3+A3+B3+E4"},  {"E3+G3+B3+D4", "E3+G3+B3+D4"},    {"E3+G3+B3+C4", "E3+G3+B3+C4"},
        {"F3+A3+C4+E4", "F3+A3+C4+D4"},  {"F3+Ab3+B3+D4", "F3+Ab3+B3+D4"},  {"E3+G3+A3+D4", "Eb3+G3+A3+C#4"},
        {"F3+A3+C4+D4", "F3+Ab3+B3+D4"},
    };
    // The two-bar pulse of the right hand: on the beat, then ahead of it.
    Line line;
    double beat = 0;
    for (const Bar& bar : bars) {
        const bool odd = static_cast<int>(beat / 4) % 2 != 0;
        const std::string first = bar.first, second = bar.second;
        const std::string text = odd ? "r:.5 " + first + ":1, " + first + ":.5, r:.5 " + second + ":1 r:.5"
                                     : first + ":1, r:.5 " + first + ":.5, r:.5 " + second + ":1, r:.5";
        line = line + Notes(text, beat);
        beat += 4;
    }
    return line + Notes("E3+G3+B3+D4:4", beat) + Notes("G4+A4+D5+E5:3,", beat + 0.5);
}

Line Bass() {
    return Notes(
        "D2:1.5 A2:.5 A2:1.5 D2:.5 | G2:1.5 D2:.5 D2:1.5 G2:.5 | C2:1.5 G2:.5 G2:1.5 C2:.5 | A2:1.5 E2:.5 "
        "E2:1.5 "
        "C#2:.5 | D2:1.5 A2:.5 A2:1.5 D2:.5 | G2:1.5 D2:.5 G2:1.5 B2:.5 | C3:1.5 G2:.5 C2:1.5 E2:.5 | A2:1.5 "
        "E2:.5 "
        "A2:1 C#3:1 | D3:1.5 A2:.5 A2:1.5 D2:.5 | G2:1.5 D2:.5 D2:1.5 G2:.5 | C2:1.5 G2:.5 G2:1.5 B2:.5 | "
        "A2:1.5 "
        "E2:.5 E2:1.5 A2:.5 | D2:1.5 A2:.5 D2:1.5 F2:.5 | G2:1.5 D2:.5 G2:1.5 D2:.5 | E2:1.5 B2:.5 Eb2:1.5 "
        "Bb2:.5 | "
        "D2:1.5 A2:.5 G2:1 G2:1 | C2:5");
}

Line Melody() {
    return Notes(
        "r:1 A4:.5 C5:1 D5:.5 E5:1 | E5:1.5^ D5:.5 B4:2 | r:.5 G4:.5 B4:1 D5:1 C5:1 | B4:1.5 C5:.5 A4:2 | "
        "r:1 F4:.5, "
        "A4:1 C5:.5 D5:1 | Ab4:1.5 B4:.5 D5:1 F5:1^ | E5:2.5 D5:.5 B4:1 | C#5:1.5 F5:.5 E5:2 | r:.5 D5:.5 "
        "E5:.5 F5:1 "
        "E5:.5 D5:1 | B4:1, A4:.5, G4:1.5 E4:1 | G4:.5 B4:.5 D5:.5 E5:1.5^ D5:1 | C5:1 B4:1 A4:2 | F5:1.5^ "
        "E5:.5 D5:1 "
        "C5:1 | B4:.5 C5:.5 D5:.5 F5:.5 Ab5:2 | G5:1.5 E5:.5 C#5:1.5, A4:.5, | C5:1.5 B4:.5 G4:1 B4:1, | "
        "E5:4");
}

}  // namespace

Stereo PlayBossa() {
    Stage stage({136, 0.5, kBars * 4 - 2, 0.03}, 11);
    Stereo keys = stage.Solo(Chords(), {ElectricPiano, 0.17, {-0.1}, 0, 0.9, 0.005});
    SwayPan(keys, 3.1, 0.28);
    stage.Add(keys, 1, 0.22);
    stage.Play(Bass(), {UprightBass, 0.46, {0.0}, 0.06, 0.92, 0.004});
    stage.Play(Melody(), {Plucked({3.4, 0.42, 0.22, 0.12}), 0.37, {0.18}, 0.42, 1.0, 0.006});

    const double length = kBars * 4;
    stage.Play(Repeat(Steps("x..x..x...x..x..", 0.5), 8, 8), {Rim, 0.13, {0.35}, 0.25});
    stage.Play(Repeat(Steps("xoxoxoxo", 0.5), 4, static_cast<int>(length / 4)),
               {Shaker, 0.30, {-0.45}, 0.15});
    stage.Play(Repeat(Steps("x..ox..o", 0.5), 4, static_cast<int>(length / 4)), {SoftKick, 0.34, {0}, 0.05});
    return stage.InRoom({1.5, 4800, 0.018, 0.9});
}

}  // namespace sorakaze::station
