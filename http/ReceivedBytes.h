// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// What has arrived of a response before its body began, and where its head ends. A head that comes in byte by
// byte costs no more than one that comes at once: every byte is looked at once.
#pragma once

#include <array>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include "app/runtime/String.h"

namespace sorakaze::http {

class ReceivedBytes {
  public:
    /// Behind the head stands a line end twice: the empty line.
    struct HeadEnd {
        std::size_t headSize;
        std::size_t lineEndSize;
    };

    void Append(const String& bytes) { bytes_ += bytes.Bytes(); }
    bool IsEmpty() const { return begin_ == bytes_.size(); }
    std::string_view View() const { return std::string_view(bytes_).substr(begin_); }
    /// Removes and gives `size` bytes, all that are there if fewer.
    String Read(std::size_t size);
    void Clear();

    /// Where the head ends as far as the bytes at hand tell. A line end of the kind that they show, twice in
    /// a row; a CRLF goes before a LF, and that before a CR, wherever it stands. Where that kind doesn't
    /// stand twice in a row, another does for it: of LF, CRLF and CR the last one that does. So a head with
    /// mixed line ends is still cut, and what lies behind the head has its say if it came along.
    std::optional<HeadEnd> FindHeadEnd();

  private:
    enum Text { kCrLfTwice, kCrLfOnce, kLfTwice, kLfOnce, kCrTwice, kTextCount };
    static constexpr std::array<std::string_view, kTextCount> kTexts{"\r\n\r\n", "\r\n", "\n\n", "\n",
                                                                     "\r\r"};
    /// Where a text first occurs in View(). Once found, it stays there while bytes are added.
    struct FirstPlace {
        std::size_t at = std::string_view::npos;
        bool Found() const { return at != std::string_view::npos; }
    };

    std::string bytes_;
    std::size_t begin_ = 0;     ///< what lies before it was read
    std::size_t searched_ = 0;  ///< of View()
    std::array<FirstPlace, kTextCount> places_;
};

}  // namespace sorakaze::http
