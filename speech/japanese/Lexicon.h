// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// Words that the dictionary doesn't know or reads differently in prose than in music: names of artists above
// all, and words that are frequent in titles.
#pragma once

#include <functional>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace sorakaze::japanese {

enum class UseLexicon { Yes, No };

struct Entry {
    std::u32string_view surface;
    std::u32string_view reading;  ///< hiragana, blanks between words
};

/// All entries, sorted by their surfaces.
std::span<const Entry> LexiconEntries();

/// The given names that count after a family name only, sorted.
std::span<const Entry> GivenNames();

/// The longest of `entries` that `text` starts with and that `suits` accepts.
std::optional<Entry> LongestEntry(std::span<const Entry> entries, std::u32string_view text,
                                  const std::function<bool(const Entry&)>& suits);

/// What a word is next to.
struct Context {
    bool afterAttribute = false;  ///< a particle, an adjective or the like
    bool beforeParticle = false;  ///< or last
    bool afterDigits = false;     ///< likely: callers may pass the text after the digits alone (17歳の夏)
    bool alone = false;           ///< between particles or the sentence's ends
};

/// The reading in hiragana that a word has in titles; empty if the dictionary's `reading` (katakana) is
/// right.
std::u32string_view PreferredReading(std::u32string_view surface, std::u32string_view reading,
                                     const Context& context);

/// The commonest reading in hiragana of a kanji that is no word by itself; empty if none is known.
std::u32string_view KanjiReading(char32_t kanji);

}  // namespace sorakaze::japanese
