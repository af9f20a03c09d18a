// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// Compiled once for each playlist format, whose parser is PARSER. Stops where an entry breaks what its users
// rely on, and where it matters in which pieces a file comes.
#include <algorithm>
#include <cstdlib>

#include "base/Utf8.h"
#include "player/EntryFile.h"
#include "player/PlaylistParsers.h"

namespace sorakaze::player {
namespace {

void CheckTracks(const std::vector<PlaylistEntry>& entries) {
    constexpr std::size_t kEnough = 20;
    for (std::size_t i = 0; i < entries.size(); ++i) {
        const std::string record = TrackText::Unpacked(entries[i].words).Record();
        if (!utf8::IsWellFormed(record) ||
            entries[i].location.empty() != (entries[i].form == PlaylistEntry::Form::Nowhere) ||
            std::ranges::count(record, '\t') != 5)
            std::abort();
        for (const char c : record) {
            if (static_cast<unsigned char>(c) < 0x20 && c != '\t') std::abort();
        }
        const FilePart& part = entries[i].part;
        if (part.begin < 0 || (part.end != 0 && part.end <= part.begin)) std::abort();
        if (i >= kEnough) continue;
        if (entries[i].location.empty()) continue;
        for (const std::string& spelling : Spellings(entries[i])) {
            if (spelling.empty() || spelling.find('\0') != std::string::npos) std::abort();
        }
    }
}

ParsedPlaylist Parsed(std::string_view bytes, std::size_t pieceSize) {
    const auto parser = PARSER();
    while (!bytes.empty() && parser->Read(bytes.substr(0, pieceSize)))
        bytes.remove_prefix(std::min(pieceSize, bytes.size()));
    return parser->Finish();
}

}  // namespace
}  // namespace sorakaze::player

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size) {
    using namespace sorakaze::player;
    const std::string_view bytes(reinterpret_cast<const char*>(data), size);
    const ParsedPlaylist whole = Parsed(bytes, size + 1);
    const ParsedPlaylist inPieces = Parsed(bytes, 1 + size % 7);
    CheckTracks(whole.tracks);
    if (whole.tracks != inPieces.tracks || whole.lists.size() != inPieces.lists.size()) std::abort();
    for (std::size_t i = 0; i < whole.lists.size(); ++i) {
        const auto& list = whole.lists[i];
        if (list.name.empty() || list.name != inPieces.lists[i].name ||
            list.tracks != inPieces.lists[i].tracks)
            std::abort();
        for (const auto track : list.tracks) {
            if (track >= whole.tracks.size()) std::abort();
        }
    }
    return 0;
}
