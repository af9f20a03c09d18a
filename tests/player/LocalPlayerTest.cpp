// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <taglib/fileref.h>
#include <taglib/tag.h>

#include <algorithm>
#include <cmath>
#include <future>
#include <set>

#include "player/LocalPlayer.h"
#include "player/MusicLibrary.h"
#include "player/ShuffledOrder.h"
#include "tests/player/MusicFolder.h"

namespace sorakaze::player {
namespace {

namespace fs = std::filesystem;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

struct ThreeTracks : MusicFolder {
    ThreeTracks() {
        WriteTone("1.wav", 2);
        WriteTone("2.wav", 10);
        Write("3.wav", "no sound at all");
        Write("list.m3u", "2.wav\ngone.wav\n3.wav\n");
    }
};

class LocalPlayerTest : public ::testing::Test {
  protected:
    LocalPlayerTest() {
        player_.onTrack = [this](const TrackEvent& event) {
            constexpr const char* kWords[] = {"started", "fades", "ended", "failed", "skipped", "untagged"};
            if (!event.why.empty()) {
                told_.push_back(kWords[static_cast<int>(event.what)] + (' ' + event.why));
                return;
            }
            told_.push_back(std::string(kWords[static_cast<int>(event.what)]) + ' ' + event.playlist + ' ' +
                            std::to_string(event.number) + ' ' + event.title + " at " +
                            std::to_string(std::lround(event.position * 10)));
        };
    }

    /// Mixes and gives the loudest sample of the last tenth of a second.
    float Hear(double seconds) {
        std::vector<float> block(sound::kSampleRate / 10 * sound::kChannels);
        for (int i = 0; i < std::lround(seconds * 10); ++i) engine_.Mix(block);
        const auto [low, high] = std::ranges::minmax(block);
        return std::max(-low, high);
    }

    std::vector<std::string> TakeTold() { return std::exchange(told_, {}); }

