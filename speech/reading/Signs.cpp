// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "speech/reading/Rules.h"

namespace sorakaze::reading {
namespace {

using Kind = Token::Kind;

class Signs {
  public:
    Signs(Sentence& sentence, Main voice) : sentence_(sentence), voice_(voice) {}

    void ReadAt(std::size_t index) {
        const Token& token = sentence_.At(index);
        if (token.kind == Kind::Word) ReadWord(index);
        if (token.kind != Kind::Mark) return;
        main_ = LanguageAt(sentence_, index, voice_);
        index_ = index;
        const std::string mark = token.text;
        if (mark == "&" || mark == "+") {
            ReadAnd();
        } else if (mark == "#") {
            ReadHash();
        } else if (mark == "/") {
            ReadSlash();
        } else if (mark == "°" || mark == "º") {
            ReadDegree();
        } else if (mark == "!" || mark == "$" || mark == "*") {
            ReadStylised(mark);
        } else if (mark == "@") {
            ReadAs(Words().at);
        } else if (mark == "=") {
            ReadAs(Words().equals);
        } else if (mark == "½" || mark == "¼" || mark == "¾") {
            ReadFraction(mark);
        } else if (mark == "_" || mark == "|" || mark == "^" || mark == "\\" || mark == "~" || mark == "<" ||
                   mark == ">" || mark == "¬" || mark == "¦") {
            sentence_.Replace(index, Kind::Blank, " ");
        }
    }

  private:
    const struct Words& Words() const { return WordsOf(main_); }
    bool IsText(std::size_t index) const {
        return sentence_.Is(index, Kind::Word) || sentence_.Is(index, Kind::Number) ||
               sentence_.Is(index, Kind::Japanese);
    }
    bool TouchesLetters() const {
        return sentence_.Is(index_ - 1, Kind::Word) && sentence_.Is(index_ + 1, Kind::Word);
    }
    void ReadAs(std::string_view words) {
        if (!words.empty()) sentence_.ReplaceByWords(index_, words);
    }

    /// "rock 'n' roll", "f/ somebody".
    void ReadWord(std::size_t index) {
        main_ = LanguageAt(sentence_, index, voice_);
        index_ = index;
        const std::string& word = sentence_.At(index).lower;
        const std::string_view andWord = Words().andWord;
        if (andWord.empty()) return;
        const std::string text = sentence_.At(index).text;
        if (const auto joined = word.find("'n'"); joined != word.npos && joined > 0) {
            ReadAs(text.substr(0, joined) + " " + std::string(andWord) + " " + text.substr(joined + 3));
        } else if (word == "n" && (sentence_.IsMark(index - 1, "'") || sentence_.IsMark(index + 1, "'")) &&
                   IsText(sentence_.Previous(sentence_.IsMark(index - 1, "'") ? index - 1 : index))) {
            if (sentence_.IsMark(index - 1, "'")) sentence_.Remove(index - 1);
            if (sentence_.IsMark(index + 1, "'")) sentence_.Remove(index + 1);
            ReadAs(andWord);
        } else if (word == "w" && sentence_.IsMark(index + 1, "/") &&
                   sentence_.Previous(index) != Sentence::kNone) {
            sentence_.Remove(index + 1);
            if (sentence_.IsWord(index + 2, "o") && main_ == Main::English) {
                sentence_.Remove(index + 2);
                ReadAs("without");
            } else {
                ReadAs(Words().with);
            }
        }
    }

    /// "&" is "and"; "+" is so between names and plus between numbers and single letters.
    void ReadAnd() {
        const std::size_t previous = sentence_.Previous(index_), next = sentence_.Next(index_);
        const auto isName = [this](std::size_t at) {
            return sentence_.Is(at, Kind::Word) && sentence_.At(at).text.size() > 1;
        };
        const bool isPlus = sentence_.IsMark(index_, "+") && !(isName(previous) && isName(next));
        ReadAs(isPlus ? Words().plus : Words().andWord);
    }

