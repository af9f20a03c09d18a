// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// No voice for Open JTalk can be counted on, so that a script stands in for the program: it notes how it was
// called and hands out a sound.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "speech/say/OpenJTalk.h"
#include "speech/say/SpeechFile.h"
#include "tests/support/TestRuntime.h"

namespace sorakaze::speech {
namespace {

namespace fs = std::filesystem;

struct OpenJTalkTest : testing::Test {
    OpenJTalkTest() {
        MakeProgram("cp '" + folder.Path().string() + "/tone.wav' \"$6\"");
        folder.Write("dictionary/sys.dic", "");
        SpeechFile tone(folder.Path() / "tone.wav", 48000);
        tone.Write(std::vector<std::int16_t>(4800, 1000));
        tone.Finish();
    }
    /// A program that notes its call and then does what `end` says.
    void MakeProgram(const std::string& end) {
        const std::string calls = " >> '" + folder.Path().string() + "/calls'\n";
        folder.Write("bin/open_jtalk", "#!/bin/sh\necho \"$@\"" + calls + "cat" + calls + end + "\n");
        fs::permissions(places.program, fs::perms::owner_all);
    }

    test::TemporaryFolder folder;
    OpenJTalkPlaces places{folder.Path() / "bin/open_jtalk", folder.Path() / "dictionary",
                           folder.Path() / "voices"};
};

TEST_F(OpenJTalkTest, IsChosenWhereAllPartsStand) {
    EXPECT_FALSE(FindOpenJTalk(places, "kyoko", 1));
    folder.Write("voices/nitech/nitech_jp_atr503_m001.htsvoice", "");
    const auto lowered = FindOpenJTalk(places, "otoya", 1), raised = FindOpenJTalk(places, "kyoko", 1);
    ASSERT_TRUE(lowered && raised);
    EXPECT_EQ(lowered->halftones, 0);
    EXPECT_GT(raised->halftones, 4);
    folder.Write("voices/mei/mei_normal.htsvoice", "");
    EXPECT_EQ(FindOpenJTalk(places, "kyoko", 1)->voice.filename(), "mei_normal.htsvoice");
    EXPECT_EQ(FindOpenJTalk(places, "otoya", 1)->voice.filename(), "nitech_jp_atr503_m001.htsvoice");
    fs::remove(folder.Path() / "dictionary/sys.dic");
    EXPECT_FALSE(FindOpenJTalk(places, "kyoko", 1));
}

TEST_F(OpenJTalkTest, SpeaksStretchByStretchOrFails) {
    folder.Write("voices/mei_normal.htsvoice", "");
    fs::create_directory(folder.Path() / "scratch");
    const auto voice = *FindOpenJTalk(places, "sakura", 1.5);
    std::size_t frames = 0;
    const auto count = [&](int, std::span<const std::int16_t> samples) { frames += samples.size(); };
    std::string text = "-x $(id) 'こんにちは'。";
    while (text.size() < 2000) text += "曲です。";
    SpeakOpenJTalk(voice, text, folder.Path() / "scratch", count);
    EXPECT_EQ(frames, 4800u * Stretches(text).size());
    std::ifstream calls(folder.Path() / "calls");
    EXPECT_THAT(std::string(std::istreambuf_iterator(calls), {}),
                testing::HasSubstr("-r 1.50 -fm 3\n-x $(id) 'こんにちは'。"));
    for (const char* end : {"exit 1", "true", "echo no > \"$6\"", "kill -9 $$"}) {
        MakeProgram(end);
        EXPECT_THROW(SpeakOpenJTalk(voice, "曲", folder.Path() / "scratch", count), std::runtime_error)
            << end;
        EXPECT_TRUE(fs::is_empty(folder.Path() / "scratch"));
    }
}

TEST_F(OpenJTalkTest, StretchesAreShortAndLoseNothing) {
    for (const std::string unit : {"あ", "曲です。", "Hello! "}) {
        std::string text, together;
        while (text.size() < 5000) text += unit;
        for (const auto stretch : Stretches(text)) {
            EXPECT_LE(stretch.size(), 900u);
            EXPECT_TRUE(stretch.ends_with(unit)) << unit;
            together += stretch;
        }
        EXPECT_EQ(together, text);
    }
}

}  // namespace
}  // namespace sorakaze::speech
