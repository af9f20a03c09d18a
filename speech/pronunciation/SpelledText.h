// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace sorakaze::speech {

/// A text as names in it are compared: letter case, hyphens, and the kind of apostrophes, blanks and
/// full-width forms don't count.
struct SpelledText {
    explicit SpelledText(std::string_view text);

    std::u32string characters;
    std::vector<std::size_t> begins, ends;  ///< of each character, in bytes
    std::vector<bool> parted;               ///< whether a hyphen was before the character

    /// Whether no word goes on from the character before `at` to the one there.
    bool IsBetweenWords(std::size_t at) const;
};

}  // namespace sorakaze::speech
