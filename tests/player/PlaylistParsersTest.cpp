// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>

#include "player/EntryFile.h"
#include "player/ForeignText.h"
#include "player/PlaylistParsers.h"

namespace sorakaze::player {
namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::ElementsAreArray;
using namespace std::string_literals;

/// "best spelling|artist|title" of each entry: what a listener would get to know of it.
std::vector<std::string> Told(const std::vector<PlaylistEntry>& entries) {
    std::vector<std::string> told;
    for (const PlaylistEntry& entry : entries) {
        told.push_back(Spellings(entry).front() + '|' + entry.text.artist + '|' + entry.text.title);
    }
    return told;
}

struct Case {
    const char* name;
    std::string bytes;
    std::vector<std::string> told;
};

TEST(PlaylistParsers, M3u) {
    const std::string utf16 =
        "\xFF\xFE"
        "a\0.\0m\0p\0003\0\r\0\n\0b\0.\0m\0p\0003\0"s;
    const Case cases[] = {
        {"line ends of every kind",
         "a.mp3\nb.mp3\r\nc.mp3\rd.mp3",
         {"a.mp3||", "b.mp3||", "c.mp3||", "d.mp3||"}},
        {"texts belong to the next entry only",
         "#EXTM3U\n#EXTINF:12,Artist - Title\na.mp3\n#EXTINF:-1,Alone\n\n#EXTALB:x\nb.mp3\nc.mp3\n",
         {"a.mp3|Artist|Title", "b.mp3||Alone", "c.mp3||"}},
        {"a skipped entry takes its text with it",
         "#EXTINF:1,Stream\nhttp://host/x.mp3\na.mp3\n",
         {"a.mp3||"}},
        {"attributes with commas", "#extinf:-1 id=\"x, y\",Right\na.mp3", {"a.mp3||Right"}},
        {"byte order mark",
         "\xEF\xBB\xBF"
         "a.mp3\n",
         {"a.mp3||"}},
        {"UTF-16", utf16, {"a.mp3||", "b.mp3||"}},
        {"file URLs",
         "file:///m/a%20b.mp3\nfile://localhost/c%.mp3\nFILE:/d.mp3\n",
         {"/m/a b.mp3||", "/c%.mp3||", "/d.mp3||"}},
        {"no tracks: the network, playlists, blanks, NUL",
         "https://h/a.mp3\nrtsp://h\nself.m3u\nOther.XSPF \n  \nx\0y.mp3\nz.mp3"s,
         {"z.mp3||"}},
        {"a colon is no scheme", "Live: One/a.mp3\nC:\\a.mp3\n", {"Live: One/a.mp3||", "C:\\a.mp3||"}},
        {"titles of unknown encoding", "#EXTINF:1,Bj\xF6rk - J\xF3ga\na.mp3", {"a.mp3|Björk|Jóga"}},
    };
    for (const Case& c : cases) EXPECT_EQ(Told(ParseM3u(c.bytes)), c.told) << c.name;
}

TEST(PlaylistParsers, Pls) {
    const Case cases[] = {
        {"order by number, with gaps",
         "[playlist]\nFile10=j.mp3\nTitle2=A - B\nfile2 = "
         "b.mp3\r\nFile1=a.mp3\nLength1=5\nNumberOfEntries=99\nVersion=2",
         {"a.mp3||", "b.mp3|A|B", "j.mp3||"}},
        {"keys that are none",
         "File=x.mp3\nFile1x=y.mp3\nFile99999999999999999999=z.mp3\nFile-1=v.mp3\nTitle7=w\n",
         {}},
        {"the network and URLs", "File1=http://h/\nFile2=file:///b%2fc.mp3\n", {"/b/c.mp3||"}},
    };
    for (const Case& c : cases) EXPECT_EQ(Told(ParsePls(c.bytes)), c.told) << c.name;
}

TEST(PlaylistParsers, Xspf) {
    const Case cases[] = {
        {"texts, entities and escapes",
         "<playlist xmlns=\"http://xspf.org/ns/0/\"><title>No</title><trackList><track><title>Q &amp; "
         "A</title>"
         "<creator>&#x30A2;</creator><location> a%20%26&amp;.mp3 </location></track></trackList></playlist>",
         {"a &&.mp3|ア|Q & A"}},
        {"bases within bases",
         "<x:playlist xml:base='file:///m/'><x:trackList "
         "xml:base='rock/'><x:track><x:location>a.mp3</x:location></x:track>"
         "<x:track xml:base='../pop/x.xspf'><x:location xml:base='s/'>b.mp3</x:location></x:track>"
         "<x:track><x:location>/c.mp3</x:location></x:track></x:trackList></x:playlist>",
         {"/m/rock/a.mp3||", "/m/rock/../pop/s/b.mp3||", "/c.mp3||"}},
        {"the first of a track's places that is a file",
         "<playlist><trackList><track><location>http://h/a.mp3</location><location>b.mp3</location>"
         "<location>c.mp3</location></track><track><title>nowhere</title></track></trackList></playlist>",
         {"b.mp3||"}},
        {"a network base",
         "<playlist xml:base='http://h/x/'><trackList><track><location>a.mp3</location></track>"
         "</trackList></playlist>",
         {}},
        {"broken off",
         "<playlist><trackList><track><location>a.mp3</location></track><track><loc",
         {"a.mp3||"}},
        {"something else", "\x00\xFF<<<>"s, {}},
    };
    for (const Case& c : cases) EXPECT_EQ(Told(ParseXspf(c.bytes)), c.told) << c.name;
}

TEST(PlaylistParsers, LibraryXml) {
    const auto list = [](const std::string& more, const std::string& items) {
        return "<dict>" + more + "<key>Playlist Items</key><array>" + items + "</array></dict>";
    };
    const auto item = [](int id) {
        return "<dict><key>Track ID</key><integer>" + std::to_string(id) + "</integer></dict>";
    };
    const std::string xml =
        "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<!DOCTYPE plist PUBLIC \"-//x\" "
        "\"http://h/x.dtd\">\n<plist version=\"1.0\">"
        "<dict><key>Version</key><integer>1</integer><key>Tracks</key><dict>"
        "<key>7</key><dict><key>Track ID</key><integer>7</integer><key>Name</key><string>A &#38; B</string>"
        "<key>Artist</key><string>東京</string><key>Sort "
        "Artist</key><string>Tokyo</string><key>Compilation</key><true/>"
        "<key>Location</key><string>file://localhost/Users/me/Music/a%20b.mp3</string></dict>"
        "<key>8</key><dict><key>Track ID</key><integer>8</integer><key>Name</key><string>Radio</string>"
        "<key>Location</key><string>http://h/stream</string></dict>"
        "<key>9</key><dict><key>Track ID</key><integer>9</integer><key>Name</key><string>In the "
        "cloud</string></dict>"
        "</dict><key>Playlists</key><array>" +
        list("<key>Name</key><string>Everything</string><key>Master</key><true/><key>Visible</key><false/>",
             item(7)) +
        list("<key>Name</key><string>Films</string><key>Distinguished Kind</key><integer>2</integer>",
             item(7)) +
        list("<key>Name</key><string>A folder</string><key>Folder</key><true/>", item(7)) +
        list("<key>Name</key><string>Smart</string><key>Smart Info</key><data>AAA=</data>",
             item(7) + item(7)) +
        list("<key>Name</key><string>Mine</string>", item(9) + item(8) + item(7) + item(99)) +
        "</array></dict></plist>";
    const auto library = ParseLibraryXml(xml);
    ASSERT_TRUE(library);
    EXPECT_THAT(Told(library->tracks), ElementsAre("/Users/me/Music/a b.mp3|東京|A & B"));
    EXPECT_EQ(library->tracks[0].text.artistSort, "Tokyo");
    ASSERT_EQ(library->lists.size(), 2U);
    EXPECT_EQ(library->lists[0].name, "Smart");
    EXPECT_THAT(library->lists[0].tracks, ElementsAre(0, 0));
    EXPECT_EQ(library->lists[1].name, "Mine");
    EXPECT_THAT(library->lists[1].tracks, ElementsAre(0));
    for (const char* other : {"", "<plist/>", "<plist><dict><key>Tracks</key></dict></plist>", "<html/>"}) {
        EXPECT_FALSE(ParseLibraryXml(other)) << other;
    }
}

TEST(Spellings, TryWhatAnEntryMayMean) {
    using Form = PlaylistEntry::Form;
    struct {
        const char* name;
        std::string location;
        Form form;
        std::vector<std::string> expected;  ///< in this order, among others
    } const cases[] = {
        {"a path is literal first", "100%25.mp3", Form::Path, {"100%25.mp3", "100%.mp3"}},
        {"a URL is escaped first", "100%25.mp3", Form::Url, {"100%.mp3", "100%25.mp3"}},
        {"other slashes", "a\\b.mp3", Form::Path, {"a\\b.mp3", "a/b.mp3"}},
        {"another encoding", "caf\xE9.mp3", Form::Path, {"caf\xE9.mp3", "café.mp3", "cafe\u0301.mp3"}},
        {"escaped bytes of another encoding",
         "caf%E9.mp3",
         Form::Url,
         {"caf\xE9.mp3", "caf%E9.mp3", "café.mp3"}},
        {"blanks around", " a.mp3 ", Form::Path, {" a.mp3 ", "a.mp3"}},
    };
    for (const auto& c : cases) {
        std::vector<std::string> spellings = Spellings({c.location, c.form, {}});
        EXPECT_LE(spellings.size(), 24U) << c.name;
        auto place = spellings.begin();
        for (const std::string& expected : c.expected) {
            place = std::find(place, spellings.end(), expected);
            EXPECT_NE(place, spellings.end()) << c.name << ": " << expected;
        }
    }
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
    for (int byte = 0x80; byte < 0x100; ++byte) {
        const std::string clean = CleanLine("x"s + static_cast<char>(byte) + "y");
        EXPECT_TRUE(IsUtf8(clean)) << byte;
    }
}

}  // namespace
}  // namespace sorakaze::player
