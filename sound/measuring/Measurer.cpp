// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "sound/measuring/Measurer.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>

#include "sound/SaneSample.h"

namespace sorakaze::sound {
namespace {

constexpr Frames kSecond{kSampleRate};
/// Of the power in the band of speech.
constexpr Frames kStretch{kSampleRate / 10};
constexpr std::size_t kStretchSamples = kStretch.count * kChannels;
static_assert(kStretch.count % SpeechBand::kGroup == 0 && kSecond.count % kStretch.count == 0);
constexpr std::size_t kStepsPerSecond = kSecond.count / LoudnessSteps::kStep.count;
constexpr std::size_t kNoBound = static_cast<std::size_t>(-1);
constexpr float kLoudest = 40;  // LUFS; the most that sane samples can be is less
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

float InDecibels(float amplitude) {
    return std::max(kSilentLoudness, 20 * std::log10(amplitude));
}

/// Compared as integers, which order as the floats do and which compilers make vectors of.
float LargestOf(std::span<const float> samples) {
    std::int32_t largest = 0;
    for (const float sample : samples)
        largest = std::max(largest, std::bit_cast<std::int32_t>(std::fabs(sample)));
    return std::bit_cast<float>(largest);
}

}  // namespace

Measurer::Measurer(Frames limit) : limit_(std::min(limit, kLongestMeasurement)), stretch_(kStretchSamples) {}

void Measurer::Add(std::span<const float> interleaved) {
    while (!interleaved.empty() && !IsFull()) {
        const auto most = static_cast<std::size_t>((limit_ - measured_.length).count) * kChannels;
        const auto taken = interleaved.first(std::min({interleaved.size(), kStretchSamples - filled_, most}));
        float* const to = &stretch_[filled_];
        for (std::size_t i = 0; i < taken.size(); ++i) to[i] = SaneSample(taken[i]);
        filled_ += taken.size();
        measured_.length.count += static_cast<std::int64_t>(taken.size() / kChannels);
        if (filled_ == kStretchSamples) MeasureStretch();
        interleaved = interleaved.subspan(taken.size());
    }
    cut_ = cut_ || !interleaved.empty();
}

void Measurer::MeasureStretch() {
    const auto stretch = std::span<const float>(stretch_).first(filled_);
    weighed_.Add(stretch);
    peak_ = std::max(peak_, LargestOf(stretch));
    const auto isLoud = [](float sample) { return std::fabs(sample) > kSilentSample; };
    const auto silent = std::find_if(stretch.rbegin(), stretch.rend(), isLoud) - stretch.rbegin();
    if (silent < std::ssize(stretch)) measured_.audible = measured_.length - Frames{silent / kChannels};
    constexpr std::size_t kGroupSamples = SpeechBand::kGroup * kChannels;
    const std::size_t groups = stretch.size() / kGroupSamples;
    const double energy = speechBand_.Energy(stretch.first(groups * kGroupSamples));
    if (groups > 0) powers_.push_back(static_cast<float>(energy / static_cast<double>(groups)));
    filled_ = 0;
    if (measured_.length.count % kSecond.count == 0) peaks_.push_back(InDecibels(peak_));
    TakeSteps(kNoBound);
}

/// Up to `most` steps in all count as part of the sound.
void Measurer::TakeSteps(std::size_t most) {
    for (const float step : weighed_.Take()) {
        second_ += double{step};
        if (++steps_ <= most) part_.Add(step);
        if (steps_ % kStepsPerSecond == 0) EndSecond();
    }
}

/// The last one may be shorter.
void Measurer::EndSecond() {
    const Frames begun{std::ssize(measured_.seconds) * kSampleRate};
    const Frames length = std::min(kSecond, std::max(measured_.length, kShortest) - begun);
    const double power =
        second_ * static_cast<double>(LoudnessSteps::kStep.count) / static_cast<double>(length.count);
    const auto loudness = static_cast<float>(LoudnessSteps::LoudnessOf(power));
    const float peak = peaks_[measured_.seconds.size()];
    measured_.seconds.push_back({std::clamp(loudness, kSilentLoudness, kLoudest), part_.Integrated(), peak});
    second_ = 0;
}

float Measurer::LouderStretches() const {
    const double silence = PowerOf(double{kSilentLoudness});
    const double mean = MeanAbove(powers_, silence);
    const double louder = MeanAbove(powers_, std::max(silence, mean / PowerOf(kGate)));
    return louder > silence ? static_cast<float>(10 * std::log10(louder)) : kSilentLoudness;
}

Measurement Measurer::Finish(bool isOver) {
    if (filled_ > 0) MeasureStretch();
    if (measured_.length.count % kSecond.count > 0) peaks_.push_back(InDecibels(peak_));
    if (measured_.length < kShortest) {
        const Frames more = kShortest - measured_.length;
        weighed_.Add(std::vector<float>(static_cast<std::size_t>(more.count) * kChannels));
    }
    weighed_.Finish();
    TakeSteps(static_cast<std::size_t>(weighed_.Length().count / LoudnessSteps::kStep.count));
    if (measured_.seconds.size() < peaks_.size()) EndSecond();
    if (measured_.audible.count == 0) measured_.seconds.clear();
    measured_.speechBand = LouderStretches();
    measured_.isWhole = isOver && !cut_;
    return std::move(measured_);
}

}  // namespace sorakaze::sound
