// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "studio/VoicePages.h"

// A page is only ever made into what can stand in a request.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace sorakaze::studio;
    const std::string_view page(reinterpret_cast<const char*>(data), size);
    const auto plain = [](const std::string& text) {
        for (const char byte : text) {
            if (static_cast<unsigned char>(byte) <= 0x20) std::abort();
        }
    };
    if (const auto form = FindForm(page)) {
        plain(EncodeForm(*form));
        const std::string action = Resolve("", form->action);
        plain(action);
        if (!action.empty() && !action.starts_with("http://")) std::abort();
        IsLoopback(action);
    }
    plain(Resolve("http://127.0.0.1:8/t/voice_neo/vsdemo.aspx", FindSound(page)));
    return 0;
}
