// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include <filesystem>

#include "base/ProgramFolder.h"
#include "speech/japanese/Reader.h"

namespace sorakaze::japanese {

namespace fs = std::filesystem;

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
