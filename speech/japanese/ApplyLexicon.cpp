// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "speech/japanese/ApplyLexicon.h"

#include <algorithm>
#include <utility>

#include "speech/japanese/Characters.h"
#include "speech/japanese/Counters.h"
#include "speech/japanese/Grammar.h"
#include "speech/japanese/Lexicon.h"
#include "speech/japanese/Numbers.h"

namespace sorakaze::japanese {
namespace {

/// Whether an entry fits between the morphemes around it, which are null at the sentence's ends.
bool Suits(const Entry& entry, const Morpheme* before, const Morpheme* after) {
    // Next to a kanji that may belong to it, a name is somebody else's: 遠藤実 in 遠藤実鈴.
    if (before && IsKanji(entry.surface.front()) && IsUnknownKanji(*before)) return false;
    if (after && IsKanji(entry.surface.back()) && after->surface.size() == 1 &&
        (IsUnknownKanji(*after) || IsGivenName(after->grammar)))
        return false;
    // The dictionary knows counters where the number is there.
    if (before && !CounterReading(entry.surface).empty()) return false;
    // 四百八百万, 八百万円
    if (before && IsKanjiNumber(*before) && IsKanjiNumerals(entry.surface.substr(0, 1))) return false;
    return !after || !IsKanjiNumerals(entry.surface) || !(IsKanjiNumber(*after) || IsCounter(after->grammar));
}

/// True for what the dictionary may take for the end of another word: 遠藤実は, where it sees 実は.
bool IsOneParticle(std::u32string_view text) {
    return text.size() == 1 &&
           std::u32string_view(U"はとのをにがもへでや").find(text) != std::u32string_view::npos;
}

}  // namespace

std::vector<Morpheme> ApplyLexicon(std::vector<Morpheme> morphemes) {
    std::u32string sentence;
    std::vector<std::size_t> begins;  // of each morpheme, in characters, and the sentence's end
    for (const Morpheme& morpheme : morphemes) {
        begins.push_back(sentence.size());
        sentence += morpheme.surface;
    }
    begins.push_back(sentence.size());

    std::vector<Morpheme> result;
    for (std::size_t at = 0; at < morphemes.size();) {
        const auto morphemeAfter = [&](const Entry& entry) {
            const auto end =
                std::lower_bound(begins.begin(), begins.end(), begins[at] + entry.surface.size());
            return static_cast<std::size_t>(end - begins.begin());
        };
        const auto restAfter = [&](const Entry& entry) {
            const std::size_t end = begins[at] + entry.surface.size();
            return std::u32string_view(sentence).substr(end, begins[morphemeAfter(entry)] - end);
        };
        const auto suits = [&](const Entry& entry) {
            const std::size_t next = morphemeAfter(entry);
            return (restAfter(entry).empty() || IsOneParticle(restAfter(entry))) &&
                   Suits(entry, at > 0 ? &morphemes[at - 1] : nullptr,
                         next < morphemes.size() ? &morphemes[next] : nullptr);
        };
        const auto entry = LongestEntry(std::u32string_view(sentence).substr(begins[at]), suits);
        if (!entry) {
            result.push_back(morphemes[at++]);  // a copy: the next morpheme is compared with it
            continue;
        }
        result.push_back({std::u32string(entry->surface),
                          std::u32string(entry->reading),
                          {},
                          {U"名詞", U"固有名詞", {}, {}, {}, {}},
                          true});
        const std::u32string rest(restAfter(*entry));
        if (!rest.empty()) result.push_back({rest, rest, {}, {U"助詞", {}, {}, {}, {}, {}}, false});
        at = morphemeAfter(*entry);
    }
    return result;
}

}  // namespace sorakaze::japanese
