// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// One line of a program file as ParseProgramLine reads it, but by places: where each key, number and text is
// in the line. A test holds the two together. Pure.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "program/ProgramLine.h"
#include "program/check/Finding.h"
#include "program/check/Words.h"

namespace sorakaze::check {

struct PlacedHeader {
    words::Header header;
    Span key;  ///< with its colon
    Span value;
    std::optional<Span> repeated;  ///< the same key once more, where the value ends
};

/// What follows a block's key.
struct CommandPlace {
    Span number;
    std::optional<std::size_t> comma;
    Span text;
};

struct PlacedCommand {
    ProgramLine::BlockName block;
    Span key;
    CommandPlace place;
    std::int32_t variant;
};

struct PlacedLine {
    Span clean;  ///< without comment, and without blanks at the ends
    std::optional<std::size_t> comment;
    std::vector<PlacedHeader> headers;
    std::vector<PlacedCommand> commands;
};

/// `line` has no line end.
PlacedLine PlaceLine(std::string_view line);
/// The number, comma and text in that part of the line.
CommandPlace PlaceCommand(std::string_view line, Span rest);
/// As the loader reads the number.
std::int32_t VariantOf(std::string_view number);

/// A part of the line as the loader stores it: blanks for tabs.
std::string Stored(std::string_view line, Span span);
inline std::string_view Part(std::string_view line, Span span) {
    return line.substr(span.begin, span.end - span.begin);
}
/// Without white space at both ends.
Span Trimmed(std::string_view line, Span span);

/// The lines of a file without their ends, as a TextInputStream reads them; one for an empty file.
std::vector<std::string_view> SplitLines(std::string_view text);

}  // namespace sorakaze::check
