// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdlib>
#include <vector>

#include "player/EntryFile.h"
#include "player/ForeignText.h"
#include "player/PlaylistParsers.h"

namespace sorakaze::player {

/// Stops the fuzzer where an entry breaks what its users rely on.
inline void CheckEntries(const std::vector<PlaylistEntry>& entries) {
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

}  // namespace sorakaze::player
