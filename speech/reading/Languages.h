// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string_view>

#include "speech/reading/Tokens.h"

namespace sorakaze::reading {

enum class Main { English, German, Japanese, French, Spanish, Italian, Other };

/// What is said for abbreviations and signs. All are empty for Main::Other: nothing is replaced then.
struct Words {
    std::string_view andWord, plus, number, opus, part, volume, featuring, versus, with, at, dot, slash,
        hashtag, equals, half, quarter, threeQuarters;
};

/// "en" of "en-us" decides.
Main MainOf(std::string_view language);

const Words& WordsOf(Main main);

/// The language that a token is read in: Latin words in a Japanese text are read as English ones, and what
/// stands between them too.
Main LanguageAt(const Sentence& sentence, std::size_t index, Main voice);

}  // namespace sorakaze::reading
