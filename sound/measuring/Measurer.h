// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// Measures a sound while it is decoded. Runs in the decoder's confined process; one thread.
#pragma once

#include <optional>
#include <span>
#include <vector>

#include "sound/Measurement.h"
#include "sound/SpeechBand.h"
#include "sound/measuring/LoudnessMeter.h"

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
    void EndSecond(Frames length);
    float LouderStretches() const;

    const Frames limit_;
    bool cut_ = false;  ///< frames beyond the limit were added
    LoudnessMeter meter_;
    SpeechBand speechBand_;
    std::vector<float> stretch_;  ///< frames that aren't measured yet
    std::vector<float> powers_;   ///< of the stretches so far, in the band of speech
    Measurement measured_;        ///< its length counts the frames in stretch_
};

}  // namespace sorakaze::sound
