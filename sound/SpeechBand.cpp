// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "sound/SpeechBand.h"

#include <cmath>
#include <numbers>

namespace sorakaze::sound {
namespace {

constexpr double kRate = static_cast<double>(kSampleRate) / SpeechBand::kGroup;
constexpr double kLowest = 300, kHighest = 3400;
/// So far below anything audible that the filters' tails needn't be followed there, in slow small numbers.
constexpr float kNothing = 1e-15f;

}  // namespace

/// Butterworth filters of the second order, by the bilinear transform.
SpeechBand::SpeechBand() : highPass_{}, lowPass_{} {
    const auto design = [](double edge, bool isHighPass) {
        const double k = std::tan(std::numbers::pi * edge / kRate);
        const double norm = 1 / (1 + std::numbers::sqrt2 * k + k * k);
        const double b0 = isHighPass ? norm : k * k * norm;
        Section section{};
        section.b0 = section.b2 = static_cast<float>(b0);
        section.b1 = static_cast<float>(isHighPass ? -2 * b0 : 2 * b0);
        section.a1 = static_cast<float>(2 * (k * k - 1) * norm);
        section.a2 = static_cast<float>((1 - std::numbers::sqrt2 * k + k * k) * norm);
        return section;
    };
    highPass_ = design(kLowest, true);
    lowPass_ = design(kHighest, false);
}

float SpeechBand::Section::Next(float in, std::size_t channel) {
    const float out = b0 * in + s1[channel];
    s1[channel] = b1 * in - a1 * out + s2[channel];
    s2[channel] = b2 * in - a2 * out;
    return out;
}

double SpeechBand::Energy(std::span<const float> interleaved) {
    double energy = 0;
    constexpr std::size_t kSamples = kGroup * kChannels;
    for (; interleaved.size() >= kSamples; interleaved = interleaved.subspan(kSamples)) {
        for (std::size_t channel = 0; channel < kChannels; ++channel) {
            float sum = 0;
            for (std::size_t i = channel; i < kSamples; i += kChannels) sum += interleaved[i];
            const float out = lowPass_.Next(highPass_.Next(sum / kGroup, channel), channel);
            energy += static_cast<double>(out * out);
        }
    }
    for (Section* section : {&highPass_, &lowPass_}) {
        for (auto* state : {&section->s1, &section->s2}) {
            for (float& value : *state) value = std::fabs(value) < kNothing ? 0.0f : value;
        }
    }
    return energy / kChannels;
}

void SpeechBand::Reset() {
    for (Section* section : {&highPass_, &lowPass_}) section->s1 = section->s2 = {};
}

}  // namespace sorakaze::sound
