// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "sound/encoding/WavHeader.h"

#include <cstring>
#include <limits>

#include "sound/Frames.h"

namespace sorakaze::sound {
namespace {

constexpr std::uint16_t kFrameBytes = kChannels * sizeof(std::int16_t);

/// Appends to the header, little end first whatever the machine.
class Builder {
  public:
    void Tag(const char* tag) {
        std::memcpy(bytes_.data() + size_, tag, 4);
        size_ += 4;
    }
    void Number(std::uint64_t value, int bytes) {
        for (int i = 0; i < bytes; ++i) bytes_[size_++] = static_cast<char>(value >> (8 * i));
    }
    const std::array<char, kWavHeaderBytes>& Bytes() const { return bytes_; }

  private:
    std::array<char, kWavHeaderBytes> bytes_{};
    std::size_t size_ = 0;
};

}  // namespace

std::array<char, kWavHeaderBytes> WavHeader(std::uint64_t dataBytes) {
    constexpr std::uint64_t kMax32 = std::numeric_limits<std::uint32_t>::max();
    const std::uint64_t riffBytes = kWavHeaderBytes - 8 + dataBytes;
    const bool large = riffBytes >= kMax32;
    Builder header;
    header.Tag(large ? "RF64" : "RIFF");
    header.Number(large ? kMax32 : riffBytes, 4);
    header.Tag("WAVE");
    // Room for the 64-bit sizes; readers of smaller files pass over it.
    header.Tag(large ? "ds64" : "JUNK");
    header.Number(28, 4);
    header.Number(large ? riffBytes : 0, 8);
    header.Number(large ? dataBytes : 0, 8);
    header.Number(large ? dataBytes / kFrameBytes : 0, 8);
    header.Number(0, 4);
    header.Tag("fmt ");
    header.Number(16, 4);
    header.Number(1, 2);  // linear integers
    header.Number(kChannels, 2);
    header.Number(kSampleRate, 4);
    header.Number(std::uint64_t{kSampleRate} * kFrameBytes, 4);
    header.Number(kFrameBytes, 2);
    header.Number(16, 2);
    header.Tag("data");
    header.Number(large ? kMax32 : dataBytes, 4);
    return header.Bytes();
}

}  // namespace sorakaze::sound
