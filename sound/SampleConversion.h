// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// Floats to 16-bit integers: rounded to the nearest, held to the range. Written so that every compiler
// vectorises it.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>

namespace sorakaze::sound {

/// `dither` is added before the rounding, in steps of the integers.
inline std::int16_t ToInt16(float sample, float dither = 0.0f) {
    float scaled = sample == sample ? sample * 32768.0f + dither : 0.0f;
    scaled = scaled > -32768.0f ? scaled : -32768.0f;
    scaled = scaled < 32767.0f ? scaled : 32767.0f;
    // Adding 1.5 * 2^23 leaves the rounded integer in the low bits of the sum.
    constexpr float kMagic = 12582912.0f;
    return static_cast<std::int16_t>(std::bit_cast<std::int32_t>(scaled + kMagic) -
                                     std::bit_cast<std::int32_t>(kMagic));
}

inline void ToInt16(const float* from, std::int16_t* to, std::size_t count) {
    for (std::size_t i = 0; i < count; ++i) to[i] = ToInt16(from[i]);
}

}  // namespace sorakaze::sound
