// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <map>

#include "station/synth/Installer.h"

namespace sorakaze::station {
namespace {

namespace fs = std::filesystem;

class InstallerTest : public testing::Test {
  protected:
    void SetUp() override {
        std::string pattern = (fs::temp_directory_path() / "station-XXXXXX").string();
        station = mkdtemp(pattern.data());
    }
    void TearDown() override { fs::remove_all(station); }

    void Write(const fs::path& name, const std::string& text) {
        fs::create_directories((station / name).parent_path());
        std::ofstream(station / name) << text;
    }
    std::string Text(const fs::path& name) {
        std::ifstream in(station / name);
        return {std::istreambuf_iterator<char>(in), {}};
    }
    void Make(const std::map<std::string, std::string>& files, bool finish = true) {
        Installer installer(station, "Resources/files.list");
        for (const auto& [name, text] : files) {
            const fs::path work = installer.Work(name);
            std::ofstream(work) << text;
            installer.Place(work, name);
        }
        if (finish) installer.Finish();
    }

    fs::path station;
};

TEST_F(InstallerTest, PlacesReplacesAndRemovesItsOwn) {
    Make({{"Programs/a.txt", "one"}, {"Programs/old.txt", "old"}, {"Sounds/deep/x.aiff", "x"}});
    Make({{"Programs/a.txt", "two"}});
    EXPECT_EQ(Text("Programs/a.txt"), "two");
    EXPECT_FALSE(fs::exists(station / "Programs/old.txt"));
    EXPECT_FALSE(fs::exists(station / "Sounds"));
    EXPECT_FALSE(fs::exists(station / ".making-files"));
}

TEST_F(InstallerTest, LeavesTheUsersFilesAlone) {
    Write("Programs/mine.txt", "mine");
    Write("Programs/same.txt", "my same");
    Make({{"Programs/a.txt", "one"}, {"Programs/gone.txt", "gone"}, {"Programs/same.txt", "theirs"}});
    EXPECT_EQ(Text("Programs/same.txt"), "my same");
    Write("Programs/a.txt", "edited");
    Write("Programs/gone.txt", "edited too");
    Make({{"Programs/a.txt", "two"}});
    EXPECT_EQ(Text("Programs/mine.txt"), "mine");
    EXPECT_EQ(Text("Programs/a.txt"), "edited");
    EXPECT_EQ(Text("Programs/gone.txt"), "edited too");
    EXPECT_EQ(Text("Programs/same.txt"), "my same");
}

TEST_F(InstallerTest, ARunThatWasBrokenOffOwnsWhatItMade) {
    Make({{"Programs/a.txt", "one"}});
    Make({{"Programs/a.txt", "two"}, {"Programs/b.txt", "two"}}, false);
    Make({{"Programs/a.txt", "three"}});
    EXPECT_EQ(Text("Programs/a.txt"), "three");
    EXPECT_FALSE(fs::exists(station / "Programs/b.txt"));
    EXPECT_FALSE(fs::exists(station / "Resources/files.list.unfinished"));
}

}  // namespace
}  // namespace sorakaze::station
