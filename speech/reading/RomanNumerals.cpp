// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include <algorithm>
#include <utility>

#include "speech/reading/NumberWords.h"
#include "speech/reading/Rules.h"

namespace sorakaze::reading {
namespace {

using Kind = Token::Kind;

/// What is counted by a numeral, also by "i" and "v".
constexpr std::string_view kCounted =
    " part parts pt pts volume vol vols chapter ch act scene sc book bk episode ep movement mvt phase mark "
    "mk "
    "symphony sonata concerto suite stage section war opus op number no nr disc disk side level type apollo "
    "teil tl kapitel akt szene band bd satz nummer sinfonie symphonie sonate konzert weltkrieg folge partie "
    "parte volumen tome numéro número numero capítulo capitolo acte acto atto ";
/// Titles whose parts are told by one letter.
constexpr std::string_view kSeries =
    " rocky auto fantasy zeppelin wars civilization trek quest rambo toto chicago ";
constexpr std::string_view kRulers =
    " henry louis george elizabeth edward charles richard james william pius benedict napoleon catherine "
    "alexander nicholas leo gregory clement innocent urban ivan philip frederick leopold ferdinand ramses "
    "heinrich ludwig georg eduard karl richard jakob wilhelm benedikt katharina alexander nikolaus friedrich "
    "philipp leopold ferdinand otto franz joseph christian gustav peter paul ";
/// What follows a name in a sentence of an announcer.
constexpr std::string_view kAfterNames =
    " by from and in of on with at is was has will for performed played live feat featuring vs op no von vom "
    "und aus mit ist war im für gespielt de par et con y e ";
/// Words that never stand before the number of a part: "the xx", "non vi amo".
constexpr std::string_view kBefore =
    " the a an of to and or in on at by for with from is my your our his her their der die das ein eine und "
    "von zu le la les de du el los il lo gli non ti mi che chi che y e et the very ";

int DigitOf(char letter) {
    switch (letter) {
        case 'i':
            return 1;
        case 'v':
            return 5;
        case 'x':
            return 10;
        case 'l':
            return 50;
        case 'c':
            return 100;
        case 'd':
            return 500;
        case 'm':
            return 1000;
        default:
            return 0;
    }
}

std::string Roman(int number) {
    static constexpr std::pair<int, std::string_view> kParts[] = {
        {1000, "m"}, {900, "cm"}, {500, "d"}, {400, "cd"}, {100, "c"}, {90, "xc"}, {50, "l"},
        {40, "xl"},  {10, "x"},   {9, "ix"},  {5, "v"},    {4, "iv"},  {1, "i"}};
    std::string roman;
    for (const auto& [value, letters] : kParts) {
        for (; number >= value; number -= value) roman += letters;
    }
    return roman;
}

/// 0 for what is no numeral in its usual form or is in mixed case.
int ValueOf(const Token& token) {
    const std::string& lower = token.lower;
    if (token.kind != Kind::Word || lower.empty() || lower.size() > 15) return 0;
    if (token.text != lower && token.text.find_first_of(lower) != token.text.npos) return 0;
    int value = 0, last = 0;
    for (std::size_t i = lower.size(); i-- > 0;) {
        const int digit = DigitOf(lower[i]);
        if (digit == 0) return 0;
        value += digit < last ? -digit : digit;
        last = std::max(last, digit);
    }
    return value > 0 && Roman(value) == lower ? value : 0;
}

class Numerals {
  public:
    Numerals(Sentence& sentence, Main voice) : sentence_(sentence), voice_(voice) {}

    void ReadAt(std::size_t index) {
        const int value = ValueOf(sentence_.At(index));
        if (value == 0 || sentence_.IsMark(index - 1, "'")) return;
        index_ = index;
        previous_ = sentence_.Previous(index);
        next_ = sentence_.Next(index);
        letters_ = sentence_.At(index).lower;
        capital_ = sentence_.At(index).text != letters_;
        if (IsRegnal(value)) {
            SayOrdinal(value);
        } else if (IsCounted() || IsYear(value) || IsSequel(value) || IsHeading(value)) {
            sentence_.Replace(index, Kind::Number, std::to_string(value));
        }
    }

  private:
    bool HasOnly(std::string_view allowed) const {
        return letters_.find_first_not_of(allowed) == letters_.npos;
    }

