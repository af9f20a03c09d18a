// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// Voices in folders, spoken by the program `say`: Piper's contract by a program that keeps it, and the real
// runtime of sherpa-onnx with a model of a few nodes.
#include <gtest/gtest.h>
#include <sndfile.h>
#include <sys/wait.h>

#include <chrono>
#include <fstream>

#include "speech/say/voices/BoundedChild.h"
#include "tests/support/Program.h"
#include "tests/support/TestRuntime.h"

namespace sorakaze::test {
namespace {

namespace fs = std::filesystem;
using namespace speech;

/// What a program printed.
std::string Printed(const std::vector<std::string>& words, const fs::path& scratch) {
    const fs::path output = scratch / "printed";
    Program(words, output).Wait();
    return ReadBytes(output);
}

struct Spoken {
    double seconds = 0;  ///< 0 without a file
    std::string told;
};

class FolderVoicesTest : public ::testing::Test {
  protected:
    fs::path Voices() const { return scratch_.Path() / "Voices"; }

    /// A Piper voice whose model says what Piper does.
    void AddPiper(const std::string& name, const std::string& what, const std::string& description = "") {
        fs::create_directories(Voices() / name);
        std::ofstream(Voices() / name / "voice.onnx") << what;
        std::ofstream(Voices() / name / "voice.onnx.json") << R"({"audio": {"sample_rate": 22050}})";
        if (!description.empty()) std::ofstream(Voices() / name / "voice.json") << description;
        fs::create_directories(Voices() / "piper");
        std::error_code exists;
        fs::create_symlink(PIPER_STAND_IN, Voices() / "piper/piper", exists);
    }

    Spoken Say(const std::string& voice, const std::string& text) const {
        const fs::path file = scratch_.Path() / "speech.wav";
        fs::remove(file);
        Spoken spoken;
        spoken.told = Printed({"/usr/bin/env", "SORAKAZE_VOICES=" + Voices().string(), SAY_PROGRAM, "-v",
                               voice, text, "-o", file.string()},
                              scratch_.Path());
        SF_INFO info{};
        if (SNDFILE* const sound = sf_open(file.c_str(), SFM_READ, &info)) {
            spoken.seconds = static_cast<double>(info.frames) / info.samplerate;
            sf_close(sound);
        }
        return spoken;
    }

    TemporaryFolder scratch_;
};

TEST_F(FolderVoicesTest, PiperSpeaksAndIsReplacedWhenItCannot) {
    const struct {
        const char *what, *why;
    } cases[] = {{"speak", ""},
                 {"raw", ""},
                 {"fail", "Piper: it ended with status 1 (RuntimeError: no such voice)"},
                 {"crash", "Piper: it ended by Killed"},
                 {"gigabyte", "Piper: it wrote too much"},
                 {"silence", "it made no sound"}};
    for (const auto& [what, why] : cases) {
        AddPiper("Amy", what);
        const Spoken spoken = Say("amy", "Hello [[there]], my friend.");
        EXPECT_GT(spoken.seconds, 0.5) << what;
        if (*why)
            EXPECT_NE(spoken.told.find(std::string(")\t") + why), std::string::npos) << spoken.told;
        else
            EXPECT_EQ(spoken.told, "") << what;
    }
}

TEST_F(FolderVoicesTest, AChildAndWhatItStartedEnd) {
    for (const char* const what : {"hang", "fork"}) {
        AddPiper("Amy", what);
        const std::string model = (Voices() / "Amy/voice.onnx").string();
        std::string why;
        try {
            RunChild({PIPER_STAND_IN, "--model", model}, "text\n",
                     {std::chrono::steady_clock::now() + std::chrono::milliseconds(300)},
                     [](std::string_view) {});
        } catch (const ChildFailure& failure) {
            why = failure.what();
        }
        EXPECT_EQ(why, "it took too long") << what;
        EXPECT_LT(::waitpid(-1, nullptr, WNOHANG), 0) << "something is left of " << what;
    }
}

TEST_F(FolderVoicesTest, ADescriptionCounts) {
    AddPiper("Amy", "speak");
    AddPiper("Slow", "speak",
             R"({"names": ["Zed"], "speed": 0.5, "credit": "Spoken by someone", "licence": "CC BY"})");
    AddPiper("Broken", "speak", R"({"speed": )");
    fs::create_directories(Voices() / "Bare");
    const std::string text = "A sentence of some length is spoken here.";
    const Spoken amy = Say("Amy", text), slow = Say("ZED", text);
    EXPECT_NEAR(slow.seconds / amy.seconds, 2, 0.3);
    EXPECT_EQ(slow.told, "say: credit: Spoken by someone\tCC BY\n");
    EXPECT_NE(Say("Broken", text).told.find("it is no JSON"), std::string::npos);
    const Spoken bare = Say("Bare", text);
    EXPECT_GT(bare.seconds, 0.5);
    EXPECT_NE(bare.told.find("holds no model"), std::string::npos);
    const Spoken nobody = Say("Nobody", text);
    EXPECT_EQ(nobody.seconds, 0);
    const std::string list = Printed(
        {"/usr/bin/env", "SORAKAZE_VOICES=" + Voices().string(), SAY_PROGRAM, "--voices"}, scratch_.Path());
    EXPECT_NE(list.find("Slow\t-\tpiper\tCC BY\tSpoken by someone\t-\n"), std::string::npos) << list;
    EXPECT_NE(list.find("Alex\ten-us\t"), std::string::npos);
    EXPECT_EQ(list.find("\npiper\t"), std::string::npos) << "the engine's folder is no voice";
}

#ifdef SHERPA_FOLDER
TEST_F(FolderVoicesTest, ANeuralModelSpeaksThroughTheRealRuntime) {
    fs::create_directories(Voices());
    fs::create_directory_symlink(SHERPA_FOLDER, Voices() / "sherpa-onnx");
    for (const char* const voice : {"Toy 0.3", "Silent 0", "Bad 0.3"}) {
        const std::string name = std::string(voice).substr(0, std::string(voice).find(' '));
        Printed({MAKE_TOY_VOICE, (Voices() / name).string(), std::string(voice).substr(name.size() + 1)},
                scratch_.Path());
    }
    fs::resize_file(Voices() / "Bad/model.onnx", 300);
    const Spoken toy = Say("Toy", "abcde"), longer = Say("Toy", "abcde abcde");
    EXPECT_EQ(toy.told, "");
    EXPECT_GT(toy.seconds, 0.4);
    EXPECT_GT(longer.seconds, toy.seconds + 0.4);
    EXPECT_NE(Say("Silent", "abcde").told.find("it made no sound"), std::string::npos);
    const Spoken bad = Say("Bad", "abcde");
    EXPECT_GT(bad.seconds, 0.2);
    EXPECT_EQ(bad.told.find("say: voice: "), 0U) << bad.told;
}
#endif

}  // namespace
}  // namespace sorakaze::test
