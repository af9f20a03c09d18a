// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// What the sound tests share: a scratch folder, test signals and files, and the facts they check sound by.
#pragma once

#include <filesystem>
#include <span>
#include <string>
#include <vector>

#include "app/runtime/sound/MixingEngine.h"

namespace sorakaze::sound::testing {

using Samples = std::vector<float>;  ///< interleaved

/// A folder of the test's own, gone with it.
class ScratchFolder {
  public:
    ScratchFolder();
    ~ScratchFolder();
    std::filesystem::path operator/(const std::string& name) const { return path_ / name; }
    const std::filesystem::path& Path() const { return path_; }

  private:
    std::filesystem::path path_;
};

Samples Sine(double hertz, std::size_t frames, float level, int rate = kSampleRate, int channels = kChannels);
Samples Constant(float level, std::size_t frames);

/// Through the system's own writer.
void WriteSound(const std::filesystem::path& file, std::span<const float> samples);

void WriteBytes(const std::filesystem::path& file, std::string_view bytes);
std::string ReadBytes(const std::filesystem::path& file);

/// Runs the ffmpeg program on interleaved samples. `options` are the output's.
void Encode(const std::filesystem::path& file, const Samples& samples, int rate, int channels,
            const std::string& options = "");

/// Mixes `frames` frames, `block` at a time.
Samples Mix(MixingEngine& engine, std::size_t frames, std::size_t block = 800);

/// Starts the voice and mixes until it has ended; gives exactly its frames, the limiter's latency taken off.
Samples MixWhole(MixingEngine& engine, Voice& voice);
/// The same for a file, with an engine of its own. Empty where the file can't be opened.
Samples DecodeWhole(const std::filesystem::path& file);

Samples Channel(std::span<const float> samples, int channel);
float Peak(std::span<const float> samples);
/// The largest step from a frame to the next.
float LargestStep(std::span<const float> samples);
/// The amplitude of the sine of `hertz` in a channel, and how far below it, in decibels, everything else
/// lies.
struct Tone {
    double amplitude;
    double purity;
};
Tone MeasureTone(std::span<const float> channel, double hertz);

}  // namespace sorakaze::sound::testing
