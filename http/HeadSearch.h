// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// Finds the end of the head in what has arrived of a response. It looks at every byte once, so a head that
// arrives byte by byte costs no more than one that arrives at once. No I/O.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

namespace sorakaze::http {

class HeadSearch {
  public:
    /// After the head there is a line end twice: the empty line.
    struct HeadEnd {
        std::size_t headSize;
        std::size_t lineEndSize;
    };

    /// Where the head in `text` ends; nullopt until it does. It ends where the text's line end occurs twice
    /// in a row; that is CRLF if the text has one anywhere, else LF, else CR. If this one doesn't occur twice
    /// in a row, it is the last of LF, CRLF and CR that does: so a head with mixed line ends is still found,
    /// and bytes of the body that arrived with the head can decide it.
    ///
    /// `position` is that of the text's beginning in all that arrives. As long as it is the same, the text
    /// must begin with the text of the call before.
    std::optional<HeadEnd> FindEnd(std::string_view text, std::uint64_t position);

  private:
    enum Pattern { kCrLfTwice, kCrLfOnce, kLfTwice, kLfOnce, kCrTwice, kPatternCount };
    static constexpr std::array<std::string_view, kPatternCount> kPatterns{"\r\n\r\n", "\r\n", "\n\n", "\n",
                                                                           "\r\r"};
    /// Where a pattern first occurs: the same place when bytes are added.
    struct FirstPlace {
        std::size_t at = std::string_view::npos;
        bool Found() const { return at != std::string_view::npos; }
    };

    std::uint64_t position_ = 0;
    std::size_t searched_ = 0;  ///< of the text
    std::array<FirstPlace, kPatternCount> places_;
};

}  // namespace sorakaze::http
