// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include <algorithm>
#include <array>
#include <bit>
#include <cstdint>
#include <cstring>
#include <limits>
#include <vector>

#include "app/runtime/sound/Frames.h"
#include "app/runtime/sound/OutputFile.h"
#include "app/runtime/sound/SampleConversion.h"
#include "app/runtime/sound/SoundSink.h"

namespace sorakaze::sound {
namespace {

static_assert(std::endian::native == std::endian::little, "samples are written as they lie in memory");

constexpr std::size_t kFrameBytes = kChannels * sizeof(std::int16_t);

/// Builds the header in memory, little end first.
class Header {
  public:
    static constexpr std::size_t kBytes = 12 + 36 + 24 + 8;

    explicit Header(std::uint64_t dataBytes) {
        constexpr std::uint64_t kMax32 = std::numeric_limits<std::uint32_t>::max();
        const std::uint64_t riffBytes = kBytes - 8 + dataBytes;
        const bool large = riffBytes >= kMax32;
        Tag(large ? "RF64" : "RIFF");
        Number<std::uint32_t>(large ? kMax32 : riffBytes);
        Tag("WAVE");
        // Room for the 64-bit sizes; readers of smaller files pass over it.
        Tag(large ? "ds64" : "JUNK");
        Number<std::uint32_t>(28);
        Number<std::uint64_t>(large ? riffBytes : 0);
        Number<std::uint64_t>(large ? dataBytes : 0);
        Number<std::uint64_t>(large ? dataBytes / kFrameBytes : 0);
        Number<std::uint32_t>(0);
        Tag("fmt ");
        Number<std::uint32_t>(16);
        Number<std::uint16_t>(1);  // linear integers
        Number<std::uint16_t>(kChannels);
        Number<std::uint32_t>(kSampleRate);
        Number<std::uint32_t>(kSampleRate * kFrameBytes);
        Number<std::uint16_t>(kFrameBytes);
        Number<std::uint16_t>(16);
        Tag("data");
        Number<std::uint32_t>(large ? kMax32 : dataBytes);
    }

    const void* Data() const { return bytes_.data(); }

  private:
    void Tag(const char* tag) {
        std::memcpy(bytes_.data() + size_, tag, 4);
        size_ += 4;
    }
    template <typename T>
    void Number(std::uint64_t value) {
        const T number = static_cast<T>(value);
        std::memcpy(bytes_.data() + size_, &number, sizeof number);
        size_ += sizeof number;
    }

    std::array<char, kBytes> bytes_{};
    std::size_t size_ = 0;
};

class WavSink final : public SoundSink {
  public:
    explicit WavSink(const std::filesystem::path& file) : file_(file), block_(kBlockSamples) {
        WriteHeader();
    }

    void Write(std::span<const float> interleaved) override {
        while (!interleaved.empty()) {
            const std::size_t count = std::min(interleaved.size(), kBlockSamples);
            ToInt16(interleaved.data(), block_.data(), count);
            file_.Write(block_.data(), count * sizeof(std::int16_t));
            dataBytes_ += count * sizeof(std::int16_t);
            interleaved = interleaved.subspan(count);
        }
    }

    void Finish() override {
        file_.Seek(0);
        WriteHeader();
        file_.Publish();
    }

  private:
    static constexpr std::size_t kBlockSamples = std::size_t{1} << 16;  // fits the processor's own memory

    void WriteHeader() { file_.Write(Header(dataBytes_).Data(), Header::kBytes); }

    OutputFile file_;
    std::vector<std::int16_t> block_;
    std::uint64_t dataBytes_ = 0;
};

}  // namespace

std::unique_ptr<SoundSink> MakeWavSink(const std::filesystem::path& file) {
    return std::make_unique<WavSink>(file);
}

}  // namespace sorakaze::sound
