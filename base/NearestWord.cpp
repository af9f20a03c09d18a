// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "base/NearestWord.h"

#include <algorithm>
#include <array>
#include <string>

#include "base/Ascii.h"
#include "base/Utf8.h"

namespace sorakaze {
namespace {

constexpr std::size_t kLongest = 64;  // characters

std::u32string Characters(std::string_view word) {
    std::u32string characters;
    for (std::size_t at = 0; at < word.size() && characters.size() < kLongest;) {
        const auto character = utf8::Read(word, at);
        characters += character.code < 0x80
                          ? static_cast<char32_t>(ascii::Lower(static_cast<char>(character.code)))
                          : character.code;
        at += character.size;
    }
    return characters;
}

}  // namespace

std::size_t CountSlips(std::string_view a, std::string_view b) {
    const std::u32string x = Characters(a);
    const std::u32string y = Characters(b);
    std::array<std::array<std::size_t, kLongest + 1>, kLongest + 1> slips;
    for (std::size_t i = 0; i <= x.size(); ++i) slips[i][0] = i;
    for (std::size_t j = 0; j <= y.size(); ++j) slips[0][j] = j;
    for (std::size_t i = 1; i <= x.size(); ++i) {
        for (std::size_t j = 1; j <= y.size(); ++j) {
            std::size_t least = std::min(slips[i - 1][j], slips[i][j - 1]) + 1;
            least = std::min(least, slips[i - 1][j - 1] + (x[i - 1] == y[j - 1] ? 0 : 1));
            const bool swapped = i > 1 && j > 1 && x[i - 1] == y[j - 2] && x[i - 2] == y[j - 1];
            slips[i][j] = swapped ? std::min(least, slips[i - 2][j - 2] + 1) : least;
        }
    }
    return slips[x.size()][y.size()];
}

std::optional<NearestWord> FindNearestWord(std::string_view word, std::span<const std::string_view> words,
                                           std::size_t most) {
    std::optional<NearestWord> nearest;
    for (const std::string_view candidate : words) {
        const std::size_t slips = CountSlips(word, candidate);
        if (slips > most || (nearest && slips > nearest->slips)) continue;
        if (nearest && slips == nearest->slips) {
            nearest->only = false;
            // Of "intro" and "introW" somebody who wrote "intros" meant the former.
            if (Characters(word).starts_with(Characters(candidate))) nearest->word = candidate;
        } else {
            nearest = {candidate, slips, true};
        }
    }
    return nearest;
}

}  // namespace sorakaze
