// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "sound/measuring/Measurer.h"

#include <algorithm>
#include <cmath>
#include <iterator>

#include "sound/SaneSample.h"

namespace sorakaze::sound {
namespace {

constexpr Frames kSecond{kSampleRate};
/// Of the power in the band of speech.
constexpr Frames kStretch{kSampleRate / 10};
constexpr std::size_t kStretchSamples = kStretch.count * kChannels;
static_assert(kStretch.count % SpeechBand::kGroup == 0 && kSecond.count % kStretch.count == 0);
/// The shortest sound that has a loudness; a shorter one is followed by silence.
constexpr Frames kShortest{kSampleRate * 4 / 10};
/// Stretches so much below the mean are pauses, in decibels.
constexpr double kGate = 10;

double PowerOf(double decibels) {
    return std::pow(10, decibels / 10);
}

/// Of those above `least`; 0 without any.
double MeanAbove(std::span<const float> powers, double least) {
    double sum = 0;
    std::size_t count = 0;
    for (const float power : powers) {
        if (double{power} <= least) continue;
        sum += double{power};
        ++count;
    }
    return count > 0 ? sum / static_cast<double>(count) : 0;
}

}  // namespace

Measurer::Measurer(Frames limit) : limit_(std::min(limit, kLongestMeasurement)) {
    stretch_.reserve(kStretchSamples);
}

void Measurer::Add(std::span<const float> interleaved) {
    while (!interleaved.empty() && !IsFull()) {
        const auto most = static_cast<std::size_t>((limit_ - measured_.length).count) * kChannels;
        const auto taken =
            interleaved.first(std::min({interleaved.size(), kStretchSamples - stretch_.size(), most}));
        std::transform(taken.begin(), taken.end(), std::back_inserter(stretch_), SaneSample);
        measured_.length.count += static_cast<std::int64_t>(taken.size() / kChannels);
        if (stretch_.size() == kStretchSamples) MeasureStretch();
        interleaved = interleaved.subspan(taken.size());
    }
    cut_ = cut_ || !interleaved.empty();
}

void Measurer::MeasureStretch() {
    meter_.Add(stretch_);
    const auto isLoud = [](float sample) { return std::fabs(sample) > kSilentSample; };
    const auto silent = std::find_if(stretch_.rbegin(), stretch_.rend(), isLoud) - stretch_.rbegin();
    if (silent < std::ssize(stretch_)) measured_.audible = measured_.length - Frames{silent / kChannels};
    constexpr std::size_t kGroupSamples = SpeechBand::kGroup * kChannels;
    const std::size_t groups = stretch_.size() / kGroupSamples;
    const double energy = speechBand_.Energy(std::span(stretch_).first(groups * kGroupSamples));
    if (groups > 0) powers_.push_back(static_cast<float>(energy / static_cast<double>(groups)));
    stretch_.clear();
    if (measured_.length.count % kSecond.count == 0) EndSecond(kSecond);
}

void Measurer::EndSecond(Frames length) {
    measured_.seconds.push_back({meter_.Last(length), meter_.Integrated(), meter_.Peak()});
}

float Measurer::LouderStretches() const {
    const double silence = PowerOf(double{kSilentLoudness});
    const double mean = MeanAbove(powers_, silence);
    const double louder = MeanAbove(powers_, std::max(silence, mean / PowerOf(kGate)));
    return louder > silence ? static_cast<float>(10 * std::log10(louder)) : kSilentLoudness;
}

Measurement Measurer::Finish(bool isOver) {
    const Frames rest{measured_.length.count % kSecond.count};
    if (!stretch_.empty()) MeasureStretch();
    if (rest.count > 0 && measured_.length < kShortest) {
        stretch_.assign(static_cast<std::size_t>((kShortest - measured_.length).count) * kChannels, 0.0f);
        meter_.Add(stretch_);
        EndSecond(kShortest);
    } else if (rest.count > 0) {
        EndSecond(rest);
    }
    if (measured_.audible.count == 0) measured_.seconds.clear();
    measured_.speechBand = LouderStretches();
    measured_.isWhole = isOver && !cut_;
    return std::move(measured_);
}

}  // namespace sorakaze::sound
