// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "speech/say/JapaneseText.h"
#include "speech/say/KanaPhonemes.h"
#include "speech/say/SpokenText.h"

// Without the dictionary: the text is parted where the first bytes say, and they choose the word classes too.
// The engine gets phonemes of known letters only.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace sorakaze::speech;
    if (size < 8) return 0;
    const std::string_view bytes(reinterpret_cast<const char*>(data) + 8, size - 8);
    const std::string text = OrdinaryWidths(SpokenText(bytes));
    if (OrdinaryWidths(text) != text) std::abort();
    constexpr const char* kKinds[] = {"名詞", "助詞", "接頭詞", "記号"};
    constexpr const char* kDetails[] = {"数", "接尾", "一般", "非自立"};
    std::vector<Morpheme> morphemes;
    for (std::size_t at = 0; at < text.size();) {
        const std::uint8_t choice = data[morphemes.size() % 8];
        std::size_t end = at;
        for (int characters = 0; end < text.size() && characters <= choice % 4; ++characters) {
            do ++end;
            while (end < text.size() && (static_cast<unsigned char>(text[end]) & 0xC0U) == 0x80U);
        }
        const std::string surface = text.substr(at, end - at);
        if (surface.front() != ' ')
            morphemes.push_back(
                {at, end, surface, kKinds[choice / 4 % 4], kDetails[choice / 16 % 4], "", ""});
        at = end;
    }
    for (const SpokenClause& clause : FindClauses(text, morphemes)) {
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
