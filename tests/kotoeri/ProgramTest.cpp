// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>
#include <sys/wait.h>

#include <cstdlib>

#include "app/runtime/Shell.h"
#include "tests/support/TestShow.h"

namespace sorakaze {
namespace {

/// The program as a show runs it: by the shell, confined, with its folder and the dictionary to read.
TEST(SayKotoeri, ReadsForAShow) {
    test::TestShow show;
    const std::string path = "Sorakaze.app/Contents/Resources/SayKotoeri";
    std::filesystem::copy_file(KOTOERI_PROGRAM, show.folder.Path() / path);
    EXPECT_EQ(show.window.convertRoma("宇多田ヒカル - 花束を君に").Bytes(),
              "utada hikaru - hanataba wo kimi ni");
    EXPECT_EQ(show.window.convertRoma("한국어 ＡＢ🎵").Bytes(), "한국어 ＡＢ🎵");

    Shell shell;
    const std::string program = show.runtime.ResourcesFolder() / "SayKotoeri";
    const struct {
        std::string words;
        int status;
        std::string output;
    } cases[] = {
        {" -o \"夢は\"", 0, "ゆめ,は\n"},
        {" -o \"\"", 0, "\n"},
        {" -o -o", 0, "-o\n"},
        {" -o", 2, ""},
        {" 夢", 2, ""},
        {" -o 夢 恋", 2, ""},
    };
    for (const auto& [words, status, output] : cases) {
        shell.Execute(program + words);
        EXPECT_EQ(shell.Result().Bytes(), output) << words;
        // Not the confined one's status: what looks for leaks in a sanitized program can't do so there.
        const int ended = std::system((program + words + " >/dev/null 2>&1").c_str());
        EXPECT_EQ(WEXITSTATUS(ended), status) << words;
    }
}

}  // namespace
}  // namespace sorakaze
