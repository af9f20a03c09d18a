// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// Turns decoded frames of any sample format, rate and channel layout into the system's own: 48 kHz stereo
// float. N frames at a rate r become round(N * 48000 / r) frames in all.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "sound/AvSupport.h"

namespace sorakaze::sound {

class Converter {
  public:
    enum class Fold {
        Scaled,  ///< full-scale channels never add up to more than full scale
        Full,    ///< at the usual coefficients; sums may exceed full scale
    };
    explicit Converter(Fold fold) : fold_(fold) {}
    ~Converter();
    Converter(const Converter&) = delete;
    Converter& operator=(const Converter&) = delete;

    /// Whether `frame` fits the present conversion. False before the first SetUp, and when a stream
    /// changes its rate or layout half-way: then the caller flushes and sets up anew.
    bool Fits(const AVFrame& frame) const;

    /// False when the frame's format can't be converted at all.
    bool SetUp(const AVFrame& frame);

    /// Samples of each channel to convert at once: the result stays in the processor's cache.
    int Step() const;

    /// An upper bound of what Convert returns for `inputFrames` more frames (0: for Flush).
    std::size_t Bound(int inputFrames) const;

    /// Converts `count` samples of each channel of a frame that Fits, from `begin` on. `out` has room for
    /// Bound frames. Returns the frames written.
    std::size_t Convert(const AVFrame& frame, int begin, int count, std::span<float> out);

    /// Returns what the resampling filter still holds and ends the conversion.
    std::size_t Flush(std::span<float> out);

  private:
    const Fold fold_;
    AvPointer<SwrContext> context_;
    AVChannelLayout layout_{};
    int format_ = -1;
    int rate_ = 0;
    std::vector<const std::uint8_t*> planes_;  ///< of the present call
    std::int64_t framesIn_ = 0;
    std::int64_t framesOut_ = 0;
};

}  // namespace sorakaze::sound
