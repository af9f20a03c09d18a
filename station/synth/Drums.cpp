// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "station/synth/Filters.h"
#include "station/synth/Instruments.h"
#include "station/synth/Oscillators.h"

namespace sorakaze::station {
namespace {

/// Noise in a band that falls away; `attack` softens its beginning.
Mono Noise(Biquad filter, double length, double fall, double attack, double level, Random& random) {
    Mono sound = Silence(length, 0.01);
    Decay decay(fall);
    for (float& sample : sound) {
        sample = filter.Next(static_cast<float>(level * decay.Next() * random.Signed()));
    }
    Shape(sound, attack, length);
    return sound;
}

/// A skin: a tone that sinks to its pitch.
Mono Skin(double hertz, double sink, double length, double fall, double level) {
    Mono sound = Silence(length, 0.02);
    Phase phase;
    Decay drop(0.028), decay(fall);
    for (float& sample : sound) {
        const double pitch = hertz * (1 + sink * drop.Next());
        sample = static_cast<float>(level * decay.Next() * Sine(phase.Next(pitch)));
    }
    Shape(sound, 0.0012, length);
    return sound;
}

void Mix(Mono& sound, const Mono& other) {
    sound.resize(std::max(sound.size(), other.size()), 0.0F);
    for (std::size_t i = 0; i < other.size(); ++i) sound[i] += other[i];
}

/// Rectangles that have no common pitch, and noise, sound like metal above some height.
Mono Metal(double length, double fall, double lowest, double level, Random& random) {
    Mono sound = Silence(length, 0.02);
    for (const double pitch : {2749.0, 3169.0, 3727.0, 4583.0, 5441.0, 6173.0, 7213.0}) {
        Phase phase(random.Next());
        const double struck = pitch * (1 + 0.03 * random.Signed());
        for (float& sample : sound) {
            sample += static_cast<float>(Rectangle(phase.Next(struck), struck / kRate, 0.5) / 9);
        }
    }
    Decay decay(fall);
    for (float& sample : sound) {
        sample =
            static_cast<float>(level * decay.Next()) * (sample + 0.6F * static_cast<float>(random.Signed()));
    }
    Biquad::HighPass(lowest, 0.8).Run(sound);
    Biquad::HighPass(lowest, 0.8).Run(sound);
    Shape(sound, 0.0008, length);
    return sound;
}

}  // namespace

Mono Kick(double, double, double velocity, Random& random) {
    Mono sound = Skin(47, 3.2, 0.4, 0.14, velocity);
    Mix(sound, Noise(Biquad::LowPass(3000), 0.012, 0.004, 0.0005, 0.4 * velocity, random));
    return sound;
}

Mono SoftKick(double, double, double velocity, Random&) {
    return Skin(52, 1.3, 0.35, 0.12, velocity);
}

Mono Snare(double, double, double velocity, Random& random) {
    Mono sound = Skin(185, 0.6, 0.22, 0.06, 0.55 * velocity);
    Mix(sound, Noise(Biquad::HighPass(1400), 0.3, 0.075, 0.001, 0.6 * velocity, random));
    return sound;
}

Mono Brush(double, double, double velocity, Random& random) {
    Mono sound = Noise(Biquad::BandPass(3600, 0.7), 0.22, 0.07, 0.012, 0.9 * velocity, random);
    Mix(sound, Skin(210, 0.3, 0.1, 0.03, 0.12 * velocity));
    return sound;
}

Mono Rim(double, double, double velocity, Random& random) {
    Mono sound = Skin(1670, 0.05, 0.06, 0.012, 0.5 * velocity);
    Mix(sound, Skin(820, 0.05, 0.06, 0.014, 0.4 * velocity));
    Mix(sound, Noise(Biquad::BandPass(2600, 2), 0.02, 0.005, 0.0005, 0.5 * velocity, random));
    return sound;
}

Mono Shaker(double, double, double velocity, Random& random) {
    return Noise(Biquad::BandPass(7200, 1.4), 0.09, 0.028, 0.014, velocity, random);
}

Mono ClosedHat(double, double, double velocity, Random& random) {
    return Metal(0.2, 0.03, 7000, velocity, random);
}

Mono OpenHat(double, double, double velocity, Random& random) {
    return Metal(1.0, 0.16, 6500, velocity, random);
}

Mono Ride(double, double, double velocity, Random& random) {
    return Metal(2.1, 0.33, 5200, velocity, random);
}

Mono Clap(double, double, double velocity, Random& random) {
    Mono sound = Silence(0.3, 0.02);
    for (const double at : {0.0, 0.011, 0.023}) {
        const Mono burst =
            Noise(Biquad::BandPass(1500, 1.1), 0.26, at > 0.02 ? 0.06 : 0.006, 0.001, velocity, random);
        const std::size_t start = Samples(at);
        for (std::size_t i = 0; i < burst.size() && start + i < sound.size(); ++i)
            sound[start + i] += burst[i];
    }
    Shape(sound, 0.001, 0.3);
    return sound;
}

}  // namespace sorakaze::station
