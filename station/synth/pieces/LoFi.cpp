// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include <algorithm>

#include "station/synth/Filters.h"
#include "station/synth/Instruments.h"
#include "station/synth/pieces/Pieces.h"

namespace sorakaze::station {
namespace {

Line Chords() {
    const char* bar1 = "F3+A3+C4+E4+G4:1.5, r:.5 F3+A3+C4+E4:.5, r:1 G4:.5, |";
    const char* bar2 = "E3+G3+B3+D4:1.5, r:1 E3+G3+B3+D4:.5, E3+G#3+B3+D4:1, |";
    const char* bar3 = "E3+G3+A3+C4:1.5, r:.5 E3+G3+A3+C4:.5, r:1 E4:.5, |";
    const char* bar4 = "D3+F3+A3+C4+E4:1.5, r:.5 D3+F3+B3+E4:1, r:1 |";
    Line line;
    double beat = 0;
    for (int round = 0; round < 3; ++round) {
        for (const char* bar : {bar1, bar2, bar3, bar4}) {
            line = line + Notes(bar, beat);
            beat += 4;
        }
    }
    return line + Notes("F3+A3+C4+E4+G4:5,", beat);
}

Line Bass() {
    const Line round = Notes(
        "F2:1.5 F2:.5 r:1 C2:1 | E2:1.5 E2:.5 r:.5 B1:.5 E2:1 | A1:1.5 A1:.5 r:1 E2:1 | D2:1.5 D2:.5 G1:1 "
        "G1:.5 E2:.5");
    return Repeat(round, 16, 3) + Notes("F2:5", 48);
}

Line Melody() {
    const Line first = Notes(
        "r:1 G5:.5, E5:.5 C5:1 A4:1 | r:.5 B4:.5 D5:.5 E5:1 D5:.5 B4:1 | r:1 C5:.5 E5:.5 G5:1.5 "
        "E5:.5 | D5:1 C5:.5 A4:1.5 r:1");
    const Line second = Notes(
        "r:.5 C5:.5 E5:.5 G5:.5 A5:1 G5:1 | E5:1.5 D5:.5 B4:.5 G#4:.5 B4:1 | C5:.5 D5:.5 E5:.5 "
        "G5:.5 E5:1 C5:1 | D5:1.5 E5:.5 B4:1 G4:1");
    return Later(first, 16) + Later(second, 32) + Notes("r:.5 A4:.5 C5:.5 E5:.5 G5:3,", 48);
}

/// Dust and scratches of an old record.
Mono Crackle(double seconds, Random& random) {
    Mono dust(Samples(seconds), 0.0F);
    for (double at = 0; at < seconds - 0.01; at += 0.015 + 0.19 * random.Next() * random.Next()) {
        const std::size_t from = Samples(at), length = Samples(0.0004 + 0.0012 * random.Next());
        const double level = 0.08 + 0.5 * random.Next() * random.Next() * random.Next() * random.Next();
        for (std::size_t i = 0; i < length && from + i < dust.size(); ++i) {
            dust[from + i] += static_cast<float>(level * random.Signed());
        }
    }
    for (float& sample : dust) sample += static_cast<float>(0.006 * random.Signed());
    Biquad::BandPass(3200, 0.5).Run(dust);
    for (std::size_t i = 0; i < dust.size(); ++i) {
        const double t = static_cast<double>(i) / kRate;
        dust[i] *= static_cast<float>(std::clamp(std::min(t / 0.05, (seconds - t) / 1.2), 0.0, 1.0));
    }
    return dust;
}

}  // namespace

Stereo PlayLoFi() {
    Stage stage({78, 0.58}, 71);
    Stereo keys = stage.Solo(Chords(), {ElectricPiano, 0.17, {-0.15}, 0, 1.0, 0.012});
    SwayPan(keys, 1.3, 0.35);
    stage.Add(Wow(keys, 0.0011, 0.7), 1, 0.25);
    Stereo tune = stage.Solo(Melody(), {Plucked({2.0, 0.45, 0.3, 0.15}), 0.34, {0.3}, 0, 0.95, 0.014});
    stage.Add(Wow(tune, 0.0009, 0.9), 1, 0.45);
    stage.Add(PingPong(tune, {0.577, 0.35, 1800}), 0.3, 0.2);
    stage.Play(Bass(), {RoundBass, 0.33, {0}, 0.03, 0.92, 0.008});

    const Line kick = Repeat(Steps("X.....x.|..x..o..", 0.25), 4, 11);
    const Line snare = Repeat(Steps("....x..o|....x...", 0.25), 4, 11);
    const Line hat = Repeat(Steps("x.o.x.o.|x.o.x.oo", 0.25), 4, 11);
    stage.Play(Later(kick, 4), {Kick, 0.48, {0}, 0.04, 1, 0.006});
    stage.Play(Later(snare, 4), {Snare, 0.38, {0.05}, 0.22, 1, 0.010});
    stage.Play(Later(hat, 4), {ClosedHat, 0.20, {-0.3}, 0.08, 1, 0.008});
    stage.Play(Later(Repeat(Steps("..............x.", 0.25), 8, 6), 4),
               {OpenHat, 0.10, {-0.3}, 0.1, 1, 0.006});
    Stereo all = stage.InRoom({1.1, 3000, 0.012, 0.7});
    // The whole band sounds through a small old loudspeaker; the record's dust lies on top.
    Saturate(all, 0.9);
    Biquad::LowPass(7800, 0.6).Run(all);
    Random& random = stage.Chance();
    all.Add(Crackle(all.Seconds(), random), 0, 0.28, {-0.35});
    all.Add(Crackle(all.Seconds(), random), 0, 0.28, {0.35});
    return all;
}

}  // namespace sorakaze::station
