// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "player/TrackText.h"

#include <iterator>

namespace sorakaze::player {

namespace {

constexpr std::string TrackText::*kFields[] = {&TrackText::title,      &TrackText::artist,
                                               &TrackText::album,      &TrackText::titleSort,
                                               &TrackText::artistSort, &TrackText::albumSort};

}  // namespace

void TrackText::FillFrom(const TrackText& other) {
    constexpr std::size_t kSpelled = std::size(kFields) / 2;
    for (std::size_t i = 0; i < kSpelled; ++i) {
        const auto text = kFields[i];
        const auto sort = kFields[kSpelled + i];
        if ((this->*text).empty()) this->*text = other.*text;
        if ((this->*sort).empty() && this->*text == other.*text) this->*sort = other.*sort;
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
