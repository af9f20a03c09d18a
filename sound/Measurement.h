// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// What is known of a sound file's loudness after it was decoded once: the result of the measuring job of
// sorakaze-decoder. Kept in memory only.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "sound/Frames.h"

namespace sorakaze::sound {

/// Loudness below which there is nothing to measure: silence, by the gate of ITU-R BS.1770.
inline constexpr float kSilentLoudness = -70.0f;

struct Measurement {
    /// A second of the sound. Values are finite and at least kSilentLoudness, in LUFS and in dBFS.
    struct Second {
        float loudness;  ///< of this second alone, not gated
        float part;      ///< integrated (gated) from the sound's beginning to the end of this second
        float peak;      ///< the largest sample from the sound's beginning to the end of this second

        bool operator==(const Second&) const = default;
    };

    /// From the first frame that is played: the silence at the file's head doesn't count. The last one may
    /// be shorter than a second. Empty for a sound of silence.
    std::vector<Second> seconds;
    Frames length;                       ///< frames measured
    bool isWhole = false;                ///< the sound ended there; otherwise the measuring was limited
    Frames audible;                      ///< frames up to the last one above kSilentSample
    float speechBand = kSilentLoudness;  ///< power in 300 to 3400 Hz of its louder stretches, in dBFS (see
                                         ///< SpeechBand)

    bool operator==(const Measurement&) const = default;
};

/// Nothing longer is measured: the result of a measuring job has to fit into one packet.
inline constexpr Frames kLongestMeasurement{std::int64_t{kSampleRate} * 60 * 60 * 2};

/// The form in which a decoder's process sends it: its own layout, between processes of one machine.
std::string PackMeasurement(const Measurement& measurement);
/// Out of foreign bytes: empty where a value or a length can't come from a sound. Pure.
std::optional<Measurement> UnpackMeasurement(std::string_view packed);

/// A frame with no sample above this is silence (-60 dBFS).
inline constexpr float kSilentSample = 0.001f;

}  // namespace sorakaze::sound
