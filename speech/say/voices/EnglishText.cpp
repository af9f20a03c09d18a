// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "speech/say/voices/EnglishText.h"

#include <algorithm>

#include "base/unicode/Transliteration.h"
#include "speech/scripts/OtherScripts.h"
#include "speech/scripts/PlainLetters.h"

namespace sorakaze::speech {
namespace {

bool IsAscii(std::string_view text) {
    return std::ranges::all_of(text, [](char byte) { return static_cast<unsigned char>(byte) < 0x80; });
}

/// Marks that a voice would read by their names.
constexpr std::string_view kSilent = "<>[]{}|\\^_~`\"*";

/// Where the first part of a longer text ends: after a sentence, else after a comma, else after a word.
std::size_t EndOfPart(std::string_view text, std::size_t longest) {
    const std::string_view start = text.substr(0, longest);
    for (const std::string_view marks : {".!?", ",;:"}) {
        for (std::size_t at = start.rfind(' '); at != start.npos && at > longest / 4;
             at = start.rfind(' ', at - 1)) {
            if (marks.find(start[at - 1]) != marks.npos) return at;
        }
    }
    const std::size_t blank = start.rfind(' ');
    return blank == start.npos || blank == 0 ? longest : blank;
}

}  // namespace

std::string EnglishText(std::string_view text) {
    // After the rules for names, ICU's own for what these leave: Japanese, and letters with accents.
    const std::string latin =
        IsAscii(text) ? std::string(text)
                      : unicode::Transliterated(scripts::SpellOtherScripts(scripts::PlainLetters(text), {}),
                                                "::Any-Latin; ::Latin-ASCII;");
    std::string english;
    for (const char character : latin) {
        const auto byte = static_cast<unsigned char>(character);
        const bool spoken = byte > 0x20 && byte < 0x7F && kSilent.find(character) == kSilent.npos;
        if (spoken) {
            english += character;
        } else if (!english.empty() && english.back() != ' ' && byte < 0x80) {
            english += ' ';
        }
    }
    return english;
}

std::vector<std::string> SpeakableParts(std::string_view text, std::size_t longest) {
    std::vector<std::string> parts;
    for (;;) {
        text.remove_prefix(std::min(text.find_first_not_of(' '), text.size()));
        if (text.size() <= longest) break;
        const std::size_t end = EndOfPart(text, longest);
        parts.emplace_back(text.substr(0, end));
        text.remove_prefix(end);
    }
    if (!text.empty()) parts.emplace_back(text);
    return parts;
}

}  // namespace sorakaze::speech
