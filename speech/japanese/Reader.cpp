// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "speech/japanese/Reader.h"

#include <algorithm>
#include <optional>
#include <utility>

#include "speech/japanese/ApplyLexicon.h"
#include "speech/japanese/Characters.h"
#include "speech/japanese/Counters.h"
#include "speech/japanese/Grammar.h"
#include "speech/japanese/JoinsPrevious.h"
#include "speech/japanese/MorphemeReader.h"
#include "speech/japanese/Numbers.h"

namespace sorakaze::japanese {
namespace {

/// No title has a sentence of this length. What is longer is divided, so that the dictionary's work stays
/// bounded.
constexpr std::size_t kLongestSentence = 400;

/// How much of an overlong sentence to read first: up to where kanji follow kana, or all that is allowed.
std::size_t FirstPartLength(std::u32string_view sentence) {
    if (sentence.size() <= kLongestSentence) return sentence.size();
    for (std::size_t at = kLongestSentence; at > kLongestSentence / 2; --at) {
        if (IsHiragana(sentence[at - 1]) && IsKanji(sentence[at])) return at;
    }
    return kLongestSentence;
}

/// With full-width digits, which the dictionary takes for numbers.
std::u32string WithWideDigits(std::u32string_view text) {
    std::u32string wide(text);
    for (char32_t& code : wide) {
        if (code >= U'0' && code <= U'9') code += U'０' - U'0';
    }
    return wide;
}

/// The sentence with each 々 that belongs to no known word spelt out as the kanji before it; nothing if there
/// is none.
std::optional<std::u32string> WithoutRepetitions(const std::vector<Morpheme>& morphemes) {
    std::u32string sentence;
    bool found = false;
    for (const Morpheme& morpheme : morphemes) {
        for (const char32_t code : morpheme.surface) {
            const bool repeats = morpheme.surface.front() == U'々' && code == U'々' && !sentence.empty();
            found = found || repeats;
            sentence += repeats ? sentence.back() : code;
        }
    }
    return found ? std::optional(sentence) : std::nullopt;
}

/// The dictionary takes a zero for a symbol unless a counter follows. Next to a numeral it is one itself.
void MarkZeros(std::vector<Morpheme>& morphemes) {
    const auto mark = [](auto begin, auto end) {
        for (auto next = begin; next != end; begin = next++) {
            if (next->surface == U"〇" && IsKanjiNumber(*begin)) next->grammar = begin->grammar;
        }
    };
    mark(morphemes.begin(), morphemes.end());
    mark(morphemes.rbegin(), morphemes.rend());
}

/// Reads the morphemes of one sentence from the first to the last.
class SentenceReader {
  public:
    SentenceReader(const std::vector<Morpheme>& morphemes, Digits digits, UseLexicon lexicon)
        : morphemes_(morphemes), digits_(digits), lexicon_(lexicon), joins_(JoinsPrevious(morphemes)) {}

    std::vector<ReadMorpheme> Read() {
        std::vector<ReadMorpheme> read;
        while (at_ < morphemes_.size()) {
            const bool joins = joins_[at_];
            read.push_back(IsPartOfNumber(at_) ? ReadNumberAndCounter() : ReadWord());
            read.back().joinsPrevious = joins;
        }
        return read;
    }

  private:
    bool IsReadDigits(std::size_t at) const {
        return digits_ == Digits::Read && at < morphemes_.size() && IsDigits(morphemes_[at]);
    }
    bool IsPartOfNumber(std::size_t at) const {
        return at < morphemes_.size() && (IsKanjiNumber(morphemes_[at]) || IsReadDigits(at));
    }
    bool IsAfterMonth(std::size_t at) const { return at > 0 && morphemes_[at - 1].surface.ends_with(U'月'); }
    bool IsDecimalPoint(std::size_t at) const {
        return at > 0 && at < morphemes_.size() && morphemes_[at].surface == U"." && IsReadDigits(at - 1) &&
               IsReadDigits(at + 1);
    }
    bool IsCounterAfter(std::u32string_view number) const {
        if (at_ == morphemes_.size() || morphemes_[at_].fromLexicon) return false;
        const Morpheme& morpheme = morphemes_[at_];
        const Grammar& grammar = morpheme.grammar;
        if (IsCounter(grammar) || !CounterReading(morpheme.surface).empty()) return true;
        return IsDigit(number.back()) &&
               (morpheme.surface == U"つ" ||
                (grammar.kind == U"名詞" && IsKanji(morpheme.surface.front()) &&
                 (IsSuffix(grammar) || grammar.subkind == U"一般" || grammar.subkind == U"副詞可能")));
    }

    ReadMorpheme ReadNumberAndCounter() {
        const Grammar grammar = morphemes_[at_].grammar;
        const AfterMonth afterMonth = IsAfterMonth(at_) ? AfterMonth::Yes : AfterMonth::No;
        std::u32string number;
        while (IsPartOfNumber(at_) || (!number.empty() && IsDecimalPoint(at_)))
            number += morphemes_[at_++].surface;
        if (!IsCounterAfter(number)) return {number, ReadNumber(number), {}, grammar, false};
        const std::u32string& counter = morphemes_[at_].surface;
        const std::u32string own = ReadingAt(morphemes_, at_++, lexicon_);
        const std::u32string reading = ReadCounted(number, counter, own, afterMonth);
        return {number + counter, reading, {}, grammar, false};
    }

    ReadMorpheme ReadWord() {
        const Morpheme& morpheme = morphemes_[at_];
        // The dictionary knows 一日 as a word.
        if (morpheme.surface == U"一日" && IsAfterMonth(at_))
            return {morphemes_[at_++].surface, U"ついたち", {}, morpheme.grammar, false};
        const std::u32string reading = ReadingAt(morphemes_, at_++, lexicon_);
        const bool isDictionarys = !morpheme.fromLexicon && reading == ToHiragana(morpheme.reading);
        return {morpheme.surface, reading, isDictionarys ? morpheme.pronunciation : std::u32string(),
                morpheme.grammar, false};
    }

    const std::vector<Morpheme>& morphemes_;
    const Digits digits_;
    const UseLexicon lexicon_;
    const std::vector<bool> joins_;
    std::size_t at_ = 0;
};

}  // namespace

std::vector<Morpheme> Reader::Morphemes(std::u32string_view sentence, Start start) const {
    std::vector<Morpheme> morphemes = dictionary_.Segment(WithWideDigits(sentence), start);
    if (const auto repeated = WithoutRepetitions(morphemes))
        morphemes = dictionary_.Segment(*repeated, start);
    if (lexicon_ == UseLexicon::Yes) morphemes = ApplyLexicon(morphemes);
    std::size_t at = 0;
    for (Morpheme& morpheme : morphemes) {
        if (IsDigit(morpheme.surface.front()))
            morpheme.surface = sentence.substr(at, morpheme.surface.size());
        at += morpheme.surface.size();
    }
    MarkZeros(morphemes);
    return morphemes;
}

std::vector<ReadMorpheme> Reader::Read(std::u32string_view sentence, Digits digits, Start start) const {
    std::vector<ReadMorpheme> read;
    while (!sentence.empty()) {
        const std::u32string_view part = sentence.substr(0, FirstPartLength(sentence));
        const auto morphemes = Morphemes(part, start);
        auto readPart = SentenceReader(morphemes, digits, lexicon_).Read();
        std::move(readPart.begin(), readPart.end(), std::back_inserter(read));
        sentence.remove_prefix(part.size());
        start = Start::OfText;
    }
    return read;
}

}  // namespace sorakaze::japanese
