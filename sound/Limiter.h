// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// The limiter that the sum passes through. It looks five milliseconds ahead, so its gain has come down
// smoothly when a peak arrives; sound below the ceiling is not changed at all. Allocates nothing. Used by the
// mixing thread alone.
#pragma once

#include <array>
#include <cstdint>
#include <span>

#include "sound/Frames.h"

namespace sorakaze::sound {

class Limiter {
  public:
    /// The delay in frames.
    static constexpr int kLatency = kSampleRate / 200;
    /// The most frames of one block.
    static constexpr int kMaxBlock = 1024;
    /// The largest positive sample of a 16-bit file: such files pass untouched.
    static constexpr float kCeiling = 32767.0f / 32768.0f;

    /// Room for the next block's input, at most kMaxBlock frames, filled with silence.
    std::span<float> Input(std::size_t frames);

    /// Passes what was written to Input on to `out` (as many frames), kLatency frames later.
    void Process(std::span<float> out);

    /// True when the delayed frames are silent and the gain is 1: a silent block can then be skipped.
    bool IsSilent() const { return silentFrames_ >= kLatency && IsAtRest(); }

  private:
    /// Gains in steps of 2^-30, so that running sums are exact.
    using Gain = std::int64_t;
    static constexpr Gain kUnity = Gain{1} << 30;
    /// Every frame's gain is decided by the needs of those that lie up to kLatency ahead.
    static constexpr int kWindow = kLatency + 1;
    static constexpr std::uint32_t kMask = 255;
    static_assert(kWindow <= static_cast<int>(kMask) + 1);

    struct Need {
        Gain gain;
        std::uint64_t frame;
    };

    bool IsAtRest() const { return atRest_; }
    void Wake();
    Gain Lowest(Gain need);
    float NextGain(float peak);
    void Limit(std::span<float> out);

    std::array<float, (kLatency + kMaxBlock) * kChannels> samples_{};  ///< delayed ones, then the new block
    int silentFrames_ = kLatency;

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
