// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "gateway/encyclopaedia/ParagraphText.h"

#include <algorithm>
#include <vector>

namespace sorakaze::gateway {
namespace {

/// Whether the mark at `at` belongs to the word before it, so that no blank goes between them.
bool IsClosingMark(std::string_view text, std::size_t at) {
    const std::string_view mark = CharacterAt(text, at);
    if (IsOneOf(mark, {",", ".", ";", ":"})) return at + 1 == text.size() || text[at + 1] == ' ';
    return IsOneOf(mark, {"、", "。", "，"});
}

}  // namespace

bool IsOneOf(std::string_view word, std::initializer_list<std::string_view> words) {
    return std::ranges::find(words, word) != words.end();
}

std::size_t CountCharacters(std::string_view text) {
    return static_cast<std::size_t>(std::ranges::count_if(text, [](char c) { return (c & 0xC0) != 0x80; }));
}

std::string_view CharacterAt(std::string_view text, std::size_t at) {
    std::size_t size = 1;
    while (at + size < text.size() && (text[at + size] & 0xC0) == 0x80) ++size;
    return text.substr(at, size);
}

std::string_view NextWord(std::string_view text, std::size_t& at) {
    while (at < text.size() && text[at] == ' ') ++at;
    const std::size_t begin = at;
    while (at < text.size() && text[at] != ' ') ++at;
    return text.substr(begin, at - begin);
}

Bracket BracketOf(std::string_view character) {
    if (IsOneOf(character, {"(", "（"})) return Bracket::OpensRound;
    if (IsOneOf(character, {")", "）"})) return Bracket::ClosesRound;
    if (IsOneOf(character, {"[", "［"})) return Bracket::OpensSquare;
    if (IsOneOf(character, {"]", "］"})) return Bracket::ClosesSquare;
    return Bracket::None;
}

std::string WithoutBrackets(std::string_view text, Removal removal) {
    struct Open {
        Bracket bracket;
        std::size_t at;
    };
    std::vector<Open> open;
    std::string out;
    const bool blanks = removal == Removal::Blanks;
    for (std::size_t at = 0; at < text.size();) {
        const std::string_view character = CharacterAt(text, at);
        at += character.size();
        const Bracket bracket = BracketOf(character);
        const bool isKept = bracket == Bracket::None && character != "\"" &&
                            !(blanks && (character[0] == kBoldBegins || character[0] == kBoldEnds));
        const std::size_t begin = out.size();
        if (isKept) {
            out += character;
        } else if (blanks) {
            out.append(character.size(), ' ');
        }
        if (bracket == Bracket::OpensRound || bracket == Bracket::OpensSquare) {
            open.push_back({bracket, begin});
        } else if (bracket != Bracket::None) {
            const Bracket wanted =
                bracket == Bracket::ClosesRound ? Bracket::OpensRound : Bracket::OpensSquare;
            const auto partner = std::find_if(open.rbegin(), open.rend(), [&](const Open& candidate) {
                return candidate.bracket == wanted;
            });
            if (partner == open.rend()) continue;
            const std::size_t length = out.size() - partner->at;
            out.resize(partner->at);
            if (blanks) out.append(length, ' ');
            open.erase(partner.base() - 1, open.end());
        }
    }
    return out;
}

std::string WithoutBoldMarks(std::string_view text) {
    std::string out(text);
    std::erase_if(out, [](char c) { return c == kBoldBegins || c == kBoldEnds; });
    return out;
}

std::string WithTidyBlanks(std::string_view text) {
    std::string out;
    for (std::size_t at = 0; at < text.size();) {
        const std::string_view character = CharacterAt(text, at);
        if (IsClosingMark(text, at)) {
            while (out.ends_with(' ')) out.pop_back();
            if (IsOneOf(character, {",", "、"}) && out.ends_with(character))
                out.resize(out.size() - character.size());
        }
        if (character != " " || (!out.empty() && !out.ends_with(' '))) out += character;
        at += character.size();
    }
    while (out.ends_with(' ')) out.pop_back();
    return out;
}

}  // namespace sorakaze::gateway
