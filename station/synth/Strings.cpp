// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "station/synth/Filters.h"
#include "station/synth/Instruments.h"
#include "station/synth/Oscillators.h"

namespace sorakaze::station {
namespace {

/// The string at the moment of the pluck: noise, as sharp as the pluck is hard, with the harmonics missing
/// that have a node where it is plucked.
Mono Excitation(std::size_t length, const StringMaterial& material, double velocity, Random& random) {
    Mono noise(length);
    OnePole soft(500 + 11000 * material.brightness * velocity);
    for (int pass = 0; pass < 2; ++pass) {
        for (float& sample : noise) sample = soft.Low(pass ? sample : static_cast<float>(random.Signed()));
    }
    const auto gap = static_cast<std::size_t>(material.place * static_cast<double>(length));
    Mono combed(length);
    double mean = 0, power = 0;
    for (std::size_t i = 0; i < length; ++i) {
        combed[i] = noise[i] - noise[(i + length - gap) % length];
        mean += combed[i];
    }
    mean /= static_cast<double>(length);
    for (float& sample : combed) {
        sample -= static_cast<float>(mean);
        power += double{sample} * sample;
    }
    const double level = std::sqrt(power / static_cast<double>(length)) + 1e-9;
    for (float& sample : combed) sample *= static_cast<float>(0.5 * velocity / level);
    return combed;
}

/// A loop of one period in which the sound runs round: Karplus and Strong's string, tuned by an all-pass.
Mono String(double hertz, double seconds, const StringMaterial& material, double velocity, Random& random) {
    const double damping = 0.5 - 0.42 * material.brightness;
    const double period = kRate / hertz;
    const double whole = std::floor(period - damping - 0.1);
    const double part = period - damping - whole;
    const auto allPass = static_cast<float>((1 - part) / (1 + part));
    const double ring = material.ring * std::pow(220 / hertz, 0.4);
    const auto loss = static_cast<float>(std::pow(10, -3 / (ring * hertz)));
    const auto mix = static_cast<float>(damping);

    Mono loop = Excitation(static_cast<std::size_t>(whole), material, velocity, random);
    Mono sound = Silence(seconds, material.release);
    std::size_t at = 0;
    float before = 0, allPassIn = 0, allPassOut = 0;
    for (float& sample : sound) {
        const float out = loop[at];
        const float damped = loss * ((1 - mix) * out + mix * before);
        before = out;
        allPassOut = allPass * damped + allPassIn - allPass * allPassOut;
        allPassIn = damped;
        loop[at] = allPassOut;
        if (++at == loop.size()) at = 0;
        sample = out;
    }
    return sound;
}

}  // namespace

Instrument Plucked(const StringMaterial& material) {
    return [material](double hertz, double seconds, double velocity, Random& random) {
        Mono sound = String(hertz, seconds, material, velocity, random);
        Biquad::Peak(190, 1.4, 4).Run(sound);
        Biquad::Peak(430, 1.6, 2.5).Run(sound);
        Biquad::HighPass(70).Run(sound);
        Shape(sound, 0.0015, seconds);
        return sound;
    };
}

Mono UprightBass(double hertz, double seconds, double velocity, Random& random) {
    Mono sound = String(hertz, seconds, {2.2, 0.12, 0.3, 0.09}, velocity, random);
    Decay decay(0.7);
    Phase phase;
    for (float& sample : sound) {
        sample = 0.55F * sample + static_cast<float>(0.6 * velocity * decay.Next() * Sine(phase.Next(hertz)));
    }
    Biquad::LowPass(1400).Run(sound);
    Shape(sound, 0.004, seconds);
    return sound;
}

Mono LeadGuitar(double hertz, double seconds, double velocity, Random& random) {
    Mono sound = Silence(seconds, 0.12);
    Phase phase, vibrato(random.Next());
    Decay bend(0.035), body(1.6);
    OnePole dark(1500 + 2200 * velocity);
    for (std::size_t i = 0; i < sound.size(); ++i) {
        const double t = static_cast<double>(i) / kRate;
        const double shake = 0.005 * std::clamp((t - 0.22) / 0.3, 0.0, 1.0) * Sine(vibrato.Next(5.4));
        const double pitch = hertz * (1 - 0.035 * bend.Next() + shake);
        const double turns = phase.Next(pitch);
        sound[i] = dark.Low(static_cast<float>(body.Next() * Saw(turns, pitch / kRate)));
    }
    Saturate(sound, 0.8 + 1.6 * velocity);
    Biquad::HighPass(140).Run(sound);
    Biquad::Peak(900, 0.8, 3).Run(sound);
    Biquad::LowPass(3600, 0.9).Run(sound);
    for (float& sample : sound) sample *= static_cast<float>(0.4 + 0.6 * velocity);
    Shape(sound, 0.006, seconds);
    return sound;
}

}  // namespace sorakaze::station
