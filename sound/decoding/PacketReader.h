// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// Opens a sound file and gives the packets of its sound, in order, and codecs that decode them. Pictures and
// whatever else the file holds are passed over; other files and addresses that it may name are never opened.
#pragma once

#include <memory>
#include <optional>
#include <string>

#include "sound/AvSupport.h"
#include "sound/Frames.h"
#include "sound/decoding/InputFile.h"

namespace sorakaze::sound {

class PacketReader {
  public:
    /// Empty when the file can't be read or holds no sound.
    /// `name` only helps to tell formats apart by their endings.
    static std::unique_ptr<PacketReader> Open(std::unique_ptr<InputFile> file, const std::string& name);
    PacketReader(const PacketReader&) = delete;
    PacketReader& operator=(const PacketReader&) = delete;

    /// The next packet. False at the end, and where nothing but damage follows.
    bool Read(AVPacket& packet);

    /// Goes to a packet at `time`, in the stream's time base, or not far before it. False where that can't be
    /// done.
    bool Seek(std::int64_t time);

    /// A decoder for the packets, or empty. Any thread.
    AvPointer<AVCodecContext> MakeCodec() const;

    const AVStream& Stream() const { return *stream_; }
    const AVFormatContext& Container() const { return *input_; }
    /// What the container states.
    std::optional<Frames> Length() const;

  private:
    PacketReader() = default;
    bool OpenInput(const std::string& name);

    // In the order in which they are opened; closed in reverse.
    std::unique_ptr<InputFile> file_;
    AvInputPointer input_;
    AVStream* stream_ = nullptr;
};

}  // namespace sorakaze::sound
