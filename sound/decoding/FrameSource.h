// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// The decoded frames of a sound file, in order and in the file's own format.
#pragma once

#include <memory>

#include "sound/AvSupport.h"
#include "sound/decoding/PacketReader.h"

namespace sorakaze::sound {

class FrameSource {
  public:
    virtual ~FrameSource() = default;

    /// The next frame, never an empty one; valid until the next call. Null at the sound's end. One thread at
    /// a time.
    virtual AVFrame* Next() = 0;

    struct Place {
        AVFrame* frame = nullptr;  ///< as from Next; null past the sound's end
        int sample = 0;            ///< in the frame
    };
    /// The place of the sound's frame `start`, from where Next goes on. Before the first Next. Here all
    /// before it is decoded.
    virtual Place GoTo(Frames start);

    /// What the container states.
    virtual std::optional<Frames> Length() const = 0;
};

/// One packet after the other, for every format. Empty when there is no decoder for it.
std::unique_ptr<FrameSource> MakeSequentialFrames(std::unique_ptr<PacketReader> reader);

/// `helpers` threads beside the one that calls Next, each decoding a part of the file: the same frames, bit
/// for bit, in a fraction of the time. For formats whose decoders keep little or no state between packets;
/// for others empty, and `reader` is unchanged. Throws std::system_error.
std::unique_ptr<FrameSource> MakePartedFrames(std::unique_ptr<PacketReader>& reader, unsigned helpers);

}  // namespace sorakaze::sound
