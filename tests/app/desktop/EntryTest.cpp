// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>

#include <regex>

#include "tests/support/Program.h"
#include "tests/support/TestRuntime.h"

namespace sorakaze::desktop {
namespace {

TEST(Entry, StartsTheApplicationWhereverItsFolderIs) {
    const test::TemporaryFolder root;
    const auto station = root / "A \"b\" $HOME `x` 空", link = root / "on the desktop.desktop";
    const auto program = root.Write(station / "Sorakaze.app/Contents/Linux/Sorakaze",
                                    "#!/bin/sh\nprintf '%s|%s' \"$0\" \"$#\"\n");
    std::filesystem::permissions(program, std::filesystem::perms::owner_all);
    std::filesystem::copy_file(SORAKAZE_ENTRY, station / "Sorakaze.desktop");
    std::filesystem::create_symlink(station / "Sorakaze.desktop", link);

    std::smatch line;
    const std::string entry = test::ReadBytes(SORAKAZE_ENTRY);
    ASSERT_TRUE(std::regex_search(entry, line, std::regex("\nExec=(.*) %k\n")));
    // What a launcher takes off first are the value's own escapes; the quotes that stay are a shell's.
    const std::string command = std::regex_replace(line.str(1), std::regex(R"(\\\\)"), R"(\)") + " \"$0\"";
    for (const auto& clicked : {station / "Sorakaze.desktop", link}) {
        EXPECT_EQ(test::Program({"sh", "-c", command, clicked}, root / "output").Wait(), 0);
        EXPECT_EQ(test::ReadBytes(root / "output"), program.string() + "|0");
    }
}

}  // namespace
}  // namespace sorakaze::desktop
