// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "speech/say/JapaneseText.h"

#include <algorithm>

#include "speech/japanese/Characters.h"
#include "speech/japanese/CleanText.h"
#include "speech/japanese/Grammar.h"
#include "speech/say/Clauses.h"
#include "speech/say/Pronunciation.h"
#include "speech/scripts/OtherScripts.h"
#include "speech/scripts/PlainLetters.h"

namespace sorakaze::speech {
namespace {

using namespace japanese;
using Phrase = ClauseBuilder::Phrase;

bool IsLatinLetter(char32_t code) {
    return (code >= U'A' && code <= U'Z') || (code >= U'a' && code <= U'z') ||
           (code >= 0xC0 && code <= 0x24F && code != 0xD7 && code != 0xF7);
}

/// A run of characters of one kind, or one mark. Blanks are between tokens.
struct Token {
    enum class Kind { Japanese, Latin, Digits, Mark };
    Kind kind;
    std::size_t begin, end;
};

Token::Kind KindOf(char32_t code) {
    if (IsKana(code) || IsKanji(code)) return Token::Kind::Japanese;
    if (IsLatinLetter(code)) return Token::Kind::Latin;
    return IsDigit(code) ? Token::Kind::Digits : Token::Kind::Mark;
}

std::vector<Token> Tokens(std::u32string_view text) {
    std::vector<Token> tokens;
    for (std::size_t at = 0; at < text.size(); ++at) {
        if (text[at] == U' ') continue;
        const Token::Kind kind = KindOf(text[at]);
        const bool extends = kind != Token::Kind::Mark && !tokens.empty() && tokens.back().end == at &&
                             tokens.back().kind == kind;
        if (extends) {
            ++tokens.back().end;
        } else {
            tokens.push_back({kind, at, at + 1});
        }
    }
    return tokens;
}

/// Particles, endings and the like are spoken in one breath with the word before them.
bool BelongsToPhrase(const Grammar& grammar) {
    return grammar.kind == U"助詞" || grammar.kind == U"助動詞" || grammar.subkind == U"接尾" ||
           grammar.subkind == U"非自立" || grammar.conjugation == U"サ変・スル";
}

/// Goes over the tokens once.
class Speech {
  public:
    Speech(const Reader& reader, std::u32string_view text)
        : reader_(reader), text_(text), tokens_(Tokens(text)) {}

    std::vector<SpokenClause> Clauses() {
        while (at_ < tokens_.size()) {
            if (AddLatin()) continue;
            if (tokens_[at_].kind == Token::Kind::Mark) {
                AddMark(text_[tokens_[at_++].begin]);
            } else {
                AddSentence();
            }
        }
        return builder_.Finish();
    }

  private:
    bool Is(std::size_t index, Token::Kind kind) const {
        return index < tokens_.size() && tokens_[index].kind == kind;
    }
    bool IsMark(std::size_t index, std::u32string_view marks) const {
        return Is(index, Token::Kind::Mark) && marks.find(text_[tokens_[index].begin]) != marks.npos;
    }
    bool TouchesPrevious(std::size_t index) const {
        return index > 0 && index < tokens_.size() && tokens_[index - 1].end == tokens_[index].begin;
    }
    /// "10cc", "2Pac", but not the year before a title.
    bool StartsLatin(std::size_t index) const {
        return Is(index, Token::Kind::Latin) ||
               (Is(index, Token::Kind::Digits) && Is(index + 1, Token::Kind::Latin) &&
                TouchesPrevious(index + 1));
    }
    /// True if a counter in kanji follows the number: "CD2枚".
    bool IsCounted(std::size_t index) const {
        return TouchesPrevious(index + 1) && IsKanji(text_[tokens_[index + 1].begin]);
    }

    /// Letters, and the digits and marks between and after them, up to the next Japanese word.
    bool AddLatin() {
        if (!StartsLatin(at_)) return false;
        std::size_t end = at_ + (Is(at_, Token::Kind::Latin) ? 1 : 2);  // after the last letter or digit
        for (std::size_t next = end; next < tokens_.size(); ++next) {
            if (Is(next, Token::Kind::Latin)) {
                end = next + 1;
            } else if (Is(next, Token::Kind::Digits)) {
                if (!IsCounted(next)) end = next + 1;
            } else if (!IsMark(next, U"'&.-!/,:+*$#’") || next - end >= 2) {
                break;
            }
        }
        builder_.AddLatin(text_.substr(tokens_[at_].begin, tokens_[end - 1].end - tokens_[at_].begin));
        at_ = end;
        return true;
    }

