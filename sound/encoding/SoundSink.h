// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// The format's side of a sound file writer: takes all frames in order on one thread and leaves a whole file.
#pragma once

#include <filesystem>
#include <memory>
#include <span>
#include <string_view>

#include "sound/encoding/SoundFileWriter.h"

namespace sorakaze::sound {

class SoundSink {
  public:
    virtual ~SoundSink() = default;
    /// Interleaved frames, any number. Throws SoundFileError.
    virtual void Write(std::span<const float> interleaved) = 0;
    /// Writes what is left and puts the file in its place. Throws SoundFileError.
    virtual void Finish() = 0;
};

/// 16-bit WAV; files that outgrow the format's 4 GB become RF64.
std::unique_ptr<SoundSink> MakeWavSink(const std::filesystem::path& file, Dither dither);

/// A format of the encoding libraries, with the names that they have for its container and its encoder.
struct Encoding {
    std::string_view ending;
    const char* container;
    const char* encoder;
    int bitRate = 0;   ///< bits a second; 0 where lossless or where `quality` is set
    int quality = -1;  ///< the encoder's own scale; used in place of the bit rate where not negative
};
std::unique_ptr<SoundSink> MakeEncoderSink(const std::filesystem::path& file, const Encoding& encoding,
                                           Dither dither);

}  // namespace sorakaze::sound
