// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "base/PercentCoding.h"

#include "base/Ascii.h"

namespace sorakaze {
namespace {

/// The byte that the code at `at` encodes; -1 if there is no code.
int CodedByte(std::string_view text, std::size_t at) {
    if (text[at] != '%' || at + 2 >= text.size()) return -1;
    const int high = ascii::HexDigit(text[at + 1]), low = ascii::HexDigit(text[at + 2]);
    return high < 0 || low < 0 ? -1 : high * 16 + low;
}

}  // namespace

std::string PercentEncoded(std::string_view text, std::string_view plain) {
    constexpr std::string_view kDigits = "0123456789ABCDEF";
    std::string encoded;
    for (const char c : text) {
        if (ascii::IsLetter(c) || ascii::IsDigit(c) || plain.find(c) != plain.npos) {
            encoded += c;
        } else {
            const auto byte = static_cast<unsigned char>(c);
            encoded += {'%', kDigits[byte >> 4], kDigits[byte & 15]};
        }
    }
    return encoded;
}

std::optional<std::string> PercentDecoded(std::string_view text) {
    for (std::size_t at = text.find('%'); at != text.npos; at = text.find('%', at + 1))
        if (CodedByte(text, at) < 0) return std::nullopt;
    return PercentDecodedLeniently(text);
}

std::string PercentDecodedLeniently(std::string_view text) {
    std::string decoded;
    decoded.reserve(text.size());
    for (std::size_t at = 0; at < text.size(); ++at) {
        const int byte = CodedByte(text, at);
        decoded += byte < 0 ? text[at] : static_cast<char>(byte);
        if (byte >= 0) at += 2;
    }
    return decoded;
}

}  // namespace sorakaze
