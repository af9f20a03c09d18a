// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// Parses a response's head. Pure functions from foreign bytes to values; any thread. HTTPSocket and
// InternetHeaders take the values into their state.
#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

#include "app/runtime/String.h"

namespace sorakaze::http {

inline constexpr std::string_view kCrLf = "\r\n";

/// The line end that a head uses: the first of CRLF, LF and CR that occurs in it, CRLF if none does.
constexpr std::string_view DetermineEOLCharacter(std::string_view head) {
    for (const std::string_view lineEnd : {kCrLf, std::string_view("\n"), std::string_view("\r")}) {
        if (head.find(lineEnd) != std::string_view::npos) return lineEnd;
    }
    return kCrLf;
}

/// The second word of the first line as a number; 0 if it is none.
std::int32_t ParseStatus(std::string_view head);

struct HeaderField {
    String name;   ///< up to the line's first colon, as it came
    String value;  ///< without white space at its start
};
/// In order of arrival. A continuation line is joined to the line before it by one blank. Lines without a
/// colon, such as the status line, are skipped.
std::vector<HeaderField> ParseHeaderFields(const String& head);

}  // namespace sorakaze::http
