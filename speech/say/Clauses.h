// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <optional>
#include <string_view>
#include <vector>

#include "speech/say/JapaneseText.h"

namespace sorakaze::speech {

/// The pause that a mark makes; nothing for a character that is no mark.
std::optional<SpokenClause::End> PauseOf(char32_t mark);

/// The katakana of a sign that is read as a word, as & is; empty for others.
std::u32string_view WordOf(char32_t sign);

/// Builds a text's clauses from the first to the last.
class ClauseBuilder {
  public:
    /// Whether words follow a blank or belong to the phrase before them.
    enum class Phrase { New, Same };

    void AddJapanese(std::u32string_view katakana, Phrase phrase);
    void AddLatin(std::u32string_view words);
    void AddPause(SpokenClause::End end);
    std::vector<SpokenClause> Finish();

  private:
    SpokenPart& Part(SpokenPart::Language language);

    SpokenClause open_;
    std::vector<SpokenClause> clauses_;
};

}  // namespace sorakaze::speech
