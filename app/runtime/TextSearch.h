// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// Finding one text in another without regard to letter case, in time linear in both. Used by InStr, NthField,
// Split, Replace and ReplaceAll.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace sorakaze {

class TextSearch {
  public:
    struct Match {
        std::size_t begin;  ///< byte offsets in the text
        std::size_t end;
    };

    /// Both views must outlive the search.
    TextSearch(std::string_view text, std::string_view find);

    /// The first match at or after the byte offset `from`, which is a character's first byte.
    std::optional<Match> Next(std::size_t from) const;

  private:
    enum class Way {
        Nothing,  ///< an empty or too long needle
        Exact,    ///< the needle's bytes as they are
        Ascii,    ///< bytes, ASCII letters in either case
        Folded    ///< character by character
    };

    std::optional<Match> NextExact(std::size_t from) const;
    std::optional<Match> NextAscii(std::size_t from) const;
    std::optional<Match> NextFolded(std::size_t from) const;
    std::optional<Match> NextAsciiLong(std::size_t from) const;
    void PrepareFolded();

    std::string_view text_;
    std::string_view find_;
    Way way_ = Way::Nothing;
    std::string lower_;                 ///< the needle in lower case, for Ascii
    std::vector<char32_t> folded_;      ///< the needle's folded characters, for Folded
    std::vector<std::size_t> restart_;  ///< for a mismatch after n matches: how many still match
};

}  // namespace sorakaze
