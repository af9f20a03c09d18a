// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "base/Utf8.h"
#include "speech/reading/ReadAloud.h"

// What is said is valid UTF-8 if the text was, and bounded by it.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    for (const std::string_view language : {"en-us", "de", "ja", "fr", "sv"}) {
        const std::string words = sorakaze::reading::ReadAloud(text, language);
        if (words.size() > 20 * size + 20) std::abort();
        if (sorakaze::utf8::IsWellFormed(text) && !sorakaze::utf8::IsWellFormed(words)) std::abort();
    }
    return 0;
}
