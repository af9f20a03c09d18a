// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// Spells names and titles of other scripts for a voice that can't read them: in Latin letters, the way an
// English voice says them best, or in katakana for a Japanese one. Not a standard romanisation. Arabic and
// Hebrew are written without most vowels and Thai without blanks: there the spelling is a guess.
#pragma once

#include <string>
#include <string_view>

#include "base/FunctionRef.h"

namespace sorakaze::scripts {

struct VoiceReading {
    std::string language = "en";  ///< of the voice, with or without a region
    bool isChinese = false;       ///< the text is: its Chinese characters are no kanji
};

/// The text with the words of other scripts spelt. Everything between them goes through `rest` in one piece:
/// what is Latin or Japanese, what the voice can read, signs, and scripts that nobody can spell. A comma
/// separates words that would run together. No spelling holds a character that means something to a shell.
/// Any bytes; linear. Throws std::runtime_error if ICU lacks its data.
std::string SpellOtherScripts(std::string_view text, const VoiceReading& voice,
                              FunctionRef<std::string(std::string_view)> rest);

/// The same with everything else as it is, and without commas.
std::string SpellOtherScripts(std::string_view text, const VoiceReading& voice);

}  // namespace sorakaze::scripts
