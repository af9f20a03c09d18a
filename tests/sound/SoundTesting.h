// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// What the sound tests share: a scratch folder, test signals and files, and the facts they check sound by.
#pragma once

#include <span>
#include <string>
#include <vector>

#include "app/runtime/sound/MixingEngine.h"
#include "tests/support/TestRuntime.h"

namespace sorakaze::sound::testing {

using Samples = std::vector<float>;  ///< interleaved

/// A folder of the test's own, gone with it.
struct ScratchFolder : test::TemporaryFolder {
    std::filesystem::path operator/(const std::string& name) const { return Path() / name; }
};

Samples Sine(double hertz, std::size_t frames, float level, int rate = kSampleRate, int channels = kChannels);
Samples Constant(float level, std::size_t frames);

/// Through the system's own writer.
void WriteSound(const std::filesystem::path& file, std::span<const float> samples);
std::string ReadBytes(const std::filesystem::path& file);

/// Runs the ffmpeg program on interleaved samples. `options` are the output's.
void Encode(const std::filesystem::path& file, const Samples& samples, int rate, int channels,
            const std::string& options = "");

/// Mixes in blocks of a tick's length.
Samples Mix(MixingEngine& engine, std::size_t frames);

/// The file as a voice of an engine of its own: exactly its frames, the limiter's latency taken off. Empty
/// where it can't be opened.
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
