// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "sound/measuring/LoudnessSteps.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <numbers>
#include <utility>

namespace sorakaze::sound {
namespace {

/// So far below anything audible that the filters' tails needn't be followed there, in slow small numbers.
constexpr float kNothing = 1e-15f;

}  // namespace

double LoudnessSteps::LoudnessOf(double power) {
    return -0.691 + 10 * std::log10(power);
}

double LoudnessSteps::PowerOf(double loudness) {
    return std::pow(10, (loudness + 0.691) / 10);
}

/// Of the high-pass filter b0 = b2 = 1 and b1 = -2.
void LoudnessSteps::RunLanes(Filters& filters, const float* in, std::size_t frames) const {
    const Section shelf = shelf_, highPass = highPass_;
    Lanes s1 = filters.s1, s2 = filters.s2, s3 = filters.s3, s4 = filters.s4, power = filters.power;
    for (std::size_t i = 0; i < frames; ++i) {
        Lanes x;
        std::memcpy(&x, in + i * kLanes, sizeof x);
        const Lanes shelved = shelf.b0 * x + s1;
        s1 = (shelf.b1 * x + s2) - shelf.a1 * shelved;
        s2 = shelf.b2 * x - shelf.a2 * shelved;
        const Lanes out = shelved + s3;
        s3 = (s4 - 2 * shelved) - highPass.a1 * out;
        s4 = shelved - highPass.a2 * out;
        power += out * out;
    }
    filters = {s1, s2, s3, s4, power};
}

/// K weighting by the filters' analogue forms, as the recommendation's coefficients come from them.
LoudnessSteps::LoudnessSteps()
    : shelf_{}, highPass_{}, samples_((kSettle + kSegments * kSegment) * kChannels) {
    const auto section = [](double b0, double b1, double b2, double a0, double a1, double a2) {
        const auto f = [a0](double value) { return static_cast<float>(value / a0); };
        return Section{f(b0), f(b1), f(b2), f(a1), f(a2)};
    };
    double k = std::tan(std::numbers::pi * 1681.974450955533 / kSampleRate);
    double damping = k / 0.7071752369554196;
    const double high = std::pow(10, 3.999843853973347 / 20), band = std::pow(high, 0.4996667741545416);
    shelf_ = section(high + band * damping + k * k, 2 * (k * k - high), high - band * damping + k * k,
                     1 + damping + k * k, 2 * (k * k - 1), 1 - damping + k * k);
    k = std::tan(std::numbers::pi * 38.13547087602444 / kSampleRate);
    damping = k / 0.5003270373238773;
    const double a0 = 1 + damping + k * k;
    highPass_ = section(a0, -2 * a0, a0, a0, 2 * (k * k - 1), 1 - damping + k * k);
}

void LoudnessSteps::Add(std::span<const float> interleaved) {
    length_.count += static_cast<std::int64_t>(interleaved.size() / kChannels);
    while (!interleaved.empty()) {
        const std::size_t at = kSettle * kChannels + filled_;
        const auto part = interleaved.first(std::min(interleaved.size(), samples_.size() - at));
        std::ranges::copy(part, samples_.begin() + static_cast<std::ptrdiff_t>(at));
        filled_ += part.size();
        if (at + part.size() == samples_.size()) Measure();
        interleaved = interleaved.subspan(part.size());
    }
}

void LoudnessSteps::Finish() {
    const std::size_t steps = (filled_ / kChannels + kStepFrames - 1) / kStepFrames;
    const std::size_t before = steps_.size();
    std::fill(samples_.begin() + static_cast<std::ptrdiff_t>(kSettle * kChannels + filled_), samples_.end(),
              0.0f);
    Measure();
    steps_.resize(before + steps);
}

void LoudnessSteps::Measure() {
    Filters filters;
    Run(filters, 0, kSettle);
    constexpr std::size_t kSteps = kSegment / kStepFrames;
    const std::size_t before = steps_.size();
    steps_.resize(before + kSegments * kSteps);
    for (std::size_t step = 0; step < kSteps; ++step) {
        filters.power = Lanes{};
        Run(filters, kSettle + step * kStepFrames, kStepFrames);
        for (std::size_t segment = 0; segment < kSegments; ++segment)
            steps_[before + segment * kSteps + step] =
                (filters.power[segment * kChannels] + filters.power[segment * kChannels + 1]) / kStepFrames;
    }
    std::copy(samples_.end() - kSettle * kChannels, samples_.end(), samples_.begin());
    filled_ = 0;
}

/// Filters `frames` of each segment, from its frame `first` on.
void LoudnessSteps::Run(Filters& filters, std::size_t first, std::size_t frames) const {
    constexpr std::size_t kBlock = 240;
    static_assert(kStepFrames % kBlock == 0 && kSettle % kBlock == 0);
    std::array<float, kBlock * kLanes> lanes;
    for (std::size_t block = 0; block < frames; block += kBlock) {
        for (std::size_t segment = 0; segment < kSegments; ++segment) {
            const float* const from = &samples_[(segment * kSegment + first + block) * kChannels];
            float* const to = &lanes[segment * kChannels];
            for (std::size_t i = 0; i < kBlock; ++i)
                std::memcpy(to + i * kLanes, from + i * kChannels, sizeof(float) * kChannels);
        }
        RunLanes(filters, lanes.data(), kBlock);
    }
    for (Lanes* state : {&filters.s1, &filters.s2, &filters.s3, &filters.s4})
        for (std::size_t lane = 0; lane < kLanes; ++lane)
            if (std::fabs((*state)[lane]) < kNothing) (*state)[lane] = 0;
}

std::vector<float> LoudnessSteps::Take() {
    return std::exchange(steps_, {});
}

}  // namespace sorakaze::sound
