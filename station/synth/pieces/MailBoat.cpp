// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "station/synth/Instruments.h"
#include "station/synth/pieces/Pieces.h"

namespace sorakaze::station {
namespace {

// A barcarolle: bars of three beats, each rocked in six halves. The harp rolls, the vibraphone sings, and the
// boat's horn answers from the harbour and from far out.
struct Bar {
    const char* roll;
    const char* bass;
};
constexpr Bar kDm{"D3:.5 A3 D4 F4 D4 A3", "D2:3"}, kGm{"D3:.5 G3 Bb3 D4 Bb3 G3", "G2:3"},
    kBb{"D3:.5 F3 Bb3 D4 Bb3 F3", "Bb1:3"}, kA7{"C#3:.5 G3 A3 E4 A3 G3", "A1:3"},
    kF{"C3:.5 F3 A3 C4 A3 F3", "F2:3"}, kC{"C3:.5 G3 C4 E4 C4 G3", "C2:3"},
    kEdim{"Bb2:.5 E3 G3 C#4 G3 E3", "E2:3"};
constexpr Bar kBars[] = {kDm, kDm, kGm, kDm, kBb, kF,  kA7, kDm,   kF,  kC, kGm,
                         kDm, kBb, kGm, kA7, kA7, kDm, kGm, kEdim, kA7, kDm};

Line Rolls() {
    Line line;
    double beat = 0;
    for (const Bar& bar : kBars) {
        line = line + Softer(Notes(bar.roll, beat), 0.8);
        beat += 3;
    }
    return line + Notes("D3:.75 A3 D4 F4 A4 D5:3,", beat);
}

Line Basses() {
    Line line;
    double beat = 0;
    for (const Bar& bar : kBars) {
        line = line + Notes(bar.bass, beat);
        beat += 3;
    }
    return line + Notes("D2:6", beat);
}

Line Song() {
    return Notes(
        "A4:1.5 D5:1 E5:.5 | F5:2.5 E5:.5 | D5:1.5 Bb4:1.5 | A4:3 | D5:1.5 F5:1 D5:.5 | C5:1.5 A4:1.5 | "
        "G4:1.5 E5:1 C#5:.5 | D5:3 | A5:2^ G5:.5 F5:.5 | G5:1.5 E5:1 C5:.5 | Bb5:1.5^ A5:.5 G5:1 | F5:3 | "
        "D5:1.5 F5:1 Bb5:.5 | A5:1.5 G5:1.5 | E5:1.5 F5:1 G5:.5 | C#5:3 | D5:1.5 F5:1 A5:.5 | G5:2.5 F5:.5 | "
        "E5:1.5 C#5:1 Bb4:.5 | A4:3 | D5:6,",
        6);
}

}  // namespace

Stereo PlayMailBoat() {
    Stage stage({112, 0.5, 66, 0.05}, 71);
    stage.Play(Rolls(), {Plucked({3.2, 0.45, 0.3, 0.5}), 0.24, {-0.4}, 0.4, 1.6, 0.006});
    stage.Play(Basses(), {UprightBass, 0.40, {0}, 0.1, 0.95, 0.005});
    stage.Play(Song(), {Vibraphone, 0.34, {0.25}, 0.5, 1.1, 0.008});
    stage.Play(Notes("D3+A3+F4:12 Bb2+F3+D4:6 A2+E3+G3:6 F3+A3+C4:6 G3+Bb3+D4:6 Bb2+D3+G3:6 A2+C#3+E3:6 "
                     "D3+A3+F4:3 G3+Bb3+D4:3 E3+G3+C#4:3 A2+E3+G3:3 D3+A3+F4:8",
                     6),
               {Pad(700, 0.9, 1.6), 0.16, {0}, 0.6, 1, 0.03});
    const Stereo horn = stage.Solo(Notes("D2+A2:2.5 r:24 D2+A2:2,") + Notes("D2+A2:3,", 60),
                                   {Brass, 0.20, {-0.55}, 0, 1, 0.01});
    stage.Add(horn, 1, 0.9);
    stage.Add(PingPong(horn, {0.9, 0.4, 900}), 0.35, 0.4);
    return stage.InRoom({2.8, 4200, 0.03, 1.3});
}

}  // namespace sorakaze::station
