// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "gateway/voice/VoiceForm.h"

namespace {

/// What a shell makes of one word. Aborts if the word ends too early or if something in it is special to a
/// shell.
std::string Unquoted(std::string_view word) {
    std::string text;
    bool inside = false;
    for (std::size_t i = 0; i < word.size(); ++i) {
        if (word[i] == '\'') {
            inside = !inside;
        } else if (inside) {
            text += word[i];
        } else if (word.substr(i, 2) == "\\'") {
            text += word[++i];
        } else {
            std::abort();
        }
    }
    if (inside) std::abort();
    return text;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace sorakaze::gateway;
    const std::string text(reinterpret_cast<const char*>(data), size);
    const std::string half = text.substr(0, size / 2), rest = text.substr(size / 2);
    const auto order = ReadVoiceForm({{"__VIEWSTATE", ""},
                                      {"__EVENTVALIDATION", ""},
                                      {"RadioButton1", half},
                                      {"WriteText", text},
                                      {"SpeedText", rest.size() > 8 ? "1.0" : rest},
                                      {"PlayButton.x", "400"},
                                      {"PlayButton.y", "25"}});
    if (!order) return 0;
    if (Unquoted(QuoteForShell(order->text)) != order->text) std::abort();
    if (order->text.find('\0') != std::string::npos) std::abort();
    if (!text.starts_with(CutText(text, 5))) std::abort();
    return 0;
}
