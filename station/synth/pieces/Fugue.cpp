// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "station/synth/Instruments.h"
#include "station/synth/pieces/Pieces.h"

namespace sorakaze::station {
namespace {

// A fugue of three voices in D minor: the subject in the middle, its answer above, the subject in the bass,
// an episode that falls through the fifths, the subject on top, and a close in the major.
Line Upper() {
    return Notes(
        "A4:1 D5 F5:.5 E5 D5 C5 | B4 C5 D5 B4 C5:1 A4:1 | A4:.5 Bb4 C5:1 D5:.5 C5 Bb4 A4 | G4 A4 C#5:1 D5:.5 "
        "C5 Bb4:1 | "
        "D5:.5 C5 Bb4 D5 C5:1 Bb4 | C5:.5 Bb4 A4 C5 D5:1 C#5 | D5:1 A5 Bb5:.5 A5 G5 F5 | E5 F5 G5 E5 F5:1 D5 "
        "| G5:1 "
        "G5:.5 F5 E5:2 | F#5:5",
        8);
}

Line Middle() {
    return Notes(
        "D4:1 A4 Bb4:.5 A4 G4 F4 | E4 F4 G4 E4 F4:1 D4:1 | F4:.5 G4 F4:1 A4:.5 G4 F4 E4 | E4:1 G#4 A4:.5 G4 "
        "F4:1 | F4:1 "
        "E4 F4 D4 | C#4:.5 D4 E4:1 A4 G4 | G4:2 E4:.5 F4 G4 E4 | F4:2 F4:1 E4 | A4:1 C5 D5 C5 | C#5 A4 A4 F4 "
        "| D5 Bb4 "
        "D5:1 C#5:1 | D5:1.5 C5:.5 B4:1 A4:2");
}

Line Lower() {
    return Notes(
        "D3:1 A3 Bb3:.5 A3 G3 F3 | E3 F3 G3 E3 F3:1 D3:1 | G3 G2 C3 E3 | F3 A2 Bb2 A2 | D3:.5 E3 F3 D3 G3:1 "
        "C3:.5 F3 | "
        "A2:1 A2:.5 C#3 D3:1 Bb2 | G3 E3 A2:2 | D3:2 G2:1 D2+D3:2",
        16);
}

}  // namespace

Stereo PlayFugue() {
    Stage stage({88, 0.5, 40, 0.05}, 83);
    stage.Play(Middle(), {Organ, 0.26, {0.0}, 0.45, 0.93, 0.002});
    stage.Play(Upper(), {Organ, 0.24, {0.42}, 0.45, 0.93, 0.002});
    stage.Play(Lower(), {Organ, 0.30, {-0.42}, 0.45, 0.95, 0.002});
    // A soft pedal stop doubles the bass an octave below.
    stage.Play(Transposed(Lower(), -12), {Flute, 0.20, {-0.2}, 0.3, 0.95, 0.002});
    return stage.InRoom({2.8, 4200, 0.03, 1.3});
}

}  // namespace sorakaze::station
