// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "speech/japanese/MorphemeReader.h"

#include <algorithm>
#include <iterator>

#include "speech/japanese/Characters.h"
#include "speech/japanese/Counters.h"
#include "speech/japanese/Grammar.h"

namespace sorakaze::japanese {
namespace {

bool IsAttribute(const Grammar& grammar) {
    return grammar.kind == U"助詞" || grammar.kind == U"連体詞" || Inflects(grammar);
}

/// A last part of compounds that is read in the Chinese way after Chinese words and in the native way after
/// native ones.
struct LastPart {
    std::u32string_view surface, dictionarys, native;
    bool afterOneKanji;  ///< too; else only after hiragana
};
constexpr LastPart kLastParts[] = {{U"道", U"ドウ", U"みち", true},  {U"音", U"オン", U"おと", true},
                                   {U"船", U"セン", U"ぶね", true},  {U"者", U"シャ", U"もの", false},
                                   {U"人", U"ジン", U"びと", false}, {U"物", U"ブツ", U"もの", false},
                                   {U"酒", U"シュ", U"ざけ", false}, {U"歌", U"カ", U"うた", false}};

/// The reading in hiragana of a last part in a native compound: 男道, but 武士道. Empty for other words.
std::u32string_view NativeReading(const Morpheme& morpheme, const Morpheme* before) {
    if (!before || before->grammar.subkind == U"数" || before->grammar.subkind == U"固有名詞" ||
        IsParticle(before->grammar))
        return {};
    // 瑠璃色, but 三色
    if (morpheme.surface == U"色" && IsSuffix(morpheme.grammar)) return U"いろ";
    if (morpheme.surface == U"節" && morpheme.reading == U"フシ" && !IsAttribute(before->grammar))
        return U"ぶし";
    const auto* found = std::find_if(std::begin(kLastParts), std::end(kLastParts), [&](const LastPart& part) {
        return part.surface == morpheme.surface && part.dictionarys == morpheme.reading;
    });
    if (found == std::end(kLastParts) || !IsSuffix(morpheme.grammar)) return {};
    const bool isNative = IsHiragana(before->surface.back()) ||
                          (found->afterOneKanji && before->surface.size() == 1 &&
                           IsKanji(before->surface.front()) && before->grammar.subkind == U"一般");
    return isNative ? found->native : std::u32string_view();
}

/// Readings that depend on the neighbours, whatever the word is.
std::u32string_view ReadingAmongNeighbours(const std::vector<Morpheme>& morphemes, std::size_t at) {
    const Morpheme& morpheme = morphemes[at];
    const Morpheme* before = at > 0 ? &morphemes[at - 1] : nullptr;
    const Morpheme* after = at + 1 < morphemes.size() ? &morphemes[at + 1] : nullptr;
    if (morpheme.surface == U"何" && after &&
        std::u32string_view(U"でだのとて").find(after->surface.front()) != std::u32string_view::npos)
        return U"なん";
    // 町を後にして, その後
    if (morpheme.surface == U"後" && before && IsParticle(before->grammar)) return U"あと";
    if (before && IsDigits(*before) && !CounterReading(morpheme.surface).empty())
        return CounterReading(morpheme.surface);
    // 夢ヶ丘, but 三ヶ月
    if ((morpheme.surface == U"ヶ" || morpheme.surface == U"ヵ") && before && after &&
        IsKanji(before->surface.back()) && IsKanji(after->surface.front()))
        return before->grammar.subkind == U"数" ? U"か" : U"が";
    if (const auto native = NativeReading(morpheme, before); !native.empty()) return native;
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
