// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// Reads Japanese text aloud on paper: kanji, katakana and all the rest as hiragana, commas between words.
#pragma once

#include <string>
#include <string_view>

#include "speech/kotoeri/Dictionary.h"
#include "speech/kotoeri/Lexicon.h"

namespace sorakaze::kotoeri {

class Reader {
  public:
    /// Throws NoDictionary. The folder is the dictionary's; without one it is looked for.
    explicit Reader(const std::filesystem::path& folder = {}, Lexicon lexicon = Lexicon::Used);

    /// The reading of any bytes. Readings, not pronunciations: the particle は stays は. What has no reading
    /// stays as it is: Latin letters, digits, other scripts, emoji, stray bytes. A middle dot or a wide blank
    /// between words becomes their comma. A word's final っ, which nothing follows that it could double, is
    /// left out. Time and memory are linear in the text.
    std::string Read(std::string_view text) const;

  private:
    std::vector<std::u32string> ReadSentence(std::u32string_view sentence) const;

    Dictionary dictionary_;
    Lexicon lexicon_;
};

/// What can be read where there is no dictionary: kana become hiragana, all the rest stays.
std::string ReadWithoutDictionary(std::string_view text);

}  // namespace sorakaze::kotoeri
