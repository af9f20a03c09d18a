// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "station/synth/Sound.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace sorakaze::station {

void Stereo::Resize(std::size_t length) {
    left.resize(length, 0.0F);
    right.resize(length, 0.0F);
}

void Stereo::Add(const Mono& sound, double seconds, double gain, Pan pan) {
    const std::size_t at = Samples(std::max(0.0, seconds));
    if (Length() < at + sound.size()) Resize(at + sound.size());
    const double angle = (std::clamp(pan.place, -1.0, 1.0) + 1) * std::numbers::pi / 4;
    const auto toLeft = static_cast<float>(gain * std::cos(angle));
    const auto toRight = static_cast<float>(gain * std::sin(angle));
    for (std::size_t i = 0; i < sound.size(); ++i) {
        left[at + i] += sound[i] * toLeft;
        right[at + i] += sound[i] * toRight;
    }
}

void Stereo::Add(const Stereo& sound, double seconds, double gain) {
    const std::size_t at = Samples(std::max(0.0, seconds));
    if (Length() < at + sound.Length()) Resize(at + sound.Length());
    const auto factor = static_cast<float>(gain);
    for (std::size_t i = 0; i < sound.Length(); ++i) {
        left[at + i] += sound.left[i] * factor;
        right[at + i] += sound.right[i] * factor;
    }
}

double Random::Next() {
    state_ += 0x9E3779B97F4A7C15ull;
    std::uint64_t mixed = state_;
    mixed = (mixed ^ (mixed >> 30)) * 0xBF58476D1CE4E5B9ull;
    mixed = (mixed ^ (mixed >> 27)) * 0x94D049BB133111EBull;
    mixed ^= mixed >> 31;
    return static_cast<double>(mixed >> 11) * 0x1p-53;
}

double Hertz(double note) {
    return 440 * std::exp2((note - 69) / 12);
}

std::size_t Samples(double seconds) {
    return static_cast<std::size_t>(std::lround(seconds * kRate));
}

}  // namespace sorakaze::station
