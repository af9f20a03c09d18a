// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "program/check/Slips.h"

#include <algorithm>
#include <array>

#include "base/Ascii.h"
#include "base/NearestWord.h"
#include "base/Utf8.h"

namespace sorakaze::check {
namespace {

constexpr std::size_t kLongestWord = 24;

constexpr auto kKeyNames = [] {
    std::array<std::string_view, words::kHeaders.size() + words::kBlocks.size()> names;
    std::copy(words::kBlocks.begin(), words::kBlocks.end(),
              std::copy(words::kHeaders.begin(), words::kHeaders.end(), names.begin()));
    return names;
}();

bool IsLetter(char32_t character) {
    return character < 0x80 &&
           (ascii::IsLetter(static_cast<char>(character)) || character == '_' || character == '-');
}

bool IsDigit(char32_t character) {
    return character >= '0' && character <= '9';
}

/// What the line has at `at`, narrowed; a blank at its end.
utf8::Character ReadNarrowed(std::string_view line, std::size_t at, std::size_t end) {
    if (at >= end) return {' ', 0};
    const auto character = utf8::Read(line, at);
    return {Narrowed(character.code), character.size};
}

/// Another letter makes a short word another word: "day" needn't be a slip of "say".
bool IsLikeTyping(std::string_view written, std::string_view meant) {
    constexpr std::size_t kShort = 4;
    if (written.size() != meant.size() || written.size() > kShort) return true;
    const std::string a = ascii::Lowered(written);
    const std::string b = ascii::Lowered(meant);
    return std::is_permutation(a.begin(), a.end(), b.begin());
}

}  // namespace

char32_t Narrowed(char32_t character) {
    if (character >= 0xFF01 && character <= 0xFF5E) return character - 0xFEE0;
    if (character == 0x3000 || character == 0xA0 || character == 0x2003 || character == '\t') return ' ';
    return character == 0x2236 ? ':' : character;
}

std::string Narrowed(std::string_view text) {
    std::string narrowed;
    for (std::size_t at = 0; at < text.size();) {
        const auto character = utf8::Read(text, at);
        utf8::Append(narrowed, Narrowed(character.code));
        at += character.size;
    }
    return narrowed;
}

std::optional<Meant> FindMeant(std::string_view written, std::span<const std::string_view> words,
                               std::span<const words::OtherWord> otherWords) {
    const std::string lower = ascii::Lowered(written);
    for (const auto& other : otherWords) {
        if (lower == other.written) return Meant{other.meant};
    }
    const auto nearest = FindNearestWord(written, words, written.size() > 4 ? 2 : 1);
    if (!nearest || nearest->slips >= nearest->word.size()) return {};
    return Meant{nearest->word, nearest->slips <= 1 && nearest->only && IsLikeTyping(written, nearest->word)};
}

std::optional<KeyGuess> GuessKey(std::string_view line, Span clean) {
    std::string word;
    std::size_t at = clean.begin;
    auto next = ReadNarrowed(line, at, clean.end);
    while (IsLetter(next.code) && word.size() <= kLongestWord) {
        word += static_cast<char>(next.code);
        at += next.size;
        next = ReadNarrowed(line, at, clean.end);
    }
    const std::size_t wordEnd = at;
    while (next.code == ' ' && next.size > 0) {
        at += next.size;
        next = ReadNarrowed(line, at, clean.end);
    }
    const bool colon = next.code == ':';
    const bool separated =
        colon || next.code == '=' || next.code == ';' || (next.code == '.' && at == wordEnd);
    const auto meant = FindMeant(word, kKeyNames, words::kOtherKeys);
    if (!meant) return {};
    const bool same = CountSlips(word, meant->word) == 0;
    if (!same && !separated && !IsDigit(next.code)) return {};
    const bool isBlock = std::ranges::find(words::kBlocks, meant->word) != words::kBlocks.end();
    return KeyGuess{meant->word,
                    {clean.begin, separated ? at + next.size : wordEnd},
                    separated,
                    meant->certain && colon,
                    separated || !isBlock || IsDigit(next.code)};
}

}  // namespace sorakaze::check
