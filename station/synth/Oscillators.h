// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <algorithm>
#include <cmath>

#include "station/synth/Sound.h"

namespace sorakaze::station {

/// A value that falls by the factor e every `seconds`, asked for sample by sample.
class Decay {
  public:
    explicit Decay(double seconds) : factor_(std::exp(-1 / (seconds * kRate))) {}
    double Next() { return level_ *= factor_; }

  private:
    double factor_, level_ = 1;
};

/// Room for a note of `seconds` and its release.
inline Mono Silence(double seconds, double release) {
    return Mono(Samples(seconds + release), 0.0F);
}

/// A short rise at the beginning and, from `held` seconds on, a smooth fall to nothing at the end of the
/// sound: no note clicks.
inline void Shape(Mono& sound, double attack, double held) {
    const std::size_t rise = std::min(Samples(attack), sound.size());
    for (std::size_t i = 0; i < rise; ++i) {
        const double x = static_cast<double>(i) / static_cast<double>(rise);
        sound[i] *= static_cast<float>(x * x * (3 - 2 * x));
    }
    const std::size_t from = std::min(Samples(held), sound.size());
    for (std::size_t i = from; i < sound.size(); ++i) {
        const double x = static_cast<double>(sound.size() - i) / static_cast<double>(sound.size() - from);
        sound[i] *= static_cast<float>(x * x * (3 - 2 * x));
    }
}

/// A phase in turns that moves on by a pitch.
class Phase {
  public:
    explicit Phase(double start = 0) : turns_(start) {}
    double Next(double hertz) {
        turns_ += hertz / kRate;
        if (turns_ >= 1) turns_ -= 1;
        return turns_;
    }

  private:
    double turns_;
};

/// The rounding of a jump at the turn of a phase: keeps saws and rectangles from aliasing.
inline double RoundedJump(double turns, double step) {
    if (turns < step) {
        const double x = turns / step;
        return x + x - x * x - 1;
    }
    if (turns > 1 - step) {
        const double x = (turns - 1) / step;
        return x * x + x + x + 1;
    }
    return 0;
}

inline double Saw(double turns, double step) {
    return 2 * turns - 1 - RoundedJump(turns, step);
}

inline double Rectangle(double turns, double step, double duty) {
    const double other = turns < duty ? turns - duty + 1 : turns - duty;
    return (turns < duty ? 1 : -1) + RoundedJump(turns, step) - RoundedJump(other, step) - (2 * duty - 1);
}

}  // namespace sorakaze::station
