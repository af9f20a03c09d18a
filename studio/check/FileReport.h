// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// What a check found, as text for people and editors and as JSON for programs. Foreign text is made
// printable.
#pragma once

#include <nlohmann/json.hpp>
#include <string>
#include <string_view>
#include <vector>

#include "program/check/Finding.h"

namespace sorakaze::studio {

struct FileReport {
    std::string name;                ///< as it is printed
    std::vector<std::string> lines;  ///< of the text; a finding's line may be beyond them
    std::vector<check::Finding> findings;

    std::size_t Count(check::Severity severity) const;
};

enum class Colours { Off, On };

/// Of each finding "file:line:column: error: what [code]", the line, and a caret below the place.
std::string ReportText(const FileReport& report, Colours colours);
/// Appends the report's findings to an array.
void AppendJson(nlohmann::json& array, const FileReport& report);

/// From 1, in characters.
std::size_t ColumnOf(std::string_view line, std::size_t offset);

}  // namespace sorakaze::studio
