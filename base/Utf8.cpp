// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "base/Utf8.h"

namespace sorakaze::utf8 {

std::size_t CountCharacters(std::string_view text) {
    std::size_t count = 0;
    std::size_t at = 0;
    while (at < text.size()) {
        if (at + 8 <= text.size() && EightAscii(text, at)) {
            at += 8;
            count += 8;
            continue;
        }
        at += Read(text, at).size;
        ++count;
    }
    return count;
}

std::size_t OffsetOf(std::string_view text, std::size_t count) {
    std::size_t at = 0;
    while (count > 0 && at < text.size()) {
        if (count >= 8 && at + 8 <= text.size() && EightAscii(text, at)) {
            at += 8;
            count -= 8;
            continue;
        }
        at += Read(text, at).size;
        --count;
    }
    return at;
}

std::size_t WellFormedSize(std::string_view text) {
    std::size_t at = 0;
    while (at < text.size()) {
        const Character character = Read(text, at);
        if (character.code >= kStray) break;
        at += character.size;
    }
    return at;
}

bool IsWellFormed(std::string_view text) {
    return WellFormedSize(text) == text.size();
}

void Append(std::string& out, char32_t code) {
    const auto put = [&out](char32_t byte) { out += static_cast<char>(byte); };
    if (code < 0x80) {
        put(code);
    } else if (code < 0x800) {
        put(0xC0 | code >> 6);
        put(0x80 | (code & 0x3F));
    } else if (code < 0x10000) {
        put(0xE0 | code >> 12);
        put(0x80 | (code >> 6 & 0x3F));
        put(0x80 | (code & 0x3F));
    } else if (code < kStray) {
        put(0xF0 | code >> 18);
        put(0x80 | (code >> 12 & 0x3F));
        put(0x80 | (code >> 6 & 0x3F));
        put(0x80 | (code & 0x3F));
    } else {
        put(code - kStray);
    }
}

}  // namespace sorakaze::utf8
