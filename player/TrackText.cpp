// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "player/TrackText.h"

namespace sorakaze::player {

namespace {

constexpr std::string TrackText::*kFields[] = {&TrackText::title,      &TrackText::artist,
                                               &TrackText::album,      &TrackText::titleSort,
                                               &TrackText::artistSort, &TrackText::albumSort};

}  // namespace

void TrackText::FillFrom(const TrackText& other) {
    for (const auto field : kFields) {
        if ((this->*field).empty()) this->*field = other.*field;
    }
}

std::string TrackText::Record() const {
    std::string record;
    for (const auto field : kFields) {
        if (field != kFields[0]) record += '\t';
        record += this->*field;
    }
    return record;
}

TrackText SplitArtistTitle(const std::string& text) {
    TrackText split;
    const auto dash = text.find(" - ");
    if (dash == std::string::npos || dash == 0 || dash + 3 == text.size()) {
        split.title = text;
    } else {
        split.artist = text.substr(0, dash);
        split.title = text.substr(dash + 3);
    }
    return split;
}

}  // namespace sorakaze::player
