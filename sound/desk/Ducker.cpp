// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "sound/desk/Ducker.h"

#include <algorithm>
#include <cmath>

namespace sorakaze::sound {
namespace {

/// The bed goes down no faster than this, in dB a step.
constexpr double kSteepest = 15.0 / Ducker::kAttack;
/// A smaller difference isn't worth telling.
constexpr double kSlight = 0.5;

}  // namespace

int Ducker::LeadIn(const View& view) {
    return view.isBedThere ? std::max(kAttack - view.stepsToWord, 0) : 0;
}

double Ducker::Step(const View& view) {
    sinceWord_ = view.stepsToWord == 0 ? 0 : std::min(sinceWord_ + 1, kLongestPause);
    const bool isNear = view.stepsToWord <= kAttack;
    const bool isPause = view.stepsToWord != kNever && sinceWord_ + view.stepsToWord < kLongestPause;
    const bool isHeld = target_ > 0 && (sinceWord_ <= kHold || isPause || view.isSpeechExpected);
    const double before = target_;
    if (isNear || isHeld) {
        // Within words a bed that grows a little louder stays where it is.
        if (target_ == 0 || view.need > target_ + kSlight * 2) target_ = std::max(target_, view.need);
        if (view.isBedNew) depth_ = std::max(depth_, target_);
    } else {
        target_ = 0;
    }
    if (target_ == 0 && before > 0) releaseRate_ = depth_ / kRelease;
    Approach(view.stepsToWord);
    return depth_;
}

void Ducker::Approach(int stepsToWord) {
    if (depth_ > target_) {
        depth_ = std::max(target_, depth_ - releaseRate_);
    } else if (depth_ < target_) {
        const double rest = target_ - depth_;
        const bool isBeforeWord = stepsToWord > 0 && stepsToWord <= kAttack;
        depth_ += std::min(isBeforeWord ? rest / stepsToWord : rest, kSteepest);
    }
}

std::optional<double> Ducker::TakeChange() {
    const bool isTold = target_ == 0 ? told_ == 0 : std::fabs(target_ - told_) < kSlight;
    if (isTold) return std::nullopt;
    told_ = target_;
    return told_;
}

}  // namespace sorakaze::sound
