// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "speech/japanese/Characters.h"
#include "speech/kotoeri/Hiragana.h"

// Whatever comes in, no katakana and no half-width kana come out, and no two commas where there were none.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const sorakaze::japanese::Reader reader{sorakaze::japanese::Dictionary()};
    const std::string_view bytes(reinterpret_cast<const char*>(data), size);
    const std::string reading = sorakaze::kotoeri::InHiragana(reader, bytes);
    for (const char32_t code : sorakaze::japanese::Decode(reading)) {
        const bool isKatakana = (code >= 0x30A1 && code <= 0x30FA) || (code >= 0x31F0 && code <= 0x31FF);
        if (isKatakana || (code >= 0xFF66 && code <= 0xFF9F)) std::abort();
    }
    if (reading.find(",,") != std::string::npos && bytes.find(',') == std::string_view::npos) std::abort();
    if (bytes.empty() != reading.empty()) std::abort();
    return 0;
}
