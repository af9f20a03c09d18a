// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// A program under check, as its writer meant it: what is reported as a slip counts here as if it were
// mended, so that one mistake is told of once.
#pragma once

#include <array>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "program/check/PlacedLine.h"
#include "program/check/Surroundings.h"

namespace sorakaze::check {

using BlockName = ProgramLine::BlockName;

struct HeaderLine {
    std::size_t line;
    Span key;
    Span value;
    std::string text;
};

struct Command {
    enum class Kind { Unknown, Say, Sayj, PlayFile, PlayTrack, Wait };

    std::size_t line;
    BlockName block;
    int variant;
    Span number;  ///< where the variant is named
    Span text;
    Kind kind = Kind::Unknown;
    Span argument = {};
    double seconds = 0;  ///< of a wait
};

struct Draft {
    Surroundings& surroundings;
    std::vector<std::string_view> lines;
    Findings findings;

    std::array<std::optional<HeaderLine>, words::kHeaders.size()> headers;  ///< the last of each
    std::vector<Command> commands;
    /// Of each block's variants.
    std::array<std::array<std::size_t, words::kHighestVariant + 1>, words::kBlocks.size()> lineCounts{};
    /// How many lines begin with each header as it is spelt; counted when it is first asked for.
    std::optional<std::array<std::size_t, words::kHeaders.size()>> headerLines{};
    /// Blocks with a line whose variant isn't known: nothing is said of their numbers.
    std::array<bool, words::kBlocks.size()> uncertain{};

    std::string_view Line(std::size_t number) const { return lines[number - 1]; }
    std::string_view Text(std::size_t line, Span span) const { return Part(Line(line), span); }
    std::optional<HeaderLine>& Header(words::Header header) {
        return headers[static_cast<std::size_t>(header)];
    }
    bool& IsUncertain(BlockName block) { return uncertain[static_cast<std::size_t>(block)]; }
    bool Has(Command::Kind kind) const {
        for (const Command& command : commands) {
            if (command.kind == kind) return true;
        }
        return false;
    }
};

inline std::string_view NameOf(BlockName block) {
    return words::kBlocks[static_cast<std::size_t>(block)];
}

/// The steps of a check, in their order.
void CheckKeys(Draft& draft);      ///< fills headers and commands
void CheckCommands(Draft& draft);  ///< fills in what each command is
void CheckHeaders(Draft& draft);
void CheckBlocks(Draft& draft);

/// Of one line: the number of a variant and what follows it.
void CheckNumber(Draft& draft, std::size_t line, BlockName block, Span rest);

/// The line's part as the interpreter sees it: header placeholders filled in, double quotes removed.
std::string Expanded(Draft& draft, std::string_view text);
/// Placeholders of the command's text, and what looks like one.
void CheckPlaceholders(Draft& draft, const Command& command);
/// What the shell makes of a text that `say` speaks.
void CheckShell(Draft& draft, std::size_t line, Span text);

}  // namespace sorakaze::check