    ThreeTracks music_;
    sound::MixingEngine engine_{sound::MixingMode::Offline};
    LocalPlayer player_{engine_, std::make_unique<MusicLibrary>(std::vector{music_.Path()})};
    std::vector<std::string> told_;
};

TEST_F(LocalPlayerTest, PlaysATrackToItsEndOrToTheNext) {
    EXPECT_EQ(player_.Position(), "0");
    player_.Play("list", 1);
    Hear(0.5);
    player_.Play("Library", 1);
    EXPECT_EQ(player_.State(), "playing");
    EXPECT_EQ(player_.Position(), "0.000");
    EXPECT_NEAR(Hear(1.5), 0.25, 0.02);
    EXPECT_EQ(engine_.Sounding(), 1);
    EXPECT_EQ(player_.Position(), "1.500");
    Hear(1);
    EXPECT_EQ(player_.State(), "stopped");
    EXPECT_EQ(player_.Position(), "0");
    EXPECT_THAT(TakeTold(), ElementsAre("started list 1 2 at 0", "ended list 1 2 at 5",
                                        "started Library 1 1 at 0", "ended Library 1 1 at 20"));
}

TEST_F(LocalPlayerTest, WhatCannotBePlayedLeavesThePlayerStopped) {
    ::mkfifo((music_ / "pipe.wav").c_str(), 0600);
    music_.Write("list.m3u", "2.wav\ngone.wav\n3.wav\npipe.wav\n");
    const struct {
        const char* playlist;
        int number;
        const char* why;
    } tracks[] = {{"Library", 4, ""},
                  {"Library", -3, ""},
                  {"nowhere", 1, ""},
                  {"list", 2, "there is no such file, nor another of that name"},
                  {"list", 3, "it holds no sound that can be played"},
                  {"list", 4, "it is no ordinary file"}};
    for (const auto& [playlist, number, why] : tracks) {
        player_.Play("Library", 1);
        TakeTold();
        player_.Play(playlist, number);
        EXPECT_EQ(player_.State(), "stopped") << playlist << number;
        std::vector<std::string> expected{"ended Library 1 1 at 0"};
        if (*why)
            expected.insert(expected.end(), {std::string("failed ") + why, std::string("skipped ") + why});
        EXPECT_EQ(TakeTold(), expected) << playlist << number;
    }
    EXPECT_LT(Hear(0.5), 0.001);
}

TEST_F(LocalPlayerTest, ATrackThatCannotBePlayedIsKnownBeforeItsTurnAndToldOnce) {
    const std::string why = "it holds no sound that can be played";
    // In a render at once, on the air by a thread.
    for (const bool readsAhead : {true, false}) {
        player_.SetReadAhead(readsAhead);
        std::promise<void> found;
        player_.OnChecked([&found] { found.set_value(); });
        EXPECT_EQ(player_.SongInfo("list", 3), "3\t\t\t\t\t") << "it is announced all the same";
        if (!readsAhead) {
            EXPECT_THAT(TakeTold(), IsEmpty());
            found.get_future().wait();
            player_.TellChecked();
        }
        EXPECT_THAT(TakeTold(), ElementsAre("failed " + why));
        player_.Play("list", 3);
        EXPECT_THAT(TakeTold(), ElementsAre("skipped " + why));
        player_.Stop();  // the next show tells it again
    }
}

TEST_F(LocalPlayerTest, ATrackWhoseFolderIsAwayIsWaitedFor) {
    const std::filesystem::path away = music_.Path().string() + "-away";
    ASSERT_NE(player_.CountSongs("Library"), "0");
    for (const bool back : {true, false}) {
        std::filesystem::rename(music_.Path(), away);
        player_.Play("Library", 1);
        EXPECT_EQ(player_.State(), "playing");
        EXPECT_EQ(player_.Position(), "0");
        EXPECT_THAT(TakeTold(), IsEmpty());
        if (!back) player_.Stop();
        std::filesystem::rename(away, music_.Path());
        if (!back) break;
        const auto deadline = std::chrono::steady_clock::now() + std::chrono::minutes(1);
        while (told_.empty() && std::chrono::steady_clock::now() < deadline)
            EXPECT_EQ(player_.State(), "playing");
        EXPECT_THAT(TakeTold(), ElementsAre("started Library 1 1 at 0"));
        EXPECT_GT(Hear(1), 0.2f);
        player_.Stop();
        TakeTold();
    }
    EXPECT_EQ(player_.State(), "stopped");
}

TEST_F(LocalPlayerTest, FadesOutAndComesBackAtFullLevel) {
    player_.BeginFade();
    EXPECT_FALSE(player_.IsFading());
    player_.Play("Library", 2);
    const float full = Hear(1);
    player_.BeginFade();
    EXPECT_EQ(player_.State(), "fading");
    EXPECT_NEAR(Hear(2), full / 2, full * 0.05);
    player_.BeginFade();
    EXPECT_LT(Hear(1.9), full * 0.06);
    EXPECT_TRUE(player_.IsFading()) << "a second call began no second fade";
    EXPECT_LT(Hear(0.2), 0.001);
    EXPECT_FALSE(player_.IsFading());
    EXPECT_EQ(player_.State(), "fading") << "until the caller ends it";
    player_.EndFade();
    EXPECT_EQ(player_.State(), "stopped");
    player_.Play("Library", 2);
    EXPECT_NEAR(Hear(1), full, full * 0.02);
    player_.EndFade();
    EXPECT_EQ(player_.State(), "playing") << "a track that came after the fade is not the fade's to end";
    EXPECT_THAT(TakeTold(), ElementsAre("started Library 2 2 at 0", "fades Library 2 2 at 10",
                                        "ended Library 2 2 at 51", "started Library 2 2 at 0"));

    player_.Play("Library", 1);
    Hear(1);
    player_.BeginFade();
    Hear(1.5);
    EXPECT_FALSE(player_.IsFading()) << "its track has ended";
    player_.EndFade();
    EXPECT_EQ(player_.State(), "stopped");
    EXPECT_EQ(TakeTold().back(), "ended Library 1 1 at 20");
}

TEST_F(LocalPlayerTest, TellsOfTracks) {
    {
        TagLib::FileRef tags(music_.WriteTone("tagged.flac").c_str());
        tags.tag()->setTitle("Tagged");
        ASSERT_TRUE(tags.save());
    }
    music_.WriteTone("bare.flac");
    music_.Write("told.m3u",
                 "#EXTINF:1,Me - Mine\ntagged.flac\n#EXTINF:1,Me - Mine\nbare.flac\nbare.flac\ngone.mp3\n");
    LocalPlayer player(engine_, std::make_unique<MusicLibrary>(std::vector{music_.Path()}));
    EXPECT_EQ(player.Playlists(), "Library, Library (shuffled), list, told");
    EXPECT_EQ(player.CountSongs("told") + player.CountSongs("nowhere"), "40");
    EXPECT_EQ(player.SongInfo("told", 1), "Tagged\tMe\t\t\t\t");
    EXPECT_EQ(player.SongInfo("told", 2), "Mine\tMe\t\t\t\t");
    EXPECT_EQ(player.SongInfo("told", 3), "bare\t\t\t\t\t");
    EXPECT_EQ(player.SongInfo("told", 4), "gone\t\t\t\t\t");
    EXPECT_EQ(player.SongInfo("told", 5) + player.SongInfo("nowhere", 1), "");
}

TEST_F(LocalPlayerTest, PlaysTheTracksOfACueSheetAsTracks) {
    music_.Write("2.cue",
                 "PERFORMER Band\nFILE 2.wav WAVE\nTRACK 01 AUDIO\nTITLE First\nINDEX 01 00:00:00\n"
                 "TRACK 02 AUDIO\nTITLE Second\nINDEX 01 00:08:00\n");
    LocalPlayer player(engine_, std::make_unique<MusicLibrary>(std::vector{music_.Path()}));
    for (const bool ahead : {false, true}) {
        player.SetReadAhead(ahead);
        EXPECT_EQ(player.SongInfo("Library", 2), "First\tBand\t\t\t\t");
        EXPECT_EQ(player.SongInfo("Library", 3), "Second\tBand\t\t\t\t");
        player.Play("Library", 3);
        Hear(1.5);
        EXPECT_EQ(player.Position(), "1.500");
        Hear(0.7);
        EXPECT_EQ(player.State(), "stopped");
        player.Play("Library", 2);
        Hear(7.9);
        EXPECT_EQ(player.State(), "playing");
        Hear(0.2);
        EXPECT_EQ(player.State(), "stopped");
    }
}

TEST_F(LocalPlayerTest, AShuffledListIsDrawnForEachShowAndKeepsArtistsApart) {
    constexpr int kTracks = 24;
    std::string list = "#EXTM3U\n#SHUFFLE\n";
    const auto tone = music_.WriteTone("tone.flac", 0.05);
    for (int i = 0; i < kTracks; ++i) {
        const std::string name = std::to_string(i) + ".flac";
        fs::copy_file(tone, music_ / name);
        TagLib::FileRef tags((music_ / name).c_str());
        // Half of the tracks are by one artist.
        tags.tag()->setArtist(i % 2 == 0 ? "Most" : i % 3 == 0 ? "Some" : "Artist " + std::to_string(i));
        ASSERT_TRUE(tags.save());
        list += name + '\n';
    }
    music_.Write("mixed.m3u", list);
    LocalPlayer player(engine_, std::make_unique<MusicLibrary>(std::vector{music_.Path()}));
    std::uint64_t seed = 0;
    player.showSeed = [&] { return seed; };
    std::set<std::vector<std::string>> orders;
    for (seed = 1; seed <= 3; ++seed) {
        std::vector<std::string> order;
        std::string last;
        for (int n = 1; n <= kTracks; ++n) {
            order.push_back(player.SongInfo("mixed", n));
            const std::string artist = TrackText::Unpacked(order.back()).artist;
            EXPECT_NE(artist, last) << seed << ' ' << n;
            last = artist;
        }
        EXPECT_EQ(player.SongInfo("mixed", kTracks + 1) + player.SongInfo("mixed", 0), "");
        EXPECT_EQ(std::set(order.begin(), order.end()).size(), static_cast<std::size_t>(kTracks));
        LocalPlayer again(engine_, std::make_unique<MusicLibrary>(std::vector{music_.Path()}));
        again.showSeed = player.showSeed;
        EXPECT_EQ(again.SongInfo("mixed", 5), order[4]);
        orders.insert(order);
    }
    EXPECT_EQ(orders.size(), 3u);
    EXPECT_EQ(player.CountSongs("Library (shuffled)"), player.CountSongs("Library"));
    music_.Write("late.flac");
    EXPECT_EQ(player.CountSongs("mixed"), std::to_string(kTracks));
}

TEST(ShuffledOrder, LeavesAnArtistTwiceRunningOnlyWhereItMust) {
    const struct {
        std::string artists;  ///< a letter each, a blank for an unknown one
        char last;
        int together;  ///< neighbours by one artist that can't be avoided
    } cases[] = {{"aaaabbbb", 'a', 0}, {"aaaabbb", 'b', 0}, {"aaaabbb", 'a', 1}, {"aaaaab", 'x', 3},
                 {"aabbcc", 'c', 0},   {"   ", 'x', 0},     {"aaa  ", 'x', 0},   {"abcabcaaa", 'b', 0}};
    for (const auto& c : cases) {
        std::vector<std::string> artists;
        for (const char letter : c.artists) artists.emplace_back(letter == ' ' ? 0 : 1, letter);
        int together = 0;
        std::string last(1, c.last);
        for (const std::size_t place : SpreadArtists(artists, last, false)) {
            together += !artists[place].empty() && artists[place] == last ? 1 : 0;
            last = artists[place];
        }
        EXPECT_EQ(together, c.together) << c.artists << " after " << c.last;
        EXPECT_EQ(SpreadArtists(artists, std::string(1, c.last), false).size(), artists.size());
        EXPECT_LE(SpreadArtists(artists, std::string(1, c.last), true).size(), artists.size());
    }
}

TEST_F(LocalPlayerTest, ReadingAheadPlaysTheFileAsItIsThen) {
    for (const char* name : {"1.wav", "2.wav", "3.wav"}) {
        // What was written just now is never trusted to be the same later.
        fs::last_write_time(music_ / name, fs::file_time_type::clock::now() - std::chrono::hours(1));
    }
    player_.SetReadAhead(true);
    EXPECT_EQ(player_.SongInfo("Library", 1), "1\t\t\t\t\t");
    player_.SongInfo("Library", 3);
    player_.SongInfo("Library", 2);
    player_.Play("Library", 1);
    EXPECT_NEAR(Hear(1), 0.25, 0.02);
    player_.Play("Library", 2);
    EXPECT_NEAR(Hear(1), 0.25, 0.02);
    player_.SongInfo("Library", 1);
    music_.WriteTone("1.wav", 2, 0.5F);
    player_.Play("Library", 1);
    EXPECT_NEAR(Hear(1), 0.5, 0.02) << "the file has been replaced since";
    EXPECT_EQ(engine_.Sounding(), 1);
}

}  // namespace
}  // namespace sorakaze::player
