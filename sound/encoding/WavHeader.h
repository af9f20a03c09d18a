// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// The header of a 16-bit WAV file of the system's own rate and channels. It always has the same size, so that
// it can be written again when the file's length is known.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace sorakaze::sound {

inline constexpr std::size_t kWavHeaderBytes = 12 + 36 + 24 + 8;

/// For `dataBytes` bytes of samples. Where 32 bits don't hold the sizes, it is the RF64 form with 64-bit
/// ones.
std::array<char, kWavHeaderBytes> WavHeader(std::uint64_t dataBytes);

}  // namespace sorakaze::sound
