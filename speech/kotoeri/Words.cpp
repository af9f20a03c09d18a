// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "speech/kotoeri/Words.h"

#include <algorithm>

#include "speech/kotoeri/Characters.h"
#include "speech/kotoeri/Grammar.h"
#include "speech/kotoeri/Joints.h"
#include "speech/kotoeri/Numbers.h"

namespace sorakaze::kotoeri {
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
    if (morpheme.surface == U"月" && before && IsDigits(*before)) return U"がつ";
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
        const auto among = ReadingAmongNeighbours(morphemes_, at);
        if (!among.empty()) return std::u32string(among);
        if (IsAllKana(morpheme.surface)) return ToHiragana(morpheme.surface);
        if (morpheme.reading.empty()) return ReadCharacters(morpheme.surface);
        if (IsDigits(morpheme)) return morpheme.surface;
        if (lexicon_ == Lexicon::Used && !IsSuffix(morpheme.grammar)) {
            const auto better = BetterReading(morpheme.surface, morpheme.reading, PlacesAt(at));
            if (!better.empty()) return std::u32string(better);
        }
        return ToHiragana(morpheme.reading);
    }

  private:
    Places PlacesAt(std::size_t at) const {
        const bool isFirst = at == 0, isLast = at + 1 == morphemes_.size();
        const Morpheme* after = isLast ? nullptr : &morphemes_[at + 1];
        return {.behindAttribute = !isFirst && IsAttribute(morphemes_[at - 1].grammar),
                .beforeParticle = isLast || IsParticle(after->grammar),
                .behindDigits = isFirst && (isLast || after->surface == U"の")};
    }

    const std::vector<Morpheme>& morphemes_;
    Lexicon lexicon_;
};

/// The dictionary takes a zero for a symbol where nothing counted follows. Beside a numeral it is one itself.
void CountZeros(std::vector<Morpheme>& morphemes) {
    const auto count = [](auto begin, auto end) {
        for (auto next = begin; next != end; begin = next++) {
            if (next->surface == U"〇" && IsKanjiNumber(*begin)) next->grammar = begin->grammar;
        }
    };
    count(morphemes.begin(), morphemes.end());
    count(morphemes.rbegin(), morphemes.rend());
}

}  // namespace

std::vector<std::u32string> Words(std::vector<Morpheme> morphemes, Lexicon lexicon) {
    CountZeros(morphemes);
    const MorphemeReader reader(morphemes, lexicon);
    const std::vector<bool> joints = Joints(morphemes);
    std::vector<std::u32string> words;
    for (std::size_t at = 0; at < morphemes.size();) {
        const bool continues = joints[at];
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
