// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "speech/say/JapaneseText.h"
#include "speech/say/KanaPhonemes.h"
#include "speech/say/SpokenText.h"

// Whatever the text, the engine gets phonemes of known letters only.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace sorakaze::speech;
    static const sorakaze::japanese::Reader reader{sorakaze::japanese::Dictionary()};
    const std::string text = OrdinaryForms(SpokenText({reinterpret_cast<const char*>(data), size}));
    for (const SpokenClause& clause : SpokenClauses(reader, text)) {
        for (const SpokenPart& part : clause.parts) {
            if (part.text.empty()) std::abort();
            if (part.language == SpokenPart::Language::Latin) continue;
            for (const char code : KanaPhonemes(part.text)) {
                if (static_cast<unsigned char>(code) >= 0x80 || code == '[' || code == ']') std::abort();
            }
        }
    }
    return 0;
}
