// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// The instruments. Each is an Instrument in the sense of Stage.h, or returns one that is set up a certain
// way.
#pragma once

#include "station/synth/Stage.h"

namespace sorakaze::station {

// Keys and mallets
Mono ElectricPiano(double hertz, double seconds, double velocity, Random& random);
Mono Organ(double hertz, double seconds, double velocity, Random& random);
/// With drawbars out and a little dirt, for accompaniment.
Mono DrawbarOrgan(double hertz, double seconds, double velocity, Random& random);
Mono Marimba(double hertz, double seconds, double velocity, Random& random);
Mono Vibraphone(double hertz, double seconds, double velocity, Random& random);
Mono Bell(double hertz, double seconds, double velocity, Random& random);

// Strings that are plucked
struct StringMaterial {
    double ring = 2.5;        ///< seconds until a string of 220 Hz has fallen by 60 dB
    double brightness = 0.6;  ///< 0 dull to 1 wiry
    double place = 0.18;      ///< where it is plucked, as a share of its length
    double release = 0.08;    ///< seconds that a hand needs to damp it
};
Instrument Plucked(const StringMaterial& material);
Mono UprightBass(double hertz, double seconds, double velocity, Random& random);

// Electronic sounds
/// A rectangle of that duty with vibrato after a moment, as an old game console has it.
Instrument ChipPulse(double duty);
Mono ChipTriangle(double hertz, double seconds, double velocity, Random& random);
Mono ChipNoise(double hertz, double seconds, double velocity, Random& random);
/// A slow chord of detuned saws; brightness is the filter's cutoff in Hz.
Instrument Pad(double brightness, double attack, double release);
Mono RoundBass(double hertz, double seconds, double velocity, Random& random);
/// A singing lead that is bent up to its note and then shakes.
Mono LeadGuitar(double hertz, double seconds, double velocity, Random& random);
Mono Flute(double hertz, double seconds, double velocity, Random& random);
Mono Brass(double hertz, double seconds, double velocity, Random& random);

// Drums: pitch and length are theirs
Mono Kick(double hertz, double seconds, double velocity, Random& random);
Mono SoftKick(double hertz, double seconds, double velocity, Random& random);
Mono Snare(double hertz, double seconds, double velocity, Random& random);
Mono Brush(double hertz, double seconds, double velocity, Random& random);
Mono Rim(double hertz, double seconds, double velocity, Random& random);
Mono Shaker(double hertz, double seconds, double velocity, Random& random);
Mono ClosedHat(double hertz, double seconds, double velocity, Random& random);
Mono OpenHat(double hertz, double seconds, double velocity, Random& random);
Mono Ride(double hertz, double seconds, double velocity, Random& random);
Mono Clap(double hertz, double seconds, double velocity, Random& random);

}  // namespace sorakaze::station
