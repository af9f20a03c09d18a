// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include <sys/auxv.h>

#include "speech/japanese/Reader.h"

namespace sorakaze::japanese {
namespace {

namespace fs = std::filesystem;

/// The running program's folder. Its first argument may be a bare name, and /proc may be out of reach.
fs::path ProgramFolder() {
    const auto* path = reinterpret_cast<const char*>(::getauxval(AT_EXECFN));
    return path ? fs::path(path).parent_path() : fs::path();
}

}  // namespace

Reader OpenReader(const std::function<void(const char*)>& warn) {
    const fs::path folder = ProgramFolder() / "ipadic";
    std::error_code error;
    if (fs::exists(folder, error)) {
        try {
            return Reader(Dictionary(folder));
        } catch (const NoDictionary& problem) {
            warn(problem.what());
        }
    }
    return Reader(Dictionary());
}

}  // namespace sorakaze::japanese
