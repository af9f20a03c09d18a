// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// Which of the words that are known somebody meant who wrote one that isn't. Pure functions.
#pragma once

#include <cstddef>
#include <optional>
#include <span>
#include <string_view>

namespace sorakaze {

/// How many slips lead from one word to the other: a character too many, one too few, another one, or two
/// neighbours swapped. The case of ASCII letters doesn't count. Of long words only the beginnings count.
std::size_t CountSlips(std::string_view a, std::string_view b);

struct NearestWord {
    std::string_view word;  ///< of the words given
    std::size_t slips;
    bool only;  ///< no other word is as near
};

/// Nullopt if none is within `most` slips.
std::optional<NearestWord> FindNearestWord(std::string_view word, std::span<const std::string_view> words,
                                           std::size_t most);

}  // namespace sorakaze