    void ReadHash() {
        const std::size_t next = sentence_.Next(index_);
        const bool isNote = sentence_.Is(index_ - 1, Kind::Word) && sentence_.At(index_ - 1).text.size() == 1;
        if (isNote && main_ == Main::English && !sentence_.Is(index_ + 1, Kind::Number)) {
            ReadAs("sharp");
        } else if (sentence_.Is(next, Kind::Number)) {
            // After "number", which an abbreviation has become, it says nothing new.
            const bool isSaid = sentence_.Is(sentence_.Previous(index_), Kind::Word) &&
                                sentence_.At(sentence_.Previous(index_)).text == Words().number;
            isSaid ? sentence_.Remove(index_) : ReadAs(Words().number);
        } else if (IsText(index_ + 1) && !IsText(index_ - 1)) {
            ReadAs(Words().hashtag);
        } else {
            sentence_.Replace(index_, Kind::Blank, " ");
        }
    }

    void ReadSlash() {
        static constexpr std::pair<std::string_view, std::string_view> kFractions[] = {
            {"12", "half"}, {"14", "quarter"}, {"34", "three quarters"}};
        const bool isFraction =
            sentence_.Is(index_ - 1, Kind::Number) && sentence_.Is(index_ + 1, Kind::Number);
        if (isFraction && main_ == Main::English) {
            for (const auto& [digits, words] : kFractions) {
                if (sentence_.At(index_ - 1).text + sentence_.At(index_ + 1).text != digits ||
                    sentence_.IsMark(index_ + 2, "/"))
                    continue;
                sentence_.Remove(index_ - 1);
                sentence_.Remove(index_ + 1);
                return ReadAs(words == "half" ? "one half" : words == "quarter" ? "one quarter" : words);
            }
        }
        const bool isSpaced = sentence_.Is(index_ - 1, Kind::Blank) && sentence_.Is(index_ + 1, Kind::Blank);
        if (isSpaced) {
            sentence_.Replace(index_, Kind::Mark, ",");
        } else {
            sentence_.Replace(index_, Kind::Blank, " ");
        }
    }

    /// "n° 5".
    void ReadDegree() {
        if (!sentence_.IsWord(index_ - 1, "n") || !sentence_.Is(sentence_.Next(index_), Kind::Number) ||
            Words().number.empty())
            return;
        sentence_.Remove(index_);
        --index_;
        sentence_.Replace(index_ + 1, Kind::Blank, " ");
        ReadAs(Words().number);
    }

    /// Letters that look like marks: "p!nk", "a$ap"; and a "!" within a name, which doesn't end a sentence.
    void ReadStylised(const std::string& mark) {
        if (mark == "*") {
            sentence_.Replace(index_, Kind::Blank, TouchesLetters() ? "" : " ");
        } else if (TouchesLetters()) {
            sentence_.Replace(index_, Kind::Word, mark == "!" ? "i" : "s");
        } else if (mark == "!") {
            const std::size_t next = sentence_.Next(index_);
            const char first = next == Sentence::kNone ? 'A' : sentence_.At(next).text[0];
            const bool goesOn = sentence_.Is(next, Kind::Word) && first >= 'a' && first <= 'z';
            const std::string& before = sentence_.At(index_ - 1).text;
            if (goesOn && sentence_.Is(index_ - 1, Kind::Word) && before[0] >= 'a' && before[0] <= 'z')
                sentence_.Remove(index_);
        }
    }

    void ReadFraction(const std::string& mark) {
        const bool isAfterNumber = sentence_.Is(index_ - 1, Kind::Number);
        const std::string words(mark == "½"   ? Words().half
                                : mark == "¼" ? Words().quarter
                                              : Words().threeQuarters);
        if (words.empty()) return;
        if (main_ != Main::English)
            return ReadAs(isAfterNumber && main_ == Main::German && mark == "½" ? "einhalb" : words);
        const std::string one = mark == "¾" ? "" : isAfterNumber ? "a " : "one ";
        ReadAs((isAfterNumber ? "and " : "") + one + words);
    }

    Sentence& sentence_;
    const Main voice_;
    Main main_ = Main::Other;
    std::size_t index_ = 0;
};

}  // namespace

void ReadSigns(Sentence& sentence, Main voice) {
    Signs signs(sentence, voice);
    for (std::size_t i = 0; i < sentence.Size(); ++i) signs.ReadAt(i);
}

}  // namespace sorakaze::reading
