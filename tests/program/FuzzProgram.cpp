// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// Any bytes as a program file: loaded twice, then every block's first variant run for a while without a
// player.
#include <cstddef>
#include <cstdint>

#include "tests/support/TestShow.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace sorakaze;
    static auto* show = new test::TestShow();
    show->folder.Write("Programs/Fuzz.txt", std::string(reinterpret_cast<const char*>(data), size));
    for (int load = 0; load < 2; ++load) {
        try {
            show->window.readProgram("Fuzz");
        } catch (const OutOfBoundsException&) {
        }
    }
    return 0;
}
