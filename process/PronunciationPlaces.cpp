// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "process/PronunciationPlaces.h"

#include <cstdlib>
#include <string>
#include <system_error>

namespace sorakaze::process {
namespace {

namespace fs = std::filesystem;

constexpr const char* kName = "Pronunciations.txt";

}  // namespace

std::vector<fs::path> PronunciationFiles(const fs::path& resources) {
    std::vector<fs::path> files;
    std::error_code failure;
    const auto add = [&](const fs::path& file) {
        if (fs::exists(file, failure)) files.push_back(file);
    };
    // As the path is written: the application may be a link in the station.
    const fs::path absolute = fs::absolute(resources, failure);
    const fs::path application = absolute.parent_path().parent_path();
    if (application.extension() == ".app") add(application.parent_path() / kName);
    add(absolute / kName);
    return files;
}

std::vector<fs::path> PronunciationFilesOfCommand(const fs::path& resources) {
    const char* value = std::getenv(kPronunciationsVariable);
    if (!value) return PronunciationFiles(resources);
    std::vector<fs::path> files;
    for (std::string rest = value; !rest.empty();) {
        const auto colon = rest.find(':');
        if (fs::path file = rest.substr(0, colon); file.is_absolute()) files.push_back(std::move(file));
        rest.erase(0, colon == std::string::npos ? colon : colon + 1);
    }
    return files;
}

}  // namespace sorakaze::process
