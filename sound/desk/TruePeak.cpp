// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "sound/desk/TruePeak.h"

#include <algorithm>
#include <cassert>
#include <cmath>
#include <numbers>

namespace sorakaze::sound {
namespace {

constexpr std::size_t kTaps = kTruePeakBefore + 1 + kTruePeakAfter;
/// Frames that are calculated at once, or not at all.
constexpr std::size_t kStretch = 16;
constexpr std::size_t kStretchSamples = kStretch * kChannels;

/// Sinc with a Kaiser window: flat enough up to 20 kHz, short enough for the mixing thread. The taps of the
/// value in the middle of two frames are symmetric. Those of the values at a quarter and at three quarters
/// mirror each other: they are the sum and the difference of an even and an odd half.
struct Oversampling {
    float middle[kTaps / 2], even[kTaps / 2], odd[kTaps / 2];
    /// How far above the samples a value between them can be at most.
    float mostGain = 1;

    Oversampling() {
        double sum = 0;
        for (std::size_t tap = 0; tap < kTaps / 2; ++tap) {
            const double from = static_cast<double>(tap) - (kTruePeakBefore - 1);
            const double left = Tap(from - 0.25), right = Tap(from - 0.75);
            middle[tap] = static_cast<float>(Tap(from - 0.5));
            even[tap] = static_cast<float>((left + right) / 2);
            odd[tap] = static_cast<float>((left - right) / 2);
            sum += 2 * std::fabs(Tap(from - 0.5));
        }
        mostGain = static_cast<float>(sum * 1.0001);
    }

    /// `distance` frames from the value.
    static double Tap(double distance) {
        constexpr double kBeta = 5, kHalf = static_cast<double>(kTaps) / 2;
        const double angle = std::numbers::pi * distance;
        const double side = distance / kHalf;
        return std::sin(angle) / angle * Bessel(kBeta * std::sqrt(1 - side * side)) / Bessel(kBeta);
    }

    /// The modified Bessel function of the first kind, order 0.
    static double Bessel(double x) {
        double sum = 1, term = 1;
        for (int k = 1; k < 30; ++k) {
            term *= x / 2 / k;
            sum += term * term;
        }
        return sum;
    }
};
const Oversampling kOversampling;

// What follows is written with lanes, so that compilers without licence to reorder floats vectorise it.

float Larger(float a, float b) {
    return a < b ? b : a;
}

float LargestSample(const float* from, std::size_t count) {
    constexpr std::size_t kLanes = 8;
    std::array<float, kLanes> largest{};
    std::size_t i = 0;
    for (; i + kLanes <= count; i += kLanes) {
        for (std::size_t lane = 0; lane < kLanes; ++lane) {
            const float size = std::fabs(from[i + lane]);
            largest[lane] = largest[lane] < size ? size : largest[lane];
        }
    }
    for (; i < count; ++i) largest[0] = std::max(largest[0], std::fabs(from[i]));
    return *std::max_element(largest.begin(), largest.end());
}

/// Of kStretch frames; `from` is the first of those before them.
void FindInStretch(const float* from, float* peaks) {
    std::array<float, kStretchSamples> largest;
    float* const to = largest.data();
    for (std::size_t i = 0; i < kStretchSamples; ++i) {
        const float* const left = from + i;
        const float* const right = left + (kTaps - 1) * kChannels;
        float middle = 0, even = 0, odd = 0;
        for (std::size_t tap = 0; tap < kTaps / 2; ++tap) {
            const float sum = left[tap * kChannels] + right[-static_cast<std::ptrdiff_t>(tap * kChannels)];
            const float difference =
                left[tap * kChannels] - right[-static_cast<std::ptrdiff_t>(tap * kChannels)];
            middle += kOversampling.middle[tap] * sum;
            even += kOversampling.even[tap] * sum;
            odd += kOversampling.odd[tap] * difference;
        }
        // The larger of |even + odd| and |even - odd| is the sum of their sizes.
        const float quarter = std::fabs(even) + std::fabs(odd);
        to[i] = Larger(std::fabs(left[kTruePeakBefore * kChannels]), Larger(std::fabs(middle), quarter));
    }
    for (std::size_t i = 0; i < kStretch; ++i) peaks[i] = Larger(to[i * kChannels], to[i * kChannels + 1]);
}

/// The same of fewer frames.
void FindInRest(const float* from, std::size_t frames, float* peaks) {
    std::array<float, kStretchSamples + (kTaps - 1) * kChannels> padded{};
    std::array<float, kStretch> found;
    std::copy_n(from, (frames + kTaps - 1) * kChannels, padded.begin());
    FindInStretch(padded.data(), found.data());
    std::copy_n(found.begin(), frames, peaks);
}

}  // namespace

float FindTruePeaks(std::span<const float> around, float floor, std::span<float> peaks) {
    assert(peaks.size() <= kTruePeakBlock && around.size() == (peaks.size() + kTaps - 1) * kChannels);
    // One more than there are stretches: the frames of one lie within two of these.
    std::array<float, kTruePeakBlock / kStretch + 2> samples{};
    std::size_t parts = 0;
    for (std::size_t i = 0; i < around.size(); i += kStretchSamples)
        samples[parts++] = LargestSample(&around[i], std::min(kStretchSamples, around.size() - i));

    std::ranges::fill(peaks, 0.0f);
    const float audible = floor / kOversampling.mostGain;
    float largest = 0;
    for (std::size_t i = 0; i < peaks.size(); i += kStretch) {
        const std::size_t part = i / kStretch;
        if (std::max(samples[part], samples[part + 1]) <= audible) continue;
        const std::size_t frames = std::min(kStretch, peaks.size() - i);
        if (frames == kStretch)
            FindInStretch(&around[i * kChannels], &peaks[i]);
        else
            FindInRest(&around[i * kChannels], frames, &peaks[i]);
        largest = std::max(largest, *std::max_element(&peaks[i], &peaks[i] + frames));
    }
    return largest;
}

void TruePeak::Add(std::span<const float> interleaved) {
    constexpr std::size_t kAroundSamples = kAround * kChannels;
    // The frames that need some of those before, then the others where they are.
    const auto head = interleaved.first(std::min(interleaved.size(), kAroundSamples));
    std::ranges::copy(head, &joint_[kAroundSamples]);
    Measure(std::span(joint_).first(kAroundSamples + head.size()));
    for (auto rest = interleaved; rest.size() > kAroundSamples;) {
        const auto part = rest.first(std::min(rest.size(), (kAround + kTruePeakBlock) * kChannels));
        Measure(part);
        rest = rest.subspan(part.size() - kAroundSamples);
    }
    if (interleaved.size() < kAroundSamples)
        std::copy_n(&joint_[head.size()], kAroundSamples, joint_.begin());
    else
        std::ranges::copy(interleaved.last(kAroundSamples), joint_.begin());
}

/// What is already found is the floor: most of a sound is far enough below it.
void TruePeak::Measure(std::span<const float> around) {
    const auto peaks = std::span(peaks_).first(around.size() / kChannels - kAround);
    peak_ = std::max(peak_, FindTruePeaks(around, peak_, peaks));
}

/// As if silence followed.
float TruePeak::Peak() const {
    TruePeak whole = *this;
    whole.Add(std::array<float, kTruePeakAfter * kChannels>{});
    return whole.peak_;
}

}  // namespace sorakaze::sound
