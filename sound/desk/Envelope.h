// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// What the desk does to one voice, as a factor for each frame: its level, the lift of a quiet beginning, and
// fades that sound even. Depends on the count of frames only, never on how they are cut into blocks. Used by
// the mixing thread alone.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>

#include "sound/Ramp.h"
#include "sound/desk/LevelPlan.h"

namespace sorakaze::sound {

/// A fade to silence, even in decibels: -6 dB in each quarter of its time, and in the last seventh into
/// silence without a corner. A curve that falls faster would leave a second of nothing at its end.
class EvenFade {
  public:
    void Begin(std::uint32_t frames) { left_.MoveTo(0.0f, frames); }
    bool IsMoving() const { return left_.IsMoving(); }
    std::size_t Remaining() const { return left_.Remaining(); }
    float At(std::uint32_t frames) const { return Curve(left_.At(frames)); }
    float Now() const { return Curve(left_.Now()); }
    void Pass(std::size_t frames) { left_.Pass(frames); }

  private:
    static float Curve(float left) {
        constexpr float kOctaves = 3.9863f;  // of amplitude: 24 dB
        constexpr float kClosing = 0.15f;
        const float close = std::clamp(left / kClosing, 0.0f, 1.0f);
        return std::exp2(kOctaves * (left - 1.0f)) * close * close * (3.0f - 2.0f * close);
    }
    Ramp left_{1.0f};
};

class Envelope {
  public:
    /// Before the first frame. Without this the factor is 1.
    void Begin(const LevelPlan& plan);
    void FadeOut(std::uint32_t frames) { fade_.Begin(frames); }
    /// The fade before an early end, beside the other.
    void FadeToEnd(std::uint32_t frames) { endFade_.Begin(frames); }

    bool IsMoving() const { return lift_.IsMoving() || fade_.IsMoving() || endFade_.IsMoving(); }
    /// The most frames that At may be asked for and that Pass may be given at once; the largest number where
    /// nothing will change.
    std::size_t Remaining() const;
    float At(std::uint32_t frames) const {
        return (lift_.IsMoving() ? lift_.At(frames) : lift_.Target()) * FadeAt(fade_, frames) *
               FadeAt(endFade_, frames);
    }
    float Now() const { return lift_.Now() * fade_.Now() * endFade_.Now(); }
    void Pass(std::size_t frames);

  private:
    static float FadeAt(const EvenFade& fade, std::uint32_t frames) {
        return fade.IsMoving() ? fade.At(frames) : fade.Now();
    }
    void LowerLift();

    double gainDb_ = 0;
    double liftDb_ = 0;
    std::size_t hold_ = 0;  ///< frames until the lift is given back
    Ramp lift_{1.0f};       ///< gain and lift together
    EvenFade fade_;
    EvenFade endFade_;
};

}  // namespace sorakaze::sound
