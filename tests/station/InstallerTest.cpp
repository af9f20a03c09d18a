// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>

#include "station/synth/Installer.h"
#include "tests/support/TestRuntime.h"

namespace sorakaze::station {
namespace {

namespace fs = std::filesystem;

using Files = std::map<std::string, std::string>;  ///< contents by name

class InstallerTest : public testing::Test {
  protected:
    void Make(const Files& files, bool finish = true) {
        Installer installer(station_.Path(), "files.list");
        for (const auto& [name, text] : files) {
            const fs::path work = installer.Work(name);
            std::ofstream(work) << text;
            installer.Place(work, name);
        }
        if (finish) installer.Finish();
    }
    /// All that is in the station, folders without contents, the list left out.
    Files Found() {
        Files found;
        for (const auto& entry : fs::recursive_directory_iterator(station_.Path())) {
            const std::string name = entry.path().lexically_relative(station_.Path());
            if (name != "files.list") found[name] = entry.is_directory() ? "" : test::ReadBytes(entry);
        }
        return found;
    }

    test::TemporaryFolder station_;
};

TEST_F(InstallerTest, PlacesReplacesAndRemovesItsOwn) {
    Make({{"a.txt", "one"}, {"old.txt", "old"}, {"Sounds/deep/x.aiff", "x"}});
    Make({{"a.txt", "two"}});
    EXPECT_EQ(Found(), (Files{{"a.txt", "two"}}));
}

TEST_F(InstallerTest, LeavesTheUsersFilesAlone) {
    station_.Write("mine.txt", "mine");
    station_.Write("same.txt", "my same");
    Make({{"a.txt", "one"}, {"gone.txt", "gone"}, {"same.txt", "theirs"}});
    station_.Write("a.txt", "edited");
    station_.Write("gone.txt", "edited too");
    Make({{"a.txt", "two"}});
    EXPECT_EQ(
        Found(),
        (Files{
            {"a.txt", "edited"}, {"gone.txt", "edited too"}, {"mine.txt", "mine"}, {"same.txt", "my same"}}));
}

TEST_F(InstallerTest, ARunThatWasBrokenOffOwnsWhatItMade) {
    Make({{"a.txt", "one"}});
    Make({{"a.txt", "two"}, {"b.txt", "two"}}, false);
    Make({{"a.txt", "three"}});
    EXPECT_EQ(Found(), (Files{{"a.txt", "three"}}));
}

}  // namespace
}  // namespace sorakaze::station
