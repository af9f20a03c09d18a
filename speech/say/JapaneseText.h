// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// Makes of a Japanese text, with kanji, numbers and foreign names in it, what is to be pronounced.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "speech/say/Morphemes.h"

namespace sorakaze::speech {

/// A stretch without a pause, in one language.
struct SpokenPart {
    enum class Language { Japanese, Latin };
    Language language = Language::Japanese;
    std::string text;  ///< katakana with a blank between phrases; or as it stood
};

struct SpokenClause {
    enum class End { Name, Comma, Sentence, Question };
    std::vector<SpokenPart> parts;
    End end = End::Sentence;
};

/// Full-width letters and digits as ASCII, half-width kana as ordinary ones. Any bytes; linear.
std::string OrdinaryWidths(std::string_view text);

/// `text` is valid UTF-8 in ordinary widths, and `morphemes` are those of it. What has no sound is left out.
std::vector<SpokenClause> FindClauses(const std::string& text, const std::vector<Morpheme>& morphemes);

}  // namespace sorakaze::speech
