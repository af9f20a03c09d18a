// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>

#include "app/runtime/Application.h"
#include "tests/support/TestShow.h"

namespace sorakaze {
namespace {

using test::TestShow;

TEST(Preparation, CleansTheRecordAndChoosesSpellings) {
    const struct {
        const char* record;
        bool japanese;
        const char* result;
    } cases[] = {
        {"Song (Live) - Remix\tThe Artist\tAlbum", false, "song   remix the artist album"},
        {"歌（live) 〜x\tB\tC", true, "歌 x b c"},
        {"A (x\tB) c\tD\tE", false, "a  c d e"},
        {"歌\t人\t集\tYesterday\tPerson\tCollection", false, "yesterday person collection"},
        {"歌\t人\t集\tYesterday\t\tCollection", true, "yesterday 人 collection"},
        {"Plain\tB\tC\tOther\tOther\tOther", false, "plain b c"},
        {"Café\tB\tC\tCafe", false, "cafe b c"},
        {"", false, "  "},
    };
    for (const auto& c : cases) {
        TestShow show;
        show.player.tracks[0].record = c.record;
        show.window.isJapaneseOn = c.japanese;
        show.window.getNextSong.Run();
        App.DoEventsWhile([&] { return show.window.getNextSong.State() == Thread::kRunning; });
        const auto& w = show.window;
        EXPECT_EQ(w.song.Bytes() + " " + w.artist.Bytes() + " " + w.album.Bytes(), c.result) << c.record;
        EXPECT_EQ(w.trackNo, 1);
    }
}

}  // namespace
}  // namespace sorakaze
