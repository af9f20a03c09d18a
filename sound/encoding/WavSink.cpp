// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include <algorithm>
#include <bit>
#include <cstdint>
#include <vector>

#include "sound/Frames.h"
#include "sound/encoding/Int16Converter.h"
#include "sound/encoding/OutputFile.h"
#include "sound/encoding/SoundSink.h"
#include "sound/encoding/WavHeader.h"

namespace sorakaze::sound {
namespace {

static_assert(std::endian::native == std::endian::little, "samples are written as they lie in memory");

class WavSink final : public SoundSink {
  public:
    WavSink(const std::filesystem::path& file, Dither dither)
        : file_(file), converter_(dither), block_(kBlockSamples) {
        WriteHeader();
    }

    void Write(std::span<const float> interleaved) override {
        while (!interleaved.empty()) {
            const std::size_t count = std::min(interleaved.size(), kBlockSamples);
            converter_.Convert(interleaved.first(count), block_.data());
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

    void WriteHeader() { file_.Write(WavHeader(dataBytes_).data(), kWavHeaderBytes); }

    OutputFile file_;
    Int16Converter converter_;
    std::vector<std::int16_t> block_;
    std::uint64_t dataBytes_ = 0;
};

}  // namespace

std::unique_ptr<SoundSink> MakeWavSink(const std::filesystem::path& file, Dither dither) {
    return std::make_unique<WavSink>(file, dither);
}

}  // namespace sorakaze::sound
