// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "player/AnnouncedText.h"

#include "base/Ascii.h"
#include "base/Utf8.h"
#include "player/EditionRemarks.h"
#include "player/SortNames.h"

namespace sorakaze::player {

namespace {

/// Latin letters with or without accents, signs and digits.
bool IsLatin(std::string_view text) {
    constexpr char32_t kAfterLatin = 0x250, kPunctuation = 0x2000, kAfterPunctuation = 0x2070;
    for (std::size_t at = 0; at < text.size();) {
        const auto [code, size] = utf8::Read(text, at);
        const bool isPunctuation = code >= kPunctuation && code < kAfterPunctuation;
        const bool isMark = code >= 0x300 && code < 0x370;
        if (code >= kAfterLatin && !isPunctuation && !isMark) return false;
        at += size;
    }
    return true;
}

/// The preparation cuts what is in round brackets: a name that is all in them would be lost.
void OpenBrackets(std::string& name) {
    if (!name.starts_with('(') || !name.ends_with(')') || name.size() < 3 ||
        name.find_first_of("()", 1) != name.size() - 1)
        return;
    name = name.substr(1, name.size() - 2);
}

}  // namespace

TrackText AnnouncedText(TrackText text) {
    for (std::string TrackText::*const title : {&TrackText::title, &TrackText::titleSort})
        text.*title = WithoutEditionRemarks(text.*title, NameKind::Title);
    for (std::string TrackText::*const album : {&TrackText::album, &TrackText::albumSort})
        text.*album = WithoutEditionRemarks(text.*album, NameKind::Album);
    text.artistSort = SpokenSortName(text.artistSort, text.artist);
    text.titleSort = WithArticleInFront(text.titleSort);
    text.albumSort = WithArticleInFront(text.albumSort);
    for (std::string TrackText::*const name : {&TrackText::title, &TrackText::artist, &TrackText::album}) {
        // Not other articles: "Live and Let, Die".
        if (ascii::Lowered(text.*name).ends_with(", the")) text.*name = WithArticleInFront(text.*name);
        OpenBrackets(text.*name);
    }
    if (IsLatin(text.title)) text.titleSort.clear();
    if (IsLatin(text.artist)) text.artistSort.clear();
    if (IsLatin(text.album)) text.albumSort.clear();
    return text;
}

}  // namespace sorakaze::player
