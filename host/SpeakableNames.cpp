// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "host/SpeakableNames.h"

#include <vector>

#include "process/PronunciationPlaces.h"
#include "speech/pronunciation/Pronunciations.h"
#include "speech/pronunciation/ReadPronunciations.h"

namespace sorakaze {

player::TrackText SpeakableNames(player::TrackText text, const std::filesystem::path& resources) {
    using speech::Pronunciations;
    if (text.Record().find_first_of("$`") == std::string::npos) return text;
    std::vector<speech::PronunciationFile> files;
    for (const std::filesystem::path& file : process::PronunciationFiles(resources))
        files.push_back(speech::ReadPronunciationFile(file));
    const Pronunciations names(files, "", Pronunciations::Which::WithShellCharacters);
    for (std::string* const one :
         {&text.title, &text.artist, &text.album, &text.titleSort, &text.artistSort, &text.albumSort})
        *one = names.Apply(*one);
    return text;
}

}  // namespace sorakaze
