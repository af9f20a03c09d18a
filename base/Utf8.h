// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// Reading UTF-8 one character at a time, for the text operations. A byte that is no part of a well-formed
// sequence is a character of its own, with a code above every code point.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>

namespace sorakaze::utf8 {

/// Codes of stray bytes: kStray + the byte.
inline constexpr char32_t kStray = 0x110000;

struct Character {
    char32_t code;
    std::uint32_t size;  ///< bytes
};

inline bool IsContinuation(unsigned char byte) {
    return (byte & 0xC0) == 0x80;
}

/// The character at `at`, which lies within `text`.
inline Character Read(std::string_view text, std::size_t at) {
    const auto* bytes = reinterpret_cast<const unsigned char*>(text.data()) + at;
    const std::size_t left = text.size() - at;
    const unsigned char lead = bytes[0];
    if (lead < 0x80) return {lead, 1};
    const Character stray{kStray + lead, 1};
    if (lead < 0xC2 || lead > 0xF4) return stray;
    if (left < 2 || !IsContinuation(bytes[1])) return stray;
    if (lead < 0xE0) return {static_cast<char32_t>((lead & 0x1F) << 6 | (bytes[1] & 0x3F)), 2};
    if (left < 3 || !IsContinuation(bytes[2])) return stray;
    if (lead < 0xF0) {
        const auto code =
            static_cast<char32_t>((lead & 0x0F) << 12 | (bytes[1] & 0x3F) << 6 | (bytes[2] & 0x3F));
        if (code < 0x800 || (code >= 0xD800 && code < 0xE000)) return stray;
        return {code, 3};
    }
    if (left < 4 || !IsContinuation(bytes[3])) return stray;
    const auto code = static_cast<char32_t>((lead & 0x07) << 18 | (bytes[1] & 0x3F) << 12 |
                                            (bytes[2] & 0x3F) << 6 | (bytes[3] & 0x3F));
    if (code < 0x10000 || code > 0x10FFFF) return stray;
    return {code, 4};
}

/// True if the eight bytes at `at` are all ASCII.
inline bool EightAscii(std::string_view text, std::size_t at) {
    std::uint64_t word;
    std::memcpy(&word, text.data() + at, sizeof word);
    return (word & 0x8080808080808080u) == 0;
}

/// C0, C1, and the separators of lines and paragraphs.
constexpr bool IsControl(char32_t code) {
    return code < 0x20 || (code >= 0x7F && code < 0xA0) || code == 0x2028 || code == 0x2029;
}

std::size_t CountCharacters(std::string_view text);
/// The byte offset after the first `count` characters, the text's size if it has fewer.
std::size_t OffsetOf(std::string_view text, std::size_t count);
/// The byte offset of the first ill-formed sequence, the text's size if there is none.
std::size_t WellFormedSize(std::string_view text);
bool IsWellFormed(std::string_view text);
/// Appends a code point, or a stray byte by its code.
void Append(std::string& out, char32_t code);

}  // namespace sorakaze::utf8
