// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// What the sound tests share: test signals and files, and the facts they check sound by.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <complex>
#include <memory>
#include <numbers>
#include <span>
#include <string>
#include <vector>

#include "sound/MixingEngine.h"
#include "sound/encoding/SoundFileWriter.h"
#include "tests/support/TestRuntime.h"

namespace sorakaze::sound::testing {

using Samples = std::vector<float>;  ///< interleaved
using ScratchFolder = test::TemporaryFolder;
using test::ReadBytes;

inline Samples Sine(double hertz, std::size_t frames, float level, int rate = kSampleRate,
                    int channels = kChannels) {
    Samples samples(frames * static_cast<std::size_t>(channels));
    for (std::size_t i = 0; i < samples.size(); ++i) {
        const auto frame = static_cast<double>(i / static_cast<std::size_t>(channels));
        samples[i] = level * static_cast<float>(std::sin(2 * std::numbers::pi * hertz * frame / rate));
    }
    return samples;
}

inline Samples Constant(float level, std::size_t frames) {
    return Samples(frames * kChannels, level);
}

/// Through the system's own writer.
inline void WriteSound(const std::filesystem::path& file, std::span<const float> samples) {
    const auto writer = SoundFileWriter::Create(file);
    writer->Write(samples);
    writer->Finish();
}

/// Runs the ffmpeg program on interleaved samples. `options` are the output's.
inline void Encode(const std::filesystem::path& file, const Samples& samples, int rate, int channels,
                   const std::string& options = "") {
    const ScratchFolder folder;
    const auto* const bytes = reinterpret_cast<const char*>(samples.data());
    folder.Write("raw", {bytes, samples.size() * sizeof(float)});
    const std::string command = "ffmpeg -nostdin -v error -y -f f32le -ar " + std::to_string(rate) + " -ac " +
                                std::to_string(channels) + " -i '" + (folder / "raw").string() + "' " +
                                options + " '" + file.string() + "'";
    ASSERT_EQ(std::system(command.c_str()), 0) << command;
}

/// Mixes in blocks of a tick's length.
inline Samples Mix(MixingEngine& engine, std::size_t frames) {
    Samples samples(frames * kChannels);
    for (std::span<float> rest = samples; !rest.empty();) {
        const std::size_t count = std::min<std::size_t>(rest.size(), 800 * kChannels);
        engine.Mix(rest.first(count));
        rest = rest.subspan(count);
    }
    return samples;
}

/// Passes `samples` through a limiter in blocks of `block` frames; what comes out is as long, the latency
/// included.
template <typename Limiter>
Samples Pass(const Samples& samples, std::size_t block = 800) {
    const auto limiter = std::make_unique<Limiter>();
    Samples out = samples;
    for (std::span<float> rest = out; !rest.empty();) {
        const auto part = rest.first(std::min(block * kChannels, rest.size()));
        std::ranges::copy(part, limiter->Input(part.size() / kChannels).begin());
        limiter->Process(part);
        rest = rest.subspan(part.size());
    }
    return out;
}

/// The file as a voice of an engine of its own: exactly its frames, the limiter's latency taken off. Empty
/// where it can't be opened.
inline Samples DecodeWhole(const std::filesystem::path& file) {
    MixingEngine engine(MixingMode::Offline);
    const auto voice = engine.Open(file);
    if (!voice) return {};
    voice->Start();
    Samples all;
    const auto mix = [&](std::size_t frames) {
        const Samples more = Mix(engine, frames);
        all.insert(all.end(), more.begin(), more.end());
    };
    while (voice->IsPlaying()) mix(800);
    const auto latency = engine.Latency().count;
    mix(static_cast<std::size_t>(latency));
    all.erase(all.begin(), all.begin() + latency * kChannels);
    all.resize(static_cast<std::size_t>(voice->Position().count) * kChannels);
    return all;
}

inline Samples Channel(std::span<const float> samples, int channel) {
    Samples one;
    for (std::size_t i = static_cast<std::size_t>(channel); i < samples.size(); i += kChannels)
        one.push_back(samples[i]);
    return one;
}

inline float Peak(std::span<const float> samples) {
    float peak = 0;
    for (const float sample : samples)
        peak = std::isfinite(sample) ? std::max(peak, std::fabs(sample)) : HUGE_VALF;
    return peak;
}

/// The largest step from a frame to the next.
inline float LargestStep(std::span<const float> samples) {
    float largest = 0;
    for (std::size_t i = kChannels; i < samples.size(); ++i)
        largest = std::max(largest, std::fabs(samples[i] - samples[i - kChannels]));
    return largest;
}

/// The amplitude of the sine of `hertz` in a channel, and how far below it, in decibels, everything else
/// lies.
struct Tone {
    double amplitude;
    double purity;
};
inline Tone MeasureTone(std::span<const float> channel, double hertz) {
    const auto turn = [&](std::size_t i) {
        return std::polar(1.0, 2 * std::numbers::pi * hertz * static_cast<double>(i) / kSampleRate);
    };
    // Least squares on the sine and the cosine, which whole or half periods make orthogonal closely enough.
    const double count = static_cast<double>(channel.size());
    std::complex<double> sum;
    for (std::size_t i = 0; i < channel.size(); ++i) sum += turn(i) * (2 * double{channel[i]} / count);
    double rest = 0;
    for (std::size_t i = 0; i < channel.size(); ++i)
        rest += std::norm(channel[i] - std::real(std::conj(sum) * turn(i)));
    return {std::abs(sum), 10 * std::log10(std::norm(sum) / 2 / std::max(rest / count, 1e-20))};
}

}  // namespace sorakaze::sound::testing
