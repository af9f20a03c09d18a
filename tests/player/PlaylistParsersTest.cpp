// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>

#include <functional>

#include "player/EntryFile.h"
#include "player/ForeignText.h"
#include "player/PlaylistFiles.h"

namespace sorakaze::player {
namespace {

using namespace std::string_literals;

TEST(PlaylistParsers, GiveTheEntriesOfEachFormat) {
    struct {
        const char* name;  ///< its ending is the format's
        std::string bytes;
        std::vector<std::string> told;  ///< "best spelling|artist|title" of each entry
    } const cases[] = {
        {"line ends of every kind.m3u",
         "\xEF\xBB\xBF#\na.mp3\nb.mp3\r\nc.mp3\rd.mp3",
         {"a.mp3||", "b.mp3||", "c.mp3||", "d.mp3||"}},
        {"texts belong to the next entry only, of any encoding, behind attributes with commas.m3u",
         "#EXTM3U\n#EXTINF:12,Bj\xF6rk - J\xF3ga\na.mp3\n#extinf:-1 id=\"x, "
         "y\",Alone\n\n#EXTALB:x\nb.mp3\nc.mp3\n",
         {"a.mp3|Björk|Jóga", "b.mp3||Alone", "c.mp3||"}},
        {"UTF-16.m3u8", "\xFF\xFE\x61\0.\0m\0p\0003\0\r\0\n\0b\0.\0m\0p\0003\0"s, {"a.mp3||", "b.mp3||"}},
        {"file URLs, but a colon is no scheme.m3u",
         "file:///m/a%20b.mp3\nfile://localhost/c%.mp3\nFILE:/d.mp3\nLive: One/a.mp3\nC:\\a.mp3\n",
         {"/m/a b.mp3||", "/c%.mp3||", "/d.mp3||", "Live: One/a.mp3||", "C:\\a.mp3||"}},
        {"no tracks, the network, playlists, blanks, NUL.m3u",
         "#EXTINF:1,Stream\nhttps://h/a.mp3\nrtsp://h\nself.m3u\nOther.XSPF \n  \nx\0y.mp3\nz.mp3"s,
         {"z.mp3||"}},
        {"order by number, with gaps.pls",
         "[playlist]\nFile10=j.mp3\nTitle2=A - B\nfile2 = b.mp3\r\nFile1=file:///a%2fa.mp3\nFile4=http://h/\n"
         "File=x.mp3\nFile1x=y.mp3\nFile99999999999999999999=z.mp3\nFile-1=v.mp3\nTitle7=w\nVersion=2",
         {"/a/a.mp3||", "b.mp3|A|B", "j.mp3||"}},
        {"texts, entities and escapes.xspf",
         "<playlist xmlns=\"http://xspf.org/ns/0/\"><title>No</title><trackList><track><title>Q &amp; "
         "A</title>"
         "<creator>&#x30A2;</creator><location> a%20%26&amp;.mp3 </location></track></trackList></playlist>",
         {"a &&.mp3|ア|Q & A"}},
        {"bases within bases, broken off.xspf",
         "<x:playlist xml:base='file:///m/'><x:trackList "
         "xml:base='rock/'><x:track><x:location>a.mp3</x:location>"
         "</x:track><x:track xml:base='../pop/x.xspf'><x:location xml:base='s/'>b.mp3</x:location></x:track>"
         "<x:track><x:location>/c.mp3</x:location></x:track><x:track><x:loc",
         {"/m/rock/a.mp3||", "/m/rock/../pop/s/b.mp3||", "/c.mp3||"}},
        {"the first of a track's places that is a file.xspf",
         "<playlist><trackList><track><location>http://h/a.mp3</location><location>b.mp3</location>"
         "<location>c.mp3</location></track><track><title>nowhere</title></track>"
         "<track xml:base='http://h/x/'><location>a.mp3</location></track></trackList></playlist>",
         {"b.mp3||", "||nowhere"}},
        {"sloppy writers.xspf",
         "\n<?xml version='1.0' encoding='UTF-8'?><playlist><trackList><track><title>A & B &nbsp;\x01 "
         "C</title>"
         "<creator><![CDATA[D & E]]></creator><location>caf\xE9 & co.mp3</location></track>"
         "<track><title>&#xE9;t\xC3\xA9</title><location>b.mp3</location></track></trackList></playlist>",
         {"caf\xE9 & co.mp3|D & E|A & B &nbsp;  C", "b.mp3||été"}},
        {"Latin-1.xspf",
         "<?xml version='1.0' encoding='iso-8859-1'?><playlist><trackList><track>"
         "<location>caf\xE9.mp3</location></track></trackList></playlist>",
         {"café.mp3||"}},
        {"what no path is as long as.m3u",
         std::string(5000, 'x') + ".mp3\na.mp3\n#EXTINF:1," + std::string(20'000, 'x') + "\nb.mp3\n/" +
             std::string(40'000, '/') + "\nfile:///" + std::string(13'000, 'y') + "\nc.mp3",
         {"a.mp3||", "b.mp3||", "c.mp3||"}},
    };
    for (const auto& c : cases) {
        std::vector<std::string> told;
        for (const PlaylistEntry& entry : ParsePlaylist(c.name, c.bytes).tracks) {
            const TrackText text = TrackText::Unpacked(entry.words);
            told.push_back(Spellings(entry).front() + '|' + text.artist + '|' + text.title);
        }
        EXPECT_EQ(told, c.told) << c.name;
    }
}

/// How many of a file's bytes are read that goes on with `piece` for ever, up to 64 MB.
std::size_t ReadBytes(PlaylistParser& parser, const std::string& beginning,
                      const std::function<std::string(int)>& piece) {
    std::size_t read = beginning.size();
    if (!parser.Read(beginning)) return read;
    for (int i = 0; read < std::size_t{64} << 20; ++i) {
        const std::string next = piece(i);
        read += next.size();
        if (!parser.Read(next)) break;
    }
    return read;
}

TEST(PlaylistParsers, ReadNoFurtherWhereAFileIsHostile) {
    const auto repeated = [](std::string text) {
        std::string piece;
        while (piece.size() < 64 * 1024) piece += text;
        return [piece](int) { return piece; };
    };
    const auto names = [](int i) {
        std::string piece;
        for (int k = 0; k < 4000; ++k) piece += "<n" + std::to_string(i * 4000 + k) + "/>";
        return piece;
    };
    const std::string bomb =
        "<?xml version='1.0'?><!DOCTYPE plist [<!ENTITY a 'aaaaaaaaaa'><!ENTITY b '&a;&a;&a;'>]>";
    const struct {
        const char* name;
        std::string beginning;
        std::function<std::string(int)> piece;
    } cases[] = {
        {"nesting", "<a>", repeated("<a>")},
        {"a name without end", "<a", repeated("aaaa")},
        {"an attribute without end", "<a b='", repeated("aaaa")},
        {"a comment without end", "<a><!-- ", repeated("aaaa")},
        {"names of every kind", "<a>", names},
        {"entities", bomb, repeated(" ")},
    };
    for (const auto& c : cases) {
        EXPECT_LT(ReadBytes(*XspfParser(), c.beginning, c.piece), std::size_t{16} << 20) << c.name;
        EXPECT_LT(ReadBytes(*LibraryXmlParser(), c.beginning, c.piece), std::size_t{16} << 20) << c.name;
    }
    const std::string track = "<track><location>" + std::string(4000, 'a') + "</location></track>";
    EXPECT_LE(ReadBytes(*XspfParser(), "<playlist><trackList>", repeated(track)), std::size_t{66} << 20);
    const auto parser = M3uParser();
    ReadBytes(*parser, "", repeated(std::string(4090, 'a') + "\n"));
    std::size_t bytes = 0;
    for (const PlaylistEntry& entry : parser->Finish().tracks) bytes += entry.location.size();
    EXPECT_LE(bytes, kMostTrackBytes + kLongestPath);
}

TEST(ForeignText, IsReadAsWhatItIs) {
    const struct {
        const char* name;
        std::string bytes;
        std::string text;
    } cases[] = {
        {"UTF-8 cut off", "東京\xE6\x9D", "東京"},
        {"western, accents before letters", "C\xE9line \xC9t\xE9", "Céline Été"},
        {"western, a curly apostrophe", "Don\x92t Stop", "Don’t Stop"},
        {"Shift_JIS kana", "\x83\x65\x83\x58\x83\x67", "テスト"},
        {"one kanji of Shift_JIS", "\x88\xA4", "愛"},
        {"Shift_JIS and Latin letters, cut off", "Love \x82\xB3\x82\xAD\x82\xE7\x83", "Love さくら"},
        {"EUC-JP", "\xA4\xB5\xA4\xAF\xA4\xE9", "さくら"},
        {"control characters and tabs", "\x01 a\t\r\nb\x7F", "a b"},
        {"decomposed", "か\u3099", "が"},
    };
    for (const auto& c : cases) EXPECT_EQ(CleanLine(c.bytes), c.text) << c.name;
}

}  // namespace
}  // namespace sorakaze::player
