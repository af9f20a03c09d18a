// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "station/synth/Filters.h"

#include <cmath>
#include <numbers>

namespace sorakaze::station {
namespace {

struct Angle {
    double cosine, alpha;
};

Angle AngleOf(double hertz, double q) {
    const double w = 2 * std::numbers::pi * std::min(hertz, kRate * 0.49) / kRate;
    return {std::cos(w), std::sin(w) / (2 * q)};
}

}  // namespace

void OnePole::SetCutoff(double hertz) {
    factor_ = static_cast<float>(1 - std::exp(-2 * std::numbers::pi * hertz / kRate));
}

Biquad::Biquad(double b0, double b1, double b2, double a0, double a1, double a2)
    : b0_(b0 / a0), b1_(b1 / a0), b2_(b2 / a0), a1_(a1 / a0), a2_(a2 / a0) {}

Biquad Biquad::LowPass(double hertz, double q) {
    const auto [c, alpha] = AngleOf(hertz, q);
    return {(1 - c) / 2, 1 - c, (1 - c) / 2, 1 + alpha, -2 * c, 1 - alpha};
}

Biquad Biquad::HighPass(double hertz, double q) {
    const auto [c, alpha] = AngleOf(hertz, q);
    return {(1 + c) / 2, -(1 + c), (1 + c) / 2, 1 + alpha, -2 * c, 1 - alpha};
}

Biquad Biquad::BandPass(double hertz, double q) {
    const auto [c, alpha] = AngleOf(hertz, q);
    return {alpha, 0, -alpha, 1 + alpha, -2 * c, 1 - alpha};
}

Biquad Biquad::Peak(double hertz, double q, double decibels) {
    const auto [c, alpha] = AngleOf(hertz, q);
    const double a = std::pow(10, decibels / 40);
    return {1 + alpha * a, -2 * c, 1 - alpha * a, 1 + alpha / a, -2 * c, 1 - alpha / a};
}

Biquad Biquad::HighShelf(double hertz, double decibels) {
    const double a = std::pow(10, decibels / 40);
    const auto [c, alpha] = AngleOf(hertz, 0.7071);
    const double r = 2 * std::sqrt(a) * alpha;
    return {a * ((a + 1) + (a - 1) * c + r), -2 * a * ((a - 1) + (a + 1) * c),
            a * ((a + 1) + (a - 1) * c - r), (a + 1) - (a - 1) * c + r,
            2 * ((a - 1) - (a + 1) * c),     (a + 1) - (a - 1) * c - r};
}

float Biquad::Next(float sample) {
    const double out = b0_ * sample + z1_;
    z1_ = b1_ * sample - a1_ * out + z2_;
    z2_ = b2_ * sample - a2_ * out;
    return static_cast<float>(out);
}

void Biquad::Run(Mono& sound) {
    for (float& sample : sound) sample = Next(sample);
}

void Biquad::Run(Stereo& sound) const {
    for (Mono* channel : {&sound.left, &sound.right}) {
        Biquad own = *this;
        own.Run(*channel);
    }
}

}  // namespace sorakaze::station
