// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/sound/SoundTesting.h"

#include <gtest/gtest.h>
#include <stdlib.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <fstream>
#include <numbers>
#include <sstream>

#include "app/runtime/sound/SoundFileWriter.h"

namespace sorakaze::sound::testing {

ScratchFolder::ScratchFolder() {
    std::string pattern = (std::filesystem::temp_directory_path() / "sorakaze-sound-XXXXXX").string();
    path_ = mkdtemp(pattern.data());
}

ScratchFolder::~ScratchFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
}

Samples Sine(double hertz, std::size_t frames, float level, int rate, int channels) {
    Samples samples;
    samples.reserve(frames * static_cast<std::size_t>(channels));
    for (std::size_t i = 0; i < frames; ++i) {
        const double phase = 2 * std::numbers::pi * hertz * static_cast<double>(i) / rate;
        samples.insert(samples.end(), static_cast<std::size_t>(channels),
                       level * static_cast<float>(std::sin(phase)));
    }
    return samples;
}

Samples Constant(float level, std::size_t frames) {
    return Samples(frames * kChannels, level);
}

void WriteSound(const std::filesystem::path& file, std::span<const float> samples) {
    const auto writer = SoundFileWriter::Create(file);
    writer->Write(samples);
    writer->Finish();
}

void WriteBytes(const std::filesystem::path& file, std::string_view bytes) {
    std::ofstream(file, std::ios::binary) << bytes;
}

std::string ReadBytes(const std::filesystem::path& file) {
    std::ostringstream bytes;
    bytes << std::ifstream(file, std::ios::binary).rdbuf();
    return bytes.str();
}

void Encode(const std::filesystem::path& file, const Samples& samples, int rate, int channels,
            const std::string& options) {
    const auto raw = file.string() + ".raw";
    WriteBytes(raw, {reinterpret_cast<const char*>(samples.data()), samples.size() * sizeof(float)});
    const std::string command = "ffmpeg -nostdin -v error -y -f f32le -ar " + std::to_string(rate) + " -ac " +
                                std::to_string(channels) + " -i '" + raw + "' " + options + " '" +
                                file.string() + "'";
    ASSERT_EQ(std::system(command.c_str()), 0) << command;
    std::filesystem::remove(raw);
}

Samples Mix(MixingEngine& engine, std::size_t frames, std::size_t block) {
    Samples samples(frames * kChannels);
    for (std::span<float> rest = samples; !rest.empty();) {
        const std::size_t count = std::min(rest.size(), block * kChannels);
        engine.Mix(rest.first(count));
        rest = rest.subspan(count);
    }
    return samples;
}

Samples MixWhole(MixingEngine& engine, Voice& voice) {
    voice.Start();
    Samples all;
    while (voice.IsPlaying()) {
        const Samples more = Mix(engine, 800);
        all.insert(all.end(), more.begin(), more.end());
    }
    const auto latency = static_cast<std::size_t>(engine.Latency().count);
    const Samples tail = Mix(engine, latency);
    all.insert(all.end(), tail.begin(), tail.end());
    all.erase(all.begin(), all.begin() + static_cast<std::ptrdiff_t>(latency * kChannels));
    all.resize(static_cast<std::size_t>(voice.Position().count) * kChannels);
    return all;
}

Samples DecodeWhole(const std::filesystem::path& file) {
    MixingEngine engine(Reading::Offline);
    const auto voice = engine.Open(file);
    return voice ? MixWhole(engine, *voice) : Samples{};
}

Samples Channel(std::span<const float> samples, int channel) {
    Samples one;
    for (std::size_t i = static_cast<std::size_t>(channel); i < samples.size(); i += kChannels)
        one.push_back(samples[i]);
    return one;
}

float Peak(std::span<const float> samples) {
    float peak = 0;
    for (const float sample : samples)
        peak = std::isfinite(sample) ? std::max(peak, std::fabs(sample)) : HUGE_VALF;
    return peak;
}

float LargestStep(std::span<const float> samples) {
    float largest = 0;
    for (std::size_t i = kChannels; i < samples.size(); ++i)
        largest = std::max(largest, std::fabs(samples[i] - samples[i - kChannels]));
    return largest;
}

Tone MeasureTone(std::span<const float> channel, double hertz) {
    // Least squares on the sine and the cosine, which whole or half periods make orthogonal closely enough.
    double sine = 0, cosine = 0, total = 0;
    for (std::size_t i = 0; i < channel.size(); ++i) {
        const double phase = 2 * std::numbers::pi * hertz * static_cast<double>(i) / kSampleRate;
        sine += channel[i] * std::sin(phase);
        cosine += channel[i] * std::cos(phase);
    }
    const double count = static_cast<double>(channel.size());
    sine *= 2 / count;
    cosine *= 2 / count;
    for (std::size_t i = 0; i < channel.size(); ++i) {
        const double phase = 2 * std::numbers::pi * hertz * static_cast<double>(i) / kSampleRate;
        const double rest = channel[i] - sine * std::sin(phase) - cosine * std::cos(phase);
        total += rest * rest;
    }
    const double amplitude = std::hypot(sine, cosine);
    return {amplitude, 10 * std::log10(amplitude * amplitude / 2 / std::max(total / count, 1e-20))};
}

}  // namespace sorakaze::sound::testing
