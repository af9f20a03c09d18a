// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "speech/kotoeri/Words.h"

#include <algorithm>

#include "speech/kotoeri/Characters.h"
#include "speech/kotoeri/Numbers.h"

namespace sorakaze::kotoeri {
namespace {

std::u32string ReadingOf(const Morpheme& morpheme) {
    if (IsAllKana(morpheme.surface) || morpheme.reading.empty()) return ToHiragana(morpheme.surface);
    if (std::all_of(morpheme.surface.begin(), morpheme.surface.end(), IsDigit)) return morpheme.surface;
    std::u32string reading = ToHiragana(morpheme.reading);
    std::replace(reading.begin(), reading.end(), U' ', U',');
    return reading;
}

bool IsKanjiNumber(const Morpheme& morpheme) {
    return morpheme.grammar.kind == U"名詞" && morpheme.grammar.subkind == U"数" &&
           IsNumber(morpheme.surface);
}

bool IsDigits(const Morpheme& morpheme) {
    return std::all_of(morpheme.surface.begin(), morpheme.surface.end(), IsDigit);
}

bool IsSuffix(const Grammar& grammar) {
    return grammar.kind == U"名詞" && grammar.subkind == U"接尾";
}

bool IsCounter(const Grammar& grammar) {
    return IsSuffix(grammar) && grammar.third == U"助数詞";
}

bool Inflects(const Grammar& grammar) {
    return grammar.kind == U"動詞" || grammar.kind == U"形容詞" || grammar.kind == U"助動詞";
}

/// だ and です stand behind nouns as well and are words of their own there.
bool IsCopula(const Grammar& grammar) {
    return grammar.kind == U"助動詞" &&
           (grammar.conjugation == U"特殊・ダ" || grammar.conjugation == U"特殊・デス");
}

bool IsEnding(const Morpheme& before, const Morpheme& morpheme) {
    const Grammar& grammar = morpheme.grammar;
    if (!Inflects(before.grammar)) return false;
    if (grammar.kind == U"助動詞") return !IsCopula(grammar) && !IsCopula(before.grammar);
    if (grammar.kind == U"動詞") return grammar.subkind == U"接尾" || grammar.subkind == U"非自立";
    return grammar.kind == U"助詞" && grammar.subkind == U"接続助詞" &&
           std::u32string_view(U"て で ば ちゃ じゃ つつ ながら").find(morpheme.surface) !=
               std::u32string_view::npos;
}

/// Whether the morpheme goes on with the word that `before` ends.
bool Continues(const Morpheme& before, const Morpheme& morpheme) {
    if (LeansOnWhatIsBefore(morpheme.surface.front()) && IsKana(before.surface.back())) return true;
    if (before.surface.back() == U'っ' || before.surface.back() == U'ッ')
        return IsKana(morpheme.surface.front()) || IsKanji(morpheme.surface.front());
    if (before.grammar.kind == U"接頭詞") return true;
    if (IsSuffix(morpheme.grammar)) return true;
    if (IsDigits(before) && IsDigits(morpheme)) return true;
    return IsEnding(before, morpheme);
}

}  // namespace

std::vector<std::u32string> Words(const std::vector<Morpheme>& morphemes) {
    std::vector<std::u32string> words;
    for (std::size_t at = 0; at < morphemes.size();) {
        const Morpheme& first = morphemes[at];
        const bool continues = at > 0 && Continues(morphemes[at - 1], first);
        std::u32string reading;
        if (IsKanjiNumber(first)) {
            std::u32string number;
            for (; at < morphemes.size() && IsKanjiNumber(morphemes[at]); ++at)
                number += morphemes[at].surface;
            if (at < morphemes.size() && IsCounter(morphemes[at].grammar)) {
                reading = ReadNumber(number, morphemes[at].surface, ReadingOf(morphemes[at]));
                ++at;
            } else {
                reading = ReadNumber(number, {}, {});
            }
        } else {
            reading = ReadingOf(first);
            ++at;
        }
        if (continues) {
            words.back() += reading;
        } else {
            words.push_back(std::move(reading));
        }
    }
    return words;
}

}  // namespace sorakaze::kotoeri
