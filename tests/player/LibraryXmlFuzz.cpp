// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/player/FuzzEntries.h"

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size) {
    using namespace sorakaze::player;
    const std::string_view bytes(reinterpret_cast<const char*>(data), size);
    const auto library = ParseLibraryXml(bytes);
    if (!library) return 0;
    CheckEntries(library->tracks);
    for (const LibraryXml::List& list : library->lists) {
        if (list.name.empty()) std::abort();
        for (const auto track : list.tracks) {
            if (track >= library->tracks.size()) std::abort();
        }
    }
    return 0;
}
