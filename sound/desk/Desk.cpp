// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "sound/desk/Desk.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "sound/MixingThread.h"

namespace sorakaze::sound {
namespace {

/// The speech is to be so much stronger than the bed, in the band of speech.
constexpr double kRatio = 12;
constexpr double kDeepest = 15;
/// A bed below this isn't heard, in dBFS.
constexpr double kSilentBed = -66;
/// The bed's power is that of so many steps.
constexpr int kBedWindow = StepsFromSeconds(0.5);
/// Within speech, what is weaker than the whole by so much is a pause.
constexpr double kPause = 25;
/// Of speech that was not measured: its power in the band, against its loudness.
constexpr double kUsualBand = -4.5;
constexpr double kLongestPreparation = 1.5;  // seconds

double Power(double decibels) {
    return std::pow(10.0, decibels / 10);
}
double Decibels(double power) {
    return 10 * std::log10(std::max(power, 1e-20));
}

}  // namespace

void Desk::ExpectSpeech(Frames now) {
    expectedUntil_.store((now + FramesFromSeconds(kLongestPreparation)).count);
}

std::vector<double> Desk::TakeDucks() {
    AssertNotMixingThread();
    std::vector<double> taken;
    std::uint32_t next = taken_.load(std::memory_order_relaxed);
    const std::uint32_t end = written_.load(std::memory_order_acquire);
    for (; next != end; ++next) taken.push_back(depths_[next % depths_.size()]);
    taken_.store(next, std::memory_order_release);
    return taken;
}

void Desk::Note(double depth) {
    const std::uint32_t next = written_.load(std::memory_order_relaxed);
    if (next - taken_.load(std::memory_order_acquire) == depths_.size()) return;  // nobody takes them
    depths_[next % depths_.size()] = depth;
    written_.store(next + 1, std::memory_order_release);
}

void Desk::Step(VoiceCore* first, Frames now) {
    AssertMixingThread();
    const Speech speech = SpeechOf(first);
    if (!speech.isThere && ducker_.IsIdle()) {
        hadBed_ = false;
        return;
    }
    Ducker::View view{.stepsToWord = speech.stepsToWord};
    view.isSpeechExpected = now.count < expectedUntil_.load(std::memory_order_relaxed);
    if (speech.isThere) {
        const double bed = PowerOfBed(first);
        const bool hasBed = bed > Power(kSilentBed);
        if (hasBed) view.need = std::clamp(kRatio - Decibels(speech.power / bed), 0.0, kDeepest);
        view.isBedNew = hasBed && !hadBed_ && !speech.arrived;
        hadBed_ = hasBed;
    }
    if (speech.arrived) {
        expectedUntil_.store(-1, std::memory_order_relaxed);
        view.isBedThere = HasBed(first);
        const int lead = Ducker::LeadIn(view);
        for (VoiceCore* voice = speech.arrived; voice; voice = voice->next) {
            if (voice->GetBus() == Bus::Speech && voice->IsAwaitingDesk())
                voice->LeadIn({std::int64_t{lead} * kDeskStep});
        }
        if (view.stepsToWord != Ducker::kNever) view.stepsToWord += lead;
    }
    const auto factor = static_cast<float>(std::sqrt(Power(-ducker_.Step(view))));
    if (view.isBedNew) duck_.Jump(factor);
    duck_.MoveTo(factor, kDeskStep);
    if (const auto depth = ducker_.TakeChange()) Note(*depth);
}

bool Desk::HasBed(const VoiceCore* first) {
    for (const VoiceCore* voice = first; voice; voice = voice->next)
        if (voice->GetBus() != Bus::Speech && voice->IsHeard()) return true;
    return false;
}

Desk::Speech Desk::SpeechOf(VoiceCore* first) {
    Speech speech;
    for (VoiceCore* voice = first; voice; voice = voice->next) {
        if (voice->GetBus() == Bus::Speech && voice->IsHeard()) AddSpeech(*voice, speech);
    }
    if (isOutsideSpeech_.load(std::memory_order_relaxed)) {
        const double power = Power(target_ + kUsualBand);
        speech.power = speech.isThere ? std::min(speech.power, power) : power;
        speech.isThere = true;
        speech.stepsToWord = 0;
    }
    return speech;
}

void Desk::AddSpeech(VoiceCore& voice, Speech& speech) {
    voice.ApplyCommands();
    const double gain = static_cast<double>(voice.FactorNow());
    const bool isFadedOut = gain * gain < Power(kSilentBed);
    if (isFadedOut && !voice.IsAwaitingDesk()) return;
    if (voice.IsAwaitingDesk() && !speech.arrived) speech.arrived = &voice;
    const VoiceLevel& level = voice.LevelInMix();
    const double band = level.speechBand.value_or(target_ + kUsualBand - level.plan.gainDb);
    const double power = Power(band) * gain * gain;
    speech.power = speech.isThere ? std::min(speech.power, power) : power;
    speech.isThere = true;

    const Lookahead& ahead = voice.Ahead(mode_);
    int step = StepsToWord(ahead, band);
    if (step == Ducker::kNever) return;
    if (!voice.IsAwaitingDesk()) step += static_cast<int>(voice.Lead().count / kDeskStep);
    speech.stepsToWord = std::min(speech.stepsToWord, step);
}

int Desk::StepsToWord(const Lookahead& ahead, double band) {
    const auto word = static_cast<float>(Power(band - kPause));
    int step = 0;
    while (step < ahead.Steps() && ahead.Power(step) < word) ++step;
    return step < ahead.Steps() ? step : Ducker::kNever;
}

double Desk::SpeechBandOf(const Measurement& measured, double target) {
    return measured.seconds.empty() ? target + kUsualBand : double{measured.speechBand};
}

/// The power of the strongest half second of what lies ahead, in the band of speech.
double Desk::PowerOfBed(VoiceCore* first) const {
    std::array<double, Lookahead::kSteps> powers{};
    int steps = 0;
    for (VoiceCore* voice = first; voice; voice = voice->next) {
        if (voice->GetBus() == Bus::Speech || !voice->IsHeard()) continue;
        voice->ApplyCommands();
        const double gain = static_cast<double>(voice->FactorNow());
        const Lookahead& ahead = voice->Ahead(mode_);
        const int known = std::min(ahead.Steps(), Lookahead::kSteps);
        steps = std::max(steps, known);
        for (int step = 0; step < known; ++step)
            powers[static_cast<std::size_t>(step)] += static_cast<double>(ahead.Power(step)) * gain * gain;
    }
    const int window = std::min(steps, kBedWindow);
    double sum = 0, most = 0;
    for (int step = 0; step < steps; ++step) {
        sum += powers[static_cast<std::size_t>(step)];
        if (step >= window) sum -= powers[static_cast<std::size_t>(step - window)];
        if (step >= window - 1) most = std::max(most, sum / window);
    }
    return most;
}

void Desk::Lower(std::span<float> bed) {
    const std::size_t frames = bed.size() / kChannels;
    if (duck_.IsMoving()) {
        for (std::size_t i = 0; i < frames; ++i) {
            const float factor = duck_.At(static_cast<std::uint32_t>(i + 1));
            bed[2 * i] *= factor;
            bed[2 * i + 1] *= factor;
        }
        duck_.Pass(frames);
    } else if (duck_.Target() != 1.0f) {
        for (float& sample : bed) sample *= duck_.Target();
    }
}

}  // namespace sorakaze::sound
