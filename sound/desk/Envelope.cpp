// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "sound/desk/Envelope.h"

#include <limits>

namespace sorakaze::sound {
namespace {

/// A lift is given back in straight pieces of so many frames, each a hundredth of a decibel.
constexpr std::uint32_t kPiece = kSampleRate / 100;
constexpr double kDecibelsPerPiece = 1.0 * kPiece / kSampleRate;

float Factor(double decibels) {
    return static_cast<float>(std::pow(10.0, decibels / 20));
}

}  // namespace

void Envelope::Begin(const LevelPlan& plan) {
    gainDb_ = plan.gainDb;
    liftDb_ = plan.liftDb;
    hold_ = static_cast<std::size_t>(std::max<std::int64_t>(plan.liftHold.count, 0));
    lift_.Jump(Factor(gainDb_ + liftDb_));
    if (hold_ == 0) LowerLift();
}

std::size_t Envelope::Remaining() const {
    std::size_t frames = std::numeric_limits<std::size_t>::max();
    if (lift_.IsMoving()) frames = lift_.Remaining();
    if (!lift_.IsMoving() && liftDb_ > 0) frames = hold_;
    if (fade_.IsMoving()) frames = std::min(frames, fade_.Remaining());
    if (endFade_.IsMoving()) frames = std::min(frames, endFade_.Remaining());
    return frames;
}

void Envelope::Pass(std::size_t frames) {
    fade_.Pass(frames);
    endFade_.Pass(frames);
    lift_.Pass(frames);
    hold_ -= std::min(hold_, frames);
    if (hold_ == 0 && !lift_.IsMoving()) LowerLift();
}

void Envelope::LowerLift() {
    if (liftDb_ <= 0) return;
    liftDb_ = std::max(0.0, liftDb_ - kDecibelsPerPiece);
    lift_.MoveTo(Factor(gainDb_ + liftDb_), kPiece);
}

}  // namespace sorakaze::sound
