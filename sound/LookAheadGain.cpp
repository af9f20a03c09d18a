// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "sound/LookAheadGain.h"

#include <algorithm>

namespace sorakaze::sound {
namespace {

/// The share of the way up that the envelope takes with each frame, in 2^-20: a time constant of 100 ms.
constexpr std::int64_t kRelease = (std::int64_t{1} << 20) / (kSampleRate / 10);

}  // namespace

void LookAheadGain::Follow(std::span<const float> peaks, std::span<float> gains) {
    if (atRest_) Wake();
    for (std::size_t i = 0; i < peaks.size(); ++i) gains[i] = Next(peaks[i]);
    atRest_ = sum_ == kUnity * kWindow && frame_ - lastNeed_ > kWindow;
}

void LookAheadGain::Wake() {
    atRest_ = false;
    frame_ = 0;
    firstNeed_ = endNeed_ = 0;
    envelope_ = kUnity;
    envelopes_.fill(kUnity);
    nextEnvelope_ = 0;
    sum_ = kUnity * kWindow;
}

/// The gain for the frame that leaves while one with `peak` comes in: the mean of the last kWindow envelopes.
/// None of these lies above the need of the frame that leaves, as each is at most the minimum over a window
/// that holds it.
float LookAheadGain::Next(float peak) {
    Gain need = kUnity;
    if (peak > ceiling_) {
        need = static_cast<Gain>(static_cast<double>(ceiling_) / peak * static_cast<double>(kUnity));
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
LookAheadGain::Gain LookAheadGain::Lowest(Gain need) {
    while (endNeed_ != firstNeed_ && needs_[(endNeed_ - 1) & kMask].gain >= need) --endNeed_;
    needs_[endNeed_++ & kMask] = {need, frame_};
    if (needs_[firstNeed_ & kMask].frame + kWindow <= frame_) ++firstNeed_;
    return needs_[firstNeed_ & kMask].gain;
}

}  // namespace sorakaze::sound
