// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "sound/encoding/Int16Converter.h"

#include <algorithm>

#include "sound/Frames.h"
#include "sound/SampleConversion.h"

namespace sorakaze::sound {

Int16Converter::Int16Converter(Dither dither) : dither_(dither) {
    // Any numbers but 0 will do: they put the generators far apart on one long cycle.
    std::uint32_t seed = 0x9e3779b9;
    for (std::uint32_t& random : random_) random = seed = seed * 1664525 + 1013904223;
}

void Int16Converter::Convert(std::span<const float> interleaved, std::int16_t* to) {
    if (dither_ == Dither::None) return ToInt16(interleaved.data(), to, interleaved.size());
    while (!interleaved.empty()) {
        if (used_ == kNoise) MakeNoise();
        const std::size_t count = std::min(kNoise - used_, interleaved.size());
        const float* const from = interleaved.data();
        const float* const noise = &noise_[used_];
        for (std::size_t i = 0; i < count; i += kChannels) {
            // Silence stays silence.
            const float sounds = from[i] != 0.0f || from[i + 1] != 0.0f ? 1.0f : 0.0f;
            to[i] = ToInt16(from[i], noise[i] * sounds);
            to[i + 1] = ToInt16(from[i + 1], noise[i + 1] * sounds);
        }
        used_ += count;
        to += count;
        interleaved = interleaved.subspan(count);
    }
}

/// The sum of two even distributions, one a step wide each: a triangle. Xorshift generators side by side, of
/// which every compiler makes vectors.
void Int16Converter::MakeNoise() {
    float* const noise = noise_.data();
    std::uint32_t random[kLanes];
    std::ranges::copy(random_, random);
    for (std::size_t i = 0; i < kNoise; i += kLanes) {
        for (std::size_t lane = 0; lane < kLanes; ++lane) {
            std::uint32_t next = random[lane];
            next ^= next << 13;
            next ^= next >> 17;
            next ^= next << 5;
            random[lane] = next;
            const auto sum = static_cast<std::int32_t>((next & 0xffff) + (next >> 16)) - 0xffff;
            noise[i + lane] = static_cast<float>(sum) / 65536;
        }
    }
    std::ranges::copy(random, random_.begin());
    used_ = 0;
}

}  // namespace sorakaze::sound
