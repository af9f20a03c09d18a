// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include <algorithm>
#include <iterator>

#include "speech/reading/Rules.h"

namespace sorakaze::reading {
namespace {

using Kind = Token::Kind;

/// What must be near, so that a word counts as an abbreviation.
enum class When {
    BeforeNumber,
    BeforeNumberWithPoint,  ///< and the point must be there
    WithPoint,
    BetweenWords,
    BetweenWordsWithPoint,
};

struct Abbreviation {
    std::string_view written;
    When when;
    std::string_view english, german;
    /// What the other languages say; null where they leave it.
    std::string_view Words::*others = nullptr;
};

constexpr Abbreviation kAbbreviations[] = {
    {"op", When::BeforeNumber, "opus", "Opus", &Words::opus},
    {"opp", When::BeforeNumber, "opus", "Opus", &Words::opus},
    {"no", When::BeforeNumber, "number", "Nummer", &Words::number},
    {"nr", When::BeforeNumber, "number", "Nummer", &Words::number},
    {"num", When::BeforeNumberWithPoint, "number", "Nummer", &Words::number},
    {"nos", When::BeforeNumber, "numbers", "Nummern", &Words::number},
    {"nrn", When::BeforeNumber, "numbers", "Nummern", &Words::number},
    {"pt", When::BeforeNumber, "part", "Teil", &Words::part},
    {"pts", When::BeforeNumber, "parts", "Teile", &Words::part},
    {"tl", When::BeforeNumberWithPoint, "part", "Teil"},
    {"vol", When::BeforeNumber, "volume", "Volume", &Words::volume},
    {"vols", When::BeforeNumber, "volumes", "Volume", &Words::volume},
    {"bd", When::BeforeNumberWithPoint, "volume", "Band"},
    {"ch", When::BeforeNumberWithPoint, "chapter", "Kapitel"},
    {"kap", When::BeforeNumberWithPoint, "chapter", "Kapitel"},
    {"mvt", When::BeforeNumber, "movement", "Satz"},
    {"mov", When::BeforeNumberWithPoint, "movement", "Satz"},
    {"bk", When::BeforeNumberWithPoint, "book", "Buch"},
    {"ep", When::BeforeNumberWithPoint, "episode", "Folge"},
    {"sc", When::BeforeNumberWithPoint, "scene", "Szene"},
    {"bwv", When::BeforeNumber, "B W V", "B W V"},
    {"kv", When::BeforeNumber, "K V", "Köchelverzeichnis"},
    {"hwv", When::BeforeNumber, "H W V", "H W V"},
    {"twv", When::BeforeNumber, "T W V", "T W V"},
    {"buxwv", When::BeforeNumber, "Bux W V", "Bux W V"},
    {"rv", When::BeforeNumber, "R V", "R V"},
    {"woo", When::BeforeNumber, "W O O", "W O O"},
    {"hob", When::WithPoint, "Hoboken", "Hoboken"},
    {"k", When::BeforeNumberWithPoint, "K", "K"},
    {"d", When::BeforeNumberWithPoint, "D", "D"},
    {"s", When::BeforeNumberWithPoint, "S", "S"},
    {"posth", When::WithPoint, "posthumous", "posthum"},
    {"feat", When::BetweenWords, "featuring", "mit", &Words::featuring},
    {"ft", When::BetweenWords, "featuring", "mit", &Words::featuring},
    {"vs", When::BetweenWords, "versus", "gegen", &Words::versus},
    {"arr", When::WithPoint, "arranged by", "bearbeitet von"},
    {"orch", When::WithPoint, "orchestra", "Orchester"},
    {"prod", When::WithPoint, "produced", "produziert"},
    {"incl", When::WithPoint, "including", "inklusive"},
    {"inkl", When::WithPoint, "including", "inklusive"},
    {"bros", When::WithPoint, "brothers", "Brothers"},
    {"jr", When::WithPoint, "junior", "Junior"},
    {"sr", When::WithPoint, "senior", "Senior"},
    {"aka", When::BetweenWords, "also known as", "alias"},
    {"u", When::BetweenWordsWithPoint, "", "und"},
};

constexpr std::string_view kNumberWords =
    " one two three four five six seven eight nine ten eins zwei drei vier fünf sechs sieben acht neun zehn ";
/// What is before "feat" or "ft" where it isn't a guest: "a feat of strength", "in ft. worth".
constexpr std::string_view kNotBeforeFeat = " a the no small this great that in at from of near to ";

class Reading {
  public:
    Reading(Sentence& sentence, Main voice) : sentence_(sentence), voice_(voice) {}

