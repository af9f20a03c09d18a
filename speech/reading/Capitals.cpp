// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "base/Utf8.h"
#include "speech/reading/Rules.h"

namespace sorakaze::reading {
namespace {

using Kind = Token::Kind;

constexpr std::size_t kLongestWord = 60;  // characters

/// Said letter by letter in lower case too.
constexpr std::string_view kInitialisms =
    " usa uk tv dj dvd cd lp nyc bbc mtv fm ufo omd klf xtc ymca hmv mp3 ";

bool IsCapital(const Token& token) {
    if (token.kind != Kind::Word || token.text.size() < 2) return false;
    return token.text.find_first_not_of("ABCDEFGHIJKLMNOPQRSTUVWXYZ'") == token.text.npos;
}

std::string Spelled(const std::string& word) {
    std::string letters;
    for (const char letter : word)
        letters += (letters.empty() ? "" : " ") + std::string(1, static_cast<char>(letter - 'a' + 'A'));
    return letters;
}

bool HasVowel(const Token& token) {
    return token.lower.find_first_of("aeiouy") != token.lower.npos;
}

bool IsLikeAWord(const Sentence& sentence, std::size_t index, bool isAfterCapital) {
    const Token& token = sentence.At(index);
    const Token& next = sentence.At(sentence.Next(index));
    if (!HasVowel(token)) return false;
    return token.text.size() >= 4 || isAfterCapital || (IsCapital(next) && HasVowel(next));
}

}  // namespace

void ReadCapitals(Sentence& sentence, Main voice) {
    bool isAfterCapital = false;
    for (std::size_t i = 0; i < sentence.Size(); ++i) {
        const Token& token = sentence.At(i);
        if (token.kind != Kind::Word) {
            isAfterCapital = isAfterCapital && token.kind == Kind::Blank;
            continue;
        }
        const bool isCapital = IsCapital(token);
        const bool isLikeWord = isCapital && HasVowel(token);
        const std::string lower = token.lower;
        if (LanguageAt(sentence, i, voice) != Main::Other && IsOneOf(lower, kInitialisms)) {
            sentence.Replace(i, Kind::Word, Spelled(lower));
        } else if (isCapital && IsLikeAWord(sentence, i, isAfterCapital)) {
            sentence.Replace(i, Kind::Word, lower);
        } else if (utf8::CountCharacters(lower) > kLongestWord) {
            sentence.Replace(i, Kind::Word, token.text.substr(0, utf8::OffsetOf(token.text, kLongestWord)));
        }
        isAfterCapital = isLikeWord;
    }
}

}  // namespace sorakaze::reading
