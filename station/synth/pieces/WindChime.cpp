// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "station/synth/Instruments.h"
#include "station/synth/pieces/Pieces.h"

namespace sorakaze::station {
namespace {

// Five notes (D, E flat, G, A, B flat), a koto that runs up and down them, a flute that takes its time, a
// drum in the next street, and a glass chime that rings whenever the air moves.

Line Koto() {
    return Notes(
        "D4:1 A3:.5 Bb3:.5 D4:1 Eb4:1 | D4:.5 Bb3 A3 G3 A3:2 | D4:1 G4:.5 A4:.5 Bb4:1 A4:1 | "
        "G4:.5 Eb4 D4 Bb3 A3:2 | D4:.5^ Eb4 G4 A4 Bb4 A4 G4 Eb4 | D4:1 A4:1 D5:2^ | Eb5:.5 D5 Bb4 A4 G4 A4 "
        "Bb4 G4 | A4:.5 G4 Eb4 D4 D4:2 | G4:.5^ A4 Bb4 D5 Eb5:1 D5:1 | Bb4:.5 A4 G4 Eb4 D4:2 | A3:.5 Bb3 D4 "
        "Eb4 G4 A4 Bb4 D5 | A4:.25^ G4 Eb4 D4 Bb3 A3 G3 Eb3 D3:2 | D4:1 A3:.5 Bb3:.5 D4:1 Eb4:1 | D4+D5:4,");
}

Line Air() {
    return Notes(
        "A4:3 Bb4:1 | A4:2 G4:1 Eb4:1 | D4:4 | r:2 D5:2 | Eb5:1.5 D5:.5 Bb4:2 | A4:3 r:1 | G4:1 A4:1 Bb4:1 "
        "D5:1 | Eb5:3 D5:1 | A4:4, | D4:5,",
        16);
}

/// Struck by chance, four notes at most of which any go together.
Line Chimes(Random& random) {
    const double pitches[] = {86, 91, 93, 98};
    Line line;
    for (double beat = 0.5; beat < 54; beat += 1.5 + 3.5 * random.Next()) {
        const int strokes = 1 + static_cast<int>(random.Next() * 3);
        for (int i = 0; i < strokes; ++i) {
            const double pitch = pitches[static_cast<std::size_t>(random.Next() * 4)];
            line.push_back({beat + 0.22 * i, 1.5, pitch, 0.35 + 0.3 * random.Next()});
        }
    }
    return line;
}

}  // namespace

Stereo PlayWindChime() {
    Stage stage({88, 0.5, 50, 0.06}, 83);
    stage.Play(Koto(), {Plucked({2.6, 0.85, 0.08, 0.4}), 0.34, {-0.2}, 0.3, 1.8, 0.006});
    stage.Play(Notes("D3:8 A2:8 D3:8 G2:8 G2:8 A2:8 D3:8"),
               {Plucked({4.5, 0.5, 0.14, 0.5}), 0.30, {-0.35}, 0.3, 1.2, 0.006});
    stage.Play(Air(), {Flute, 0.26, {0.3}, 0.6, 1, 0.02});
    stage.Play(Repeat(Steps("X.....o.x...o.o.", 0.5, 16), 8, 4), {SoftKick, 0.46, {0.15}, 0.5, 1, 0.008});
    stage.Play(Repeat(Steps("............o.o.", 0.5, 16), 8, 4), {Rim, 0.10, {0.5}, 0.5, 1, 0.008});
    const Stereo glass = stage.Solo(Chimes(stage.Chance()), {Bell, 0.13, {0.5}, 0, 1, 0.02});
    stage.Add(glass, 1, 0.8);
    stage.Add(PingPong(glass, {0.47, 0.35, 6000}), 0.35, 0.3);
    return stage.InRoom({2.2, 5600, 0.025, 1.0});
}

}  // namespace sorakaze::station
