// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace sorakaze::speech {

/// Words a minute of a voice without a rate of its own.
inline constexpr int kUsualRate = 168;

/// The engine's settings for a person.
struct VoiceLook {
    std::string voice;    ///< the engine's voice file, such as "gmw/en-US"
    std::string variant;  ///< the engine's variant of it; empty for its plain voice
    int pitch;            ///< 0 to 100, 50 is the variant's own
    int range;            ///< of the melody, 0 (one tone) to 100
    int rate;             ///< words a minute
};

/// A name for comparing: ASCII in lower case, Latin letters without their accents, the rest as it is.
std::string FoldName(std::string_view name);

/// The language code of an engine's voice file, in lower case: "en-us" of "gmw/en-US".
std::string LanguageOfVoice(std::string_view voice);

/// The person of that first name (folded); nothing if the table has none.
std::optional<VoiceLook> FindFirstName(std::string_view folded);

/// All of them, folded.
std::vector<std::string_view> FirstNames();

}  // namespace sorakaze::speech
