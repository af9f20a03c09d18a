// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "speech/say/voices/Recorder.h"

#include <algorithm>
#include <cstdlib>
#include <stdexcept>

namespace sorakaze::speech {
namespace {

/// Below this a raw sample counts as silence.
constexpr int kSilence = 60;
constexpr int kLowestRate = 8'000;
constexpr int kHighestRate = 192'000;

}  // namespace

void Recorder::Write(int sampleRate, std::span<const std::int16_t> samples, BlockStart start) {
    if (!leveller_) {
        if (sampleRate < kLowestRate || sampleRate > kHighestRate)
            throw std::runtime_error("the voice has a sample rate of " + std::to_string(sampleRate));
        sampleRate_ = sampleRate;
        sound_.emplace(file_, sampleRate);
        leveller_.emplace(
            sampleRate, [this](std::span<const std::int16_t> levelled) { sound_->Write(levelled); },
            settings_);
        cutter_.emplace(sampleRate, [this](std::span<const std::int16_t> whole) { leveller_->Write(whole); });
    }
    if (sampleRate != sampleRate_) throw std::runtime_error("the voice changes its sample rate");
    hasSound_ =
        hasSound_ || std::ranges::any_of(samples, [](int value) { return std::abs(value) >= kSilence; });
    cutter_->Write(samples, start);
}

void Recorder::Finish() {
    leveller_->Finish();
    sound_->Finish();
}

void Recorder::Reset() {
    cutter_.reset();
    leveller_.reset();
    sound_.reset();
    hasSound_ = false;
}

}  // namespace sorakaze::speech
