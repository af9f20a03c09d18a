// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// What the dictionary doesn't know or reads as prose and not as music: names of artists above all, and words
// that titles love.
#pragma once

#include <functional>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace sorakaze::kotoeri {

/// Whether the words that are known beside the dictionary count.
enum class Lexicon { Used, Unused };

struct Entry {
    std::u32string_view surface;
    std::u32string_view reading;  ///< hiragana, blanks between words
};

/// All of them, sorted by their surfaces.
std::span<const Entry> Entries();

/// The longest entry that `text` begins with and that suits.
std::optional<Entry> EntryAtBeginning(std::u32string_view text,
                                      const std::function<bool(const Entry&)>& suits);

/// Where a word stands.
struct Places {
    bool behindAttribute = false;  ///< a particle, an adjective or the like
    bool beforeParticle = false;   ///< or last
    bool behindDigits = false;     ///< likely, though a sentence's digits may never come here: 17歳の夏
};

/// What a word is read as in titles where the dictionary reads it otherwise (in katakana); empty where the
/// dictionary's reading will do.
std::u32string_view BetterReading(std::u32string_view surface, std::u32string_view reading,
                                  const Places& places);

/// The commonest reading in hiragana of a kanji that is no word by itself; empty where none is known.
std::u32string_view KanjiReading(char32_t kanji);

}  // namespace sorakaze::kotoeri
