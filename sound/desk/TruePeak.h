// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// True peak: the largest value that sound reaches between its samples too, by fourfold oversampling as ITU-R
// BS.1770 describes it. Agrees with libebur128 within 0.2 dB; of a sine below 20 kHz it misses at most 0.3
// dB. Nothing is calculated where the samples are too small for the asked level. Allocates nothing.
#pragma once

#include <array>
#include <span>

#include "sound/Frames.h"

namespace sorakaze::sound {

/// How many frames the oversampling needs before those that are looked at, and after them.
inline constexpr std::size_t kTruePeakBefore = 6;
inline constexpr std::size_t kTruePeakAfter = 5;
/// The most frames that FindTruePeaks looks at.
inline constexpr std::size_t kTruePeakBlock = 512;

/// For each frame the largest absolute value of its samples and between them and the frame before. Where that
/// is certainly not above `floor`, 0 may take its place. `around` holds the frames that are looked at
/// (peaks.size(), at most kTruePeakBlock) with those before and after. Returns the largest of `peaks`.
float FindTruePeaks(std::span<const float> around, float floor, std::span<float> peaks);

/// The true peak of a whole sound. One thread.
class TruePeak {
  public:
    /// Continues the sound. How it is cut into parts makes no difference.
    void Add(std::span<const float> interleaved);

    /// Linear; 1 is full scale.
    float Peak() const;

  private:
    static constexpr std::size_t kAround = kTruePeakBefore + kTruePeakAfter;

    void Measure(std::span<const float> around);

    /// The last frames, then the first new ones. In the beginning there is silence before the sound.
    std::array<float, 2 * kAround * kChannels> joint_{};
    std::array<float, kTruePeakBlock> peaks_{};
    float peak_ = 0;
};

}  // namespace sorakaze::sound