    void ReadAt(std::size_t index) {
        if (!sentence_.Is(index, Kind::Word)) return;
        const auto* found =
            std::find_if(std::begin(kAbbreviations), std::end(kAbbreviations),
                         [&](const Abbreviation& one) { return one.written == sentence_.At(index).lower; });
        if (found == std::end(kAbbreviations) || !Fits(*found, index)) return;
        std::string words(Spoken(*found, index));
        if (words.empty()) return;
        const bool hasPoint = sentence_.IsMark(index + 1, ".");
        if (words == "arranged by" && sentence_.IsWord(sentence_.Next(index + hasPoint), "by"))
            words = "arranged";
        if (!hasPoint) return sentence_.ReplaceByWords(index, words);
        // "op.67": the point parts them.
        const bool touches = !sentence_.Is(index + 2, Kind::Blank) && !sentence_.Is(index + 2, Kind::Mark);
        sentence_.Replace(index + 1, Kind::Blank, touches && index + 2 < sentence_.Size() ? " " : "");
        sentence_.ReplaceByWords(index, words);
    }

  private:
    std::string_view Spoken(const Abbreviation& one, std::size_t index) const {
        const Main main = LanguageAt(sentence_, index, voice_);
        if (main == Main::English) return one.english;
        if (main == Main::German) return one.german;
        return one.others ? WordsOf(main).*one.others : std::string_view();
    }

    bool Fits(const Abbreviation& one, std::size_t index) const {
        const bool hasPoint = sentence_.IsMark(index + 1, ".");
        const std::size_t next = sentence_.Next(hasPoint ? index + 1 : index);
        const bool isSpaced = hasPoint || sentence_.Is(index + 1, Kind::Blank);
        switch (one.when) {
            case When::BeforeNumber:
                return IsNumber(next, isSpaced && (hasPoint || one.written != "no")) ||
                       IsPosthumous(one, next);
            case When::BeforeNumberWithPoint:
                return hasPoint && IsNumber(next, true);
            case When::WithPoint:
                return hasPoint;
            case When::BetweenWords:
                return IsBetweenWords(one, index, next);
            case When::BetweenWordsWithPoint:
                return hasPoint && IsBetweenWords(one, index, next);
        }
        return false;
    }
    bool IsNumber(std::size_t next, bool isSpaced) const {
        if (sentence_.IsMark(next, "#")) return sentence_.Is(next + 1, Kind::Number);
        return sentence_.Is(next, Kind::Number) ||
               (isSpaced && IsOneOf(sentence_.At(next).lower, kNumberWords));
    }
    bool IsPosthumous(const Abbreviation& one, std::size_t next) const {
        return one.written == "op" &&
               (sentence_.IsWord(next, "posth") || sentence_.IsWord(next, "posthumous"));
    }
    bool IsBetweenWords(const Abbreviation& one, std::size_t index, std::size_t next) const {
        const std::size_t previous = sentence_.Previous(index);
        if (previous == Sentence::kNone || next == Sentence::kNone || sentence_.IsMark(previous, "'"))
            return false;
        const bool isFeat = one.written == "feat" || one.written == "ft";
        if (isFeat && IsOneOf(sentence_.At(previous).lower, kNotBeforeFeat)) return false;
        if (one.written == "feat" && !sentence_.IsMark(index + 1, ".") && sentence_.IsWord(next, "of"))
            return false;
        if (one.written == "ft" && sentence_.Is(previous, Kind::Number)) return false;
        return true;
    }

    Sentence& sentence_;
    const Main voice_;
};

}  // namespace

void ReadAbbreviations(Sentence& sentence, Main voice) {
    Reading reading(sentence, voice);
    for (std::size_t i = 0; i < sentence.Size(); ++i) reading.ReadAt(i);
}

}  // namespace sorakaze::reading
