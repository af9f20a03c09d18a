// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>
#include <string_view>

#include "base/FunctionRef.h"

namespace sorakaze::kotoeri {

/// What is known of a text beside the text.
struct Surroundings {
    std::string language = "en";  ///< of the voice that will say it
    std::string record;           ///< the track's names, separated by tabs; empty if unknown
};

/// The text as that voice can read it. `read` gives the reading of Japanese and returns everything else as it
/// is. Ornamental letters become plain ones; words of other scripts become Latin, or katakana for a Japanese
/// voice; Chinese characters become pinyin without tones where text or record show that they aren't kanji.
/// What the voice reads itself stays. Any bytes; linear. Throws what `read` throws, and std::runtime_error if
/// ICU lacks its data.
std::string ReadingForVoice(std::string_view text, const Surroundings& surroundings,
                            FunctionRef<std::string(std::string_view)> read);

}  // namespace sorakaze::kotoeri
