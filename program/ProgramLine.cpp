// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "program/ProgramLine.h"

#include <array>
#include <utility>

namespace sorakaze {
namespace {

using BlockName = ProgramLine::BlockName;

constexpr std::array kBlockKeys{
    std::pair{"opening:", BlockName::Opening}, std::pair{"introW:", BlockName::IntroW},
    std::pair{"intro:", BlockName::Intro}, std::pair{"jingle:", BlockName::Jingle},
    std::pair{"ending:", BlockName::Ending}};

/// The line without its comment, with blanks for tabs and no line end. Kept behaviour 5.
String Clean(const String& text) {
    String line = NthField(text, "#", 1);
    line = ReplaceAll(line, Chr(9), " ");
    line = ReplaceAll(line, Chr(10), "");
    line = ReplaceAll(line, Chr(13), "");
    return Trim(line);
}

/// The text after the key. Kept behaviour 3.
std::optional<String> HeaderValue(const String& line, const char* key) {
    if (InStr(line, key) <= 0) return std::nullopt;
    return Trim(NthField(line, key, 2));
}

}  // namespace

ProgramLine ParseProgramLine(const String& text) {
    ProgramLine result;
    String line = Clean(text);
    if (line.IsEmpty()) return result;
    result.program = HeaderValue(line, "program:");
    result.station = HeaderValue(line, "station:");
    result.band = HeaderValue(line, "band:");
    result.personality = HeaderValue(line, "personality:");  // kept behaviour 4
    result.j_personality = HeaderValue(line, "j_personality:");
    result.mode = HeaderValue(line, "mode:");
    for (const auto& [key, block] : kBlockKeys) {
        if (InStr(line, key) <= 0) continue;
        // Kept behaviours 2 and 6.
        line = Mid(line, Len(key) + 1);
        const String number = NthField(line, ",", 1);
        result.commands.push_back({block, ToInt32(Val(Trim(number))), Trim(Mid(line, Len(number) + 2))});
    }
    return result;
}

}  // namespace sorakaze
