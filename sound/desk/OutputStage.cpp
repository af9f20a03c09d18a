// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "sound/desk/OutputStage.h"

#include <algorithm>

namespace sorakaze::sound {
namespace {

/// The share of the way that the slow gain takes in a step: time constants of 70 ms down and 1 s up.
constexpr float kAttack = 0.133f;
constexpr float kRelease = 0.00995f;
/// The rest is the limiter's, should a sound be out of all bounds.
constexpr float kLowestSlowGain = 0.1f;
/// From here on it jumps to 1: 0.001 dB.
constexpr float kAlmostUnity = 0.9999f;

/// -1 dB.
constexpr float kCounted = 0.8913f;

}  // namespace

void OutputStage::SlowGain::Apply(std::span<float> interleaved) const {
    const float slope = (to_ - from_) / kStep;
    for (std::size_t i = 0; i < interleaved.size(); i += kChannels) {
        const std::size_t frame = at_ + i / kChannels;
        const float gain = from_ + slope * static_cast<float>(frame);
        interleaved[i] *= gain;
        interleaved[i + 1] *= gain;
    }
}

void OutputStage::SlowGain::Advance(std::size_t frames, float peak) {
    peak_ = std::max(peak_, peak);
    at_ += frames;
    if (at_ < kStep) return;
    from_ = to_;
    if (peak_ > kCeiling)
        to_ = std::max(kLowestSlowGain, to_ * (1 + (kCeiling / peak_ - 1) * kAttack));
    else
        to_ = to_ < kAlmostUnity ? to_ + (1 - to_) * kRelease : 1.0f;
    peak_ = 0;
    at_ = 0;
}

std::span<float> OutputStage::Input(std::size_t frames) {
    const auto input = std::span(samples_).subspan(kLatency * kChannels, frames * kChannels);
    std::fill(input.begin(), input.end(), 0.0f);
    return input;
}

void OutputStage::Process(std::span<float> out) {
    const std::size_t frames = out.size() / kChannels;
    const auto fresh = std::span(samples_).subspan(kLatency * kChannels, out.size());
    const bool silent = std::ranges::all_of(fresh, [](float sample) { return sample == 0.0f; });
    silentFrames_ = silent ? std::min(kLatency, silentFrames_ + static_cast<int>(frames)) : 0;
    for (std::size_t at = 0; at < frames;) {
        const std::size_t count = std::min(frames - at, slow_.Left());
        ProcessPart(at, out.subspan(at * kChannels, count * kChannels));
        at += count;
    }
    std::copy_n(&samples_[out.size()], kLatency * kChannels, samples_.begin());
}

/// The frames of the block from `at` on, all in one step of the slow gain.
void OutputStage::ProcessPart(std::size_t at, std::span<float> out) {
    const std::size_t frames = out.size() / kChannels;
    const auto fresh = std::span(samples_).subspan((kLatency + at) * kChannels, out.size());
    if (!slow_.IsAtRest()) slow_.Apply(fresh);

    constexpr std::size_t kFirst = LookAheadGain::kFrames - kTruePeakBefore;
    const auto around = std::span(samples_).subspan((at + kFirst) * kChannels,
                                                    (kTruePeakBefore + frames + kTruePeakAfter) * kChannels);
    const float peak = FindTruePeaks(around, kCeiling, std::span(peaks_).first(frames));
    slow_.Advance(frames, peak);

    const float* const delayed = &samples_[at * kChannels];
    if (gain_.IsAtRest() && peak <= kCeiling)
        std::copy_n(delayed, out.size(), out.begin());
    else
        Limit(delayed, out);
}

void OutputStage::Limit(const float* delayed, std::span<float> out) {
    const auto gains = std::span(gains_).first(out.size() / kChannels);
    gain_.Follow(std::span(peaks_).first(gains.size()), gains);
    for (std::size_t i = 0; i < out.size(); ++i)
        out[i] = std::clamp(delayed[i] * gains[i / kChannels], -1.0f, 1.0f);

    const auto counted = std::ranges::count_if(gains, [](float gain) { return gain < kCounted; });
    limited_.store(limited_.load(std::memory_order_relaxed) + counted, std::memory_order_relaxed);
    deepest_.store(std::min(deepest_.load(std::memory_order_relaxed), *std::ranges::min_element(gains)),
                   std::memory_order_relaxed);
}

OutputStage::Work OutputStage::Meter() const {
    return {{limited_.load(std::memory_order_relaxed)}, deepest_.load(std::memory_order_relaxed)};
}

}  // namespace sorakaze::sound