    void AddMark(char32_t mark) {
        if (const auto pause = PauseOf(mark)) builder_.AddPause(*pause);
        builder_.AddJapanese(WordOf(mark), Phrase::New);
    }

    /// Whether the number at `index` is the second or a later group of thousands: "1,234".
    bool IsThousands(std::size_t index) const {
        return Is(index, Token::Kind::Digits) && tokens_[index].end - tokens_[index].begin == 3;
    }

    /// How a mark between two numbers is read: 12:30 as 12時30分, 3.5 as it is. Nothing for other marks.
    std::u32string_view BetweenNumbers(std::size_t index) const {
        const bool isBetween = Is(index - 1, Token::Kind::Digits) && Is(index + 1, Token::Kind::Digits) &&
                               TouchesPrevious(index) && TouchesPrevious(index + 1);
        if (!isBetween) return {};
        if (IsMark(index, U".")) return U".";
        return IsMark(index, U":") && !IsMark(index - 2, U":") ? U"時" : U"";
    }

    /// The sentence that starts here, as the reader takes it, up to a mark, a blank or a foreign word.
    std::u32string TakeSentence() {
        std::u32string sentence;
        const std::size_t first = at_;
        for (; at_ < tokens_.size() && (at_ == first || TouchesPrevious(at_)); ++at_) {
            const Token& token = tokens_[at_];
            const bool afterNumber = at_ > first && Is(at_ - 1, Token::Kind::Digits);
            if (token.kind != Token::Kind::Mark) {
                if (StartsLatin(at_)) break;
                sentence += text_.substr(token.begin, token.end - token.begin);
                if (at_ > first + 1 && IsMark(at_ - 1, U":")) sentence += U'分';
            } else if (afterNumber && IsMark(at_, U",") && TouchesPrevious(at_ + 1) && IsThousands(at_ + 1)) {
                continue;
            } else if (afterNumber && IsMark(at_, U"%")) {
                sentence += U'%';
            } else if (afterNumber && !BetweenNumbers(at_).empty()) {
                sentence += BetweenNumbers(at_);
            } else {
                break;
            }
        }
        return sentence;
    }

    void AddSentence() {
        const bool isAfterName =
            at_ > 0 && (Is(at_ - 1, Token::Kind::Latin) || Is(at_ - 1, Token::Kind::Digits) ||
                        IsMark(at_ - 1, U"」』\"”）)"));
        const std::u32string sentence = TakeSentence();
        const Start start = isAfterName && IsHiragana(sentence.front()) ? Start::AfterWord : Start::OfText;
        for (const ReadMorpheme& morpheme : reader_.Read(sentence, Digits::Read, start)) {
            const bool isSame = morpheme.joinsPrevious || BelongsToPhrase(morpheme.grammar);
            builder_.AddJapanese(Pronunciation(morpheme), isSame ? Phrase::Same : Phrase::New);
        }
    }

    const Reader& reader_;
    const std::u32string_view text_;
    const std::vector<Token> tokens_;
    std::size_t at_ = 0;
    ClauseBuilder builder_;
};

}  // namespace

std::string OrdinaryForms(std::string_view text) {
    std::u32string ordinary = Decode(text);
    for (char32_t& code : ordinary) {
        if (code >= 0xFF01 && code <= 0xFF5E) code -= 0xFF01 - U'!';
        if (code == 0x3000) code = U' ';
    }
    return Encode(CleanText(ordinary));
}

std::vector<SpokenClause> SpokenClauses(const Reader& reader, std::string_view text) {
    const std::u32string characters =
        Decode(scripts::SpellOtherScripts(scripts::PlainLetters(text), {"ja", false}));
    return Speech(reader, characters).Clauses();
}

}  // namespace sorakaze::speech
