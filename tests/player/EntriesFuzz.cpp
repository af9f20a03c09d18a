// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// Compiled once for each playlist format, whose parser is PARSE. Stops where an entry breaks what its users
// rely on.
#include <cstdlib>

#include "player/EntryFile.h"
#include "player/ForeignText.h"
#include "player/PlaylistParsers.h"

namespace sorakaze::player {
namespace {

void Check(const std::vector<PlaylistEntry>& entries) {
    constexpr std::size_t kEnough = 20;
    for (std::size_t i = 0; i < entries.size(); ++i) {
        const std::string record = entries[i].text.Record();
        if (!IsUtf8(record) || entries[i].location.empty()) std::abort();
        for (const char c : record) {
            if (static_cast<unsigned char>(c) < 0x20 && c != '\t') std::abort();
        }
        if (i >= kEnough) continue;
        for (const std::string& spelling : Spellings(entries[i])) {
            if (spelling.empty() || spelling.find('\0') != std::string::npos) std::abort();
        }
    }
}

[[maybe_unused]] void Check(const std::optional<LibraryXml>& library) {
    if (!library) return;
    Check(library->tracks);
    for (const LibraryXml::List& list : library->lists) {
        if (list.name.empty()) std::abort();
        for (const auto track : list.tracks) {
            if (track >= library->tracks.size()) std::abort();
        }
    }
}

}  // namespace
}  // namespace sorakaze::player

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size) {
    using namespace sorakaze::player;
    Check(PARSE({reinterpret_cast<const char*>(data), size}));
    return 0;
}
