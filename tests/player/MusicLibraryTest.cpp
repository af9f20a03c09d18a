// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <fstream>
#include <stop_token>
#include <thread>

#include "player/MusicLibrary.h"
#include "player/UserMusicFolder.h"
#include "tests/player/MusicFolder.h"

namespace sorakaze::player {
namespace {

namespace fs = std::filesystem;
using ::testing::ElementsAre;
using namespace std::chrono_literals;

class MusicLibraryTest : public ::testing::Test {
  protected:
    /// A library that scans in its calls, by a clock that the test moves.
    std::unique_ptr<MusicLibrary> Open(std::vector<fs::path> roots) {
        return std::make_unique<MusicLibrary>(std::move(roots), MusicLibrary::Watching::InCall,
                                              [this] { return now_; });
    }
    std::unique_ptr<MusicLibrary> Open() { return Open({music_.Path()}); }

    /// The tracks' paths below the music folder.
    std::vector<std::string> Tracks(MusicLibrary& library, const std::string& playlist) {
        std::vector<std::string> paths;
        for (int n = 1; n <= library.Count(playlist); ++n) {
            const Track track = library.Find(playlist, n).value();
            paths.push_back(track.path.lexically_normal().lexically_relative(music_.Path()));
        }
        return paths;
    }

    MusicFolder music_;
    MusicLibrary::Clock::time_point now_ = MusicLibrary::Clock::now();
};

TEST_F(MusicLibraryTest, LibraryIsEverySoundFileByPath) {
    for (const char* name : {"b/1.mp3", "a/2.FLAC", "a/10.ogg", "a b/x.m4a", "z.wav", "a/cover.jpg", "a/mp3",
                             "a/no.txt", ".hidden/x.mp3", "b/._1.mp3", "日本/曲.aiff", "list.m3u"}) {
        music_.Write(name);
    }
    fs::create_directory(music_ / "folder.mp3");
    ::mkfifo((music_ / "pipe.mp3").c_str(), 0600);
    // Nothing is unreadable for the superuser.
    const auto locked = music_.Write(::geteuid() == 0 ? "locked/x" : "locked/x.mp3").parent_path();
    fs::permissions(locked, fs::perms::none);
    const auto library = Open();
    EXPECT_THAT(Tracks(*library, "Library"),
                ElementsAre("a/10.ogg", "a/2.FLAC", "a b/x.m4a", "b/1.mp3", "z.wav", "日本/曲.aiff"));
    fs::permissions(locked, fs::perms::owner_all);
    for (const int none : {-1, 0, 7}) EXPECT_FALSE(library->Find("Library", none));
}

TEST_F(MusicLibraryTest, LinksAndRootsGiveNoDoublesAndNoLoops) {
    music_.Write("real/a.mp3");
    music_.Write("outside/b.mp3");
    music_.Write("real/.more/c.mp3");
    fs::create_directory_symlink(music_ / "real", music_ / "real/loop");
    fs::create_directory_symlink("../outside", music_ / "real/1");
    fs::create_directory_symlink("../nowhere", music_ / "real/2");
    fs::create_symlink("../outside/b.mp3", music_ / "real/linked.mp3");
    fs::create_symlink("gone.mp3", music_ / "real/broken.mp3");
    fs::create_directory_symlink(music_ / "real", music_ / "alias");
    const auto library =
        Open({music_ / "missing", music_ / "real/.more", music_ / "alias", music_ / "real/../real", {}});
    EXPECT_EQ(library->Count("Library"), 4);
    const auto reached = Open({music_ / "real"});
    EXPECT_THAT(Tracks(*reached, "Library"), ElementsAre("real/1/b.mp3", "real/a.mp3", "real/linked.mp3"));
}

TEST_F(MusicLibraryTest, PlaylistsAreNamedSortedAndDistinct) {
    for (const char* name :
         {"rock.m3u8", "sub/Rock.PLS", "Rock 2.xspf", "A, B,  C.m3u", "library.m3u", "zoo.m3u", "Abba.m3u",
          "tab\tname.m3u", " .m3u", ".m3u", "Über.m3u", "caf\xE9.m3u", "notes.xml"}) {
        music_.Write(name);
    }
    const auto library = Open();
    EXPECT_THAT(library->Names(),
                ElementsAre("Library", "Library (shuffled)", "A,B,C", "Abba", "café", "library 2", "Rock",
                            "Rock 2", "rock 3", "tab name", "zoo", "Über"));
    EXPECT_TRUE(library->Has("ROCK 3"));
}

TEST_F(MusicLibraryTest, EntriesFindTheirFiles) {
    for (const char* name : {"x/plain.mp3", "x/with space.mp3", "x/100%25.mp3", "x/100%.mp3", "Björk.mp3",
                             "x/caf\xE9.mp3", "x/が.mp3", "x/cafe\u0301s.mp3"}) {
        music_.Write(name);
    }
    const std::string root = music_.Path();
    music_.Write(
        "lists/all.m3u",
        "../x/plain.mp3\n..\\x\\plain.mp3\n../x/with%20space.mp3\n../x/100%25.mp3\n../Bj\xF6rk.mp3\n"
        "../x/caf\xE9.mp3\n../x/caf\xE9s.mp3\n../x/か\u3099.mp3\n../x/gone.mp3\n/Volumes/Old/x/plain.mp3\n " +
            root + "/x/plain.mp3 \nfile://" + root + "/x/100%25.mp3\nfile://" + root + "/x/caf%E9.mp3");
    music_.Write("moved.m3u", "C:\\Users\\me\\Music\\x\\plain.mp3 \nfile:///Users/me/x/with%20space.mp3\n");
    const auto library = Open();
    EXPECT_THAT(Tracks(*library, "all"),
                ElementsAre("x/plain.mp3", "x/plain.mp3", "x/with space.mp3", "x/100%25.mp3", "Björk.mp3",
                            "x/caf\xE9.mp3", "x/cafe\u0301s.mp3", "x/が.mp3", "x/gone.mp3", "x/plain.mp3",
                            "x/plain.mp3", "x/100%.mp3", "x/caf\xE9.mp3"));
    EXPECT_THAT(Tracks(*library, "moved"), ElementsAre("x/plain.mp3", "x/with space.mp3"));
}

TEST_F(MusicLibraryTest, EntriesFromElsewhereFindTheirFilesButNeverByAGuess) {
    for (const char* name :
         {"Abba/Gold/01 Waterloo.mp3", "Live/Gold/01 Waterloo.mp3", "Abba/Hits/02 Fernando.mp3",
          "Ärzte/Männer.mp3", "か\u3099/曲.ogg", "x/twice.mp3", "y/twice.mp3", "x/Only.FLAC",
          "Nena - 99 Luftballons.mp3", "Same.mp3"}) {
        music_.Write(name);
    }
    const struct {
        const char* entry;
        const char* file;  ///< empty where there is none
    } cases[] = {
        {"C:\\Users\\me\\Musik\\Abba\\Gold\\01 Waterloo.mp3", "Abba/Gold/01 Waterloo.mp3"},
        {"/home/you/abba/GOLD/01 waterloo.MP3", "Abba/Gold/01 Waterloo.mp3"},
        {"file:///C:/Other/Live/Gold/01%20Waterloo.mp3", "Live/Gold/01 Waterloo.mp3"},
        {"Gold/01 Waterloo.mp3", ""},
        {"/m/01 Waterloo.mp3", ""},
        {"/m/Unknown/02 Fernando.mp3", "Abba/Hits/02 Fernando.mp3"},
        {"/m/a\u0308rzte/ma\u0308nner.mp3", "Ärzte/Männer.mp3"},
        {"D:\\M\\M\xE4nner.mp3", "Ärzte/Männer.mp3"},
        {"\\\\server\\m\\が\\曲.ogg", "か\u3099/曲.ogg"},
        {"/m/twice.mp3", ""},
        {"/m/X//twice.mp3", "x/twice.mp3"},
        {"only.flac", "x/Only.FLAC"},
        {"/m/only.mp3", ""},
        {"/m/", ""},
    };
    std::string list;
    std::vector<std::string> expected;
    for (const auto& c : cases) {
        list += std::string(c.entry) + '\n';
        expected.emplace_back(c.file);
    }
    music_.Write("lists/gone.cue", "FILE gone.wav WAVE\nTRACK 01 AUDIO\nINDEX 01 00:00:00\n");
    music_.Write("lists/from elsewhere.m3u", list + "http://localhost/a.mp3\ngone.cue\n");
    expected.emplace_back();
    const auto library = Open();
    std::vector<std::string> found;
    for (int n = 1; n <= library->Count("from elsewhere"); ++n) {
        const Track track = library->Find("from elsewhere", n).value();
        found.push_back(track.missing.empty() ? track.path.lexically_relative(music_.Path()).string() : "");
    }
    EXPECT_EQ(found, expected);
    const auto missing = library->FindMissing("from elsewhere", 1min);
    EXPECT_EQ(missing.count, 6);
    EXPECT_EQ(missing.checked, 15);
    EXPECT_EQ(missing.addresses, 1U);
    EXPECT_FALSE(missing.isCut);
    EXPECT_EQ(missing.entries.at(2).number, 10);
    EXPECT_THAT(missing.entries.at(2).why, ::testing::HasSubstr("twice.mp3 and "));
    EXPECT_EQ(library->FindMissing("Library", 1min).count, 0);
}

TEST_F(MusicLibraryTest, ACueSheetMakesTheTracksOfTheFileBesideIt) {
    for (const char* name : {"a/disc.flac", "b/live.mp3", "c/x.ogg", "d/1.wav", "d/2.wav", "z.mp3"})
        music_.Write(name);
    const std::string two = "TRACK 01 AUDIO\nINDEX 01 00:00:00\nTRACK 02 AUDIO\nINDEX 01 00:01:00\n";
    music_.Write(
        "a/disc.cue",
        "\xEF\xBB\xBFREM x\r\nPERFORMER \"Band\"\r\nTITLE \"Album\"\r\nFILE \"C:\\rip\\disc.wav\" WAVE\r\n"
        "  TRACK 01 AUDIO\r\n    TITLE \"One\"\r\n    INDEX 01 00:00:00\r\n"
        "  TRACK 02 MODE1/2352\r\n INDEX 01 00:30:00\r\n"
        "  TRACK 03 AUDIO\r\n    PERFORMER \"\xC3\xF0\xF3\xEF\xEF\xE0\"\r\n    INDEX 00 01:00:00\r\n"
        "    INDEX 01 01:02:03\r\n  TRACK 04 AUDIO\r\n TITLE back\r\n INDEX 01 00:59:00\r\n");
    music_.Write("b/anything.cue", "FILE live.mp3 MP3\n" + two);
    music_.Write("c/none.cue",
                 "FILE \"other.wav\" WAVE\n" + two + "INDEX 01 9:99:99\nTITLE\nFILE\nTRACK\n\"\n");
    music_.Write("d/two.cue",
                 "FILE \"1.wav\" WAVE\nTRACK 01 AUDIO\nINDEX 01 00:00:00\nTRACK 02 AUDIO\n"
                 "INDEX 00 00:10:00\nFILE \"2.wav\" WAVE\nINDEX 01 00:00:00\n");
    music_.Write("b/List.m3u", "../z.mp3\n..\\a\\disc.cue\ngone.cue\nlive.mp3\n");
    const auto library = Open();
    const auto tracksOf = [&](const char* playlist) {
        std::vector<std::string> told;
        for (int n = 1; n <= library->Count(playlist); ++n) {
            const Track track = library->Find(playlist, n).value();
            told.push_back(track.path.lexically_relative(music_.Path()).string() + ' ' +
                           std::to_string(track.part.begin) + '-' + std::to_string(track.part.end) + ' ' +
                           track.text.Packed());
        }
        return told;
    };
    EXPECT_THAT(tracksOf("List"),
                ElementsAre(::testing::_, "a/disc.flac 0-4500 One\tBand\tAlbum",
                            "a/disc.flac 4425-0 back\tBand\tAlbum", "b/gone.cue 0-0 ", "b/live.mp3 0-0 "));
    EXPECT_EQ(library->FindMissing("List", 1min).entries.at(0).written, "gone.cue");
    EXPECT_THAT(tracksOf("Library"),
                ElementsAre("a/disc.flac 0-4500 One\tBand\tAlbum", "a/disc.flac 4425-0 back\tBand\tAlbum",
                            "b/live.mp3 0-75 Track 1", "b/live.mp3 75-0 Track 2", "c/x.ogg 0-0 ",
                            "d/1.wav 0-0 ", "d/2.wav 0-0 ", "z.mp3 0-0 "));
    music_.Write("b/anything.cue", "");
    now_ += 1s;
    EXPECT_EQ(library->Count("Library"), 7);
}

TEST_F(MusicLibraryTest, EntriesWithoutAPlaceAreFoundByNameAndLengthOrTags) {
    for (const char* name :
         {"Nena - 99 Luftballons.mp3", "a/Same.mp3", "b/Same.mp3", "c/Same.mp3", "03 - Alone.mp3"})
        music_.Write(name);
    const auto track = [](const std::string& title, const std::string& artist, const std::string& seconds) {
        return "<track><title>" + title + "</title><creator>" + artist + "</creator><duration>" + seconds +
               "000</duration></track>";
    };
    music_.Write("list.xspf", "<playlist><trackList>" + track("99 Luftballons", "NENA", "") +
                                  track("99 luftballons", "Someone", "") + track("Same", "", "200") +
                                  track("Same", "Tagged", "") + track("Same", "", "") +
                                  track("Alone", "Who", "100") + track("Alone", "Who", "999") +
                                  "</trackList></playlist>");
    const auto library = Open();
    library->UseFacts([&](const fs::path& file) {
        const std::string name = file.lexically_relative(music_.Path());
        FileFacts facts;
        facts.seconds = name.starts_with('a') ? 201 : 100;
        if (name.starts_with('c')) facts.text = SplitArtistTitle("TAGGED - same");
        return facts;
    });
    std::vector<std::string> found;
    for (int n = 1; n <= library->Count("list"); ++n) {
        const Track entry = library->Find("list", n).value();
        found.push_back(entry.missing.empty() ? entry.path.lexically_relative(music_.Path()).string() : "");
    }
    EXPECT_THAT(found, ElementsAre("Nena - 99 Luftballons.mp3", "", "a/Same.mp3", "c/Same.mp3", "",
                                   "03 - Alone.mp3", ""));
}

std::string List(const std::string& name, const std::string& more, std::initializer_list<int> tracks) {
    std::string xml =
        "<dict><key>Name</key><string>" + name + "</string>" + more + "<key>Playlist Items</key><array>";
    for (const int id : tracks)
        xml += "<dict><key>Track ID</key><integer>" + std::to_string(id) + "</integer></dict>";
    return xml + "</array></dict>";
}
std::string LibraryXml(const std::string& lists) {
    return R"(<?xml version="1.0" encoding="UTF-8"?>
<!DOCTYPE plist PUBLIC "-//x" "http://h/x.dtd">
<plist version="1.0"><dict><key>Version</key><integer>1</integer><key>Tracks</key><dict>
<key>7</key><dict><key>Track ID</key><integer>7</integer><key>Name</key><string>A &#38; B</string>
<key>Artist</key><string>東京</string><key>Sort Artist</key><string>Tokyo</string><key>Compilation</key><true/>
<key>Location</key><string>file://localhost/Users/me/a%20b.mp3</string></dict>
<key>8</key><dict><key>Track ID</key><integer>8</integer><key>Location</key><string>http://h/x</string></dict>
<key>9</key><dict><key>Track ID</key><integer>9</integer><key>Name</key><string>In the cloud</string></dict>
</dict><key>Playlists</key><array>)" +
           lists + "</array></dict></plist>";
}

TEST_F(MusicLibraryTest, AnExportedLibraryGivesTheUsersOwnLists) {
    music_.Write("lib.xml",
                 LibraryXml(List("All", "<key>Master</key><true/><key>Visible</key><true/>", {7}) +
                            List("Hidden", "<key>Visible</key><false/>", {7}) +
                            List("Films", "<key>Distinguished Kind</key><integer>2</integer>", {7}) +
                            List("Folder", "<key>Folder</key><true/>", {7}) +
                            List("Smart", "<key>Smart Info</key><data>AAA=</data>", {7, 7}) +
                            List("Mine", "", {9, 8, 7, 99})));
    const auto library = Open();
    EXPECT_THAT(library->Names(), ElementsAre("Library", "Library (shuffled)", "Mine", "Smart"));
    EXPECT_EQ(library->Count("Smart"), 2);
    EXPECT_EQ(library->Count("Mine"), 1);
    EXPECT_EQ(library->Find("Mine", 1)->text.Record(), "A & B\t東京\t\t\tTokyo\t");
    EXPECT_EQ(library->Find("Mine", 1)->path, "/Users/me/a b.mp3");
}

TEST_F(MusicLibraryTest, EditsCountFromTheNextCall) {
    const fs::path list = music_.Write("list.m3u", "a.mp3\n");
    const fs::path xml =
        music_.Write("lib.xml", LibraryXml(List("Twice", "", {7}) + List("Twice", "", {7, 7})));
    const auto library = Open();
    EXPECT_THAT(Tracks(*library, "list"), ElementsAre("a.mp3"));
    music_.Write("list.m3u", "b.mp3\n");
    EXPECT_THAT(Tracks(*library, "list"), ElementsAre("b.mp3")) << "same size, same moment";
    fs::rename(music_.Write("new", "c.mp3\nd.mp3\n"), list);
    EXPECT_THAT(Tracks(*library, "list"), ElementsAre("c.mp3", "d.mp3"));

    EXPECT_EQ(library->Count("Twice"), 1);
    EXPECT_EQ(library->Count("Twice 2"), 2);
    music_.Write("lib.xml", LibraryXml(List("Twice", "", {7, 7, 7}) + List("New", "", {7})));
    EXPECT_EQ(library->Count("Twice"), 3);
    EXPECT_EQ(library->Count("Twice 2"), 0);
    now_ += 1s;
    EXPECT_THAT(library->Names(), ElementsAre("Library", "Library (shuffled)", "list", "New", "Twice"));
}

TEST_F(MusicLibraryTest, NewAndRemovedFilesAreNoticedWithinASecond) {
    music_.Write("a.mp3");
    music_.Write("sub/list.m3u", "x.mp3");
    const auto library = Open();
    EXPECT_EQ(library->Count("Library"), 1);
    EXPECT_EQ(library->Count("list"), 1);
    music_.Write("sub/deep/b.mp3");
    music_.Write("new.m3u", "a.mp3");
    fs::remove(music_ / "sub/list.m3u");
    now_ += 999ms;
    EXPECT_EQ(library->Count("Library"), 1);
    EXPECT_EQ(library->Count("list"), 1) << "taken away for a moment, perhaps to be saved";
    now_ += 1ms;
    EXPECT_EQ(library->Count("Library"), 2);
    EXPECT_THAT(library->Names(), ElementsAre("Library", "Library (shuffled)", "new"));
    EXPECT_EQ(library->Count("list"), 0);
}

TEST_F(MusicLibraryTest, AFolderThatIsAwayForAWhileIsWaitedFor) {
    const fs::path other = fs::exists("/dev/shm") ? fs::path("/dev/shm") : fs::temp_directory_path();
    const fs::path disk = other / ("away-" + std::to_string(::getpid()));
    for (const char* name : {"root/a.mp3", "root/sub/b.mp3", "empty/x", "elsewhere/linked.mp3"})
        music_.Write(name);
    fs::create_directory(disk);
    std::ofstream(disk / "disk.mp3").put('x');
    music_.Write("root/list.m3u", "a.mp3\nsub/b.mp3\n");
    fs::create_directory_symlink(music_ / "elsewhere", music_ / "root/link");
    fs::create_directory_symlink(disk, music_ / "mounted");
    const auto library = Open({music_ / "root", music_ / "mounted"});
    const auto countsLater = [&](auto time) {
        now_ += time;
        return std::pair(library->Count("Library"), library->Count("list"));
    };
    const auto all = std::pair(4, 2);
    EXPECT_EQ(countsLater(1s), all);
    fs::rename(music_ / "root", music_ / "gone");
    EXPECT_EQ(countsLater(1s), all);
    EXPECT_EQ(countsLater(14min), all);
    fs::rename(music_ / "gone", music_ / "root");
    EXPECT_EQ(countsLater(1s), all);
    fs::rename(music_ / "root", music_ / "gone");
    EXPECT_EQ(countsLater(2min), all) << "the wait begins anew";
    EXPECT_EQ(countsLater(15min), std::pair(1, 0)) << "gone for good";
    fs::rename(music_ / "gone", music_ / "root");
    EXPECT_EQ(countsLater(1s), all);

    fs::rename(music_ / "elsewhere", music_ / "gone");
    EXPECT_EQ(countsLater(1s), all) << "a link's target";
    music_.Write("root/new.mp3");
    EXPECT_EQ(countsLater(1s), std::pair(5, 2)) << "the rest is seen as it is";
    fs::remove(music_ / "root/link");
    EXPECT_EQ(countsLater(1s), std::pair(4, 2)) << "the link itself is gone";

    if (other == "/dev/shm") {
        // What an unmounted disk leaves is an empty folder of the disk below.
        fs::remove(music_ / "mounted");
        fs::remove(music_ / "empty/x");
        fs::create_directory_symlink(music_ / "empty", music_ / "mounted");
        EXPECT_EQ(countsLater(1s), std::pair(4, 2));
    }
    fs::remove_all(disk);
    for (const char* name : {"root/a.mp3", "root/new.mp3", "root/sub/b.mp3"}) fs::remove(music_ / name);
    music_.Write("root/list.m3u", "");
    EXPECT_EQ(countsLater(1s), std::pair(other == "/dev/shm" ? 1 : 0, 0)) << "a folder that was emptied";
}

TEST_F(MusicLibraryTest, NobodyWaitsOnceTheApplicationEnds) {
    music_.Write("a.mp3");
    music_.Write("list.m3u", "a.mp3\n");
    for (const auto watching : {MusicLibrary::Watching::OnThread, MusicLibrary::Watching::InCall}) {
        std::stop_source end;
        MusicLibrary early(
            {music_.Path()}, watching, [this] { return now_; }, end.get_token());
        EXPECT_EQ(early.Count("list"), 1);
        end.request_stop();
        music_.Write("list.m3u", "a.mp3\nb.mp3\n");
        EXPECT_EQ(early.Count("list"), 1) << "what is known by then";
        MusicLibrary late(
            {music_.Path()}, watching, [this] { return now_; }, end.get_token());
        EXPECT_THAT(late.Names(), ElementsAre("Library", "Library (shuffled)"));
        EXPECT_EQ(late.Count("Library"), 0);
        music_.Write("list.m3u", "a.mp3\n");
    }
}

TEST_F(MusicLibraryTest, WatchesOnAThreadToo) {
    music_.Write("a.mp3");
    MusicLibrary library({music_.Path()});
    EXPECT_EQ(library.Count("Library"), 1);
    music_.Write("b.mp3");
    while (library.Count("Library") == 1) std::this_thread::yield();
    EXPECT_EQ(library.Count("Library"), 2);
}

TEST_F(MusicLibraryTest, JunkIsNoPlaylist) {
    std::string junk(30'000, '\0');
    for (std::size_t i = 0; i < junk.size(); ++i) junk[i] = static_cast<char>((i * i * 31 + i / 7) & 0xFF);
    for (const char* name : {"a.m3u", "b.pls", "c.xspf", "d.xml"}) music_.Write(name, junk);
    music_.Write("self.m3u", "self.m3u\n../self.m3u\na.m3u8\n");
    fs::create_directory(music_ / "folder.m3u");
    const auto library = Open();
    EXPECT_THAT(library->Names(), ElementsAre("Library", "Library (shuffled)", "a", "b", "c", "self"));
    EXPECT_EQ(library->Count("self"), 0);
    for (const std::string& name : library->Names()) Tracks(*library, name);
}

TEST(UserMusicFolder, IsWhereTheDesktopSaysItIs) {
    const std::pair<const char*, const char*> cases[] = {
        {"", "/home/u/Music"},
        {"# XDG_MUSIC_DIR=\"/no\"\nXDG_MUSIC_DIR=\"$HOME/Musik\"\n", "/home/u/Musik"},
        {"XDG_MUSIC_DIR = \"/data/My \\\"Music\\\"\"", "/data/My \"Music\""},
        {"XDG_MUSIC_DIR=\"/a\"\nXDG_MUSIC_DIR=\"$HOME/\"\n", ""},
        {"XDG_MUSIC_DIR=\"relative\"\nXDG_MUSIC_DIRS=\"/x\"", "/home/u/Music"},
    };
    for (const auto& [text, folder] : cases) EXPECT_EQ(MusicFolderFrom(text, "/home/u"), folder) << text;
    EXPECT_EQ(MusicFolderFrom("", ""), "");
}

}  // namespace
}  // namespace sorakaze::player
