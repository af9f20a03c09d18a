// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "sound/Limiter.h"

#include <algorithm>
#include <cmath>

namespace sorakaze::sound {
namespace {

/// Written with lanes, so that compilers without licence to reorder floats vectorise it.
float Peak(std::span<const float> samples) {
    constexpr std::size_t kLanes = 16;
    std::array<float, kLanes> peaks{};
    std::size_t i = 0;
    for (; i + kLanes <= samples.size(); i += kLanes) {
        for (std::size_t lane = 0; lane < kLanes; ++lane) {
            const float size = std::fabs(samples[i + lane]);
            peaks[lane] = peaks[lane] < size ? size : peaks[lane];
        }
    }
    for (; i < samples.size(); ++i) peaks[0] = std::max(peaks[0], std::fabs(samples[i]));
    return *std::max_element(peaks.begin(), peaks.end());
}

}  // namespace

std::span<float> Limiter::Input(std::size_t frames) {
    const auto input = std::span(samples_).subspan(kLatency * kChannels, frames * kChannels);
    std::fill(input.begin(), input.end(), 0.0f);
    return input;
}

void Limiter::Process(std::span<float> out) {
    const int frames = static_cast<int>(out.size() / kChannels);
    const float peak = Peak(std::span(samples_).subspan(kLatency * kChannels, out.size()));
    silentFrames_ = peak > 0.0f ? 0 : std::min(kLatency, silentFrames_ + frames);
    if (gain_.IsAtRest() && peak <= kCeiling)
        std::copy_n(samples_.begin(), out.size(), out.begin());
    else
        Limit(out);
    std::copy_n(samples_.begin() + static_cast<std::ptrdiff_t>(out.size()), kLatency * kChannels,
                samples_.begin());
}

void Limiter::Limit(std::span<float> out) {
    const std::size_t frames = out.size() / kChannels;
    const float* const ahead = samples_.data() + kLatency * kChannels;
    for (std::size_t i = 0; i < frames; ++i)
        peaks_[i] = std::max(std::fabs(ahead[i * kChannels]), std::fabs(ahead[i * kChannels + 1]));
    gain_.Follow(std::span(peaks_).first(frames), std::span(gains_).first(frames));
    // The gain meets the ceiling up to float rounding, and full scale lies further off than that; the clamp
    // is for the day when someone moves the ceiling.
    for (std::size_t i = 0; i < out.size(); ++i)
        out[i] = std::clamp(samples_[i] * gains_[i / kChannels], -1.0f, 1.0f);
}

}  // namespace sorakaze::sound
