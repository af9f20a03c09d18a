// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// Walking folders whose names and entries somebody else chose, without following a link.
#pragma once

#include <dirent.h>

#include <memory>

namespace sorakaze::process {

struct CloseFolder {
    void operator()(DIR* folder) const { ::closedir(folder); }
};
using Folder = std::unique_ptr<DIR, CloseFolder>;

/// The folder `name` of the open folder `parent`; null where it is none, is a link, or can't be opened.
Folder OpenFolder(int parent, const char* name);

/// Whether an entry is the folder itself or the one that it is in.
bool IsDots(const char* name);

}  // namespace sorakaze::process
