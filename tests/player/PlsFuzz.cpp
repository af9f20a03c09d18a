// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/player/FuzzEntries.h"

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size) {
    using namespace sorakaze::player;
    const std::string_view bytes(reinterpret_cast<const char*>(data), size);
    CheckEntries(ParsePls(bytes));
    return 0;
}
