// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// Where the head ends in what has arrived of a response. A head that comes in byte by byte costs no more than
// one that comes at once: every byte is looked at once.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

namespace sorakaze::http {

class HeadSearch {
  public:
    /// Behind the head stands a line end twice: the empty line.
    struct HeadEnd {
        std::size_t headSize;
        std::size_t lineEndSize;
    };

    /// Where the head ends as far as the bytes at hand tell. A line end of the kind that they show, twice in
    /// a row; a CRLF goes before a LF, and that before a CR, wherever it stands. Where that kind doesn't
    /// stand twice in a row, another does for it: of LF, CRLF and CR the last one that does. So a head with
    /// mixed line ends is still cut, and what lies behind the head has its say if it came along.
    ///
    /// `position` is that of the text's beginning in all that arrives: while it is that of the call before,
    /// the text is that call's text with more behind it.
    std::optional<HeadEnd> FindEnd(std::string_view text, std::uint64_t position);

  private:
    enum Text { kCrLfTwice, kCrLfOnce, kLfTwice, kLfOnce, kCrTwice, kTextCount };
    static constexpr std::array<std::string_view, kTextCount> kTexts{"\r\n\r\n", "\r\n", "\n\n", "\n",
                                                                     "\r\r"};
    /// Where a text first occurs. Once found, it stays there while bytes are added.
    struct FirstPlace {
        std::size_t at = std::string_view::npos;
        bool Found() const { return at != std::string_view::npos; }
    };

    std::uint64_t position_ = 0;
    std::size_t searched_ = 0;  ///< of the text
    std::array<FirstPlace, kTextCount> places_;
};

}  // namespace sorakaze::http
