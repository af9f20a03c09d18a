// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "process/OfferPronunciations.h"

#include <string>
#include <system_error>

#include "process/PronunciationPlaces.h"

namespace sorakaze::process {

void OfferPronunciations(Confinement& confinement, const std::filesystem::path& resources) {
    std::string told;
    for (const std::filesystem::path& file : PronunciationFiles(resources)) {
        std::error_code failure;
        const std::filesystem::path target = std::filesystem::canonical(file, failure);
        if (failure || target.extension() != ".txt" || !std::filesystem::is_regular_file(target, failure))
            continue;
        confinement.readable.push_back(file);
        told += (told.empty() ? "" : ":") + file.string();
    }
    confinement.variables.push_back(std::string(kPronunciationsVariable) + '=' + told);
}

}  // namespace sorakaze::process
