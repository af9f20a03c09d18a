// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// The limiter that the sum passes through. It looks five milliseconds ahead, so its gain has come down
// smoothly when a peak arrives; sound below the ceiling is not changed at all. Allocates nothing. Used by the
// mixing thread alone.
#pragma once

#include <array>
#include <span>

#include "sound/Frames.h"
#include "sound/LookAheadGain.h"

namespace sorakaze::sound {

class Limiter {
  public:
    /// The delay in frames.
    static constexpr int kLatency = LookAheadGain::kFrames;
    /// The most frames of one block.
    static constexpr int kMaxBlock = 1024;
    /// The largest positive sample of a 16-bit file: such files pass untouched.
    static constexpr float kCeiling = 32767.0f / 32768.0f;

    /// Room for the next block's input, at most kMaxBlock frames, filled with silence.
    std::span<float> Input(std::size_t frames);

    /// Passes what was written to Input on to `out` (as many frames), kLatency frames later.
    void Process(std::span<float> out);

    /// True when the delayed frames are silent and the gain is 1: a silent block can then be skipped.
    bool IsSilent() const { return silentFrames_ >= kLatency && gain_.IsAtRest(); }

  private:
    void Limit(std::span<float> out);

    std::array<float, (kLatency + kMaxBlock) * kChannels> samples_{};  ///< delayed ones, then the new block
    std::array<float, kMaxBlock> peaks_{}, gains_{};                   ///< of the block's frames
    int silentFrames_ = kLatency;
    LookAheadGain gain_{kCeiling};
};

}  // namespace sorakaze::sound
