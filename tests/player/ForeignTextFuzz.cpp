// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include <cstdlib>

#include "base/Utf8.h"
#include "player/ForeignText.h"
#include "player/NameText.h"
#include "player/PlaylistNames.h"
#include "player/UserMusicFolder.h"

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size) {
    using namespace sorakaze;
    using namespace sorakaze::player;
    const std::string_view bytes(reinterpret_cast<const char*>(data), size);
    const std::string clean = CleanLine(bytes);
    if (!utf8::IsWellFormed(clean) || CleanLine(clean) != clean) std::abort();
    const std::string name = JoinableName(bytes);
    if (name.find(", ") != std::string::npos || JoinableName(name) != name) std::abort();
    const std::string path = "/m/" + std::string(bytes);
    const TrackText text = TextFromPath(path, "/m", [&] { return std::vector{name}; });
    if (!utf8::IsWellFormed(text.Record())) std::abort();
    MusicFolderFrom(bytes, "/home/u");
    return 0;
}
