// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

#include "speech/kotoeri/ReadingForVoice.h"

// The first byte chooses the voice; the rest is text and record. No mark that is live in a shell comes out if
// none came in, and the length stays in proportion.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0) return 0;
    static const char* const kLanguages[] = {"en", "ja", "ru", "zh", "ko"};
    const std::string_view text(reinterpret_cast<const char*>(data) + 1, size - 1);
    const std::string spelt =
        sorakaze::kotoeri::ReadingForVoice(text, {kLanguages[data[0] % 5], std::string(text)},
                                           [](std::string_view part) { return std::string(part); });
    constexpr std::string_view kShellMarks = "\"$`\\";
    if (text.find_first_of(kShellMarks) == text.npos && spelt.find_first_of(kShellMarks) != spelt.npos)
        std::abort();
    if (spelt.size() > 100 + text.size() * 8) std::abort();
    return 0;
}
