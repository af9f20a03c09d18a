// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "speech/say/WordsToSpeak.h"

#include "speech/pronunciation/Pronunciations.h"
#include "speech/reading/ReadAloud.h"
#include "speech/say/JapaneseText.h"

namespace sorakaze::speech {

std::string WordsToSpeak(std::string_view text, const std::vector<PronunciationFile>& names,
                         std::string_view language) {
    const std::string spelled = Pronunciations(names, language).Apply(OrdinaryForms(text));
    return reading::ReadAloud(spelled, language);
}

}  // namespace sorakaze::speech
