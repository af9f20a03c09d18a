// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// Measures loudness as broadcasting does (ITU-R BS.1770, EBU R 128): the one wrapper of the library for that.
// Used where a file is measured, in the decoder's confined process. ProgrammeLoudness measures what a render
// came out as, and is tested against this. One thread at a time; it allocates.
#pragma once

#include <ebur128.h>

#include <memory>
#include <span>

#include "sound/Frames.h"
#include "sound/Measurement.h"

namespace sorakaze::sound {

class LoudnessMeter {
  public:
    /// What is measured besides; the true peak takes several times as long as all else.
    struct Extras {
        bool range = false;
        bool truePeak = false;
    };

    /// Throws std::bad_alloc.
    explicit LoudnessMeter(Extras extras);
    LoudnessMeter() : LoudnessMeter(Extras{}) {}
    LoudnessMeter(LoudnessMeter&&) noexcept = default;
    LoudnessMeter& operator=(LoudnessMeter&&) noexcept = default;

    /// The sound's next frames, each sample a sane number (see SaneSample.h). May throw std::bad_alloc.
    void Add(std::span<const float> interleaved);

    // All values are finite, and kSilentLoudness at least: so quiet is silence, or a sound that is too short.
    // 30 LUFS is the most that is told of loudness that is integrated.

    /// Of all frames so far, without pauses (gated), in LUFS. To within 0.05 LU; in memory of fixed
    /// size, however long the sound. kSilentLoudness before the first 400 ms.
    float Integrated() const;
    /// Of the last frames, `length` and a second at most, in LUFS. Not gated. In steps of a millisecond.
    float Last(Frames length) const;
    /// The largest sample so far, in dBFS.
    float Peak() const;
    /// The largest value between the samples so far, in dBTP. Only where it is measured.
    float TruePeak() const;
    /// The loudness range (EBU Tech 3342), in LU, 0 at least. Only where it is measured.
    float Range() const;

  private:
    struct Destroy {
        void operator()(ebur128_state* state) const;
    };
    std::unique_ptr<ebur128_state, Destroy> state_;
};

}  // namespace sorakaze::sound
