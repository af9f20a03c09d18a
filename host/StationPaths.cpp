// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "host/StationPaths.h"

#include <system_error>

namespace sorakaze {

namespace fs = std::filesystem;

fs::path StationOfThisProgram() {
    // <station>/Sorakaze.app/Contents/Linux/<program>
    std::error_code error;
    const fs::path program = fs::read_symlink("/proc/self/exe", error);
    return program.parent_path().parent_path().parent_path().parent_path();
}

fs::path ProgramOfStation(const fs::path& station, const std::string& name) {
    return station / "Sorakaze.app" / "Contents" / "Linux" / name;
}

fs::path ResourcesOfStation(const fs::path& station) {
    return station / "Sorakaze.app" / "Contents" / "Resources";
}

}  // namespace sorakaze
