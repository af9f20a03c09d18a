// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "speech/japanese/MorphemeReader.h"

#include "speech/japanese/Characters.h"
#include "speech/japanese/Counters.h"
#include "speech/japanese/Grammar.h"

namespace sorakaze::japanese {
namespace {

bool IsAttribute(const Grammar& grammar) {
    return grammar.kind == U"助詞" || grammar.kind == U"連体詞" || Inflects(grammar);
}

/// Readings that depend on the neighbours, whatever the word is.
std::u32string_view ReadingAmongNeighbours(const std::vector<Morpheme>& morphemes, std::size_t at) {
    const Morpheme& morpheme = morphemes[at];
    const Morpheme* before = at > 0 ? &morphemes[at - 1] : nullptr;
    const Morpheme* after = at + 1 < morphemes.size() ? &morphemes[at + 1] : nullptr;
    if (morpheme.surface == U"何" && after &&
        std::u32string_view(U"でだのとて").find(after->surface.front()) != std::u32string_view::npos)
        return U"なん";
    if (before && IsDigits(*before) && !CounterReading(morpheme.surface).empty())
        return CounterReading(morpheme.surface);
    // 夢ヶ丘, but 三ヶ月
    if ((morpheme.surface == U"ヶ" || morpheme.surface == U"ヵ") && before && after &&
        IsKanji(before->surface.back()) && IsKanji(after->surface.front()))
        return before->grammar.subkind == U"数" ? U"か" : U"が";
    // 瑠璃色, but 三色
    if (morpheme.surface == U"色" && IsSuffix(morpheme.grammar) && before && before->grammar.subkind != U"数")
        return U"いろ";
    if (morpheme.surface == U"罰") {
        const Morpheme* verb =
            after && IsParticle(after->grammar) && at + 2 < morphemes.size() ? after + 1 : after;
        const bool strikes = verb && (verb->surface.front() == U'当' || verb->surface.starts_with(U"あた"));
        return strikes ? U"ばち" : U"ばつ";
    }
    return {};
}

/// A word that the dictionary doesn't know, character by character.
std::u32string ReadCharacters(std::u32string_view text) {
    std::u32string reading;
    for (const char32_t code : text) {
        const std::u32string_view known = IsKanji(code) ? KanjiReading(code) : std::u32string_view();
        reading += known.empty() ? ToHiragana({&code, 1}) : std::u32string(known);
    }
    return reading;
}

Context ContextAt(const std::vector<Morpheme>& morphemes, std::size_t at) {
    const bool isFirst = at == 0, isLast = at + 1 == morphemes.size();
    const Morpheme* after = isLast ? nullptr : &morphemes[at + 1];
    const bool afterAttribute = !isFirst && IsAttribute(morphemes[at - 1].grammar);
    const bool beforeParticle = isLast || IsParticle(after->grammar) || IsCopula(after->grammar);
    return {.afterAttribute = afterAttribute,
            .beforeParticle = isLast || IsParticle(after->grammar),
            .afterDigits = isFirst && (isLast || after->surface == U"の"),
            .alone = (isFirst || afterAttribute) && beforeParticle};
}

}  // namespace

std::u32string ReadingAt(const std::vector<Morpheme>& morphemes, std::size_t at, UseLexicon lexicon) {
    const Morpheme& morpheme = morphemes[at];
    if (morpheme.fromLexicon) return morpheme.reading;
    const auto among = ReadingAmongNeighbours(morphemes, at);
    if (!among.empty()) return std::u32string(among);
    if (IsAllKana(morpheme.surface)) return ToHiragana(morpheme.surface);
    if (morpheme.reading.empty()) return ReadCharacters(morpheme.surface);
    if (IsDigits(morpheme)) return morpheme.surface;
    if (lexicon == UseLexicon::Yes && !IsSuffix(morpheme.grammar)) {
        const auto preferred = PreferredReading(morpheme.surface, morpheme.reading, ContextAt(morphemes, at));
        if (!preferred.empty()) return std::u32string(preferred);
    }
    return ToHiragana(morpheme.reading);
}

}  // namespace sorakaze::japanese
