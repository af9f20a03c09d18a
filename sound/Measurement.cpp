// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "sound/Measurement.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace sorakaze::sound {
namespace {

/// What the packet begins with; the seconds follow.
struct Head {
    std::int64_t length;
    std::int64_t audible;
    std::uint32_t isWhole;  ///< 0 or 1
    float speechBand;
};

/// Two sides of the largest sane samples at the frequencies that weigh most, in LUFS and more than that in
/// dBFS.
constexpr float kLoudest = 45.0f;

bool IsLevel(float value) {
    return value >= kSilentLoudness && value <= kLoudest;  // false for what is no number
}

bool AreLevels(const std::vector<Measurement::Second>& seconds) {
    float peak = kSilentLoudness;
    return std::all_of(seconds.begin(), seconds.end(), [&](const Measurement::Second& second) {
        const float before = std::exchange(peak, second.peak);
        return IsLevel(second.loudness) && IsLevel(second.part) && IsLevel(second.peak) &&
               second.peak >= before;
    });
}

bool IsConsistent(const Head& head, std::size_t seconds) {
    if (head.length < 0 || head.length > kLongestMeasurement.count || head.audible < 0 ||
        head.audible > head.length || head.isWhole > 1 || !IsLevel(head.speechBand))
        return false;
    const std::int64_t due = head.audible == 0 ? 0 : (head.length + kSampleRate - 1) / kSampleRate;
    return static_cast<std::int64_t>(seconds) == due;
}

}  // namespace

std::string PackMeasurement(const Measurement& measurement) {
    const Head head{measurement.length.count, measurement.audible.count, measurement.isWhole ? 1u : 0u,
                    measurement.speechBand};
    const std::size_t size = measurement.seconds.size() * sizeof(Measurement::Second);
    std::string packed(sizeof head + size, '\0');
    std::memcpy(packed.data(), &head, sizeof head);
    if (size > 0) std::memcpy(packed.data() + sizeof head, measurement.seconds.data(), size);
    return packed;
}

std::optional<Measurement> UnpackMeasurement(std::string_view packed) {
    Head head{};
    if (packed.size() < sizeof head) return std::nullopt;
    packed.copy(reinterpret_cast<char*>(&head), sizeof head);
    packed.remove_prefix(sizeof head);
    const std::size_t count = packed.size() / sizeof(Measurement::Second);
    if (packed.size() % sizeof(Measurement::Second) != 0 || !IsConsistent(head, count)) return std::nullopt;
    Measurement measurement{std::vector<Measurement::Second>(count),
                            {head.length},
                            head.isWhole == 1,
                            {head.audible},
                            head.speechBand};
    if (count > 0) std::memcpy(measurement.seconds.data(), packed.data(), packed.size());
    return AreLevels(measurement.seconds) ? std::optional(std::move(measurement)) : std::nullopt;
}

}  // namespace sorakaze::sound
