// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "station/synth/Filters.h"
#include "station/synth/Instruments.h"
#include "station/synth/Oscillators.h"

namespace sorakaze::station {

Instrument ChipPulse(double duty) {
    return [duty](double hertz, double seconds, double velocity, Random&) {
        Mono sound = Silence(seconds, 0.012);
        Phase phase, vibrato;
        Decay decay(0.5);
        for (std::size_t i = 0; i < sound.size(); ++i) {
            const double t = static_cast<double>(i) / kRate;
            const double pitch = hertz * (1 + (t > 0.18 ? 0.006 * Sine(vibrato.Next(6.0)) : 0));
            const double level = velocity * (0.45 + 0.55 * decay.Next());
            sound[i] = static_cast<float>(level * Rectangle(phase.Next(pitch), pitch / kRate, duty));
        }
        Shape(sound, 0.002, seconds);
        return sound;
    };
}

/// Sixteen steps up and sixteen down, as the old circuits had it; the steps are what makes it buzz.
Mono ChipTriangle(double hertz, double seconds, double velocity, Random&) {
    Mono sound = Silence(seconds, 0.01);
    Phase phase;
    for (float& sample : sound) {
        const double turns = phase.Next(hertz);
        const double slope = turns < 0.5 ? 4 * turns - 1 : 3 - 4 * turns;
        sample = static_cast<float>(velocity * std::round(slope * 7.5) / 7.5);
    }
    Biquad::LowPass(9000).Run(sound);
    Shape(sound, 0.002, seconds);
    return sound;
}

Mono ChipNoise(double hertz, double, double velocity, Random& random) {
    const double length = hertz < 200 ? 0.16 : 0.045;
    Mono sound = Silence(length, 0.01);
    Decay decay(length / 3.5);
    const std::size_t hold = hertz < 200 ? 7 : 2;
    float value = 0;
    for (std::size_t i = 0; i < sound.size(); ++i) {
        if (i % hold == 0) value = random.Signed() > 0 ? 1.0F : -1.0F;
        sound[i] = static_cast<float>(velocity * decay.Next()) * value;
    }
    Shape(sound, 0.001, length);
    return sound;
}

Instrument Pad(double brightness, double attack, double release) {
    return [=](double hertz, double seconds, double velocity, Random& random) {
        Mono sound = Silence(seconds, release);
        constexpr int kSaws = 4;
        for (int saw = 0; saw < kSaws; ++saw) {
            Phase phase(random.Next());
            const double pitch = hertz * (1 + 0.0035 * random.Signed());
            for (float& sample : sound)
                sample += static_cast<float>(Saw(phase.Next(pitch), pitch / kRate) / kSaws);
        }
        // The filter opens over the attack and breathes after it.
        OnePole first(brightness), second(brightness);
        const double start = random.Next();
        for (std::size_t i = 0; i < sound.size(); ++i) {
            const double t = static_cast<double>(i) / kRate;
            const double breath = 0.8 + 0.2 * Sine(0.13 * t + start);
            sound[i] = second.Low(first.Low(sound[i])) * static_cast<float>(velocity * breath);
        }
        Shape(sound, attack, seconds);
        return sound;
    };
}

Mono RoundBass(double hertz, double seconds, double velocity, Random&) {
    Mono sound = Silence(seconds, 0.06);
    Phase low, saw;
    Decay body(1.1);
    OnePole first(hertz * 4 + 200), second(hertz * 5 + 250);
    for (float& sample : sound) {
        const double rough = second.Low(first.Low(static_cast<float>(Saw(saw.Next(hertz), hertz / kRate))));
        sample = static_cast<float>(velocity * body.Next() * (0.75 * Sine(low.Next(hertz)) + 0.45 * rough));
    }
    Saturate(sound, 0.7);
    Shape(sound, 0.005, seconds);
    return sound;
}

Mono Flute(double hertz, double seconds, double velocity, Random& random) {
    Mono sound = Silence(seconds, 0.09);
    Phase one, vibrato(random.Next());
    Biquad breath = Biquad::BandPass(std::min(hertz * 2, 7000.0), 1.5);
    for (std::size_t i = 0; i < sound.size(); ++i) {
        const double t = static_cast<double>(i) / kRate;
        const double shake = std::clamp((t - 0.15) / 0.4, 0.0, 1.0) * Sine(vibrato.Next(5.0));
        const double turns = one.Next(hertz * (1 + 0.004 * shake));
        const double tone = Sine(turns) + 0.28 * velocity * Sine(2 * turns) + 0.10 * Sine(3 * turns);
        const double air = 0.20 * breath.Next(static_cast<float>(random.Signed()));
        sound[i] = static_cast<float>(0.7 * velocity * (tone * (1 + 0.10 * shake) + air));
    }
    Shape(sound, 0.05, seconds);
    return sound;
}

Mono Brass(double hertz, double seconds, double velocity, Random& random) {
    Mono sound = Silence(seconds, 0.12);
    for (int player = 0; player < 3; ++player) {
        Phase phase(random.Next());
        const double pitch = hertz * (1 + 0.003 * random.Signed());
        OnePole first(pitch * (2 + 5 * velocity)), second(pitch * (3 + 6 * velocity));
        for (std::size_t i = 0; i < sound.size(); ++i) {
            const double t = static_cast<double>(i) / kRate;
            const double swell = std::min(1.0, t / 0.06) * (0.75 + 0.25 * std::exp(-t / 0.25));
            const auto saw = static_cast<float>(Saw(phase.Next(pitch), pitch / kRate) * swell * velocity / 3);
            sound[i] += second.Low(first.Low(saw));
        }
    }
    Shape(sound, 0.025, seconds);
    return sound;
}

}  // namespace sorakaze::station
