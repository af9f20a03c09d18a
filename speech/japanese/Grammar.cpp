// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "speech/japanese/Grammar.h"

#include <algorithm>

#include "speech/japanese/Characters.h"
#include "speech/japanese/Numbers.h"

namespace sorakaze::japanese {

bool IsKanjiNumber(const Morpheme& morpheme) {
    return morpheme.grammar.kind == U"名詞" && morpheme.grammar.subkind == U"数" &&
           IsKanjiNumerals(morpheme.surface);
}

bool IsDigits(const Morpheme& morpheme) {
    return std::all_of(morpheme.surface.begin(), morpheme.surface.end(), IsDigit);
}

bool IsHiraganaOnly(const Morpheme& morpheme) {
    return std::all_of(morpheme.surface.begin(), morpheme.surface.end(),
                       [](char32_t code) { return IsKana(code) && !IsKatakana(code); });
}

bool IsKatakanaOnly(const Morpheme& morpheme) {
    return std::all_of(morpheme.surface.begin(), morpheme.surface.end(),
                       [](char32_t code) { return IsKana(code) && !IsHiragana(code); });
}

bool IsUnknownKanji(const Morpheme& morpheme) {
    return morpheme.reading.empty() && IsKanji(morpheme.surface.front());
}

bool IsSuffix(const Grammar& grammar) {
    return grammar.kind == U"名詞" && grammar.subkind == U"接尾";
}

bool IsCounter(const Grammar& grammar) {
    return IsSuffix(grammar) && grammar.third == U"助数詞";
}

bool IsParticle(const Grammar& grammar) {
    return grammar.kind == U"助詞";
}

bool IsFamilyName(const Grammar& grammar) {
    return grammar.third == U"人名" && grammar.fourth == U"姓";
}

bool IsGivenName(const Grammar& grammar) {
    return grammar.third == U"人名" && grammar.fourth == U"名";
}

bool Inflects(const Grammar& grammar) {
    return grammar.kind == U"動詞" || grammar.kind == U"形容詞" || grammar.kind == U"助動詞";
}

bool IsCopula(const Grammar& grammar) {
    return grammar.kind == U"助動詞" &&
           (grammar.conjugation == U"特殊・ダ" || grammar.conjugation == U"特殊・デス");
}

}  // namespace sorakaze::japanese
