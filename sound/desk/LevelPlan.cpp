// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "sound/desk/LevelPlan.h"

#include <algorithm>
#include <cmath>
#include <span>

namespace sorakaze::sound {
namespace {

using Seconds = std::span<const Measurement::Second>;

// All in dB, dBFS, LU or LUFS.

constexpr double kMostGain = 12, kLeastGain = -40;
/// Peaks may be raised to so much above the ceiling of -1, which the output takes back: 2 dB its limiter, the
/// rest its slow gain. With less room, music of high peaks stays several dB behind the rest of the show.
constexpr double kRaisedPeak = -1 + 2 + 3;
constexpr double kMostGainFromTags = 6;
constexpr double kQuietestTagged = -60, kLoudestTagged = 0;

constexpr double kMostLift = 6;
/// A smaller one isn't worth a change of level.
constexpr double kLeastLift = 1;
/// The body is where seconds are no further below the sound's loudness.
constexpr double kBodyBelow = 3;
/// Nothing in the beginning is lifted beyond the sound's loudness by more, or its peaks beyond the ceiling.
constexpr double kLiftedAbove = 2, kLiftedPeak = -1;
/// A beginning is over after so many seconds, even if it is quiet for longer.
constexpr std::size_t kLongestBeginning = 60;

/// What stays so far below the sound's loudness until its end is nothing: at the target of -16, under -50.
constexpr double kNothingBelow = 35;
/// A sound that falls to nothing has faded where it is so far below; applause is 10 to 20 below.
constexpr double kFadedBelow = 25;
/// Whoever fades falls by so much in each second. Quiet music doesn't.
constexpr double kLeastFall = 1;
/// A sound that is gone sooner has its own end.
constexpr std::size_t kLeastFalling = 3;  // seconds
constexpr Frames kFallingFade{kSampleRate}, kNothingFade{kSampleRate / 2};
/// Played after the last audible frame, faded.
constexpr Frames kAfterAudible{kSampleRate / 5};

Frames ToFrames(double seconds) {
    return {std::llround(seconds * kSampleRate)};
}

/// The seconds of the part that will be played: one at least.
Seconds SecondsOf(const Measurement& measurement, Frames part) {
    const std::int64_t count = std::clamp<std::int64_t>((part.count + kSampleRate - 1) / kSampleRate, 1,
                                                        std::ssize(measurement.seconds));
    return Seconds(measurement.seconds).first(static_cast<std::size_t>(count));
}

double GainFor(Seconds part, double target) {
    const double gain = std::clamp(target - double{part.back().part}, kLeastGain, kMostGain);
    const double room = std::max(0.0, kRaisedPeak - double{part.back().peak});
    return std::min(gain, room);
}

/// The first second of the body, in which and in two of the three after which the sound is as loud as it is
/// on the whole: a single beat isn't the body. The number of seconds where there is none.
std::size_t BodyStart(Seconds part) {
    const double least = double{part.back().part} - kBodyBelow;
    const auto isLoud = [&](const Measurement::Second& second) { return double{second.loudness} >= least; };
    for (std::size_t i = 0; i < part.size(); ++i) {
        const auto next = part.subspan(i + 1, std::min<std::size_t>(3, part.size() - i - 1));
        if (isLoud(part[i]) && std::count_if(next.begin(), next.end(), isLoud) >= 2) return i;
    }
    return part.size();
}

double MeanLoudness(Seconds seconds) {
    double power = 0;
    for (const auto& second : seconds) power += std::pow(10, double{second.loudness} / 10);
    return 10 * std::log10(power / static_cast<double>(seconds.size()));
}

/// How much a beginning can be lifted when that is given back at 1 dB a second before it is over.
double LiftOf(Seconds beginning, double loudness, double gain) {
    const auto length = static_cast<double>(beginning.size());
    double lift = std::min({kMostLift, loudness - MeanLoudness(beginning), length});
    for (std::size_t i = 0; i < beginning.size(); ++i) {
        const double room = std::min(loudness + kLiftedAbove - double{beginning[i].loudness},
                                     kLiftedPeak - gain - double{beginning[i].peak});
        // So late in the beginning that no more is left of any lift, less room will do.
        if (length - static_cast<double>(i) > room) lift = std::min(lift, room);
    }
    return lift;
}

void PlanLift(LevelPlan& plan, Seconds part) {
    const std::size_t body = BodyStart(part);
    // The body may begin within the second before its first whole one.
    if (body <= 1 || body == part.size()) return;
    const std::size_t length = std::min(body - 1, kLongestBeginning);
    const double lift = LiftOf(part.first(length), double{part.back().part}, plan.gainDb);
    if (lift < kLeastLift) return;
    plan.liftDb = lift;
    plan.liftHold = ToFrames(static_cast<double>(length) - lift);
}

/// Ends the sound there, if that is sooner than what is planned.
void EndAt(LevelPlan& plan, Frames length, Frames begin, Frames fade) {
    if (begin + fade >= plan.end.value_or(length)) return;
    plan.end = begin + fade;
    plan.endFade = fade;
}

void PlanEnd(LevelPlan& plan, const Measurement& measurement, double partLoudness) {
    const Seconds all = measurement.seconds;
    const double loudness = std::min(partLoudness, double{all.back().part});
    const auto level = [&](std::size_t second) { return double{all[second].loudness}; };
    // The seconds at the end in which there is nothing, and before them those in which the sound falls.
    std::size_t nothing = all.size();
    while (nothing > 0 && level(nothing - 1) < loudness - kNothingBelow) --nothing;
    std::size_t falling = nothing;
    while (nothing < all.size() && falling > 0 && level(falling - 1) < loudness - kFadedBelow &&
           level(falling - 1) >= level(falling) + kLeastFall)
        --falling;
    const Frames length = measurement.length;
    EndAt(plan, length, measurement.audible, kAfterAudible);
    EndAt(plan, length, ToFrames(static_cast<double>(nothing)), kNothingFade);
    if (nothing - falling >= kLeastFalling)
        EndAt(plan, length, ToFrames(static_cast<double>(falling)), kFallingFade);
}

/// How much louder the part is with the lift than without. Seconds far below the rest don't count in either.
double LoudnessOfLift(const LevelPlan& plan, Seconds part) {
    constexpr double kGate = 10;
    struct Mean {
        double power = 0, count = 0;
        double Decibels() const { return 10 * std::log10(power / std::max(count, 1.0)); }
    } without, with;
    const double least = double{part.back().part} - kGate;
    const auto add = [&](Mean& mean, double loudness) {
        if (loudness < least) return;
        mean.power += std::pow(10, loudness / 10);
        mean.count += 1;
    };
    for (std::size_t i = 0; i < part.size(); ++i) {
        const double since = static_cast<double>(i) + 0.5 - plan.liftHold.Seconds();
        add(without, double{part[i].loudness});
        add(with, double{part[i].loudness} + std::clamp(plan.liftDb - since, 0.0, plan.liftDb));
    }
    return without.count > 0 ? with.Decibels() - without.Decibels() : 0;
}

}  // namespace

LevelPlan PlanLevel(const Measurement& measurement, Frames part, double target, Bus bus) {
    LevelPlan plan;
    if (measurement.seconds.empty()) return plan;
    const Seconds seconds = SecondsOf(measurement, part);
    if (seconds.back().part <= kSilentLoudness) return plan;
    plan.gainDb = GainFor(seconds, target);
    if (bus != Bus::Music) return plan;
    PlanLift(plan, seconds);
    if (plan.liftDb > 0) plan.gainDb = GainFor(seconds, target - LoudnessOfLift(plan, seconds));
    if (measurement.isWhole) PlanEnd(plan, measurement, double{seconds.back().part});
    return plan;
}

double LoudnessOfPart(const Measurement& measurement, Frames part) {
    return double{SecondsOf(measurement, part).back().part};
}

double GainFromTags(double loudness, double target) {
    if (!(loudness >= kQuietestTagged && loudness <= kLoudestTagged)) return 0;
    return std::clamp(target - loudness, kLeastGain, kMostGainFromTags);
}

}  // namespace sorakaze::sound
