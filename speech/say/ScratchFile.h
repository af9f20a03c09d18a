// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <filesystem>
#include <string>

namespace sorakaze::speech {

/// Makes a file with a name of its own in `folder`, or where that can't be written, in the folder that TMPDIR
/// names: a confined program may write to the file that it makes but not beside it. Returns a descriptor, and
/// puts the name into `name`; negative with errno where neither folder takes it.
int MakeScratchFile(const std::filesystem::path& folder, std::string& name);

}  // namespace sorakaze::speech
