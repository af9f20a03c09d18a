// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// Reads one sound file from its beginning to its end as 48 kHz stereo float, whatever it holds. Used by one
// thread at a time. Never throws for what the file holds: a damaged stretch is passed over, and where nothing
// follows, that is the sound's end.
#pragma once

#include <filesystem>
#include <memory>
#include <optional>
#include <span>
#include <vector>

#include "app/runtime/sound/AvSupport.h"
#include "app/runtime/sound/Converter.h"
#include "app/runtime/sound/Frames.h"
#include "app/runtime/sound/InputFile.h"

namespace sorakaze::sound {

class Decoder {
  public:
    /// Empty when the file can't be read or its first sound can't be decoded.
    static std::unique_ptr<Decoder> Open(const std::filesystem::path& file);
    Decoder(const Decoder&) = delete;
    Decoder& operator=(const Decoder&) = delete;

    /// Fills `interleaved` and returns the frames written: fewer than there is room for only at the sound's
    /// end.
    std::size_t Read(std::span<float> interleaved);

    /// What the container states.
    std::optional<Frames> Length() const;

  private:
    Decoder() = default;
    bool OpenInput(const std::filesystem::path& file);
    bool OpenCodec();
    bool NextFrame();
    bool FeedPacket();
    bool ReadPacket();
    void TrimEnd();
    std::size_t ConvertFrame(std::span<float> room);
    std::size_t FlushConverter(std::span<float> room);
    std::size_t TakeSpare(std::span<float> room);
    std::span<float> RoomFor(std::size_t bound, std::span<float> room);
    std::size_t Delivered(std::size_t frames, std::span<float> target, std::span<float> room);

    // In the order in which they are opened; closed in reverse.
    std::unique_ptr<InputFile> file_;
    AvInputPointer input_;
    AvPointer<AVCodecContext> codec_;
    AvPointer<AVPacket> packet_;
    AvPointer<AVPacket> nextPacket_;  ///< read ahead, as the last packet is treated differently
    AvPointer<AVFrame> frame_;
    Converter converter_;
    AVStream* stream_ = nullptr;
    bool inputBegun_ = false;
    bool inputEnded_ = false;  ///< no nextPacket_
    bool drained_ = false;     ///< the codec knows that nothing follows
    bool framePending_ = false;
    bool ended_ = false;
    bool lastPacketIsCut_ = false;  ///< the container states the end by the last packet's duration
    std::optional<std::int64_t>
        statedSamples_;  ///< the container states the length before conversion exactly
    std::int64_t decodedSamples_ = 0;
    int failures_ = 0;  ///< in a row, without a decoded frame between

    /// Converted frames that found no room in the caller's span.
    std::vector<float> spare_;
    std::size_t spareBegin_ = 0;  ///< samples
    std::size_t spareEnd_ = 0;    ///< samples
};

}  // namespace sorakaze::sound
