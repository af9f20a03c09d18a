// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// The desk's last stage: holds the true peak of the sum at -1 dBTP. A slow gain lowers what stays too loud,
// so that the limiter behind it only catches single peaks. Sound below the ceiling is not changed at all.
// Allocates nothing. Used by the mixing thread alone, but for Meter.
#pragma once

#include <array>
#include <atomic>
#include <span>

#include "sound/Frames.h"
#include "sound/LookAheadGain.h"
#include "sound/desk/TruePeak.h"

namespace sorakaze::sound {

class OutputStage {
  public:
    /// The delay in frames.
    static constexpr int kLatency = LookAheadGain::kFrames + static_cast<int>(kTruePeakAfter);
    /// The most frames of one block.
    static constexpr int kMaxBlock = 1024;
    /// -1 dBTP (0.8913) less 0.35 dB: for what the oversampling misses and another reads above it, and for
    /// what codecs add to music that was held at the ceiling.
    static constexpr float kCeiling = 0.8561f;

    /// What the limiter has done since the start. The slow gain isn't counted.
    struct Work {
        Frames limited;     ///< during which it was below -1 dB
        float deepest = 1;  ///< its lowest gain, linear
    };

    /// Room for the next block's input, at most kMaxBlock frames, filled with silence.
    std::span<float> Input(std::size_t frames);

    /// Passes what was written to Input on to `out` (as many frames), kLatency frames later. How the sound is
    /// cut into blocks makes no difference.
    void Process(std::span<float> out);

    /// True when the delayed frames are silent and the gains are 1: a silent block can then be skipped.
    bool IsSilent() const { return silentFrames_ >= kLatency && gain_.IsAtRest() && slow_.IsAtRest(); }

    /// A block was skipped, of whatever length: what comes next is processed as from the start.
    void Rest() { slow_ = {}; }

    /// Any thread.
    Work Meter() const;

  private:
    /// The gain in front of the limiter. Decided once a step by the peaks that the last one left.
    class SlowGain {
      public:
        static constexpr std::size_t kStep = kSampleRate / 100;

        /// How many frames are left of the present step.
        std::size_t Left() const { return kStep - at_; }
        bool IsAtRest() const { return from_ == 1.0f && to_ == 1.0f; }
        /// Of the next frames, at most those left.
        void Apply(std::span<float> interleaved) const;
        /// `frames` have passed, with that largest true peak.
        void Advance(std::size_t frames, float peak);

      private:
        float from_ = 1, to_ = 1;  ///< the gain moves evenly within a step
        float peak_ = 0;           ///< of the present step
        std::size_t at_ = 0;
    };

    void ProcessPart(std::size_t at, std::span<float> out);
    void Limit(const float* delayed, std::span<float> out);

    std::array<float, (kLatency + kMaxBlock) * kChannels> samples_{};  ///< delayed ones, then the new block
    std::array<float, kTruePeakBlock> peaks_{}, gains_{};              ///< of the present part's frames
    int silentFrames_ = kLatency;
    SlowGain slow_;
    LookAheadGain gain_{kCeiling};

    std::atomic<std::int64_t> limited_{0};  // as in Work; written by the mixing thread
    std::atomic<float> deepest_{1.0f};
};

}  // namespace sorakaze::sound
