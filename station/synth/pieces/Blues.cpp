// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "station/synth/Instruments.h"
#include "station/synth/pieces/Pieces.h"

namespace sorakaze::station {
namespace {

// Twelve bars of blues in A, and two to close.
Line Bass() {
    return Notes(
        "A2:1 C#3 E3 F#3 | D3 F#3 A3 C3 | A2 C#3 E3 G3 | A2 G2 E2 C#2 | D2 F#2 A2 C3 | D3 C3 A2 F2 | A2 E2 "
        "F#2 G2 | "
        "A2 C#3 F#2 F2 | E2 G#2 B2 D3 | D3 A2 F#2 D2 | A2 C#3 D2 D#2 | E2 G#2 B2 E2 | A2 G2 F#2 F2 | E2:1 "
        "A2:4");
}

Line Organ() {
    const char* a7 = "r:1.5 G3+C#4+E4:.5, r:1 G3+C#4+E4:1, |";
    const char* d7 = "r:1.5 F#3+C4+E4:.5, r:1 F#3+C4+E4:1, |";
    const char* e7 = "r:1.5 G#3+D4+F#4:.5, r:1 G#3+D4+F#4:1, |";
    Line line;
    double beat = 0;
    for (const char* bar : {a7, d7, a7, a7, d7, d7, a7, a7, e7, d7, a7, e7, a7}) {
        line = line + Notes(bar, beat);
        beat += 4;
    }
    return line + Notes("G#3+D4+F#4:1, G3+C#4+F#4:4,", beat);
}

Line Lead() {
    return Notes(
        "r:1 E5:.5 G5:.5 A5:1.5^ G5:.5 | E5:.5 D5:.5 C5:1 A4:2 | r:1.5 A4:.5 C5:.5 D5:.5 D#5:.5 E5:.5 | "
        "G5:1^ E5:.5 "
        "D5:.5 C5:.5 A4:1.5 | r:.5 A4:.5 D5:1 F5:1^ E5:.5 D5:.5 | C5:.5 D5:.5 C5:.5 A4:.5 G4:1 A4:1 | r:1 "
        "C5:.5, "
        "C#5:.5, E5:2 | F#5:.5 E5:.5 C#5:.5 A4:.5 B4:1 A4:1 | r:.5 B4:.5 D5:.5 E5:.5 G#5:1^ B5:1^ | A5:1.5^ "
        "F#5:.5 "
        "D5:.5 C5:.5 A4:1 | r:.5 C5:.5 C#5:.5 E5:.5 A5:1^ G5:.5 E5:.5 | D#5:.5 D5:.5 B4:1 G#4:1 B4:1 | A4:.5 "
        "C5:.5 "
        "C#5:.5 E5:.5 G5:.5 F#5:.5 E5:.5 C5:.5 | B4:.5 C5:.5 C#5+A4:4");
}

}  // namespace

Stereo PlayBlues() {
    Stage stage({72, 0.655, 50, 0.06}, 53);
    stage.Play(Bass(), {UprightBass, 0.66, {-0.05}, 0.08, 0.95, 0.008});
    Stereo organ = stage.Solo(Organ(), {DrawbarOrgan, 0.12, {-0.35}, 0, 0.9, 0.008});
    SwayPan(organ, 5.9, 0.2);
    stage.Add(organ, 1, 0.35);
    Stereo lead = stage.Solo(Lead(), {LeadGuitar, 0.22, {0.22}, 0, 0.96, 0.012});
    stage.Add(lead, 1, 0.4);
    stage.Add(PingPong(lead, {0.31, 0.28, 2400}), 0.22, 0.2);

    stage.Play(Repeat(Steps("x.xox.xo", 0.5), 4, 13), {Ride, 0.17, {0.3}, 0.15, 1, 0.006});
    stage.Play(Repeat(Steps("..x...x.", 0.5), 4, 13), {Brush, 0.42, {-0.15}, 0.2, 1, 0.006});
    stage.Play(Repeat(Steps("x...o..o", 0.5), 4, 13), {SoftKick, 0.36, {0}, 0.06, 1, 0.005});
    stage.Play(Notes("C4:1 C4:1", 52), {Brush, 0.4, {-0.1}, 0.3, 1, 0});
    stage.Play(Notes("C4:4", 53), {Ride, 0.2, {0.3}, 0.3, 1, 0});
    stage.Play(Notes("C4:1", 53), {Kick, 0.4, {0}, 0.1, 1, 0});
    return stage.InRoom({1.4, 3800, 0.025, 1.1});
}

}  // namespace sorakaze::station
