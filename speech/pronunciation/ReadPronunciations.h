// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "speech/pronunciation/PronunciationFile.h"

namespace sorakaze::speech {

/// One that isn't there is empty; one that can't be read has a fault that says why. Reads no more than the
/// largest file. Never throws.
PronunciationFile ReadPronunciationFile(const std::filesystem::path& file);

/// A line for the user, without its end: "Pronunciations.txt: line 3: there is no "=" (2 more)". Empty if
/// there is no fault.
std::string FaultLine(const PronunciationFile& file);

}  // namespace sorakaze::speech
