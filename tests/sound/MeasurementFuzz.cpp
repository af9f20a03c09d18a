// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// What a decoder that a file has taken over answers when it is asked to measure.
#include <cstdlib>

#include "sound/Measurement.h"

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size) {
    using namespace sorakaze::sound;
    const std::string_view packed(reinterpret_cast<const char*>(data), size);
    const auto measurement = UnpackMeasurement(packed);
    if (!measurement) return 0;
    const auto check = [](bool holds) {
        if (!holds) std::abort();
    };
    check(PackMeasurement(*measurement) == packed);
    check(measurement->length <= kLongestMeasurement && measurement->audible <= measurement->length);
    for (const auto& second : measurement->seconds)
        for (const float level : {second.loudness, second.part, second.peak, measurement->speechBand})
            check(level >= kSilentLoudness && level < 100);
    return 0;
}
