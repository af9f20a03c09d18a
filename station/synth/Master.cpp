// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "station/synth/Master.h"

#include <algorithm>
#include <cmath>
#include <memory>
#include <span>

#include "sound/Limiter.h"
#include "station/synth/Filters.h"

namespace sorakaze::station {
namespace {

constexpr double kBlockSeconds = 0.4;
constexpr double kStepSeconds = 0.1;
/// What is quieter (-66 dBFS) is no longer heard: the sound begins or is over.
constexpr float kInaudible = 0.0005F;
constexpr double kLastRamp = 0.08;

double MeanPower(const Stereo& sound, std::size_t from, std::size_t count) {
    double sum = 0;
    for (std::size_t i = from; i < from + count; ++i) {
        sum += double{sound.left[i]} * sound.left[i] + double{sound.right[i]} * sound.right[i];
    }
    return sum / static_cast<double>(count);
}

double Average(const std::vector<double>& powers, double gate) {
    double sum = 0, count = 0;
    for (const double power : powers) {
        if (power < gate) continue;
        sum += power;
        ++count;
    }
    return count > 0 ? sum / count : 0;
}

float Highest(const Stereo& sound) {
    float peak = 0;
    for (std::size_t i = 0; i < sound.Length(); ++i) {
        peak = std::max({peak, std::abs(sound.left[i]), std::abs(sound.right[i])});
    }
    return peak;
}

void Trim(Stereo& sound) {
    const float heard = kInaudible * Highest(sound);
    std::size_t begin = 0, end = sound.Length();
    const auto quiet = [&](std::size_t i) {
        return std::abs(sound.left[i]) < heard && std::abs(sound.right[i]) < heard;
    };
    while (begin < end && quiet(begin)) ++begin;
    while (end > begin && quiet(end - 1)) --end;
    for (Mono* channel : {&sound.left, &sound.right}) {
        channel->resize(end);
        channel->erase(channel->begin(), channel->begin() + static_cast<std::ptrdiff_t>(begin));
    }
    const std::size_t ramp = std::min(Samples(kLastRamp), sound.Length());
    for (std::size_t i = 0; i < ramp; ++i) {
        const auto factor = static_cast<float>(i) / static_cast<float>(ramp);
        sound.left[sound.Length() - 1 - i] *= factor;
        sound.right[sound.Length() - 1 - i] *= factor;
    }
}

/// Runs the sound at `gain` through the limiter, with `ceiling` scaled to the limiter's ceiling (full scale).
void Limit(Stereo& sound, double gain, double ceiling) {
    auto limiter = std::make_unique<sound::Limiter>();
    const auto in = static_cast<float>(gain / ceiling);
    const auto out = static_cast<float>(ceiling);
    std::vector<float> block;
    const std::size_t latency = sound::Limiter::kLatency;
    const std::size_t length = sound.Length();
    for (std::size_t at = 0; at < length + latency; at += sound::Limiter::kMaxBlock) {
        const std::size_t count = std::min<std::size_t>(sound::Limiter::kMaxBlock, length + latency - at);
        const std::span<float> input = limiter->Input(count);
        for (std::size_t i = 0; i < count && at + i < length; ++i) {
            input[2 * i] = sound.left[at + i] * in;
            input[2 * i + 1] = sound.right[at + i] * in;
        }
        block.resize(count * 2);
        limiter->Process(block);
        for (std::size_t i = 0; i < count; ++i) {
            if (at + i < latency) continue;
            sound.left[at + i - latency] = block[2 * i] * out;
            sound.right[at + i - latency] = block[2 * i + 1] * out;
        }
    }
}

double FromDecibels(double decibels) {
    return std::pow(10, decibels / 20);
}

}  // namespace

double Loudness(const Stereo& sound) {
    Stereo weighted = sound;
    Biquad::HighShelf(1500, 4).Run(weighted);
    Biquad::HighPass(38, 0.5).Run(weighted);
    const std::size_t block = std::min(Samples(kBlockSeconds), weighted.Length());
    if (block == 0) return -100;
    std::vector<double> powers;
    for (std::size_t at = 0; at + block <= weighted.Length(); at += Samples(kStepSeconds)) {
        powers.push_back(MeanPower(weighted, at, block));
    }
    const auto decibels = [](double power) { return -0.691 + 10 * std::log10(power + 1e-12); };
    const double absoluteGate = std::pow(10, (-70 + 0.691) / 10);
    const double relativeGate = Average(powers, absoluteGate) / 10;
    return decibels(Average(powers, std::max(absoluteGate, relativeGate)));
}

double PeakDecibels(const Stereo& sound) {
    return 20 * std::log10(Highest(sound) + 1e-9);
}

void Master(Stereo& sound, double loudness, double ceiling) {
    Biquad::HighPass(28).Run(sound);
    Trim(sound);
    // What the limiter takes is given back by a second and a third look.
    for (int pass = 0; pass < 3; ++pass) {
        Limit(sound, FromDecibels(loudness - Loudness(sound)), FromDecibels(ceiling));
    }
}

}  // namespace sorakaze::station
