// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// Any bytes as a program file: every finding is within its line, and the lines read as the loader reads them.
#include <cstddef>
#include <cstdint>
#include <cstdlib>

#include "program/check/CheckProgram.h"
#include "program/check/PlacedLine.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace sorakaze::check;
    const std::string_view file(reinterpret_cast<const char*>(data), size);
    const auto lines = SplitLines(file);
    Surroundings anywhere;
    const auto within = [](Span span, std::string_view line) {
        if (span.begin > span.end || span.end > line.size()) std::abort();
    };
    for (const Finding& finding : CheckProgram(file, anywhere)) {
        if (finding.line < 1 || finding.line > lines.size()) std::abort();
        within(finding.span, lines[finding.line - 1]);
        if (finding.fix) within(finding.fix->span, lines[finding.line - 1]);
    }
    for (const std::string_view line : lines) {
        const auto loaded = sorakaze::ParseProgramLine(std::string(line));
        const auto placed = PlaceLine(line);
        if (loaded.commands.size() != placed.commands.size()) std::abort();
        for (std::size_t i = 0; i < loaded.commands.size(); ++i) {
            if (loaded.commands[i].variant != placed.commands[i].variant ||
                loaded.commands[i].text.Bytes() != Stored(line, placed.commands[i].place.text))
                std::abort();
        }
    }
    return 0;
}
