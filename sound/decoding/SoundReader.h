// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// A sound file's frames as they are played or measured: those of its decoder, without the silence at its head
// where that isn't wanted. Both jobs use it, so that both have the same frames.
#pragma once

#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "sound/DecodeOptions.h"
#include "sound/decoding/Decoder.h"

namespace sorakaze::sound {

class SoundReader {
  public:
    /// As Decoder::Open.
    static std::optional<SoundReader> Open(std::unique_ptr<InputFile> file, const std::string& name,
                                           const DecodeOptions& options, unsigned helpers = 0);

    /// Fills `interleaved` and returns the frames written: fewer than there is room for at the sound's end
    /// (see IsOver), and while it skips, which it does for a bounded number of frames in one call.
    std::size_t Read(std::span<float> interleaved);
    /// No frames follow.
    bool IsOver() const { return over_; }
    /// All frames so far were silence that isn't wanted.
    bool IsSkipping() const { return skipping_; }
    /// Frames left out so far.
    Frames Skipped() const { return skipped_; }

    /// What the container states, without what was left out so far.
    std::optional<Frames> Length() const;

  private:
    SoundReader(std::unique_ptr<Decoder> decoder, const DecodeOptions& options)
        : decoder_(std::move(decoder)), excerpt_(options.excerpt), skipping_(options.skipHead) {}
    void Skip();
    std::size_t Decode(std::span<float> interleaved);

    std::unique_ptr<Decoder> decoder_;
    Excerpt excerpt_;
    Frames decoded_;  ///< of the excerpt
    bool skipping_;
    bool ended_ = false;  ///< the decoder has no more
    bool over_ = false;
    Frames skipped_;
    std::vector<float> kept_;    ///< the last of the silence, and after it the first sound
    std::size_t keptBegin_ = 0;  ///< samples of it that were read
};

}  // namespace sorakaze::sound
