// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "sound/Limiter.h"

#include <algorithm>
#include <cmath>

namespace sorakaze::sound {
namespace {

/// The share of the way up that the envelope takes with each frame, in 2^-20: a time constant of 100 ms.
constexpr std::int64_t kRelease = (std::int64_t{1} << 20) / (kSampleRate / 10);

/// Written with lanes, so that compilers without licence to reorder floats vectorise it.
float Peak(std::span<const float> samples) {
    constexpr std::size_t kLanes = 16;
    std::array<float, kLanes> peaks{};
    std::size_t i = 0;
    for (; i + kLanes <= samples.size(); i += kLanes) {
        for (std::size_t lane = 0; lane < kLanes; ++lane) {
            const float size = std::fabs(samples[i + lane]);
            peaks[lane] = peaks[lane] < size ? size : peaks[lane];
        }
    }
    for (; i < samples.size(); ++i) peaks[0] = std::max(peaks[0], std::fabs(samples[i]));
    return *std::max_element(peaks.begin(), peaks.end());
}

}  // namespace

std::span<float> Limiter::Input(std::size_t frames) {
    const auto input = std::span(samples_).subspan(kLatency * kChannels, frames * kChannels);
    std::fill(input.begin(), input.end(), 0.0f);
    return input;
}

void Limiter::Process(std::span<float> out) {
    const int frames = static_cast<int>(out.size() / kChannels);
    const float peak = Peak(std::span(samples_).subspan(kLatency * kChannels, out.size()));
    silentFrames_ = peak > 0.0f ? 0 : std::min(kLatency, silentFrames_ + frames);
    if (peak > kCeiling && atRest_) Wake();
    if (atRest_)
        std::copy_n(samples_.begin(), out.size(), out.begin());
    else
        Limit(out);
    std::copy_n(samples_.begin() + static_cast<std::ptrdiff_t>(out.size()), kLatency * kChannels,
                samples_.begin());
}

void Limiter::Wake() {
    atRest_ = false;
    frame_ = 0;
    firstNeed_ = endNeed_ = 0;
    envelope_ = kUnity;
    envelopes_.fill(kUnity);
    nextEnvelope_ = 0;
    sum_ = kUnity * kWindow;
}

void Limiter::Limit(std::span<float> out) {
    const float* const ahead = samples_.data() + kLatency * kChannels;
    for (std::size_t i = 0; i < out.size(); i += kChannels) {
        const float gain = NextGain(std::max(std::fabs(ahead[i]), std::fabs(ahead[i + 1])));
        // The gain meets the ceiling up to float rounding, and full scale lies further off than that; the
        // clamp is for the day when someone moves the ceiling.
        out[i] = std::clamp(samples_[i] * gain, -1.0f, 1.0f);
        out[i + 1] = std::clamp(samples_[i + 1] * gain, -1.0f, 1.0f);
    }
    atRest_ = sum_ == kUnity * kWindow && frame_ - lastNeed_ > kWindow;
}

/// The gain for the frame that leaves while one with `peak` comes in: the mean of the last kWindow envelopes.
/// None of these lies above the need of the frame that leaves, as each is at most the minimum over a window
/// that holds it.
float Limiter::NextGain(float peak) {
    Gain need = kUnity;
    if (peak > kCeiling) {
        need = static_cast<Gain>(static_cast<double>(kCeiling) / peak * static_cast<double>(kUnity));
        lastNeed_ = frame_;
    }
    const Gain lowest = Lowest(need);
    const Gain risen = envelope_ + ((lowest - envelope_) * kRelease >> 20) + 1;
    envelope_ = std::min(lowest, risen);

    Gain& slot = envelopes_[static_cast<std::size_t>(nextEnvelope_)];
    sum_ += envelope_ - slot;
    slot = envelope_;
    nextEnvelope_ = nextEnvelope_ + 1 == kWindow ? 0 : nextEnvelope_ + 1;
    ++frame_;
    return static_cast<float>(static_cast<double>(sum_) / static_cast<double>(kUnity * kWindow));
}

/// The minimum of the last kWindow needs, this one included.
Limiter::Gain Limiter::Lowest(Gain need) {
    while (endNeed_ != firstNeed_ && needs_[(endNeed_ - 1) & kMask].gain >= need) --endNeed_;
    needs_[endNeed_++ & kMask] = {need, frame_};
    if (needs_[firstNeed_ & kMask].frame + kWindow <= frame_) ++firstNeed_;
    return needs_[firstNeed_ & kMask].gain;
}

}  // namespace sorakaze::sound
