// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "station/synth/Sound.h"

namespace sorakaze::station {

struct Room {
    double seconds = 1.6;        ///< until the reverberation has fallen by 60 dB
    double dampingHertz = 5000;  ///< above this it falls faster
    double preDelay = 0.015;     ///< seconds before it begins
    double size = 1;             ///< of the spaces between echoes
};

/// The reverberation alone, longer than its input by the room's time.
Stereo Reverberate(const Stereo& sound, const Room& room);

struct Echo {
    double seconds = 0.3;
    double feedback = 0.35;
    double dampingHertz = 3500;
};

/// Echoes alone, by turns left and right, darker each time.
Stereo PingPong(const Stereo& sound, const Echo& echo);

/// Two slowly moving copies beside the sound itself: makes a thin sound wide.
Stereo Chorus(const Stereo& sound, double depthSeconds, double hertz, double mix);

/// The level sways between the loudspeakers, as in an electric piano.
void SwayPan(Stereo& sound, double hertz, double depth);

/// The pitch wavers as on a worn tape.
Stereo Wow(const Stereo& sound, double depthSeconds, double hertz);

/// Soft saturation; 1 is gentle.
void Saturate(Mono& sound, double drive);
void Saturate(Stereo& sound, double drive);

}  // namespace sorakaze::station