    /// The text ends here, or goes on as after a name.
    bool EndsName() const {
        return next_ == Sentence::kNone || sentence_.Is(next_, Kind::Mark) || sentence_.IsEdge(index_ + 1) ||
               sentence_.Is(next_, Kind::Number) || sentence_.Is(next_, Kind::Japanese) ||
               IsOneOf(sentence_.At(next_).lower, kAfterNames);
    }
    /// The word before, past the point of an abbreviation.
    std::size_t WordBefore() const {
        return sentence_.IsMark(previous_, ".") ? sentence_.Previous(previous_) : previous_;
    }

    bool IsRegnal(int value) const {
        if (value > 25 || !IsOneOf(sentence_.At(previous_).lower, kRulers)) return false;
        if (!HasOnly("ivx") || letters_ == "x") return false;
        const bool ends = EndsName();
        return letters_.size() > 1 || (ends && (capital_ || letters_ == "v" || IsLast()));
    }
    bool IsLast() const { return next_ == Sentence::kNone || sentence_.Is(next_, Kind::Mark); }

    void SayOrdinal(int value) {
        const std::string ordinal = Ordinal(value, voice_ == Main::Japanese ? Main::English : voice_);
        if (ordinal.empty()) return sentence_.Replace(index_, Kind::Number, std::to_string(value));
        sentence_.ReplaceByWords(index_, (voice_ == Main::German ? "der " : "the ") + ordinal);
        if (voice_ == Main::German && sentence_.IsMark(index_ + 1, ".") && next_ != Sentence::kNone &&
            sentence_.Next(next_) != Sentence::kNone)
            sentence_.Remove(index_ + 1);
    }

    bool IsCounted() const {
        const std::size_t before = WordBefore();
        if (sentence_.Is(before, Kind::Japanese)) return IsCountedInJapanese();
        if (!IsOneOf(sentence_.At(before).lower, kCounted) || !HasOnly("ivxlc")) return false;
        if (sentence_.At(before).lower == "no" && before == previous_) return false;
        const bool oneLetter = letters_.size() == 1;
        return !oneLetter || (letters_ != "l" && letters_ != "c" && EndsName());
    }

    bool IsCountedInJapanese() const {
        if (!HasOnly("ivx") || letters_ == "xx" || letters_ == "xxx") return false;
        return letters_.size() > 1 || (letters_ != "x" && previous_ + 1 == index_ && EndsName());
    }

    bool IsYear(int value) const { return letters_.size() >= 4 && value >= 1400 && value < 2100; }

    bool IsSequel(int value) const {
        if (!sentence_.Is(previous_, Kind::Word) || IsOneOf(sentence_.At(previous_).lower, kBefore))
            return sentence_.Is(previous_, Kind::Number) && letters_.size() > 2 && HasOnly("ivx");
        if (letters_ == "v" || letters_ == "x")
            return IsOneOf(sentence_.At(previous_).lower, kSeries) && EndsName();
        if (letters_.size() < 2 || !HasOnly("ivx") || value > 39 || letters_ == "xx" || letters_ == "xxx")
            return false;
        return letters_ == "ii" || letters_ == "iii" || letters_.size() > 3 || EndsName();
    }

    /// "ii. andante": the number of a movement, behind a mark, a dash's blanks or nothing.
    bool IsHeading(int value) const {
        const bool begins = previous_ == Sentence::kNone || sentence_.IsEdge(index_ - 1) ||
                            sentence_.IsMark(previous_, ":") || sentence_.IsMark(previous_, ",") ||
                            sentence_.IsMark(previous_, "-") || sentence_.IsMark(previous_, "–");
        const bool marked = sentence_.IsMark(index_ + 1, ".") || sentence_.IsMark(index_ + 1, ":");
        return begins && marked && value < 40 && HasOnly("ivx") &&
               sentence_.Is(sentence_.Next(index_ + 1), Kind::Word) && sentence_.Is(index_ + 2, Kind::Blank);
    }

    Sentence& sentence_;
    const Main voice_;
    std::size_t index_ = 0;  ///< of the word that is looked at; the following are about it
    std::size_t previous_ = 0, next_ = 0;
    std::string letters_;
    bool capital_ = false;
};

}  // namespace

void ReadRomanNumerals(Sentence& sentence, Main voice) {
    Numerals numerals(sentence, voice);
    for (std::size_t i = 0; i < sentence.Size(); ++i) numerals.ReadAt(i);
}

}  // namespace sorakaze::reading
