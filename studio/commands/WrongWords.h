// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// What is wrong with a command line, in one line that names what was probably meant.
#pragma once

#include <string>
#include <vector>

namespace CLI {
class App;
class ParseError;
}  // namespace CLI

namespace sorakaze::studio {

/// The first word that names no sub-command or no option of its sub-command, as a sentence for people; empty
/// if there is none. Called before the words are parsed, so that a misspelt option isn't told of as a missing
/// one. `words` are those after the program's name.
std::string DescribeWrongWord(const CLI::App& app, const std::vector<std::string>& words);

/// What the parser found, with the help to ask for.
std::string DescribeParseError(const CLI::App& app, const CLI::ParseError& error);

}  // namespace sorakaze::studio
