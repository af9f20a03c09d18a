// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include <array>
#include <span>

#include "station/synth/Filters.h"
#include "station/synth/Instruments.h"
#include "station/synth/Oscillators.h"

namespace sorakaze::station {
namespace {

struct Partial {
    double ratio, level, seconds;
};

/// The sum of partials that ring away, each in its own time.
template <std::size_t N>
Mono Ring(double hertz, double held, double release, const std::array<Partial, N>& partials) {
    Mono sound = Silence(held, release);
    for (const Partial& partial : partials) {
        if (hertz * partial.ratio > kRate * 0.42) continue;
        Decay decay(partial.seconds);
        Phase phase;
        for (float& sample : sound) {
            sample +=
                static_cast<float>(partial.level * decay.Next() * Sine(phase.Next(hertz * partial.ratio)));
        }
    }
    return sound;
}

/// The thump of what strikes: a burst of noise around a pitch.
void AddKnock(Mono& sound, double hertz, double seconds, double level, Random& random) {
    Biquad band = Biquad::BandPass(hertz, 1.2);
    Decay decay(seconds / 4);
    const std::size_t length = std::min(sound.size(), Samples(seconds));
    for (std::size_t i = 0; i < length; ++i) {
        sound[i] += band.Next(static_cast<float>(random.Signed() * level * decay.Next()));
    }
}

Mono Additive(double hertz, double seconds, double velocity, std::span<const double> levels, double leak) {
    Mono sound = Silence(seconds, 0.09);
    double number = 0;
    for (const double level : levels) {
        ++number;
        if (level == 0 || hertz * number > kRate * 0.42) continue;
        Phase phase(0.13 * number);
        for (float& sample : sound) {
            sample += static_cast<float>(level * velocity * (1 + leak) * Sine(phase.Next(hertz * number)));
        }
    }
    return sound;
}

}  // namespace

Mono ElectricPiano(double hertz, double seconds, double velocity, Random& random) {
    Mono sound = Silence(seconds, 0.18);
    const double ring = std::clamp(2.6 * std::sqrt(180 / hertz), 0.5, 3.5);
    Decay body(ring), bark(0.35), tine(0.09), slow(ring * 0.8);
    Phase carrier, modulator, tinePhase;
    const double detune = 1 + 0.0006 * random.Signed();
    const double index = 0.13 + 0.33 * velocity * velocity;
    for (float& sample : sound) {
        const double inner = Sine(modulator.Next(hertz * detune));
        const double depth = index * (0.55 * bark.Next() + 0.45 * slow.Next());
        const double tone = Sine(carrier.Next(hertz) + depth * inner);
        const double ping =
            0.15 * velocity * tine.Next() * Sine(tinePhase.Next(std::min(hertz * 7.02, 9000.0)));
        sample = static_cast<float>(velocity * (body.Next() * tone + ping));
    }
    Shape(sound, 0.003, seconds);
    return sound;
}

Mono Organ(double hertz, double seconds, double velocity, Random& random) {
    constexpr std::array kLevels = {0.62, 0.34, 0.10, 0.20, 0.0, 0.06, 0.0, 0.08};
    Mono sound = Additive(hertz, seconds, velocity, kLevels, 0);
    AddKnock(sound, std::min(hertz * 3, 6000.0), 0.05, 0.35 * velocity, random);
    Shape(sound, 0.022, seconds);
    return sound;
}

Mono DrawbarOrgan(double hertz, double seconds, double velocity, Random& random) {
    constexpr std::array kLevels = {0.55, 0.5, 0.4, 0.16, 0.0, 0.12, 0.0, 0.10};
    Mono sound = Additive(hertz / 2, seconds, velocity, kLevels, 0.02 * random.Next());
    Saturate(sound, 0.9);
    Shape(sound, 0.008, seconds);
    return sound;
}

Mono Marimba(double hertz, double seconds, double velocity, Random& random) {
    const double ring = std::clamp(0.42 * std::sqrt(260 / hertz), 0.12, 0.9);
    const double hard = 0.3 + 0.7 * velocity;
    Mono sound = Ring(hertz, std::max(seconds, ring * 4), 0.1,
                      std::array<Partial, 3>{
                          {{1, 0.8, ring}, {3.93, 0.42 * hard, ring / 5}, {9.6, 0.16 * hard, ring / 14}}});
    AddKnock(sound, std::min(hertz * 2, 3000.0), 0.03, 0.6 * hard, random);
    for (float& sample : sound) sample *= static_cast<float>(velocity);
    Shape(sound, 0.0012, std::max(seconds, ring * 4));
    return sound;
}

Mono Vibraphone(double hertz, double seconds, double velocity, Random& random) {
    Mono sound = Ring(
        hertz, seconds, 0.35,
        std::array<Partial, 3>{{{1, 0.8, 1.9}, {4, 0.30 * velocity, 0.6}, {10.1, 0.04 * velocity, 0.12}}});
    AddKnock(sound, std::min(hertz * 2, 2500.0), 0.02, 0.15, random);
    const double start = random.Next();
    for (std::size_t i = 0; i < sound.size(); ++i) {
        const double motor = 1 + 0.22 * Sine(5.2 * static_cast<double>(i) / kRate + start);
        sound[i] *= static_cast<float>(velocity * motor);
    }
    Shape(sound, 0.0015, seconds);
    return sound;
}

Mono Bell(double hertz, double seconds, double velocity, Random& random) {
    const double drift = 1 + 0.002 * random.Signed();
    Mono sound = Ring(hertz, std::max(seconds, 3.0), 0.5,
                      std::array<Partial, 5>{{{1, 0.55, 1.3},
                                              {2 * drift, 0.3, 0.9},
                                              {2.99, 0.16, 0.6},
                                              {4.22, 0.10 * velocity, 0.35},
                                              {6.81, 0.07 * velocity, 0.18}}});
    for (float& sample : sound) sample *= static_cast<float>(velocity);
    Shape(sound, 0.002, std::max(seconds, 3.0));
    return sound;
}

}  // namespace sorakaze::station
