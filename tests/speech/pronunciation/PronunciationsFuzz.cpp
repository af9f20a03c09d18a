// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "base/Utf8.h"
#include "speech/pronunciation/Pronunciations.h"

using namespace sorakaze::speech;

// The first half is a file, the second a text. No spelling can steer a shell or a voice, and the text stays
// valid.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view bytes(reinterpret_cast<const char*>(data), size);
    const auto text = bytes.substr(size / 2);
    const PronunciationFile file = ParsePronunciations(bytes.substr(0, size / 2));
    for (const PronunciationEntry& entry : file.entries) {
        if (entry.name.empty() || entry.spelling.empty()) std::abort();
        if (!sorakaze::utf8::IsWellFormed(entry.name + entry.spelling)) std::abort();
        if (entry.spelling.find_first_of("$`\\\"[]") != std::string::npos) std::abort();
    }
    for (const std::string_view language : {"", "en-us", "de"}) {
        const std::string said = Pronunciations({file, file}, language).Apply(text);
        if (file.entries.empty() && said != text) std::abort();
        if (sorakaze::utf8::IsWellFormed(text) && !sorakaze::utf8::IsWellFormed(said)) std::abort();
    }
    return 0;
}
