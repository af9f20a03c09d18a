// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "speech/pronunciation/PronunciationFile.h"

namespace sorakaze::speech {

/// What a voice of that language is given to speak of a text that SpokenText returned: names as the files
/// spell them, and words for what is written short.
std::string WordsToSpeak(std::string_view text, const std::vector<PronunciationFile>& names,
                         std::string_view language);

}  // namespace sorakaze::speech
