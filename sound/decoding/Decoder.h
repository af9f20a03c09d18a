// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// Reads one sound file from its beginning to its end as 48 kHz stereo float, whatever it holds. Never throws
// for what the file holds: a damaged part is skipped, and if nothing follows, the sound is over.
#pragma once

#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "sound/AvSupport.h"
#include "sound/Frames.h"
#include "sound/decoding/Converter.h"
#include "sound/decoding/FrameSource.h"

namespace sorakaze::sound {

class Decoder {
  public:
    /// Empty when the file's first sound can't be decoded. `name` only helps to tell formats apart by their
    /// endings. `helpers` more threads make it faster, for formats that allow it; they take some megabytes
    /// more and give the same samples. The sound begins with the file's frame `start`. Throws std::bad_alloc
    /// and std::system_error.
    static std::unique_ptr<Decoder> Open(std::unique_ptr<InputFile> file, const std::string& name,
                                         unsigned helpers = 0, Converter::Fold fold = Converter::Fold::Scaled,
                                         Frames start = {});
    Decoder(const Decoder&) = delete;
    Decoder& operator=(const Decoder&) = delete;

    /// Fills `interleaved` and returns the frames written: fewer than there is room for only at the sound's
    /// end. One thread at a time.
    std::size_t Read(std::span<float> interleaved);

    /// What the container states.
    std::optional<Frames> Length() const { return source_->Length(); }

  private:
    Decoder(std::unique_ptr<FrameSource> source, Converter::Fold fold)
        : source_(std::move(source)), converter_(fold) {}
    std::size_t Advance(std::span<float> room);
    std::size_t Flush(std::span<float> room);
    std::size_t TakeSpare(std::span<float> room);
    std::span<float> RoomFor(std::size_t bound, std::span<float> room);
    std::size_t Delivered(std::size_t frames, std::span<float> target, std::span<float> room);

    std::unique_ptr<FrameSource> source_;
    Converter converter_;
    AVFrame* pending_ = nullptr;  ///< the source's last frame, not yet converted as a whole
    int converted_ = 0;           ///< samples of it that are converted
    bool ended_ = false;

    /// Converted frames that didn't fit into the caller's span.
    std::vector<float> spare_;
    std::size_t spareBegin_ = 0;  ///< samples
    std::size_t spareEnd_ = 0;    ///< samples
};

}  // namespace sorakaze::sound
