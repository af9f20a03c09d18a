// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// Replaces names in a text by the spellings that voices say right. `say` applies it to all that it speaks,
// the player to names that a shell would read as something else.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "speech/pronunciation/PronunciationFile.h"

namespace sorakaze::speech {

class Pronunciations {
  public:
    enum class Which { All, WithShellCharacters };

    /// The files that come first are preferred, then entries for the voice's language, then the later line.
    /// Without a language, entries for all languages are preferred to those for one.
    Pronunciations(const std::vector<PronunciationFile>& files, std::string_view language,
                   Which which = Which::All);

    bool IsEmpty() const { return names_.empty(); }

    /// Goes over the text once: at each word the longest name is replaced, and what has replaced it stays.
    /// Letter case and hyphens don't count. Any bytes; linear in the text and the length of names.
    std::string Apply(std::string_view text) const;

  private:
    struct Name {
        std::u32string characters;
        std::string spelling;
        std::size_t rank;  ///< of entries for the same name the lowest counts
        bool startsAnywhere, endsAnywhere;
    };
    const Name* Longest(const struct SpelledText& text, std::size_t at) const;

    std::vector<Name> names_;  ///< sorted, each once
};

}  // namespace sorakaze::speech
