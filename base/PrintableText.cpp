// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "base/PrintableText.h"

#include "base/Utf8.h"

namespace sorakaze {
namespace {

constexpr char32_t kReplacement = U'\uFFFD';

/// Embeddings, overrides and isolates, which reach beyond the text that they are in, and tags, which nobody
/// sees. Marks and joiners, which languages need, are none of them.
bool TurnsText(char32_t character) {
    return (character >= 0x202A && character <= 0x202E) || (character >= 0x2066 && character <= 0x206F) ||
           (character >= 0xE0000 && character <= 0xE007F);
}

}  // namespace

std::string Printable(const std::string& text) {
    std::string printable;
    printable.reserve(text.size());
    for (std::size_t at = 0; at < text.size();) {
        const auto [character, size] = utf8::Read(text, at);
        if (character >= utf8::kStray) {
            // Some terminals take single bytes for control characters.
            utf8::Append(printable, kReplacement);
        } else if (utf8::IsControl(character)) {
            printable += ' ';
        } else if (!TurnsText(character)) {
            printable.append(text, at, size);
        }
        at += size;
    }
    return printable;
}

}  // namespace sorakaze
