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
    const std::string_view answer(reinterpret_cast<const char*>(data), size);
    const TrackTags tags = TagsFromAnswer(answer);
    const TrackText& text = tags.text;
    for (const std::string* field :
         {&text.title, &text.artist, &text.album, &text.titleSort, &text.artistSort, &text.albumSort})
        if (!utf8::IsWellFormed(*field) || CleanLine(*field) != *field) std::abort();
    // The text is kept in a catalogue, one record a line.
    if (text.Record().find('\n') != std::string::npos) std::abort();
    // The gains are read in the decoder's process, which this must not end.
    for (const auto loudness : {tags.loudness, LoudnessFromReplayGain(answer), LoudnessFromR128Gain(answer)})
        if (loudness && !(*loudness >= -60 && *loudness <= 0)) std::abort();
    return 0;
}
