// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace sorakaze::reading {

struct Token {
    enum class Kind {
        Word,      ///< letters of scripts with blanks between words; may hold apostrophes
        Number,    ///< ASCII digits
        Mark,      ///< one character
        Blank,     ///< any number of blanks; what was removed is a Blank without text
        Japanese,  ///< a run of kana, kanji and other characters of East Asia
    };
    Kind kind = Kind::Blank;
    std::string text;
    std::string lower;  ///< the text with ASCII letters in lower case
};

/// A text in tokens, which the rules replace one after the other. Indices past either end are blanks.
class Sentence {
  public:
    explicit Sentence(std::string_view text);

    std::size_t Size() const { return tokens_.size(); }
    std::string Text() const;

    const Token& At(std::size_t index) const { return index < tokens_.size() ? tokens_[index] : end_; }
    bool Is(std::size_t index, Token::Kind kind) const { return At(index).kind == kind; }
    bool IsMark(std::size_t index, std::string_view mark) const {
        return Is(index, Token::Kind::Mark) && At(index).text == mark;
    }
    bool IsWord(std::size_t index, std::string_view lower) const {
        return Is(index, Token::Kind::Word) && At(index).lower == lower;
    }

    /// The next or previous token that isn't blank; kNone if there is none near.
    static constexpr std::size_t kNone = static_cast<std::size_t>(-1);
    std::size_t Next(std::size_t index) const;
    std::size_t Previous(std::size_t index) const;
    /// Whether text ends here or goes on elsewhere: at either end, or with two blanks, which are left where
    /// a dash was.
    bool IsEdge(std::size_t index) const;

    void Replace(std::size_t index, Token::Kind kind, std::string text);
    /// Replaces a token by words that stay apart from what touches them.
    void ReplaceByWords(std::size_t index, std::string_view words);
    void Remove(std::size_t index) { Replace(index, Token::Kind::Blank, ""); }

  private:
    std::vector<Token> tokens_;
    Token end_;
};

/// Letters with their accents; no character of East Asia.
bool IsLetter(char32_t code);
bool IsJapanese(char32_t code);

/// Whether a word is in a list whose words are parted, and begun and ended, by blanks: " op no ".
bool IsOneOf(std::string_view word, std::string_view list);

}  // namespace sorakaze::reading
