// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// One line of a program file as a value. Pure: neither files nor the window.
#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "app/runtime/String.h"

namespace sorakaze {

/// What a line sets and stores. Kept behaviour 1.
struct ProgramLine {
    enum class BlockName { Opening, IntroW, Intro, Jingle, Ending };
    struct Command {
        BlockName block;
        std::int32_t variant;  ///< as it is written: it may be outside of 0 to 10
        String text;           ///< empty: the line names a variant and stores nothing
    };

    // The header keys that were found, each with its value.
    std::optional<String> program;
    std::optional<String> station;
    std::optional<String> band;
    std::optional<String> personality;
    std::optional<String> j_personality;
    std::optional<String> mode;
    std::vector<Command> commands;  ///< in the order in which they are stored
};

/// Reads any text, with or without its line end.
ProgramLine ParseProgramLine(const String& text);

}  // namespace sorakaze
