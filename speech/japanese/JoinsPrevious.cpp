// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "speech/japanese/JoinsPrevious.h"

#include <algorithm>
#include <string_view>

#include "speech/japanese/Characters.h"
#include "speech/japanese/Grammar.h"

namespace sorakaze::japanese {
namespace {

bool IsEnding(const Morpheme& before, const Morpheme& morpheme) {
    const Grammar& grammar = morpheme.grammar;
    if (!Inflects(before.grammar)) return false;
    if (grammar.kind == U"助動詞") return !IsCopula(grammar) && !IsCopula(before.grammar);
    if (grammar.kind == U"動詞") return grammar.subkind == U"接尾" || grammar.subkind == U"非自立";
    return grammar.kind == U"助詞" && grammar.subkind == U"接続助詞" &&
           std::u32string_view(U"て で ば ちゃ じゃ つつ ながら").find(morpheme.surface) !=
               std::u32string_view::npos;
}

/// One hiragana that is no word is the start of a word in kana that the dictionary doesn't know.
bool IsFragment(const Morpheme& before, const Morpheme& morpheme) {
    const Grammar& grammar = before.grammar;
    const bool isNoWord = grammar.kind == U"フィラー" ||
                          (grammar.kind == U"名詞" && grammar.subkind != U"非自立") || grammar.kind.empty();
    return before.surface.size() == 1 && isNoWord && IsHiraganaOnly(before) && IsHiraganaOnly(morpheme) &&
           !IsParticle(morpheme.grammar);
}

/// Whether the two belong to one word.
bool Continues(const Morpheme& before, const Morpheme& morpheme) {
    const char32_t last = before.surface.back();
    if (CannotStartWord(morpheme.surface.front()) && (IsKana(last) || IsKanji(last))) return true;
    if (last == U'っ' || last == U'ッ')
        return before.grammar.kind != U"感動詞" || IsKana(morpheme.surface.front());
    if (before.fromLexicon || morpheme.fromLexicon) return IsSuffix(morpheme.grammar);
    if (IsKatakanaOnly(before) && IsKatakanaOnly(morpheme)) return true;
    if (IsUnknownKanji(before) || IsUnknownKanji(morpheme))
        return IsKanji(before.surface.back()) && IsKanji(morpheme.surface.front());
    if (before.surface == U"ヶ" || morpheme.surface == U"ヶ") return true;
    if (before.grammar.kind == U"接頭詞") return true;
    if (IsSuffix(morpheme.grammar)) return true;
    if (IsDigits(before)) return IsDigits(morpheme) || IsKanjiNumber(morpheme) || morpheme.surface == U"月";
    return IsFragment(before, morpheme) || IsEnding(before, morpheme);
}

/// The end of a given name in hiragana that the dictionary splits; it starts at `begin`, after a family name.
/// Returns `begin` if there is no name.
std::size_t EndOfGivenName(const std::vector<Morpheme>& morphemes, std::size_t begin) {
    const auto isSure = [&](std::size_t at) { return IsGivenName(morphemes[at].grammar); };
    if (IsParticle(morphemes[begin].grammar) || IsCopula(morphemes[begin].grammar)) return begin;
    std::size_t end = begin, size = 0;
    for (; end < morphemes.size() && IsHiraganaOnly(morphemes[end]) && !morphemes[end].fromLexicon; ++end)
        size += morphemes[end].surface.size();
    // まりやの歌 ends before の, and so does まりと; みなと may be one name.
    while (end > begin + 1 &&
           std::u32string_view(U"はとのをにがもへで").find(morphemes[end - 1].surface) !=
               std::u32string_view::npos &&
           (end < morphemes.size() || isSure(begin))) {
        --end;
        size -= morphemes[end].surface.size();
    }
    return size <= 4 ? end : begin;
}

/// The end of what starts at `at` and continues a verb's stem without being an ending: 贈りもの, しやがれ.
/// The dictionary may take their last parts for particles. Returns `at` if there is none.
std::size_t EndOfVerbCompound(const std::vector<Morpheme>& morphemes, std::size_t at) {
    const Grammar& verb = morphemes[at - 1].grammar;
    if (verb.kind != U"動詞" || verb.form != U"連用形") return at;
    const std::u32string_view first = morphemes[at].surface;
    if (first == U"もの") return at + 1;
    if (at + 1 == morphemes.size()) return at;
    const std::u32string_view second = morphemes[at + 1].surface;
    const bool isOne = (first == U"も" && second == U"の") || (first == U"や" && second.starts_with(U"が"));
    return isOne ? at + 2 : at;
}

}  // namespace

std::vector<bool> JoinsPrevious(const std::vector<Morpheme>& morphemes) {
    std::vector<bool> joins(morphemes.size(), false);
    const auto join = [&](std::size_t begin, std::size_t end) {
        for (; begin < end; ++begin) joins[begin] = true;
    };
    for (std::size_t at = 1; at < morphemes.size(); ++at) {
        joins[at] = joins[at] || Continues(morphemes[at - 1], morphemes[at]);
        if (IsFamilyName(morphemes[at - 1].grammar)) join(at + 1, EndOfGivenName(morphemes, at));
        join(at, EndOfVerbCompound(morphemes, at));
    }
    return joins;
}

}  // namespace sorakaze::japanese
