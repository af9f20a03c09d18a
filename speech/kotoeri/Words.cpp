// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "speech/kotoeri/Words.h"

#include <algorithm>

#include "speech/kotoeri/Characters.h"
#include "speech/kotoeri/Grammar.h"
#include "speech/kotoeri/Numbers.h"

namespace sorakaze::kotoeri {
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

bool IsAttribute(const Grammar& grammar) {
    return grammar.kind == U"助詞" || grammar.kind == U"連体詞" || Inflects(grammar);
}

/// Readings that depend on the neighbours, whatever the word is.
std::u32string_view ReadingAmongNeighbours(const Morpheme* before, const Morpheme& morpheme,
                                           const Morpheme* after) {
    if (morpheme.surface == U"何" && after &&
        std::u32string_view(U"でだのとて").find(after->surface.front()) != std::u32string_view::npos)
        return U"なん";
    if (morpheme.surface == U"月" && before && IsDigits(*before)) return U"がつ";
    // 夢ヶ丘, but 三ヶ月
    if ((morpheme.surface == U"ヶ" || morpheme.surface == U"ヵ") && before && after &&
        IsKanji(before->surface.back()) && IsKanji(after->surface.front()))
        return before->grammar.subkind == U"数" ? U"か" : U"が";
    // 瑠璃色, but 三色
    if (morpheme.surface == U"色" && IsSuffix(morpheme.grammar) && before && before->grammar.subkind != U"数")
        return U"いろ";
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

/// Reads the morphemes of one sentence one by one.
class MorphemeReader {
  public:
    MorphemeReader(const std::vector<Morpheme>& morphemes, Lexicon lexicon)
        : morphemes_(morphemes), lexicon_(lexicon) {}

    std::u32string ReadingAt(std::size_t at) const {
        const Morpheme& morpheme = morphemes_[at];
        if (morpheme.isGiven) {
            std::u32string reading = morpheme.reading;
            std::replace(reading.begin(), reading.end(), U' ', U',');
            return reading;
        }
        const Morpheme* before = at > 0 ? &morphemes_[at - 1] : nullptr;
        const Morpheme* after = at + 1 < morphemes_.size() ? &morphemes_[at + 1] : nullptr;
        const auto among = ReadingAmongNeighbours(before, morpheme, after);
        if (!among.empty()) return std::u32string(among);
        if (IsAllKana(morpheme.surface)) return ToHiragana(morpheme.surface);
        if (morpheme.reading.empty()) return ReadCharacters(morpheme.surface);
        if (IsDigits(morpheme)) return morpheme.surface;
        if (lexicon_ == Lexicon::Used && !IsSuffix(morpheme.grammar)) {
            const Place place =
                before && IsAttribute(before->grammar) ? Place::BehindAttribute : Place::Anywhere;
            const auto better = BetterReading(morpheme.surface, morpheme.reading, place);
            if (!better.empty()) return std::u32string(better);
        }
        return ToHiragana(morpheme.reading);
    }

  private:
    const std::vector<Morpheme>& morphemes_;
    Lexicon lexicon_;
};

/// Whether the morpheme goes on with the word that `before` ends.
bool Continues(const Morpheme& before, const Morpheme& morpheme) {
    const char32_t last = before.surface.back();
    if (LeansOnWhatIsBefore(morpheme.surface.front()) && (IsKana(last) || IsKanji(last))) return true;
    if (last == U'っ' || last == U'ッ')
        return IsKana(morpheme.surface.front()) || IsKanji(morpheme.surface.front());
    if (IsUnknownKanji(before) || IsUnknownKanji(morpheme))
        return IsKanji(before.surface.back()) && IsKanji(morpheme.surface.front());
    if (before.surface == U"ヶ" || morpheme.surface == U"ヶ") return true;
    if (before.grammar.kind == U"接頭詞") return true;
    if (IsSuffix(morpheme.grammar)) return true;
    if (IsDigits(before)) return IsDigits(morpheme) || IsKanjiNumber(morpheme) || morpheme.surface == U"月";
    return IsEnding(before, morpheme);
}

}  // namespace

std::vector<std::u32string> Words(const std::vector<Morpheme>& morphemes, Lexicon lexicon) {
    const MorphemeReader reader(morphemes, lexicon);
    std::vector<std::u32string> words;
    for (std::size_t at = 0; at < morphemes.size();) {
        const bool continues = at > 0 && Continues(morphemes[at - 1], morphemes[at]);
        std::u32string reading;
        if (IsKanjiNumber(morphemes[at])) {
            std::u32string number;
            for (; at < morphemes.size() && IsKanjiNumber(morphemes[at]); ++at)
                number += morphemes[at].surface;
            if (at < morphemes.size() && IsCounter(morphemes[at].grammar)) {
                reading = ReadNumber(number, morphemes[at].surface, reader.ReadingAt(at));
                ++at;
            } else {
                reading = ReadNumber(number, {}, {});
            }
        } else {
            reading = reader.ReadingAt(at++);
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
