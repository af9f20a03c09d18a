// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// The gain of a limiter that looks five milliseconds ahead: down smoothly before each peak, so that it meets
// the ceiling, and back up within a few tenths of a second. Sums of integers, so that the result doesn't
// depend on how the sound is cut into blocks, and is exactly 1 again afterwards. Allocates nothing. One
// thread.
#pragma once

#include <array>
#include <cstdint>
#include <span>

#include "sound/Frames.h"

namespace sorakaze::sound {

class LookAheadGain {
  public:
    /// How many frames ahead of the sound the peaks are given.
    static constexpr int kFrames = kSampleRate / 200;

    explicit LookAheadGain(float ceiling) : ceiling_(ceiling) {}

    /// True while the gain is 1 and no peak above the ceiling is near: Follow needn't be called then for
    /// peaks of which none is above it.
    bool IsAtRest() const { return atRest_; }

    /// `peaks` holds the largest values of the next frames; the gains (as many) are for those kFrames before.
    void Follow(std::span<const float> peaks, std::span<float> gains);

  private:
    /// Gains in steps of 2^-30, so that running sums are exact.
    using Gain = std::int64_t;
    static constexpr Gain kUnity = Gain{1} << 30;
    /// Every frame's gain is decided by the needs of those that lie up to kFrames ahead.
    static constexpr int kWindow = kFrames + 1;
    static constexpr std::uint32_t kMask = 255;
    static_assert(kWindow <= static_cast<int>(kMask) + 1);

    struct Need {
        Gain gain;
        std::uint64_t frame;
    };

    void Wake();
    Gain Lowest(Gain need);
    float Next(float peak);

    const float ceiling_;
    bool atRest_ = true;                   ///< all gains below are 1
    std::uint64_t frame_ = 0;              ///< counts while not at rest
    std::uint64_t lastNeed_ = 0;           ///< the frame that last needed less than unity
    std::array<Need, kMask + 1> needs_{};  ///< rising gains of the window: the first is its minimum
    std::uint32_t firstNeed_ = 0;
    std::uint32_t endNeed_ = 0;
    Gain envelope_ = kUnity;                 ///< follows the minimum, down at once and up slowly
    std::array<Gain, kWindow> envelopes_{};  ///< the last kWindow of them
    int nextEnvelope_ = 0;
    Gain sum_ = 0;  ///< of envelopes_
};

}  // namespace sorakaze::sound
