// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "speech/say/SpokenText.h"

#include <cstdint>
#include <optional>

namespace sorakaze::speech {
namespace {

struct Decoded {
    char32_t character = 0;
    std::size_t length = 0;  ///< bytes
};

std::optional<Decoded> DecodeUtf8(std::string_view bytes) {
    const auto lead = static_cast<std::uint8_t>(bytes[0]);
    if (lead < 0x80) return Decoded{lead, 1};
    const std::size_t length = lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : 2;
    if (lead < 0xC2 || lead > 0xF4 || bytes.size() < length) return {};
    char32_t character = lead & (0xFFu >> (length + 1));
    for (std::size_t i = 1; i < length; ++i) {
        const auto next = static_cast<std::uint8_t>(bytes[i]);
        if ((next & 0xC0) != 0x80) return {};
        character = (character << 6) | (next & 0x3Fu);
    }
    const bool overlong = (length == 3 && character < 0x800) || (length == 4 && character < 0x10000);
    const bool surrogate = character >= 0xD800 && character <= 0xDFFF;
    if (overlong || surrogate || character > 0x10FFFF) return {};
    return Decoded{character, length};
}

bool IsSpeakable(char32_t character) {
    if (character < 0x20 || (character >= 0x7F && character < 0xA0)) return false;
    if (character >= 0xE000 && character <= 0xF8FF) return false;
    if (character >= 0xFDD0 && character <= 0xFDEF) return false;
    return (character & 0xFFFE) != 0xFFFE && character < 0xE0000;
}

}  // namespace

std::string SpokenText(std::string_view bytes) {
    std::string spoken;
    spoken.reserve(bytes.size());
    while (!bytes.empty()) {
        const auto decoded = DecodeUtf8(bytes);
        const std::size_t length = decoded ? decoded->length : 1;
        if (decoded && IsSpeakable(decoded->character)) {
            spoken.append(bytes.substr(0, length));
        } else if (!spoken.empty() && spoken.back() != ' ') {
            spoken.push_back(' ');
        }
        bytes.remove_prefix(length);
    }
    return spoken;
}

}  // namespace sorakaze::speech
