// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// Turns a Japanese text, with kanji, numbers and foreign names, into what is to be pronounced.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "speech/japanese/Reader.h"

namespace sorakaze::speech {

/// A chunk without a pause, in one language.
struct SpokenPart {
    enum class Language { Japanese, Latin };
    Language language = Language::Japanese;
    std::string text;  ///< katakana with blanks between phrases; Latin as in the text
};

struct SpokenClause {
    enum class End { Name, Comma, Sentence, Question };
    std::vector<SpokenPart> parts;
    End end = End::Sentence;
};

/// Full-width letters and digits become ASCII, everything else as japanese::CleanText has it. Any bytes;
/// linear.
std::string OrdinaryForms(std::string_view text);

/// What is said of a text that SpokenText and OrdinaryForms returned. Words of other scripts are in katakana,
/// as far as somebody can spell them. What has no sound is left out.
std::vector<SpokenClause> SpokenClauses(const japanese::Reader& reader, std::string_view text);

}  // namespace sorakaze::speech
