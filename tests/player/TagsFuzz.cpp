// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// What a decoder that a file has taken over answers when it is asked for tags.
#include <cstdlib>

#include "base/Utf8.h"
#include "player/ForeignText.h"
#include "player/Tags.h"

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size) {
    using namespace sorakaze;
    using namespace sorakaze::player;
    const TrackText text = TagsFromAnswer({reinterpret_cast<const char*>(data), size});
    for (const std::string* field :
         {&text.title, &text.artist, &text.album, &text.titleSort, &text.artistSort, &text.albumSort})
        if (!utf8::IsWellFormed(*field) || CleanLine(*field) != *field) std::abort();
    // The text is kept in a catalogue, one record a line.
    if (text.Record().find('\n') != std::string::npos) std::abort();
    return 0;
}
