// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "http/HeadParser.h"

#include <string>

namespace sorakaze::http {

std::int32_t ParseStatus(std::string_view head) {
    const String statusLine(head.substr(0, head.find(DetermineEOLCharacter(head))));
    return ToInt32(Val(NthField(statusLine, " ", 2)));
}

/// Kept behaviour 62.
std::vector<HeaderField> ParseHeaderFields(const String& head) {
    const String lineEnd(DetermineEOLCharacter(head.Bytes()));
    const String unfolded = ReplaceAll(ReplaceAll(head, lineEnd + " ", " "), lineEnd + "\t", " ");
    std::vector<HeaderField> fields;
    std::string_view rest = unfolded.Bytes();
    while (!rest.empty()) {
        const std::size_t end = rest.find(lineEnd.Bytes());
        const std::string_view line = rest.substr(0, end);
        rest.remove_prefix(end == std::string_view::npos ? rest.size() : end + lineEnd.Bytes().size());
        const std::size_t colon = line.find(':');
        if (colon == std::string_view::npos) continue;
        fields.push_back({String(line.substr(0, colon)), LTrim(String(line.substr(colon + 1)))});
    }
    return fields;
}

}  // namespace sorakaze::http
