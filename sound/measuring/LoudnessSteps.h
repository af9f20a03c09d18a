// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// The power of sound as the ear weighs it (K weighting, ITU-R BS.1770), for each tenth of a second: what
// every loudness is made of. Filters four seconds side by side, so that a sound costs a ten-thousandth of its
// time: a render takes a thousandth and leaves no room for more. One thread; it allocates.
#pragma once

#include <array>
#include <span>
#include <vector>

#include "sound/Frames.h"

namespace sorakaze::sound {

class LoudnessSteps {
  public:
    static constexpr Frames kStep{kSampleRate / 10};

    LoudnessSteps();

    /// Continues the sound, each sample a sane number (see SaneSample.h). How it is cut into parts makes no
    /// difference.
    void Add(std::span<const float> interleaved);
    /// The sound is over, and followed by silence: counts its last seconds. Add isn't called any more.
    void Finish();
    /// The steps that are known since the last call: both channels' sum of mean squares. They come up to four
    /// seconds late. After Finish the last one may be of fewer frames, with silence behind them.
    std::vector<float> Take();
    Frames Length() const { return length_; }  ///< of the sound so far

    /// In LUFS.
    static double LoudnessOf(double power);
    static double PowerOf(double loudness);

  private:
    static constexpr std::size_t kSegments = 4;
    static constexpr std::size_t kLanes = kSegments * kChannels;
    static constexpr std::size_t kSegment = kSampleRate;  ///< frames of one
    static constexpr std::size_t kStepFrames = kStep.count;
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
    std::vector<float> steps_;    ///< not taken yet
    Frames length_;
};

}  // namespace sorakaze::sound
