// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "speech/say/Leveller.h"

#include <ebur128.h>

#include <algorithm>
#include <cmath>
#include <memory>
#include <new>
#include <numbers>

namespace sorakaze::speech {
namespace {

/// Loudness that every voice gets, in LUFS as one channel.
constexpr double kTarget = -18;
/// What speech that is too short for a measurement of its loudness has, with a root mean square of 1 without
/// its pauses.
constexpr double kUsualLoudness = -1;
/// Highest peak: -1 dBFS.
constexpr float kCeiling = 0.8913F;
/// Quieter than this (-43 dBFS) counts as silence: the noise in recordings of real people is.
constexpr float kSilence = 0.00708F;
/// No voice is raised by more than this, which would be noise.
constexpr double kHighestGain = 16;

/// The gain is computed from this much of the start: a whole sentence or two, and a bound on memory.
constexpr double kMeasuredSeconds = 20;
constexpr double kMeasuringBlockSeconds = 0.03;
/// Blocks this far (-30 dB) below the loudest are pauses.
constexpr double kPauseRatio = 0.0316;

constexpr double kLeadSeconds = 0.06;
constexpr double kRunUpSeconds =
    0.03;  ///< of real sound before the first loud sample: soft consonants are there
/// With the lead of the next line 0.45 seconds: a little more than a full stop within a sentence.
constexpr double kTailSeconds = 0.4;
constexpr double kTailFadeSeconds = 0.04;
constexpr double kLongestPauseSeconds = 1.5;
constexpr double kSpeechlessSeconds = 0.1;

constexpr double kRumbleHertz = 65;
constexpr double kLookAheadSeconds = 0.005;
constexpr double kReleaseSeconds = 0.08;

constexpr std::size_t kBlock = 4096;

std::size_t Samples(double seconds, int sampleRate) {
    return static_cast<std::size_t>(seconds * sampleRate);
}

/// The root mean square of the blocks that aren't pauses; 0 for silence.
double LevelWithoutPauses(const std::vector<float>& samples, std::size_t block) {
    std::vector<double> powers;
    for (std::size_t at = 0; at < samples.size(); at += block) {
        const std::size_t end = std::min(at + block, samples.size());
        double sum = 0;
        for (std::size_t i = at; i < end; ++i) sum += double{samples[i]} * samples[i];
        powers.push_back(sum / static_cast<double>(end - at));
    }
    const double loudest = powers.empty() ? 0 : *std::max_element(powers.begin(), powers.end());
    double sum = 0;
    std::size_t spoken = 0;
    for (const double power : powers) {
        if (power <= 0 || power < loudest * kPauseRatio * kPauseRatio) continue;
        sum += power;
        ++spoken;
    }
    return spoken > 0 ? std::sqrt(sum / static_cast<double>(spoken)) : 0;
}

}  // namespace

Leveller::HighPass::HighPass(double sampleRate, double cutoff) {
    const double w = 2 * std::numbers::pi * cutoff / sampleRate;
    const double alpha = std::sin(w) / std::numbers::sqrt2;
    const double a0 = 1 + alpha;
    b0 = (1 + std::cos(w)) / 2 / a0;
    b1 = -2 * b0;
    b2 = b0;
    a1 = -2 * std::cos(w) / a0;
    a2 = (1 - alpha) / a0;
}

float Leveller::HighPass::Next(float sample) {
    const double out = b0 * sample + z1;
    z1 = b1 * sample - a1 * out + z2;
    z2 = b2 * sample - a2 * out;
    return static_cast<float>(out);
}

Leveller::Limiter::Limiter(int sampleRate)
    : length_(std::max(2, static_cast<int>(kLookAheadSeconds * sampleRate))),
      release_(static_cast<float>(1 - std::exp(-1 / (kReleaseSeconds * sampleRate)))),
      sum_(length_),
      samples_(static_cast<std::size_t>(length_), 0.0F),
      gains_(static_cast<std::size_t>(length_), 1.0F) {}

float Leveller::Limiter::LowestOfWindow(float gain) {
    while (!lowest_.empty() && lowest_.back().gain >= gain) lowest_.pop_back();
    lowest_.push_back({position_, gain});
    if (lowest_.front().position <= position_ - length_) lowest_.pop_front();
    return lowest_.front().gain;
}

// The average of the last length_ held gains is applied to the oldest sample of the window. Each of those
// gains is at most what that sample needs, so the average is too: the ceiling holds.
float Leveller::Limiter::Next(float sample) {
    const float level = std::abs(sample);
    const float needed = LowestOfWindow(level > kCeiling ? kCeiling / level : 1.0F);
    held_ = std::min(needed, held_ + (1 - held_) * release_);

    const auto slot = static_cast<std::size_t>(position_ % length_);
    sum_ += held_ - gains_[slot];
    gains_[slot] = held_;
    samples_[slot] = sample;
    ++position_;
    const float oldest = samples_[static_cast<std::size_t>(position_ % length_)];
    return std::clamp(oldest * static_cast<float>(sum_ / length_), -kCeiling, kCeiling);
}

Leveller::Leveller(int sampleRate, Sink sink, Settings settings)
    : sampleRate_(sampleRate),
      sink_(std::move(sink)),
      settings_(settings),
      highPass_(sampleRate, kRumbleHertz),
      limiter_(sampleRate),
      settling_(limiter_.Delay()) {
    block_.reserve(kBlock);
}

void Leveller::Write(std::span<const std::int16_t> raw) {
    for (const std::int16_t value : raw) {
        const float sample = highPass_.Next(static_cast<float>(value) / 32768);
        if (gainKnown_) {
            Level(sample);
            continue;
        }
        measured_.push_back(sample);
        if (measured_.size() >= Samples(kMeasuredSeconds, sampleRate_)) Measure();
    }
}

/// Of the measured start, in LUFS as one channel; minus infinity for silence.
double Leveller::Loudness() const {
    const std::unique_ptr<ebur128_state, void (*)(ebur128_state*)> meter(
        ebur128_init(1, static_cast<unsigned long>(sampleRate_), EBUR128_MODE_I),
        [](ebur128_state* state) { ebur128_destroy(&state); });
    if (!meter) throw std::bad_alloc();
    double loudness = 0;
    if (ebur128_add_frames_float(meter.get(), measured_.data(), measured_.size()) == EBUR128_SUCCESS &&
        ebur128_loudness_global(meter.get(), &loudness) == EBUR128_SUCCESS && std::isfinite(loudness))
        return loudness;
    return 20 * std::log10(LevelWithoutPauses(measured_, Samples(kMeasuringBlockSeconds, sampleRate_))) +
           kUsualLoudness;
}

void Leveller::Measure() {
    const double loudness = Loudness();
    if (std::isfinite(loudness)) {
        const double raised = std::pow(10, (kTarget - loudness + settings_.gain) / 20);
        gain_ = static_cast<float>(std::min(raised, kHighestGain));
    }
    gainKnown_ = true;
    for (const float sample : measured_) Level(sample);
    measured_ = {};
}

void Leveller::Level(float sample) {
    const float limited = limiter_.Next(sample * gain_);
    if (settling_ > 0) {
        --settling_;
        return;
    }
    Trim(limited);
}

void Leveller::Trim(float sample) {
    if (std::abs(sample) < kSilence) {
        silence_.push_back(sample);
        const double longest = sounding_ ? kLongestPauseSeconds : kRunUpSeconds;
        if (silence_.size() > Samples(longest, sampleRate_)) silence_.pop_front();
        return;
    }
    if (!sounding_) {
        sounding_ = true;
        for (std::size_t i = silence_.size(); i < Samples(kLeadSeconds, sampleRate_); ++i) Emit(0);
        for (std::size_t i = 0; i < silence_.size(); ++i) {
            silence_[i] *= static_cast<float>(i + 1) / static_cast<float>(silence_.size());
        }
    }
    for (const float quiet : silence_) Emit(quiet);
    silence_.clear();
    Emit(sample);
}

void Leveller::Emit(float sample) {
    block_.push_back(static_cast<std::int16_t>(std::lrint(sample * 32767)));
    if (block_.size() >= kBlock) Flush();
}

void Leveller::Flush() {
    if (!block_.empty()) sink_(block_);
    block_.clear();
}

void Leveller::Finish() {
    if (!gainKnown_) Measure();
    for (int i = 0; i < limiter_.Delay(); ++i) Level(0);
    if (!sounding_) {
        for (std::size_t i = 0; i < Samples(kSpeechlessSeconds, sampleRate_); ++i) Emit(0);
    } else {
        const auto fade = static_cast<float>(Samples(kTailFadeSeconds, sampleRate_));
        for (std::size_t i = 0; i < Samples(kTailSeconds + settings_.pause, sampleRate_); ++i) {
            const float left = std::max(0.0F, 1 - static_cast<float>(i) / fade);
            Emit(i < silence_.size() ? silence_[i] * left : 0);
        }
    }
    Flush();
}

}  // namespace sorakaze::speech
