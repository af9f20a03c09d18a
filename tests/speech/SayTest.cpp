// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// Runs the program itself, with an empty environment and in a folder of its own.
#include <ebur128.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <map>
#include <sndfile.hh>
#include <span>

#include "tests/support/Program.h"
#include "tests/support/TestRuntime.h"

namespace sorakaze::test {
namespace {

namespace fs = std::filesystem;

struct Sound {
    int rate = 0;
    std::vector<float> samples;

    double Seconds() const { return static_cast<double>(samples.size()) / rate; }
    static bool Loud(float sample) { return std::abs(sample) > 0.01F; }
    /// Seconds before the first loud sample.
    template <typename Iterator>
    double Silence(Iterator from, Iterator to) const {
        return static_cast<double>(std::find_if(from, to, Loud) - from) / rate;
    }
    double Peak() const {
        float peak = 0;
        for (const float sample : samples) peak = std::max(peak, std::abs(sample));
        return 20 * std::log10(peak);
    }
    /// LUFS as one channel.
    double Loudness() const {
        ebur128_state* meter = ebur128_init(1, static_cast<unsigned long>(rate), EBUR128_MODE_I);
        double loudness = 0;
        ebur128_add_frames_float(meter, samples.data(), samples.size());
        ebur128_loudness_global(meter, &loudness);
        ebur128_destroy(&meter);
        return loudness;
    }
};

struct SayTest : testing::Test {
    Program Start(std::vector<std::string> words, const std::string& before = "") const {
        words.insert(words.begin(), {"/bin/sh", "-c", before + "exec env -i \"$@\"", "sh", SAY_PROGRAM});
        return Program(words, folder.Path() / "output");
    }
    int Say(const std::string& voice, const std::string& text) const {
        return Start({"-v", voice, text, "-o", file}).Wait();
    }
    /// What it says, which it can.
    Sound Spoken(const std::string& voice, const std::string& text) const {
        EXPECT_EQ(Say(voice, text), 0) << text;
        SndfileHandle in(file);
        EXPECT_EQ(in.format(), SF_FORMAT_AIFF | SF_FORMAT_PCM_16);
        EXPECT_EQ(in.channels(), 1);
        Sound sound{in.samplerate(), std::vector<float>(static_cast<std::size_t>(in.frames()))};
        EXPECT_EQ(in.readf(sound.samples.data(), in.frames()), in.frames());
        return sound;
    }
    /// Files beside the speech, itself included.
    auto Left() const { return std::distance(fs::directory_iterator(file.parent_path()), {}); }

