// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// Runs the program itself, with an empty environment and in a folder of its own.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sndfile.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <string>
#include <vector>

namespace {

using testing::HasSubstr;
namespace fs = std::filesystem;

struct Sound {
    int rate = 0;
    std::vector<float> samples;

    double Seconds() const { return static_cast<double>(samples.size()) / rate; }
    static bool Loud(float sample) { return std::abs(sample) > 0.01F; }
    double Lead() const {
        return static_cast<double>(std::find_if(samples.begin(), samples.end(), Loud) - samples.begin()) /
               rate;
    }
    double Tail() const {
        return static_cast<double>(std::find_if(samples.rbegin(), samples.rend(), Loud) - samples.rbegin()) /
               rate;
    }
    double Peak() const {
        float peak = 0;
        for (const float sample : samples) peak = std::max(peak, std::abs(sample));
        return 20 * std::log10(peak);
    }
    double Level() const {
        double sum = 0;
        for (const float sample : samples) sum += double{sample} * sample;
        return 10 * std::log10(sum / static_cast<double>(samples.size()));
    }
};

class SayTest : public testing::Test {
  protected:
    void SetUp() override {
        std::string pattern = (fs::temp_directory_path() / "say-test-XXXXXX").string();
        folder = mkdtemp(pattern.data());
        file = folder / "speech.aiff";
    }
    void TearDown() override { fs::remove_all(folder); }

    pid_t Start(std::vector<std::string> words, rlim_t largestFile = RLIM_INFINITY) {
        words.insert(words.begin(), SAY_PROGRAM);
        std::vector<char*> argv;
        for (auto& word : words) argv.push_back(word.data());
        argv.push_back(nullptr);
        const std::string errors = (folder.string() + ".stderr");
        const pid_t child = fork();
        if (child == 0) {
            const rlimit limit{largestFile, largestFile};
            setrlimit(RLIMIT_FSIZE, &limit);
            dup2(open(errors.c_str(), O_CREAT | O_TRUNC | O_WRONLY, 0600), 2);
            char* empty[] = {nullptr};
            execve(argv[0], argv.data(), empty);
            _exit(127);
        }
        return child;
    }

    /// The exit status, or 128 + the signal. What went to standard error is in `complaint`.
    int Wait(pid_t child) {
        int status = 0;
        waitpid(child, &status, 0);
        complaint = Bytes(folder.string() + ".stderr");
        fs::remove(folder.string() + ".stderr");
        return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    }

    int Run(std::vector<std::string> words) { return Wait(Start(std::move(words))); }
    int Say(const std::string& voice, const std::string& text) {
        return Run({"-v", voice, text, "-o", file});
    }

    static std::string Bytes(const fs::path& path) {
        std::ifstream in(path, std::ios::binary);
        return {std::istreambuf_iterator<char>(in), {}};
    }

    Sound Read() {
        SF_INFO info{};
        SNDFILE* in = sf_open(file.c_str(), SFM_READ, &info);
        if (!in) return {};
        EXPECT_EQ(info.format, SF_FORMAT_AIFF | SF_FORMAT_PCM_16);
        EXPECT_EQ(info.channels, 1);
        Sound sound{info.samplerate, std::vector<float>(static_cast<std::size_t>(info.frames))};
        EXPECT_EQ(sf_read_float(in, sound.samples.data(), info.frames), info.frames);
        sf_close(in);
        return sound;
    }

    std::vector<std::string> Left() const {
        std::vector<std::string> names;
        for (const auto& entry : fs::directory_iterator(folder)) names.push_back(entry.path().filename());
        return names;
    }

