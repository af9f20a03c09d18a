// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// A station's own voices in a show, in the list of voices and in the checker.
#include <sys/stat.h>

#include "tests/studio/StudioRun.h"

namespace sorakaze::test {
namespace {

namespace fs = std::filesystem;

struct Voices : testing::Test {
    Voices() {
        station.WriteTone("Music/a.wav", 440, 0.4, 2);
        fs::create_directories(station.Path() / "Voices/piper");
        fs::copy_file(PIPER_STAND_IN, station.Path() / "Voices/piper/piper");
    }
    /// A Piper voice whose model says what Piper does.
    void Add(const std::string& folder, const std::string& what, const std::string& description) const {
        station.Write(folder + "/voice.onnx", what);
        station.Write(folder + "/voice.onnx.json", "{}");
        station.Write(folder + "/voice.json", description);
    }
    Outcome RenderWith(const std::string& voice) const {
        station.Write("Programs/Show.txt", "personality: " + voice +
                                               " Reed\nmode: songs 1\nopening: 0, say Hello\nopening: 0, say "
                                               "again\nintro: 0, play [[iTunes]]\n");
        return station.Render("show.wav", "--offline");
    }

    StudioStation station;
};

TEST_F(Voices, AShowTellsOnceWhoSpokeAndWhomToCredit) {
    Add("Voices/Amy", "speak", R"({"credit": "Someone", "licence": "CC BY"})");
    Add("home/.local/share/sorakaze/Voices/Bea", "fail", "{}");
    const auto amy = RenderWith("Amy");
    EXPECT_EQ(amy.status, 0) << amy.error;
    EXPECT_EQ(amy.error.find("voice"), std::string::npos) << amy.error;
    EXPECT_NE(amy.out.find("Credits:\n  Someone, CC BY\n"), std::string::npos) << amy.out;
    EXPECT_EQ(station.Traced("credit", "title").size(), 1U);
    EXPECT_EQ(station.Traced("say", "seconds").size(), 2U);
    const auto bea = RenderWith("Bea");
    EXPECT_EQ(bea.status, 0) << bea.error;
    EXPECT_EQ(station.Traced("voice", "why").size(), 1U);
    EXPECT_EQ(station.Traced("say", "seconds").size(), 2U);
    EXPECT_NE(bea.out.find("! voice Bea is spoken by Amy (piper): Piper: it ended with status 1"),
              std::string::npos)
        << bea.out;
}

TEST_F(Voices, ASentenceThatAShowSaysAgainIsSpokenOnce) {
    Add("Voices/Amy", "noise", "{}");
    station.Write(
        "Programs/Show.txt",
        "personality: Amy Reed\nmode: songs 1\nopening: 0, say Hello there\nopening: 0, say Hello "
        "there\nopening: 0, say Goodbye $1\nopening: 0, say Goodbye $1\nintro: 0, play [[iTunes]]\n");
    EXPECT_EQ(station.Render("show.wav", "--offline").status, 0);
    const auto seconds = station.Traced("say", "seconds");
    ASSERT_EQ(seconds.size(), 4U);
    EXPECT_EQ(seconds[0], seconds[1]);
    EXPECT_NE(seconds[2], seconds[3]) << "the shell's texts are the shell's each time";
}

TEST_F(Voices, AreListedTriedAndChecked) {
    Add("Voices/Amy", "speak", R"({"language": "en_GB", "licence": "CC0"})");
    Add("Voices/Cat", "speak", "{");
    const auto list = nlohmann::json::parse(station.Run("voices --station . --json").out);
    EXPECT_EQ(list.at(0).at("name"), "Amy");
    EXPECT_EQ(list.at(0).at("language"), "en-gb");
    EXPECT_EQ(list.at(0).at("engine"), "piper");
    EXPECT_EQ(list.at(0).at("licence"), "CC0");
    EXPECT_TRUE(list.at(0).at("speed").is_null());
    EXPECT_EQ(station.Run("voices try Amy --station . --output a.wav").status, 0);
    EXPECT_GT(fs::file_size(station.Path() / "a.wav"), 10'000U);
    EXPECT_EQ(station.Run("voices try Nobody --station . --output b.wav").status, 1);
    EXPECT_FALSE(fs::exists(station.Path() / "b.wav"));
    EXPECT_EQ(station.Run("voices frobnicate Amy --station .").status, 2);
    const std::pair<const char*, const char*> checks[] = {
        {"Amy", ""}, {"Ami", "did you mean \"Amy\""}, {"Cat", "faulty-voice"}};
    for (const auto& [voice, told] : checks) {
        station.Write("Programs/A.txt", std::string("personality: ") + voice + " Reed\nopening: 0, say Hi\n");
        const std::string found = station.Run("check A --station .").out;
        EXPECT_EQ(found.find("voice") != std::string::npos, *told != '\0') << found;
        EXPECT_NE(found.find(told), std::string::npos) << found;
    }
}

}  // namespace
}  // namespace sorakaze::test