    TemporaryFolder folder;
    const fs::path file = folder.Write("speech/speech.aiff", "before");
};

const std::string kSentence =
    "Good evening. This is the late show, and here comes the first song of the night.";

TEST_F(SayTest, EveryVoiceIsDifferentAndAsLoudAsTheOthers) {
    std::map<std::string, std::string> heard;
    for (const std::string voice :
         {"Alex", "Samantha", "Victoria", "Fred", "Daniel", "Karen", "Moira", "Tessa", "Kate", "Oliver",
          "Ralph", "Whisper", "Anna", "Thomas", "Amélie", "Kyoko", "Milena", "en-us+croak"}) {
        SCOPED_TRACE(voice);
        const Sound sound = Spoken(voice, kSentence);
        EXPECT_NEAR(sound.Seconds(), 14, 11);
        EXPECT_NEAR(sound.Loudness(), -18, 0.5);
        EXPECT_LT(sound.Peak(), -0.9);
        EXPECT_NEAR(sound.Silence(sound.samples.begin(), sound.samples.end()), 0.1, 0.05);
        EXPECT_NEAR(sound.Silence(sound.samples.rbegin(), sound.samples.rend()), 0.42, 0.08);
        const auto [same, isNew] = heard.emplace(ReadBytes(file), voice);
        EXPECT_TRUE(isNew) << "sounds like " << same->second;
        EXPECT_EQ(Left(), 1);
    }
}

TEST_F(SayTest, AVoiceGoesByManyNames) {
    const std::vector<std::string> groups[] = {{"Alex", "ALEX"},
                                               {"Amelie", "AMÉLIE"},
                                               {"English (America)", "en-us", "english-us", "gmw/en-US"},
                                               {"f3", "en-us+F3"}};
    for (const auto& names : groups) {
        const Sound first = Spoken(names[0], "one two");
        for (const auto& name : names) EXPECT_EQ(Spoken(name, "one two").samples, first.samples) << name;
    }
}

TEST_F(SayTest, DataAndSettingsAreTheSystemsAlone) {
    const std::string planted = folder.Path().string();
    folder.Write("espeak-ng-data/phontab", "");
    folder.Write(".mecabrc", "dicdir = /nowhere\n");
    for (const char* voice : {"Alex", "Kyoko"}) {
        const Sound usual = Spoken(voice, "東京 one");
        const std::string words = "cd " + planted + "; exec env HOME=. ESPEAK_DATA_PATH=" + planted +
                                  " MECABRC=" + planted + "/.mecabrc PATH=. " SAY_PROGRAM " -v " + voice +
                                  " '東京 one' -o " + file.string();
        EXPECT_EQ(Program({"/bin/sh", "-c", words}, folder.Path() / "output").Wait(), 0) << voice;
        SndfileHandle in(file);
        EXPECT_EQ(in.frames(), static_cast<sf_count_t>(usual.samples.size())) << voice;
    }
}

TEST_F(SayTest, AFileThatCantBeReplacedIsWritten) {
    if (geteuid() != 0) GTEST_SKIP() << "it takes root to close a folder and own its file";
    const std::string usual = (Spoken("Alex", kSentence), ReadBytes(file));
    const auto scratch = folder.Path() / "scratch";
    fs::create_directory(scratch);
    for (const auto& path : {scratch, file}) fs::permissions(path, fs::perms::all);
    fs::permissions(folder.Path(), fs::perms(0755));
    fs::resize_file(file, 0);
    const Program::User nobody = Program::User::Nobody;
    const std::vector<std::string> words{SAY_PROGRAM, "-v", "Alex", kSentence, "-o", file};
    EXPECT_EQ(Program(words, "/dev/null", Program::Errors::Dropped, nobody).Wait(), 1);
    std::vector<std::string> withScratch{"/usr/bin/env", "TMPDIR=" + scratch.string()};
    withScratch.insert(withScratch.end(), words.begin(), words.end());
    EXPECT_EQ(Program(withScratch, "/dev/null", Program::Errors::Dropped, nobody).Wait(), 0);
    EXPECT_EQ(ReadBytes(file), usual);
    EXPECT_TRUE(fs::is_empty(scratch));
}

TEST_F(SayTest, AJapaneseVoiceReadsKana) {
    const double ten = Spoken("Kyoko", "あいうえお かきくけこ").Seconds();
    EXPECT_GT(ten, Spoken("Kyoko", "あ").Seconds() + 0.8);
    // Read sound by sound; a voice that knows no kana spells their names and takes many times as long.
    EXPECT_LT(ten, 4);
}

TEST_F(SayTest, TextIsReadAsItStands) {
    const auto spoken = [&](const std::string& text) { return Spoken("Alex", text).samples; };
    EXPECT_NE(spoken("<break time=5s/> hello"), spoken("hello"));
    EXPECT_NE(spoken("fish &amp; chips"), spoken("fish & chips"));
    EXPECT_NE(spoken("[[h@'loU]]"), spoken("hello"));
    EXPECT_EQ(spoken("\00190P hello\xFF\xC3 there"), spoken("90P hello there"));
    EXPECT_EQ(spoken("ＡＢＣ　１７！"), spoken("ABC 17!"));
    EXPECT_GT(spoken("-5 degrees").size(), spoken("-v").size());
    spoken("日本語 مرحبا 😀 http://x.y/z?a=b $(id) `id` \\ '' \"\" 12345678901234567890123456789012345");
    spoken(std::string(20000, 'x'));
}

TEST_F(SayTest, TextWithoutAWordIsAShortSilence) {
    for (const std::string text : {"", "\t\n", "...", "\xFF\xFE"}) {
        const Sound sound = Spoken("Alex", text);
        EXPECT_NEAR(sound.Seconds(), 0.17, 0.12);
        EXPECT_TRUE(std::none_of(sound.samples.begin(), sound.samples.end(), Sound::Loud));
    }
}

TEST_F(SayTest, NoSpeechIsLongerThanTwoMinutes) {
    const auto repeated = [](const std::string& text, int times) {
        std::string all;
        for (int i = 0; i < times; ++i) all += text;
        return all;
    };
    const struct {
        const char* voice;
        std::string text;
        double shortest;  ///< seconds
    } cases[] = {{"Alex", repeated("a ", 60'000), 115},
                 {"Alex", repeated(kSentence + " ", 500), 115},
                 {"Alex", repeated("雲a", 25'000), 115},
                 {"Kyoko", repeated("今日は晴れ。", 5'000), 115},
                 {"Kyoko", repeated("一二三", 1'000), 115}};
    for (const auto& [voice, text, shortest] : cases) {
        SCOPED_TRACE(voice + (" " + text.substr(0, 20)));
        const Sound sound = Spoken(voice, text);
        EXPECT_NEAR(sound.Seconds(), (shortest + 121) / 2, (121 - shortest) / 2);
        EXPECT_EQ(ReadBytes(folder.Path() / "output"), "say: the text is too long, its speech was cut\n");
        const auto end = std::span(sound.samples).last(static_cast<std::size_t>(sound.rate) / 500);
        EXPECT_TRUE(std::ranges::none_of(end, Sound::Loud)) << "no click";
    }
    const Sound sound = Spoken("Alex", repeated(kSentence + " ", 15));
    EXPECT_GT(sound.Seconds(), 60);
    EXPECT_EQ(ReadBytes(folder.Path() / "output"), "");
    for (const std::string& text : {repeated("a", 100'000), "e" + repeated("\u0301", 50'000),
                                    repeated("1", 100'000), repeated("😀", 25'000)}) {
        EXPECT_NEAR(Spoken("Kyoko", text).Seconds(), 3, 2.99) << "no word is that long";
        EXPECT_EQ(ReadBytes(folder.Path() / "output"), "");
    }
    EXPECT_NEAR(sound.Loudness(), -18, 2);
}

TEST_F(SayTest, EndedHalfWayItLeavesNothing) {
    std::string page;
    while (page.size() < 90'000) page += kSentence + " ";
    fs::remove(file);
    Program ended = Start({"-v", "Alex", page, "-o", file});
    while (Left() == 0 && !ended.Ended()) continue;
    ended.Signal(SIGTERM);
    EXPECT_EQ(ended.Wait(), 128 + SIGTERM);
    EXPECT_EQ(Left(), 0) << testing::PrintToString(
        std::vector<fs::path>(fs::directory_iterator(file.parent_path()), fs::directory_iterator()));
}

TEST_F(SayTest, WhatFailsKeepsTheFileBefore) {
    const std::pair<std::vector<std::string>, int> cases[] = {
        {{}, 2},
        {{"-v", "Alex", "hi", "-o", file, "more"}, 2},
        {{"-v", "", "hi", "-o", file}, 1},
        {{"-v", "en-us+nobody", "hi", "-o", file}, 1},
        {{"-v", "../../etc/passwd", "hi", "-o", file}, 1},
        {{"-v", "mb-us1", "hi", "-o", file}, 1},
        {{"-v", "Alex", "hi", "-o", file / "none.aiff"}, 1},
        {{"-v", "Alex", "hi", "-o", file.parent_path()}, 1},
        // On a disk that is full after 20 kB.
        {{"-v", "Alex", kSentence, "-o", file}, 1}};
    for (const auto& [words, status] : cases) {
        SCOPED_TRACE(testing::PrintToString(words));
        EXPECT_EQ(Start(words, "ulimit -f 40; ").Wait(), status);
        EXPECT_EQ(ReadBytes(file), "before");
        EXPECT_EQ(Left(), 1);
    }
}

}  // namespace
}  // namespace sorakaze::test
