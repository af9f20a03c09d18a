// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include <utility>

#include "app/runtime/String.h"
#include "program/check/Draft.h"

namespace sorakaze::check {

std::string Expanded(Draft& draft, std::string_view text) {
    String expanded{text};
    if (text.find("[[") != std::string_view::npos) {
        // In the interpreter's order.
        for (const auto header : {words::Header::Program, words::Header::Station, words::Header::Band,
                                  words::Header::Personality}) {
            const auto& known = draft.Header(header);
            const std::string name(words::kHeaders[static_cast<std::size_t>(header)]);
            if (known) expanded = ReplaceAll(expanded, "[[" + name + "]]", known->text);
        }
    }
    return ReplaceAll(ReplaceAll(expanded, "\t", " "), Chr(34), "").Bytes();
}

}  // namespace sorakaze::check
