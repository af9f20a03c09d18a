// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "speech/say/SpokenText.h"

// What has been cleaned once is clean, and cleaning adds nothing.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view bytes(reinterpret_cast<const char*>(data), size);
    const std::string spoken = sorakaze::speech::SpokenText(bytes);
    if (spoken.size() > size || sorakaze::speech::SpokenText(spoken) != spoken) std::abort();
    for (const char byte : spoken) {
        if (static_cast<unsigned char>(byte) < 0x20) std::abort();
    }
    return 0;
}
