// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "program/check/CheckProgram.h"

#include <algorithm>

#include "program/check/Draft.h"

namespace sorakaze::check {

std::vector<Finding> CheckProgram(std::string_view text, Surroundings& surroundings) {
    Draft draft{surroundings, SplitLines(text), {}, {}, {}, {}, {}};
    const bool empty = std::ranges::all_of(draft.lines, [](std::string_view line) {
        const PlacedLine placed = PlaceLine(line);
        return placed.clean.begin == placed.clean.end;
    });
    if (empty) {
        draft.findings.Error(1, {}, "empty-program",
                             "the program has no lines but comments, so the show is silent");
        return draft.findings.Take();
    }
    CheckKeys(draft);
    CheckCommands(draft);
    CheckHeaders(draft);
    // Nothing can be said of the blocks of half a program.
    if (draft.findings.IsFull()) return draft.findings.Take();
    // Of a file of something else only that is told.
    if (!draft.commands.empty() ||
        std::ranges::any_of(draft.headers, [](const auto& line) { return line.has_value(); }))
        CheckBlocks(draft);
    return draft.findings.Take();
}

}  // namespace sorakaze::check
