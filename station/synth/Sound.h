// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// The demo station's synthesiser works on whole sounds in memory: mono notes are mixed into a stereo sound,
// effects turn a stereo sound into another. All at 48 kHz. The same calls give the same samples, always.
#pragma once

#include <cstdint>
#include <vector>

namespace sorakaze::station {

inline constexpr double kRate = 48000;

using Mono = std::vector<float>;

/// The position of a sound between the loudspeakers: -1 left, 0 in the middle, 1 right.
struct Pan {
    double place = 0;
};

struct Stereo {
    Mono left, right;

    std::size_t Length() const { return left.size(); }
    double Seconds() const { return static_cast<double>(Length()) / kRate; }
    void Resize(std::size_t length);

    /// Mixes `sound` in at `seconds`, growing as needed. Equal power between the loudspeakers.
    void Add(const Mono& sound, double seconds, double gain = 1, Pan pan = {});
    void Add(const Stereo& sound, double seconds, double gain = 1);
};

/// A deterministic sequence of numbers (splitmix64).
class Random {
  public:
    explicit Random(std::uint64_t seed) : state_(seed) {}
    /// From 0 up to 1.
    double Next();
    /// From -1 up to 1.
    double Signed() { return 2 * Next() - 1; }

  private:
    std::uint64_t state_;
};

/// The sine of a phase in whole turns, to about 1e-6: several times as fast as std::sin.
inline double Sine(double turns) {
    double x = turns - static_cast<double>(static_cast<std::int64_t>(turns));
    if (x < 0) x += 1;
    // Folded to -1/4..1/4, where the sine is one odd curve.
    x = x < 0.25 ? x : (x < 0.75 ? 0.5 - x : x - 1);
    const double y = x * x;
    return x *
           (6.283185307 + y * (-41.341702 + y * (81.605249 + y * (-76.704282 + y * (42.058 - y * 14.4)))));
}

/// The pitch of a MIDI note number (69 is 440 Hz).
double Hertz(double note);

std::size_t Samples(double seconds);

}  // namespace sorakaze::station
