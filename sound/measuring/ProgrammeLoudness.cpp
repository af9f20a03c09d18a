// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "sound/measuring/ProgrammeLoudness.h"

#include <algorithm>
#include <cmath>

#include "sound/Measurement.h"

namespace sorakaze::sound {
namespace {

constexpr std::size_t kShortTerm = 30, kHop = 10;  // in steps

double Mean(std::span<const float> values) {
    double sum = 0;
    for (const float value : values) sum += double{value};
    return values.empty() ? 0 : sum / static_cast<double>(values.size());
}

/// The mean powers of three seconds each, one every second, without those that are silent.
std::vector<float> ShortTermPowers(std::span<const float> steps) {
    const double silent = LoudnessSteps::PowerOf(double{kSilentLoudness});
    std::vector<float> windows;
    for (std::size_t i = 0; i + kShortTerm <= steps.size(); i += kHop) {
        const double power = Mean(steps.subspan(i, kShortTerm));
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

void ProgrammeLoudness::Add(std::span<const float> interleaved) {
    weighed_.Add(interleaved);
    Take(steps_.max_size());
}

void ProgrammeLoudness::Finish() {
    weighed_.Finish();
    Take(static_cast<std::size_t>(weighed_.Length().count / LoudnessSteps::kStep.count));
}

/// Up to `most` steps in all.
void ProgrammeLoudness::Take(std::size_t most) {
    for (const float step : weighed_.Take()) {
        if (steps_.size() >= most) return;
        steps_.push_back(step);
        gated_.Add(step);
    }
}

/// Between the tenth and the ninety-fifth hundredth of the short-term loudnesses.
float ProgrammeLoudness::Range() const {
    auto windows = ShortTermPowers(steps_);
    Gate(windows, 20);
    if (windows.empty()) return 0;
    std::ranges::sort(windows);
    const auto at = [&](double part) {
        return double{
            windows[static_cast<std::size_t>(part * static_cast<double>(windows.size() - 1) + 0.5)]};
    };
    return static_cast<float>(LoudnessSteps::LoudnessOf(at(0.95)) - LoudnessSteps::LoudnessOf(at(0.10)));
}

}  // namespace sorakaze::sound
