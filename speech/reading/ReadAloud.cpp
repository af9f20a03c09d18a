// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "speech/reading/ReadAloud.h"

#include "speech/reading/Languages.h"
#include "speech/reading/Rules.h"

namespace sorakaze::reading {

std::string ReadAloud(std::string_view text, std::string_view language) {
    const Main voice = MainOf(language);
    Sentence sentence(WithWebAddressesInWords(CleanMarks(text, voice), voice));
    // Numerals come before the abbreviations that need a number, whose marks tell "part i" from "i".
    ReadKeys(sentence, voice);
    ReadRomanNumerals(sentence, voice);
    ReadAbbreviations(sentence, voice);
    ReadNumbers(sentence, voice);
    ReadSigns(sentence, voice);
    ReadCapitals(sentence, voice);
    return sentence.Text();
}

}  // namespace sorakaze::reading
