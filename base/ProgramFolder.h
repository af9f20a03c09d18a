// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <filesystem>

namespace sorakaze {

/// The running program's folder. Known even where /proc is out of reach and the first argument is a bare
/// name.
std::filesystem::path ProgramFolder();

}  // namespace sorakaze
