// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <compare>
#include <cstdint>

namespace sorakaze::sound {

/// The rate and the channel layout of all sound inside the system: 48 kHz, stereo, interleaved float.
inline constexpr int kSampleRate = 48000;
inline constexpr int kChannels = 2;

/// A length or a position in sample frames at kSampleRate (one frame holds kChannels samples).
struct Frames {
    std::int64_t count = 0;

    constexpr auto operator<=>(const Frames&) const = default;
    constexpr double Seconds() const { return static_cast<double>(count) / kSampleRate; }
};

constexpr Frames operator+(Frames a, Frames b) {
    return {a.count + b.count};
}
constexpr Frames operator-(Frames a, Frames b) {
    return {a.count - b.count};
}
constexpr Frames FramesFromSeconds(double seconds) {
    return {static_cast<std::int64_t>(seconds * kSampleRate + 0.5)};
}

}  // namespace sorakaze::sound
