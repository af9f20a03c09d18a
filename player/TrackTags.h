// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// What a sound file's tags say, and its way from the decoder's process that reads them.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "player/TrackText.h"

namespace sorakaze::player {

struct TrackTags {
    TrackText text;
    /// Of the decoded sound, in LUFS from -60 to 0, where a gain tag tells it.
    std::optional<float> loudness;

    bool operator==(const TrackTags&) const = default;

    /// The text's record, followed by a tab and the loudness where that is known.
    std::string Answer() const;
};

/// The tags out of such an answer: foreign bytes. Pure.
TrackTags TagsFromAnswer(std::string_view answer);

/// The loudness that a gain tag implies: of a file whose tag says -6 dB it is 6 dB above the tag's reference.
/// Empty for what is no gain, and where no music is so loud or so quiet. Pure.
///
/// REPLAYGAIN_TRACK_GAIN: "-6.20 dB", for -18 LUFS.
std::optional<float> LoudnessFromReplayGain(std::string_view gain);
/// R128_TRACK_GAIN: "-1587", 256ths of a decibel, for -23 LUFS. The gain in an Opus file's header is not part
/// of it: the decoder has applied that.
std::optional<float> LoudnessFromR128Gain(std::string_view gain);

}  // namespace sorakaze::player
