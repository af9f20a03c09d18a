// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// The loudness and the loudness range of hours of sound (ITU-R BS.1770, EBU Tech 3342), many times faster
// than LoudnessMeter: a render takes a thousandth of its sound's time and leaves no room for more. Four
// seconds are filtered side by side. One thread; it allocates.
#pragma once

#include <array>
#include <span>
#include <vector>

#include "sound/Frames.h"
#include "sound/Measurement.h"

namespace sorakaze::sound {

class ProgrammeLoudness {
  public:
    ProgrammeLoudness();

    /// Continues the sound. How it is cut into parts makes no difference.
    void Add(std::span<const float> interleaved);
    /// The sound is over: counts its last seconds. Add isn't called any more.
    void Finish();

    /// Of what is counted, without pauses (gated), in LUFS; kSilentLoudness at least.
    float Integrated() const;
    /// In LU, 0 at least.
    float Range() const;

  private:
    static constexpr std::size_t kSegments = 4;
    static constexpr std::size_t kLanes = kSegments * kChannels;
    static constexpr std::size_t kSegment = kSampleRate;  ///< frames of one
    static constexpr std::size_t kStep = kSampleRate / 10;
    /// Frames before a segment after which the filters have forgotten what was before those.
    static constexpr std::size_t kSettle = kSampleRate / 20;

    /// One second-order filter, for all lanes.
    struct Section {
        float b0, b1, b2, a1, a2;
    };
    /// What compilers don't make vectors of by themselves: values that stay in registers from step to step.
    using Lanes [[gnu::vector_size(kLanes * sizeof(float))]] = float;
    struct Filters {
        Lanes s1{}, s2{}, s3{}, s4{}, power{};
    };

    void Measure();
    void RunLanes(Filters& filters, const float* in, std::size_t frames) const;
    void Run(Filters& filters, std::size_t first, std::size_t frames) const;

    Section shelf_, highPass_;
    std::vector<float> samples_;  ///< the last kSettle frames, then new ones
    std::size_t filled_ = 0;      ///< new samples
    std::vector<float> steps_;    ///< of each tenth of a second the power, both channels' sum
};

}  // namespace sorakaze::sound
