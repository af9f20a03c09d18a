// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// Mends in a program file what can only be meant in one way.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include "program/check/Finding.h"

namespace sorakaze::studio {

struct FixedText {
    std::string text;
    std::vector<std::string> changes;  ///< "line 3: "opning:" becomes "opening:"", for people
};

/// Makes the certain ones of the findings' fixes. Of fixes that overlap the first is made. Pure.
FixedText ApplyFixes(std::string_view text, const std::vector<check::Finding>& findings);

/// Puts `text` in the file's place at once, with the file's mode, if the file still holds `before`; where the
/// file is a link, in place of what that leads to. Throws StudioError.
void ReplaceFile(const std::filesystem::path& file, std::string_view before, std::string_view text);

}  // namespace sorakaze::studio
