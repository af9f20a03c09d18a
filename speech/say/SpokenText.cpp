// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "speech/say/SpokenText.h"

#include "base/Utf8.h"

namespace sorakaze::speech {
namespace {

/// False for stray bytes too: their codes are above all characters.
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
        const auto [character, length] = utf8::Read(bytes, 0);
        if (IsSpeakable(character)) {
            spoken.append(bytes.substr(0, length));
        } else if (!spoken.empty() && spoken.back() != ' ') {
            spoken.push_back(' ');
        }
        bytes.remove_prefix(length);
    }
    return spoken;
}

}  // namespace sorakaze::speech
