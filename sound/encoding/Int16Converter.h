// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// The mixed floats as the 16-bit integers of a file, rounded or with dither. The same sound gives the same
// integers, however it is cut into parts. One thread.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

#include "sound/encoding/SoundFileWriter.h"

namespace sorakaze::sound {

class Int16Converter {
  public:
    explicit Int16Converter(Dither dither);

    /// Continues the sound with these frames; writes as many samples.
    void Convert(std::span<const float> interleaved, std::int16_t* to);

  private:
    static constexpr std::size_t kLanes = 8;
    static constexpr std::size_t kNoise = 1024;

    void MakeNoise();

    const Dither dither_;
    std::array<std::uint32_t, kLanes> random_{};
    std::array<float, kNoise> noise_{};  ///< for the next samples, in steps of the integers
    std::size_t used_ = kNoise;
};

}  // namespace sorakaze::sound
