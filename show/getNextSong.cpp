// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// The preparation of the next track.
#include "app/runtime/RegEx.h"
#include "show/mainWindow.h"

namespace sorakaze {
namespace {

bool IsMultibyte(const String& text) {
    return Len(text) != LenB(text);
}

/// Removes bracketed remarks and dashes from the whole record. Kept behaviours 48 and 49.
String Clean(const String& record) {
    RegEx remarks;
    remarks.SearchPattern = "(\\(|（).*?(\\)|）)";
    remarks.ReplacementPattern = "";
    remarks.Options.ReplaceAllMatches = true;
    String clean = Lowercase(remarks.Replace(record));
    clean = ReplaceAll(clean, "-", "");
    return ReplaceAll(clean, "〜", "");
}

/// Field `field`, or its second spelling, three fields on. Kept behaviour 50.
String Spelling(const String& record, std::int32_t field) {
    const String delimiter = Chr(9);
    const String first = NthField(record, delimiter, field);
    const String second = NthField(record, delimiter, field + 3);
    return !second.IsEmpty() && IsMultibyte(first) ? second : first;
}

}  // namespace

void mainWindow::getNextSong_Run() {
    trackNo += 1;
    const std::int32_t number = trackNo;
    String info = iTunesSongInfo(playlistMenu.Text(), trackNo);
    info = Clean(ConvertEncoding(info, Encodings::UTF8));
    preparedRecord = info;

    song = Spelling(info, 1);
    if (IsMultibyte(song) && !isJapaneseOn) song = convertRoma(song);

    artist = Spelling(info, 2);
    getContents(artist);
    if (IsMultibyte(artist) && !isJapaneseOn) artist = convertRoma(artist);

    album = Spelling(info, 3);
    if (IsMultibyte(album) && !isJapaneseOn) album = convertRoma(album);

    tell(ShowEvent::Kind::Prepared, {{"number", number},
                                     {"song", song},
                                     {"artist", artist},
                                     {"album", album},
                                     {"wikiContents", wikiContents}});
}

}  // namespace sorakaze