    fs::path folder, file;
    std::string complaint;
};

const std::string kSentence =
    "Good evening. This is the late show, and here comes the first song of the night.";

TEST_F(SayTest, EveryVoiceIsDifferentAndAsLoudAsTheOthers) {
    std::map<std::string, std::string> heard;
    for (const std::string voice :
         {"Alex",   "Samantha", "Victoria", "Fred",   "Daniel",  "Karen",      "Moira",
          "Tessa",  "Kate",     "Oliver",   "Ralph",  "Whisper", "Anna",       "Markus",
          "Thomas", "Amélie",   "Kyoko",    "Milena", "en-gb",   "en-us+croak"}) {
        SCOPED_TRACE(voice);
        ASSERT_EQ(Say(voice, kSentence), 0) << complaint;
        const Sound sound = Read();
        EXPECT_GT(sound.Seconds(), 3);
        EXPECT_LT(sound.Seconds(), 25);
        EXPECT_NEAR(sound.Level(), -18, 1.5);
        EXPECT_LE(sound.Peak(), -0.95);
        EXPECT_GE(sound.Peak(), -4);
        EXPECT_GE(sound.Lead(), 0.05);
        EXPECT_LE(sound.Lead(), 0.15);
        EXPECT_GE(sound.Tail(), 0.05);
        EXPECT_LE(sound.Tail(), 0.3);
        const auto [same, isNew] = heard.emplace(Bytes(file), voice);
        EXPECT_TRUE(isNew) << "sounds like " << same->second;
        EXPECT_EQ(Left().size(), 1u);
    }
}

TEST_F(SayTest, AVoiceGoesByManyNames) {
    const std::vector<std::vector<std::string>> groups = {
        {"Alex", "alex", "ALEX"},
        {"Amelie", "Amélie", "AMÉLIE"},
        {"English (America)", "en-us", "EN-US", "english-us", "gmw/en-US"},
        {"f3", "en-us+f3", "en-us+F3"},
        {"fr-fr", "roa/fr", "French (France)", "fr"},
    };
    for (const auto& names : groups) {
        std::string first;
        for (const auto& name : names) {
            ASSERT_EQ(Say(name, "one two"), 0) << name << ": " << complaint;
            if (first.empty()) first = Bytes(file);
            EXPECT_EQ(Bytes(file), first) << name;
        }
    }
}

TEST_F(SayTest, AJapaneseVoiceReadsKana) {
    ASSERT_EQ(Say("Kyoko", "あ"), 0) << complaint;
    const double one = Read().Seconds();
    ASSERT_EQ(Say("Kyoko", "あいうえお かきくけこ"), 0);
    const double ten = Read().Seconds();
    EXPECT_GT(ten, one + 0.8);
    // Read sound by sound; a voice that knows no kana spells their names and takes many times as long.
    EXPECT_LT(ten, 4);
}

TEST_F(SayTest, TextIsReadAsItStands) {
    const auto spoken = [&](const std::string& text) {
        EXPECT_EQ(Say("Alex", text), 0) << text << ": " << complaint;
        return Bytes(file);
    };
    EXPECT_EQ(spoken("hello there"), spoken("hello there"));
    EXPECT_NE(spoken("<b>hello</b>"), spoken("hello"));
    EXPECT_NE(spoken("<break time=5s/> hello"), spoken("hello"));
    EXPECT_NE(spoken("fish &amp; chips"), spoken("fish & chips"));
    EXPECT_NE(spoken("[[h@'loU]]"), spoken("hello"));
    EXPECT_EQ(spoken("\x01"
                     "90P hello"),
              spoken("90P hello"));
    EXPECT_EQ(spoken("hello\xFF\xC3 there"), spoken("hello there"));
    EXPECT_EQ(spoken("ＡＢＣ　１７！"), spoken("ABC 17!"));
    EXPECT_GT(spoken("-5 degrees").size(), spoken("-v").size());
}

TEST_F(SayTest, TextWithoutAWordIsAShortSilence) {
    for (const std::string text : {"", "   ", "\t\n", "...", "\xFF\xFE", "((("}) {
        ASSERT_EQ(Say("Alex", text), 0) << complaint;
        const Sound sound = Read();
        EXPECT_GT(sound.Seconds(), 0.05);
        EXPECT_LT(sound.Seconds(), 0.3);
        EXPECT_TRUE(std::none_of(sound.samples.begin(), sound.samples.end(), Sound::Loud));
    }
}

TEST_F(SayTest, LongAndStrangeTextsAreSpoken) {
    std::string page;
    while (page.size() < 12000) page += kSentence + " ";
    ASSERT_EQ(Say("Alex", page), 0) << complaint;
    const Sound sound = Read();
    EXPECT_GT(sound.Seconds(), 400);
    EXPECT_LE(sound.Peak(), -0.95);
    EXPECT_NEAR(sound.Level(), -18, 2);

    for (const std::string text : {"日本語のうた", "مرحبا", "😀🎵", "http://x.y/z?a=b&c=d", "$(id) `id` \\",
                                   "'''' \"\"\"", "Ünïcödé", "1234567890123456789012345678901234567890"}) {
        EXPECT_EQ(Say("Alex", text), 0) << text << ": " << complaint;
    }
    EXPECT_EQ(Say("Alex", std::string(20000, 'x')), 0) << complaint;
}

TEST_F(SayTest, WhatFailsLeavesNothingAndSaysWhy) {
    struct Case {
        std::vector<std::string> words;
        int status;
        std::string complaint;
    };
    const std::string out = file;
    const Case cases[] = {
        {{}, 2, "say -v VOICE TEXT -o FILE"},
        {{"-v", "Alex", "hi"}, 2, "say -v VOICE"},
        {{"-v", "Alex", "hi", "-o", out, "more"}, 2, "say -v VOICE"},
        {{"-o", out, "hi", "-v", "Alex"}, 2, "say -v VOICE"},
        {{"-v", "Nobody", "hi", "-o", out}, 1, "Nobody"},
        {{"-v", "Nobody", "hi", "-o", out}, 1, "Samantha"},
        {{"-v", "", "hi", "-o", out}, 1, "no voice"},
        {{"-v", "two\nlines", "hi", "-o", out}, 1, "no voice"},
        {{"-v", "en-us+nobody", "hi", "-o", out}, 1, "no voice"},
        {{"-v", "../../etc/passwd", "hi", "-o", out}, 1, "no voice"},
        {{"-v", "mb-us1", "hi", "-o", out}, 1, "no voice"},
        {{"-v", "Alex", "hi", "-o", (folder / "none" / "a.aiff").string()}, 1, "none/a.aiff"},
        {{"-v", "Alex", "hi", "-o", folder.string() + "/"}, 1, "can't write"},
        {{"-v", "Alex", "hi", "-o", ""}, 1, "can't write"},
    };
    for (const Case& one : cases) {
        SCOPED_TRACE(testing::PrintToString(one.words));
        EXPECT_EQ(Run(one.words), one.status);
        EXPECT_THAT(complaint, HasSubstr(one.complaint));
        EXPECT_EQ(std::count(complaint.begin(), complaint.end(), '\n'), 1);
        EXPECT_THAT(Left(), testing::IsEmpty());
    }
}

TEST_F(SayTest, AFileThatCantBeFinishedKeepsTheOneBefore) {
    std::ofstream(file) << "before";
    EXPECT_EQ(Wait(Start({"-v", "Alex", kSentence, "-o", file}, 20000)), 1);
    EXPECT_THAT(complaint, HasSubstr("can't write"));
    EXPECT_EQ(Bytes(file), "before");
    EXPECT_EQ(Left().size(), 1u);
}

TEST_F(SayTest, EndedHalfWayItLeavesNothing) {
    std::string page;
    while (page.size() < 100000) page += kSentence + " ";
    const pid_t child = Start({"-v", "Alex", page, "-o", file});
    while (Left().empty() && waitpid(child, nullptr, WNOHANG) == 0) {
    }
    kill(child, SIGTERM);
    EXPECT_EQ(Wait(child), 128 + SIGTERM);
    EXPECT_THAT(Left(), testing::IsEmpty());
}

}  // namespace
