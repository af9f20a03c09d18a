// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "sound/measuring/GatedLoudness.h"

#include <algorithm>
#include <cmath>
#include <numeric>

#include "sound/Measurement.h"
#include "sound/measuring/LoudnessSteps.h"

namespace sorakaze::sound {
namespace {

constexpr double kLoudest = 30;  // LUFS
constexpr double kBinsPerUnit = 10;
constexpr auto kBins = static_cast<std::size_t>((kLoudest - double{kSilentLoudness}) * kBinsPerUnit);
constexpr double kGate = 10;  // LU

std::size_t BinOf(double power) {
    const double above = LoudnessSteps::LoudnessOf(power) - double{kSilentLoudness};
    return static_cast<std::size_t>(std::clamp(above * kBinsPerUnit, 0.0, static_cast<double>(kBins - 1)));
}

}  // namespace

GatedLoudness::GatedLoudness() : bins_(kBins) {}

void GatedLoudness::Add(float step) {
    last_[steps_++ % last_.size()] = step;
    const double power = std::accumulate(last_.begin(), last_.end(), 0.0) / static_cast<double>(last_.size());
    if (steps_ < last_.size() || power <= LoudnessSteps::PowerOf(double{kSilentLoudness})) return;
    for (Bin* const bin : {&bins_[BinOf(power)], &all_}) {
        bin->power += power;
        ++bin->count;
    }
}

float GatedLoudness::Integrated() const {
    if (all_.count == 0) return kSilentLoudness;
    const double mean = all_.power / all_.count;
    Bin loud;
    for (std::size_t i = BinOf(mean * std::pow(10, -kGate / 10)); i < kBins; ++i) {
        loud.power += bins_[i].power;
        loud.count += bins_[i].count;
    }
    const double loudness = LoudnessSteps::LoudnessOf(loud.power / loud.count);
    return static_cast<float>(std::clamp(loudness, double{kSilentLoudness}, kLoudest));
}

}  // namespace sorakaze::sound
