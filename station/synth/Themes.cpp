// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include <array>

#include "station/synth/Filters.h"
#include "station/synth/Instruments.h"
#include "station/synth/Oscillators.h"
#include "station/synth/StationSounds.h"

namespace sorakaze::station {

std::span<const StationSound> StationSounds() {
    static constexpr std::array kSounds = {
        StationSound{"opening.aiff", OpeningTheme},
        StationSound{"closing.aiff", ClosingTheme},
        StationSound{"night.aiff", NightTheme},
        StationSound{"ident.aiff", Ident},
        StationSound{"time-signal.aiff", TimeSignal},
        StationSound{"sting-soft.aiff", SoftSting},
        StationSound{"sting-drums.aiff", DrumSting},
        StationSound{"riser.aiff", Riser},
        StationSound{"jingles/brass.aiff", BrassJingle},
        StationSound{"jingles/chip.aiff", ChipJingle},
        StationSound{"jingles/harp.aiff", HarpJingle},
        StationSound{"jingles/marimba.aiff", MarimbaJingle},
        StationSound{"jingles/organ.aiff", OrganJingle},
        StationSound{"jingles/vibraphone.aiff", VibraphoneJingle},
    };
    return kSounds;
}

Stereo OpeningTheme() {
    Stage stage({128}, 111);
    stage.Play(Notes("C5:1^ E5:.5 D5:1 G5:1.5 | C5:.5^ E5:.5 G5:.5 A5:1 G5:1.5 | E5+G5+C6:4^"),
               {Brass, 0.36, {-0.1}, 0.4, 0.9, 0.003});
    stage.Play(
        Notes("C4+E4+G4:1.5 D4+F4+A4:1 D4+G4+B4:1.5 | C4+E4+A4:1.5 F4+A4+C5:1 D4+G4+B4:1.5 | C4+E4+G4:4"),
        {Brass, 0.22, {0.3}, 0.4, 0.9, 0.004});
    stage.Play(Repeat(Notes("G5:.25, C6, E6, C6,"), 1, 8) + Notes("C6+G6:3,", 8), {Bell, 0.06, {0.6}, 0.6});
    stage.Play(Notes("C2:.5 C2 C2 D2 D2 G2 G2 G2 | A1 A1 A1 F2 F2 G2 G2 G2 | C2:4"),
               {RoundBass, 0.4, {0}, 0.04});
    stage.Play(Repeat(Steps("X..x..x.|X..x..xx", 0.25), 4, 2) + Notes("C4:1^", 8), {Kick, 0.46, {0}, 0.05});
    stage.Play(Repeat(Steps("....x.......x...", 0.25), 4, 2) + Notes("C4:1^", 8),
               {Snare, 0.34, {0.05}, 0.25});
    stage.Play(Repeat(Steps("xoxoxoxo", 0.25), 2, 4), {ClosedHat, 0.16, {-0.35}, 0.1});
    stage.Play(Notes("C4:2", 8), {OpenHat, 0.2, {-0.35}, 0.3});
    return stage.InRoom({1.6, 5600});
}

Stereo ClosingTheme() {
    Stage stage({116, 0.5, 7, 0.08}, 112);
    Stereo keys = stage.Solo(Notes("C4+E4+G4+B4:2 A3+C4+E4+G4:2 F3+A3+C4+E4:2 G3+A3+C4+D4:1 G3+B3+D4+F4:1 | "
                                   "C4+E4+G4+B4+D5:3,"),
                             {ElectricPiano, 0.19, {-0.1}, 0, 1.05});
    SwayPan(keys, 2.2, 0.3);
    stage.Add(keys, 1, 0.35);
    stage.Play(Notes("C5:1 E5:.5 D5:.5 G5:2 | E5:1 C5:.5 A4:.5 D5:1 B4:1 | C5:3"),
               {Plucked({4.0, 0.5, 0.2, 0.3}), 0.36, {0.25}, 0.5, 1.3});
    stage.Play(Notes("C2:2 A2 F2 G2 C2:3"), {UprightBass, 0.5, {0}, 0.06});
    stage.Play(Notes("r:8 G4+C5+E5:3,"), {Pad(1800, 0.8, 1.2), 0.14, {0}, 0.6});
    return stage.InRoom({1.7, 5000});
}

Stereo NightTheme() {
    Stage stage({104, 0.6}, 113);
    stage.Play(Notes("A2:1 C3 D3 E3 | F3 E3 D3 E3 | A2:3"), {UprightBass, 0.6, {0}, 0.06});
    stage.Play(Notes("r:.5 C5:1 E5:.5 D5:1 G5:1 | F5:.5 E5:.5 C5:.5 D5:.5 B4:1 G#4:1 | A4+C5+E5+B5:3"),
               {Vibraphone, 0.34, {0.2}, 0.5, 1.1, 0.01});
    stage.Play(Steps("x.xox.xox.xox.xox", 0.5), {Ride, 0.15, {0.4}, 0.2, 1, 0.006});
    stage.Play(Steps("..x...x...x...x.", 0.5), {Brush, 0.34, {-0.3}, 0.2, 1, 0.006});
    return stage.InRoom({1.8, 4200});
}

Stereo Ident() {
    Stage stage({150}, 114);
    const Line call = Notes("C6:1 E6:.5 D6:1 G6:3");
    stage.Play(call, {Bell, 0.2, {0.2}, 0.6});
    stage.Play(Transposed(call, -12), {Vibraphone, 0.24, {-0.2}, 0.4, 1.3});
    stage.Play(Notes("C3+G3+E4:2.5 C3+G3+D4+E4+B4:3.5"), {Pad(1900, 0.25, 1.0), 0.17, {0}, 0.6});
    return stage.InRoom({2.2, 6200});
}

/// Three short pips on the seconds and a long one on the hour.
Stereo TimeSignal() {
    Stereo sound;
    for (int pip = 0; pip < 4; ++pip) {
        const double seconds = pip < 3 ? 0.1 : 0.7;
        Mono tone = Silence(seconds, 0.008);
        Phase phase;
        for (float& sample : tone) sample = static_cast<float>(0.5 * Sine(phase.Next(pip < 3 ? 880 : 1760)));
        Shape(tone, 0.008, seconds);
        sound.Add(tone, pip);
    }
    return sound;
}

Stereo SoftSting() {
    Stage stage({120}, 115);
    stage.Play(Notes("G5:.25 C6 E6 G6 | B6:2,"), {Bell, 0.16, {0.4}, 0.7});
    stage.Play(Notes("F3+A3+C4+E4+G4:3"), {ElectricPiano, 0.2, {-0.1}, 0.4, 1});
    stage.Play(Notes("F2:3"), {RoundBass, 0.35, {0}, 0.05});
    return stage.InRoom({2.0, 5600});
}

/// What follows a joke.
Stereo DrumSting() {
    Stage stage({168}, 116);
    stage.Play(Notes("C4:.5 C4:1"), {Snare, 0.5, {-0.15}, 0.25});
    stage.Play(Notes("r:1.5 C4:1"), {Kick, 0.6, {0}, 0.15});
    stage.Play(Notes("r:1.5 C4:2^"), {OpenHat, 0.3, {0.3}, 0.4});
    stage.Play(Notes("r:1.5 C4:2^"), {Ride, 0.3, {0.3}, 0.4});
    return stage.InRoom({1.7, 6500});
}

/// Noise and a chord that rise until they break off into the room.
Stereo Riser() {
    Stage stage({120}, 117);
    constexpr double kSeconds = 2.2;
    Mono rush = Silence(kSeconds, 0.03);
    OnePole low(200);
    for (std::size_t i = 0; i < rush.size(); ++i) {
        const double t = static_cast<double>(i) / static_cast<double>(rush.size());
        if (i % 64 == 0) low.SetCutoff(200 + 9000 * t * t);
        rush[i] = low.Low(static_cast<float>(stage.Chance().Signed() * 0.4 * t * t));
    }
    Shape(rush, 0.3, kSeconds);
    stage.Add(rush, 0, 1, {0}, 0.5);
    for (int step = 0; step < 16; ++step) {
        const double at = kSeconds * (1 - std::pow(0.88, step)) / (1 - std::pow(0.88, 16));
        const Mono note =
            Marimba(Hertz(60 + 2 * step - (step > 4) - (step > 10)), 0.1, 0.4 + 0.03 * step, stage.Chance());
        stage.Add(note, at, 0.3, {step % 2 ? 0.5 : -0.5}, 0.5);
    }
    stage.Add(Bell(Hertz(96), 1, 0.8, stage.Chance()), kSeconds, 0.25, {0}, 0.8);
    stage.Add(Kick(0, 0, 1, stage.Chance()), kSeconds, 0.5, {0}, 0.2);
    return stage.InRoom({1.8, 6500});
}

}  // namespace sorakaze::station
