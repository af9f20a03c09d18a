// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string_view>

namespace sorakaze::http {

inline constexpr std::string_view kCrLf = "\r\n";

/// The line end that a block of header text uses: the first of CRLF, LF and CR that occurs in it, CRLF where
/// none does.
constexpr std::string_view DetermineEOLCharacter(std::string_view text) {
    for (const std::string_view lineEnd : {kCrLf, std::string_view("\n"), std::string_view("\r")}) {
        if (text.find(lineEnd) != std::string_view::npos) return lineEnd;
    }
    return kCrLf;
}

}  // namespace sorakaze::http
