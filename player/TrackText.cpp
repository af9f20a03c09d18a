// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "player/TrackText.h"

#include <algorithm>
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

std::string TrackText::Packed() const {
    std::string packed = Record();
    packed.resize(packed.find_last_not_of('\t') + 1);
    packed.shrink_to_fit();
    return packed;
}

TrackText TrackText::Unpacked(std::string_view packed) {
    TrackText text;
    for (const auto field : kFields) {
        const auto tab = std::min(packed.find('\t'), packed.size());
        text.*field = packed.substr(0, tab);
        packed.remove_prefix(std::min(tab + 1, packed.size()));
    }
    return text;
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
