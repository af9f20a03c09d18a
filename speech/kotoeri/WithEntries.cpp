// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "speech/kotoeri/WithEntries.h"

#include <algorithm>
#include <utility>

#include "speech/kotoeri/Characters.h"
#include "speech/kotoeri/Grammar.h"
#include "speech/kotoeri/Lexicon.h"
#include "speech/kotoeri/Numbers.h"

namespace sorakaze::kotoeri {
namespace {

/// Where one may stand, as far as the pieces around it tell; null at the sentence's ends.
bool Suits(const Entry& entry, const Morpheme* before, const Morpheme* after) {
    // Beside a kanji that may belong to it a name is another's: 遠藤実 in 遠藤実鈴.
    if (before && IsKanji(entry.surface.front()) && IsUnknownKanji(*before)) return false;
    if (after && IsKanji(entry.surface.back()) && after->surface.size() == 1 &&
        (IsUnknownKanji(*after) || IsGivenName(after->grammar)))
        return false;
    // 四百八百万, 八百万円
    if (before && IsKanjiNumber(*before) && IsNumber(entry.surface.substr(0, 1))) return false;
    return !after || !IsNumber(entry.surface) || !(IsKanjiNumber(*after) || IsCounter(after->grammar));
}

/// What the dictionary takes for the end of another word: 遠藤実は, where it sees 実は.
bool IsOneParticle(std::u32string_view text) {
    return text.size() == 1 &&
           std::u32string_view(U"はとのをにがもへでや").find(text) != std::u32string_view::npos;
}

}  // namespace

std::vector<Morpheme> WithEntries(std::vector<Morpheme> morphemes) {
    std::u32string sentence;
    std::vector<std::size_t> begins;  // of each piece, in characters, and the sentence's end
    for (const Morpheme& morpheme : morphemes) {
        begins.push_back(sentence.size());
        sentence += morpheme.surface;
    }
    begins.push_back(sentence.size());

    std::vector<Morpheme> result;
    for (std::size_t at = 0; at < morphemes.size();) {
        const auto pieceBehind = [&](const Entry& entry) {
            const auto end =
                std::lower_bound(begins.begin(), begins.end(), begins[at] + entry.surface.size());
            return static_cast<std::size_t>(end - begins.begin());
        };
        const auto leftOf = [&](const Entry& entry) {
            const std::size_t end = begins[at] + entry.surface.size();
            return std::u32string_view(sentence).substr(end, begins[pieceBehind(entry)] - end);
        };
        const auto suits = [&](const Entry& entry) {
            const std::size_t next = pieceBehind(entry);
            return (leftOf(entry).empty() || IsOneParticle(leftOf(entry))) &&
                   Suits(entry, at > 0 ? &morphemes[at - 1] : nullptr,
                         next < morphemes.size() ? &morphemes[next] : nullptr);
        };
        const auto entry = EntryAtBeginning(std::u32string_view(sentence).substr(begins[at]), suits);
        if (!entry) {
            result.push_back(morphemes[at++]);  // a copy: the next piece looks back at it
            continue;
        }
        result.push_back({std::u32string(entry->surface),
                          std::u32string(entry->reading),
                          {U"名詞", U"固有名詞", {}, {}, {}, {}},
                          true});
        const std::u32string left(leftOf(*entry));
        if (!left.empty()) result.push_back({left, left, {U"助詞", {}, {}, {}, {}, {}}, false});
        at = pieceBehind(*entry);
    }
    return result;
}

}  // namespace sorakaze::kotoeri
