// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <filesystem>
#include <optional>

#include "studio/check/FileReport.h"

namespace sorakaze::studio {

/// The lines of the station's Pronunciations.txt that `say` leaves out. Empty where there is no such file.
std::optional<FileReport> CheckPronunciations(const std::filesystem::path& station);

}  // namespace sorakaze::studio
