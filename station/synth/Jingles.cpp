// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "station/synth/Instruments.h"
#include "station/synth/StationSounds.h"

// The call: up a third, back a step, up to the fifth.
namespace sorakaze::station {

Stereo MarimbaJingle() {
    Stage stage({132}, 101);
    stage.Play(Notes("C5:.5 E5:.5 D5:.5 G5:.5 | G4:.25, C5 D5 E5 G5 C6 D6 E6 | G6:1^"),
               {Marimba, 0.5, {-0.2}, 0.35});
    stage.Play(Notes("C3+G3:2 F3+A3:1 G3+B3:1 C3+E3+G3:2"), {Marimba, 0.5, {0.2}, 0.25});
    stage.Play(Steps("..x...x.|x.x.xxxx|x", 0.25), {Shaker, 0.25, {0.5}, 0.2});
    stage.Play(Notes("r:4 C6+E6+G6:2,"), {Vibraphone, 0.2, {0.3}, 0.6});
    return stage.InRoom({1.5, 6000});
}

Stereo BrassJingle() {
    Stage stage({126, 0.6}, 102);
    stage.Play(Notes("C4+E4+G4+C5:.5^ r:.5 E4+G4+C5+E5:.5^ D4+G4+B4+D5:1 r:.5 F4+A4+C5+G5:2.5^"),
               {Brass, 0.34, {0}, 0.35, 0.85, 0.002});
    stage.Play(Notes("C2:1 C2:.5 G2:1 F2:.5 C2:2.5"), {RoundBass, 0.42, {0}, 0.05});
    stage.Play(Notes("C4:1 C4:1 C4:1"), {Kick, 0.5, {0}, 0.1});
    stage.Play(Notes("r:1 C4:1.5 C4:.25, C4:.25, C4:.5^"), {Snare, 0.36, {0.1}, 0.3});
    stage.Play(Notes("r:3 C4:2"), {OpenHat, 0.2, {-0.3}, 0.3});
    return stage.InRoom({1.3, 5200});
}

Stereo HarpJingle() {
    Stage stage({240}, 103);
    const Instrument harp = Plucked({4.5, 0.6, 0.3, 0.4});
    stage.Play(Notes("C3:.25 E3 G3 A3 C4 D4 E4 G4 A4 C5 D5 E5 G5 A5 C6 D6"),
               {harp, 0.26, {-0.4}, 0.5, 8, 0.003});
    stage.Play(Notes("r:5 C6:1.5 E6:1.5 D6:1.5 G6:4"), {harp, 0.34, {0.3}, 0.6, 2, 0.004});
    stage.Play(Notes("r:5 C3+G3+E4:3 D3+A3+F4:1.5 C3+G3+E4:4,"), {Pad(1400, 0.5, 1.2), 0.14, {0}, 0.6});
    return stage.InRoom({2.4, 6000, 0.02, 1.2});
}

Stereo ChipJingle() {
    Stage stage({150}, 104);
    stage.Play(Notes("C5:.5^ E5:.5 D5:.5 G5:1^ r:.25 C6:.125 E6 G6 C7:1"),
               {ChipPulse(0.25), 0.26, {-0.2}, 0.2, 0.8, 0});
    stage.Play(Notes("E4:.5 G4:.5 F4:.5 B4:1 r:.25 E5:.125 G5 C6 E6:1"),
               {ChipPulse(0.5), 0.12, {0.4}, 0.2, 0.8, 0});
    stage.Play(Notes("C2:.5 C3 G1 G2 C2 r C2:1.2"), {ChipTriangle, 0.34, {0}, 0.05, 0.8, 0});
    Line noise = Steps("X.x.X.x.X.xxX", 0.25);
    for (Note& note : noise) note.pitch = note.velocity > 0.9 ? 30 : 90;
    stage.Play(noise, {ChipNoise, 0.12, {0.1}, 0.1, 1, 0});
    return stage.InRoom({0.6, 7000, 0.005, 0.5});
}

Stereo VibraphoneJingle() {
    Stage stage({112, 0.62}, 105);
    stage.Play(Notes("C5:1 E5:.5 D5:1 G5:1.5 | E5+A5+B5+D6:3"), {Vibraphone, 0.36, {0.15}, 0.45, 1.2});
    Stereo keys = stage.Solo(Notes("E3+A3+B3+D4:1.5, F3+A3+C4+E4:1, F3+G3+B3+E4:1.5, E3+G3+A3+D4:3"),
                             {ElectricPiano, 0.2, {-0.2}, 0});
    SwayPan(keys, 2.6, 0.3);
    stage.Add(keys, 1, 0.3);
    stage.Play(Notes("A2:1.5 D2:1 G2:1.5 C2:3"), {UprightBass, 0.5, {0}, 0.05});
    stage.Play(Steps("x.xox.xox", 0.5), {Ride, 0.18, {0.4}, 0.2});
    stage.Play(Steps("..x...x.", 0.5), {Brush, 0.32, {-0.3}, 0.2});
    return stage.InRoom({1.5, 4800});
}

Stereo OrganJingle() {
    Stage stage({140, 0.6}, 106);
    Stereo organ = stage.Solo(
        Notes("C5:.5^ E5 D5 G5:1 r:.5 A4+C5+F5:.5 Bb4+D5+G5:.5 C5+E5+A5:.5^ r:.5 C5+E5+G5+C6:1.5^"),
        {DrawbarOrgan, 0.2, {0.2}, 0});
    SwayPan(organ, 6.4, 0.25);
    stage.Add(organ, 1, 0.3);
    stage.Play(Notes("C2:1 G2:.5 C3:1 r:.5 F2:.5 G2:.5 A2:.5 r:.5 C2:1.5"), {RoundBass, 0.45, {0}, 0.05});
    stage.Play(Notes("r:.5 C4:1 C4:1.5 C4:.25, C4:.25, C4:.5 r:.5 C4:1^"), {Clap, 0.4, {-0.1}, 0.3});
    stage.Play(Notes("C4:1 C4:1 C4:1 C4:1 r:.5 C4:1"), {Kick, 0.5, {0}, 0.05});
    return stage.InRoom({1.1, 5200});
}

}  // namespace sorakaze::station
