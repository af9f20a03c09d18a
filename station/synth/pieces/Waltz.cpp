// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "station/synth/Instruments.h"
#include "station/synth/pieces/Pieces.h"

namespace sorakaze::station {
namespace {

/// One bar of three: the bass note, and the chord twice.
Line Bar(double beat, const char* bass, const char* chord) {
    Line line = Notes(bass, beat);
    for (int i = 1; i < 3; ++i) line = line + Softer(Notes(chord, beat + i), i == 1 ? 0.75 : 0.62);
    return line;
}

Line Accompaniment() {
    struct Chord {
        const char* bass;
        const char* upper;
    };
    constexpr Chord kG{"G2", "B3+D4+G4"}, kEm{"E2", "B3+E4+G4"}, kAm{"A2", "C4+E4+A4"},
        kD7{"D3", "C4+D4+F#4"};
    constexpr Chord kC{"C3", "C4+E4+G4"}, kD{"D3", "A3+D4+F#4"}, kGb{"B2", "B3+D4+G4"},
        kBm{"B2", "B3+D4+F#4"};
    constexpr Chord kA7{"A2", "A3+C#4+G4"}, kE7{"E2", "B3+D4+G#4"}, kCm{"C3", "C4+Eb4+G4"};
    const Chord bars[] = {kG,  kEm, kAm, kD7, kG, kE7, kAm, kD7, kEm, kBm, kC,  kG,
                          kA7, kA7, kD,  kD7, kG, kGb, kC,  kCm, kG,  kE7, kAm, kD7};
    Line line;
    double beat = 0;
    for (const Chord& chord : bars) {
        line = line + Bar(beat, chord.bass, chord.upper);
        beat += 3;
    }
    return line + Notes("G2:1 D3:1 B3:1 | G4+B4+D5+G5:3,", beat);
}

Line Melody() {
    return Notes(
        "D5:2 B4:1 | G5:2 E5:1 | C5:1 E5:1 A5:1^ | F#5:2 D5:1 | B4:2 D5:1 | E5:1.5 D5:.5 B4:1 | C5:1 A4:1 "
        "C5:1 | "
        "D5:2 r:1 | B5:2^ A5:1 | F#5:2 D5:1 | E5:1 F#5:1 G5:1 | D5:2 B4:1 | C#5:1 E5:1 A5:1^ | G5:1.5 F#5:.5 "
        "E5:1 | "
        "F#5:1 A5:1 D6:1^ | C6:2 A5:1 | B5:2 G5:1 | D5:1 G5:1 B5:1 | C6:1.5^ B5:.5 A5:1 | G5:2 Eb5:1 | D5:2 "
        "G5:1 | "
        "B5:1 G#5:1 E5:1 | C5:1 E5:1 A5:1 | F#5:2 A4:1 | G4:6");
}

/// A third or a sixth under the tune in its last eight bars.
Line Second() {
    return Notes(
        "G5:2, D5:1, | B4:1, D5:1, G5:1, | E5:1.5, G5:.5, E5:1, | Eb5:2, C5:1, | B4:2, D5:1, | G#5:1, E5:1, "
        "B4:1, | "
        "A4:1, C5:1, E5:1, | C5:2, F#4:1, | D4:6,",
        48);
}

}  // namespace

Stereo PlayWaltz() {
    Stage stage({148, 0.5, 69, 0.04}, 41);
    stage.Play(Accompaniment(), {Plucked({3.0, 0.34, 0.14, 0.25}), 0.24, {-0.35}, 0.3, 1.1, 0.006});
    stage.Play(Melody(), {Plucked({4.2, 0.72, 0.12, 0.35}), 0.30, {0.25}, 0.42, 1.25, 0.006});
    stage.Play(Second(), {Plucked({3.8, 0.55, 0.3, 0.3}), 0.26, {0.6}, 0.42, 1.2, 0.008});
    stage.Play(
        Transposed(
            Notes("G3:3 E3 A2 D3 | G2 E2 A2 D3 | E3 B2 C3 G2 | A2 A2 D3 D3 | G2 B2 C3 C3 | G2 E2 A2 D3 | "
                  "G2:6"),
            0),
        {UprightBass, 0.34, {0}, 0.1, 0.8, 0.005});
    // A breath of strings under the second half.
    stage.Play(
        Notes("G3+B3+D4:3 G3+B3 G3+C4+E4 G3+C4+Eb4 | G3+B3+D4 G#3+B3+D4 A3+C4+E4 F#3+A3+C4 | G3+B3+D4:6", 48),
        {Pad(900, 0.35, 0.5), 0.11, {0}, 0.6, 1, 0.02});
    return stage.InRoom({1.9, 5600, 0.02, 1.0});
}

}  // namespace sorakaze::station
