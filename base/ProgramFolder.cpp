// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "base/ProgramFolder.h"

#include <sys/auxv.h>

namespace sorakaze {

std::filesystem::path ProgramFolder() {
    const auto* path = reinterpret_cast<const char*>(::getauxval(AT_EXECFN));
    return path ? std::filesystem::path(path).parent_path() : std::filesystem::path();
}

}  // namespace sorakaze
