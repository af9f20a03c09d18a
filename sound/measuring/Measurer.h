// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// Measures a sound while it is decoded. Runs in the decoder's confined process; one thread.
#pragma once

#include <optional>
#include <span>
#include <vector>

#include "sound/Measurement.h"
#include "sound/SpeechBand.h"
#include "sound/measuring/GatedLoudness.h"
#include "sound/measuring/LoudnessSteps.h"

namespace sorakaze::sound {

class Measurer {
  public:
    /// Measures `limit` frames at most, and kLongestMeasurement. Throws std::bad_alloc.
    explicit Measurer(Frames limit);

    /// The decoder's next frames, any floats. May throw std::bad_alloc.
    void Add(std::span<const float> interleaved);
    /// Nothing more is measured.
    bool IsFull() const { return measured_.length >= limit_; }
    /// After the last frame. `isOver`: the sound has no more frames than were added.
    Measurement Finish(bool isOver);

  private:
    void MeasureStretch();
    void TakeSteps(std::size_t most);
    void EndSecond();
    float LouderStretches() const;

    const Frames limit_;
    bool cut_ = false;  ///< frames beyond the limit were added
    LoudnessSteps weighed_;
    GatedLoudness part_;  ///< from the beginning to the last step
    std::size_t steps_ = 0;
    double second_ = 0;  ///< sum of the powers of the last second's steps
    SpeechBand speechBand_;
    std::vector<float> stretch_;  ///< its first samples aren't measured yet
    std::size_t filled_ = 0;      ///< so many
    std::vector<float> powers_;   ///< of the stretches so far, in the band of speech
    float peak_ = 0;
    std::vector<float> peaks_;  ///< up to the end of each second
    Measurement measured_;      ///< its length counts the samples in stretch_
};

}  // namespace sorakaze::sound
