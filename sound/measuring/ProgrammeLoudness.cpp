// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "sound/measuring/ProgrammeLoudness.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <numbers>

namespace sorakaze::sound {
namespace {

/// So far below anything audible that the filters' tails needn't be followed there, in slow small numbers.
constexpr float kNothing = 1e-15f;

constexpr std::size_t kMomentary = 4, kShortTerm = 30;  // in steps

double LoudnessOf(double power) {
    return -0.691 + 10 * std::log10(power);
}
double PowerOf(double loudness) {
    return std::pow(10, (loudness + 0.691) / 10);
}

double Mean(std::span<const float> values) {
    double sum = 0;
    for (const float value : values) sum += double{value};
    return values.empty() ? 0 : sum / static_cast<double>(values.size());
}

/// The mean powers of stretches of `length` steps, one every `hop`, without those that are silent.
std::vector<float> Windows(std::span<const float> steps, std::size_t length, std::size_t hop) {
    const double silent = PowerOf(double{kSilentLoudness});
    std::vector<float> windows;
    for (std::size_t i = 0; i + length <= steps.size(); i += hop) {
        const double power = Mean(steps.subspan(i, length));
        if (power > silent) windows.push_back(static_cast<float>(power));
    }
    return windows;
}

/// Leaves out what lies so many LU below the mean.
void Gate(std::vector<float>& windows, double below) {
    const double floor = Mean(windows) * std::pow(10, -below / 10);
    std::erase_if(windows, [floor](float power) { return double{power} < floor; });
}

}  // namespace

/// Of the high-pass filter b0 = b2 = 1 and b1 = -2.
void ProgrammeLoudness::RunLanes(Filters& filters, const float* in, std::size_t frames) const {
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
ProgrammeLoudness::ProgrammeLoudness()
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

void ProgrammeLoudness::Add(std::span<const float> interleaved) {
    while (!interleaved.empty()) {
        const std::size_t at = kSettle * kChannels + filled_;
        const auto part = interleaved.first(std::min(interleaved.size(), samples_.size() - at));
        std::ranges::copy(part, samples_.begin() + static_cast<std::ptrdiff_t>(at));
        filled_ += part.size();
        if (at + part.size() == samples_.size()) Measure();
        interleaved = interleaved.subspan(part.size());
    }
}

void ProgrammeLoudness::Finish() {
    const std::size_t steps = filled_ / kChannels / kStep;
    const std::size_t before = steps_.size();
    std::fill(samples_.begin() + static_cast<std::ptrdiff_t>(kSettle * kChannels + filled_), samples_.end(),
              0.0f);
    Measure();
    steps_.resize(before + steps);
}

void ProgrammeLoudness::Measure() {
    Filters filters;
    Run(filters, 0, kSettle);
    constexpr std::size_t kSteps = kSegment / kStep;
    const std::size_t before = steps_.size();
    steps_.resize(before + kSegments * kSteps);
    for (std::size_t step = 0; step < kSteps; ++step) {
        filters.power = Lanes{};
        Run(filters, kSettle + step * kStep, kStep);
        for (std::size_t segment = 0; segment < kSegments; ++segment)
            steps_[before + segment * kSteps + step] =
                (filters.power[segment * kChannels] + filters.power[segment * kChannels + 1]) / kStep;
    }
    std::copy(samples_.end() - kSettle * kChannels, samples_.end(), samples_.begin());
    filled_ = 0;
}

/// Filters `frames` of each segment, from its frame `first` on.
void ProgrammeLoudness::Run(Filters& filters, std::size_t first, std::size_t frames) const {
    constexpr std::size_t kBlock = 240;
    static_assert(kStep % kBlock == 0 && kSettle % kBlock == 0);
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

float ProgrammeLoudness::Integrated() const {
    auto windows = Windows(steps_, kMomentary, 1);
    Gate(windows, 10);
    return windows.empty() ? kSilentLoudness
                           : std::max(kSilentLoudness, static_cast<float>(LoudnessOf(Mean(windows))));
}

/// Between the tenth and the ninety-fifth hundredth of the short-term loudnesses.
float ProgrammeLoudness::Range() const {
    auto windows = Windows(steps_, kShortTerm, 10);
    Gate(windows, 20);
    if (windows.empty()) return 0;
    std::ranges::sort(windows);
    const auto at = [&](double part) {
        return double{
            windows[static_cast<std::size_t>(part * static_cast<double>(windows.size() - 1) + 0.5)]};
    };
    return static_cast<float>(LoudnessOf(at(0.95)) - LoudnessOf(at(0.10)));
}

}  // namespace sorakaze::sound
