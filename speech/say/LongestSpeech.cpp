// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "speech/say/LongestSpeech.h"

#include <algorithm>
#include <cstdlib>

namespace sorakaze::speech {
namespace {

constexpr std::size_t kMostBytes = 16'000;
constexpr double kFadeSeconds = 0.03;
constexpr double kLastSeconds = 3;
constexpr double kPauseSeconds = 0.06;
constexpr int kSilence = 200;

std::size_t Samples(double seconds, int sampleRate) {
    return static_cast<std::size_t>(seconds * sampleRate);
}

}  // namespace

std::string_view SpeakablePrefix(std::string_view text) {
    if (text.size() <= kMostBytes) return text;
    const std::string_view most = text.substr(0, kMostBytes);
    if (const auto blank = most.rfind(' '); blank != most.npos && blank > kMostBytes / 2)
        return most.substr(0, blank);
    std::size_t end = kMostBytes;
    while (end > 0 && (static_cast<unsigned char>(text[end]) & 0xC0U) == 0x80U) --end;
    return text.substr(0, end);
}

SpeechCutter::SpeechCutter(int sampleRate, Sink sink)
    : sink_(std::move(sink)),
      fade_(Samples(kFadeSeconds, sampleRate)),
      earliest_(Samples(kLongestSeconds - kLastSeconds, sampleRate)),
      latest_(Samples(kLongestSeconds - kFadeSeconds, sampleRate)),
      pause_(Samples(kPauseSeconds, sampleRate)) {}

/// How many of the samples are before the fade.
std::size_t SpeechCutter::WholeLength(std::span<const std::int16_t> samples, BlockStart start) {
    if (!fading_.empty() || (start == BlockStart::Word && written_ >= earliest_)) return 0;
    for (std::size_t i = 0; i < samples.size(); ++i) {
        quiet_ = std::abs(int{samples[i]}) < kSilence ? quiet_ + 1 : 0;
        const std::size_t at = written_ + i;
        if (at >= latest_ || (at >= earliest_ && quiet_ >= pause_)) return i;
    }
    return samples.size();
}

void SpeechCutter::Write(std::span<const std::int16_t> samples, BlockStart start) {
    const std::size_t whole = WholeLength(samples, start);
    if (whole > 0) sink_(samples.first(whole));
    written_ += whole;
    for (const std::int16_t sample : samples.subspan(whole)) {
        const double left = 1 - static_cast<double>(fading_.size() + 1) / static_cast<double>(fade_);
        fading_.push_back(static_cast<std::int16_t>(sample * left));
        if (fading_.size() < fade_) continue;
        sink_(fading_);
        throw SpeechCut();
    }
}

}  // namespace sorakaze::speech
