// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <filesystem>
#include <string>

namespace sorakaze::speech {

/// Makes a file with a unique name in `folder`, or if that isn't writable, in the folder that TMPDIR names: a
/// confined program may write to the file that it makes but not next to it. Returns a descriptor and puts the
/// path into `name`; returns a negative number and sets errno if neither folder is writable.
int MakeScratchFile(const std::filesystem::path& folder, std::string& name);

}  // namespace sorakaze::speech
