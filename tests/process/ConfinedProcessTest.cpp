// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// What an honest command finds: a shell that works, the folders that it was promised, and an end that tells
// the truth.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <thread>

#include "app/runtime/process/ConfinedProcess.h"
#include "tests/process/Scratch.h"

namespace sorakaze::process {
namespace {

using namespace std::chrono_literals;
using testing::HasSubstr;

TEST(ConfinedProcess, RunsShellLines) {
    const Scratch scratch;
    const struct {
        const char* name;
        std::string line;
        int status;
        std::string output;
    } cases[] = {
        {"output", "echo hello", 0, "hello\n"},
        {"substitution", "echo \"$(printf 'a%s' b) `echo c` \\$d\"", 0, "ab c $d\n"},
        {"pipe", "printf 'b\\na\\n' | sort | tr a-z A-Z", 0, "A\nB\n"},
        {"exit status", "exit 7", 7, ""},
        {"unknown command", "no-such-command-anywhere", 127, ""},
        {"ended by a signal", "kill -9 $$", 137, ""},
        {"aborted", "sh -c 'kill -ABRT $$'; echo $?", 0, "134\n"},
        {"a line that looks like options", "-c", 127, ""},
        {"standard error is dropped", "echo lost >&2; echo kept", 0, "kept\n"},
        {"nothing to read", "cat; echo end", 0, "end\n"},
        {"a file to read back in the line", "echo 'ことば' > 'あ い.txt'; cat 'あ い.txt'", 0, "ことば\n"},
        {"environment", "env | cut -d= -f1 | sort | tr '\\n' ' '", 0, "HOME LANG PATH PWD TMPDIR "},
        {"background process left behind", "sleep 1000 & echo on", 0, "on\n"},
        {"moving and removing", "mkdir a b; echo x > a/f; mv a/f b/g; cat b/g; rm -r a b; ls", 0,
         "x\nあ い.txt\n"},
    };
    for (const auto& [name, line, status, output] : cases) {
        const CommandResult result = scratch.Run(line);
        EXPECT_EQ(result.status, status) << name;
        EXPECT_EQ(result.output, output) << name;
        EXPECT_FALSE(result.killed || result.timedOut) << name;
    }
    EXPECT_EQ(scratch.ReadBack("あ い.txt"), "ことば\n");
}

TEST(ConfinedProcess, FindsWhatStandsInTheSearchedFolders) {
    const Scratch scratch;
    scratch.AddProgram("Resources 資源", "say", "#!/bin/sh\necho \"our say: $*\"\n");
    scratch.AddProgram("later", "say", "#!/bin/sh\necho wrong\n");
    scratch.AddProgram("later", "ls", "#!/bin/sh\necho our ls\n");
    Confinement confinement = scratch.Bounds();
    confinement.searchFirst = {scratch.Path("Resources 資源"), scratch.Path("later")};
    EXPECT_EQ(scratch.Run("say -v Alex \"a  b\"", confinement).output, "our say: -v Alex a  b\n");
    EXPECT_EQ(scratch.Run("ls", confinement).output, "our ls\n");
}

TEST(ConfinedProcess, ReadsButDoesNotWriteWhatIsReadable) {
    const Scratch scratch;
    scratch.Write("data 辞書/deep/file", "words");
    std::filesystem::create_directory_symlink(scratch.Path("data 辞書"), scratch.Path("link"));
    Confinement confinement = scratch.Bounds();
    confinement.readable = {scratch.Path("link"), scratch.Path("nowhere"), "/bin/sh", "/dev"};
    const std::string line = "cat '" + scratch.Path("link").string() + "/deep/file'; cat '" +
                             scratch.Path("data 辞書").string() + "/deep/file'; echo x > '" +
                             scratch.Path("link").string() + "/deep/file' || echo refused";
    EXPECT_EQ(scratch.Run(line, confinement).output, "wordswordsrefused\n");
    EXPECT_EQ(scratch.ReadSecretly("data 辞書/deep/file"), "words");
}

TEST(ConfinedProcess, KeepsTheOutputThatFits) {
    const Scratch scratch;
    Confinement confinement = scratch.Bounds();
    confinement.outputSize = 100'000;
    const CommandResult result = scratch.Run("head -c 30000000 /dev/zero; exit 4", confinement);
    EXPECT_EQ(result.status, 4);
    EXPECT_EQ(result.output, std::string(100'000, '\0'));
}

TEST(ConfinedProcess, KillEndsItBeforeDuringAndAfter) {
    const Scratch scratch;
    ConfinedProcess before("echo never", scratch.Bounds());
    before.Kill();
    CommandResult result = before.Run();
    EXPECT_TRUE(result.killed);
    EXPECT_NE(result.status, 0);
    EXPECT_EQ(result.output, "");

    // The line says by its file that it runs; only then it is killed.
    ConfinedProcess during("echo > started; sleep 1000", scratch.Bounds());
    std::thread runner([&] { result = during.Run(); });
    scratch.AwaitFile("started");
    during.Kill();
    runner.join();
    EXPECT_TRUE(result.killed);
    EXPECT_EQ(result.status, 137);
    EXPECT_FALSE(result.timedOut);
    during.Kill();

    ConfinedProcess after("echo done", scratch.Bounds());
    result = after.Run();
    after.Kill();
    EXPECT_FALSE(result.killed);
    EXPECT_EQ(result.output, "done\n");
}

}  // namespace
}  // namespace sorakaze::process
