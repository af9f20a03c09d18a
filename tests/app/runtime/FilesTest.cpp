// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <set>

#include "app/runtime/CommandCache.h"
#include "app/runtime/FolderItem.h"
#include "app/runtime/RunFolder.h"
#include "app/runtime/Shell.h"
#include "app/runtime/TextStreams.h"
#include "tests/support/TestRuntime.h"

namespace sorakaze {
namespace {

using test::TestRuntime;

TEST(Files, FoldersListTheirEntries) {
    TestRuntime test;
    const auto folder = GetFolderItem("", 0);
    EXPECT_EQ(folder->Count(), 0);
    test.folder.Write("Programs/.hidden", "");
    test.folder.Write("Programs/番組.txt", "");
    const auto programs = folder->Child("Programs");
    ASSERT_EQ(programs->Count(), 2);
    EXPECT_FALSE(programs->Item(0) || programs->Item(3));
    EXPECT_EQ(programs->Item(1)->Name().Bytes(), ".hidden");
    const auto file = programs->Child("番組.txt");
    EXPECT_TRUE(programs->Directory() && file->Exists() && !file->Directory());
    file->Delete();
    EXPECT_FALSE(file->Exists());
    EXPECT_EQ(programs->Count(), 1) << "read anew";
    EXPECT_TRUE(folder->Child("missing")->Child("described"));
    EXPECT_FALSE(folder->Child("missing")->Child("as well")->Child("not"));
    for (const char* name : {"", ".", "..", "a/b"}) EXPECT_EQ(folder->Child(name), nullptr) << name;
}

TEST(Files, EntriesAreOrderedByNameAsPeopleSort) {
    TestRuntime test;
    const std::vector<std::string> ordered{"10.txt", "9.txt",  "alpha.txt", "Beta.txt",     "BETA2.txt",
                                           "JINGLE", "Jingle", "jingle",    "z.txt",        "Ärger",
                                           "ärger",  "ÄRGER2", "のはら",    "窓辺の夜.txt", "\xFF.txt"};
    for (std::size_t i = 0; i < ordered.size(); ++i)
        test.folder.Write("Scrambled/" + ordered[i * 7 % ordered.size()], "");
    const auto folder = GetFolderItem("", 0)->Child("Scrambled");
    std::vector<std::string> names;
    for (std::int32_t i = 1; i <= folder->Count(); ++i) names.push_back(folder->Item(i)->Name().Bytes());
    EXPECT_EQ(names, ordered);
}

TEST(Files, ShellPathsSurviveTheShellAndTheWayBack) {
    TestRuntime test;
    Shell shell;
    for (const char* name : {"with blank", "日本 '\"$(x)`y`\\;&|<>*?~#!", "new\nline", "-dash", "a\\"}) {
        const std::string path = (test.runtime.TemporaryFolder() / name).string();
        const String escaped = EscapeForShell(path);
        EXPECT_EQ(UnescapeFromShell(escaped), path);
        shell.Execute(String("echo x > ") + escaped, std::make_shared<FolderItem>(path));
        EXPECT_TRUE(std::filesystem::exists(path)) << name;
    }
    test.folder.Write("Sounds/my jingle.wav", "");
    const auto item = GetFolderItem(GetFolderItem("", 0)->ShellPath() + "/Sounds/my jingle.wav", 1);
    EXPECT_TRUE(item->Exists()) << "a blank in a program file's argument stands for itself";
}

TEST(Files, TextStreamsReadEveryLineEndOfWhatIsAFile) {
    TestRuntime test;
    const std::pair<std::string, std::string> cases[] = {{"", "|"},
                                                         {"a\nb\n", "a|b|"},
                                                         {"a\r\nb", "a|b|"},
                                                         {"a\rb\r", "a|b|"},
                                                         {"\xEF\xBB\xBF\n\nb", "||b|"},
                                                         {{"a\0b\n", 4}, {"a\0b|", 4}}};
    for (const auto& [bytes, lines] : cases) {
        const auto file = std::make_shared<FolderItem>(test.folder.Write("lines", bytes));
        const auto stream = TextInputStream::Open(file);
        std::string read;
        do read += stream->ReadLine().Bytes() + "|";
        while (!stream->EndOfFile());
        EXPECT_EQ(read, lines) << bytes;
    }
    // What can't be opened gives an empty reference.
    const auto folder = GetFolderItem("", 0);
    EXPECT_FALSE(TextInputStream::Open(folder));
    EXPECT_FALSE(TextInputStream::Open(folder->Child("missing")));
    ASSERT_EQ(mkfifo((test.folder.Path() / "pipe").c_str(), 0600), 0);
    EXPECT_FALSE(TextInputStream::Open(folder->Child("pipe"))) << "must not wait for a writer";
    EXPECT_THROW(TextInputStream::Open(nullptr), NilObjectException);
    EXPECT_FALSE(TextOutputStream::Create(folder));
}

TEST(Files, NothingIsWrittenThroughALink) {
    TestRuntime test;
    const auto file = GetFolderItem("", 0)->Child("page.html");
    const auto mine = test.folder.Write("mine", "mine");
    for (const bool isSymbolic : {true, false}) {
        if (isSymbolic)
            std::filesystem::create_symlink(mine, file->Path());
        else
            std::filesystem::create_hard_link(mine, file->Path());
        EXPECT_EQ(file->OpenAsBinaryFile(true) != nullptr, !isSymbolic);
        const auto stream = TextOutputStream::Create(file);
        stream->Write("written");
        stream->Close();
        EXPECT_EQ(test::ReadBytes(mine), "mine");
        EXPECT_TRUE(is_regular_file(symlink_status(file->Path())));
        EXPECT_EQ(test::ReadBytes(file->Path()), "written");
        file->Delete();
    }
}

TEST(Files, TheTemporaryFolderIsPrivateAndGoesWithTheRun) {
    std::filesystem::path folder;
    {
        TestRuntime test;
        folder = SpecialFolder::Temporary()->Path();
        for (const auto& path : {folder, folder.parent_path()})
            EXPECT_EQ(std::filesystem::status(path).permissions(), std::filesystem::perms::owner_all);
        std::ofstream(folder / "left.aiff") << "left";
    }
    EXPECT_FALSE(std::filesystem::exists(folder.parent_path()));
}

TEST(Files, TheFoldersOfDeadRunsGoAtTheNextStart) {
    namespace fs = std::filesystem;
    const test::TemporaryFolder parent;
    const auto own = parent.Write("own/file", "mine");
    const std::string before = getenv("TMPDIR") ? getenv("TMPDIR") : "";
    setenv("TMPDIR", parent.Path().c_str(), 1);
    const auto living = RunFolder::Make();
    const pid_t dies = fork();
    if (dies == 0) {
        const auto dead = RunFolder::Make();
        // Deeper than there are descriptors for, and closed.
        bool made = chdir(dead->Files().c_str()) == 0;
        for (int depth = 0; depth < 200; ++depth)
            made = made && mkdir("d", 0700) == 0 && chdir("d") == 0 && symlink(own.c_str(), "link") == 0;
        chmod(dead->Files().c_str(), 0);
        _exit(made ? 0 : 1);
    }
    int status = -1;
    waitpid(dies, &status, 0);
    ASSERT_EQ(status, 0);
    fs::create_symlink(own.parent_path(), parent / "sorakaze-run-planted");
    fs::create_symlink(own.parent_path(), parent / "sorakaze-run-linked");
    fs::create_directory(parent / "sorakaze-run-others");
    parent.Write("sorakaze-run-others/file", "");
    fs::permissions(parent / "sorakaze-run-others", fs::perms(0755));
    rlimit descriptors{};
    getrlimit(RLIMIT_NOFILE, &descriptors);
    const rlimit few{64, descriptors.rlim_max};
    setrlimit(RLIMIT_NOFILE, &few);
    std::set<fs::path> left, expected;
    // What a start has no time for is for the next one.
    for (int start = 0; start < 100 && (start == 0 || left != expected); ++start) {
        const auto next = RunFolder::Make();
        expected = {"own",
                    "sorakaze-run-planted",
                    "sorakaze-run-linked",
                    "sorakaze-run-others",
                    living->Path().filename(),
                    next->Path().filename()};
        left.clear();
        for (const auto& entry : fs::directory_iterator(parent.Path())) left.insert(entry.path().filename());
    }
    setrlimit(RLIMIT_NOFILE, &descriptors);
    EXPECT_EQ(left, expected);
    EXPECT_TRUE(fs::exists(living->Files()));
    EXPECT_EQ(test::ReadBytes(own), "mine");
    before.empty() ? unsetenv("TMPDIR") : setenv("TMPDIR", before.c_str(), 1);
}

TEST(Shell, FindsTheProgramsAndNothingElseOfTheResources) {
    TestRuntime test;
    const std::string resources = "Sorakaze.app/Contents/Resources/";
    test.folder.Write(resources + "deployment.json", "TOKEN");
    const auto say = test.folder.Write(resources + "say", "#!/bin/sh\necho ours\n");
    std::filesystem::permissions(say, std::filesystem::perms::owner_all);
    Shell shell;
    shell.Execute("cat " + test.runtime.ResourcesFolder().string() + "/deployment.json; say");
    EXPECT_EQ(shell.Result().Bytes(), "ours\n");
}

TEST(Shell, GivesWhatTheCommandPrinted) {
    TestRuntime test;
    Shell shell;
    shell.Execute("echo x; printf '%s' \"$((6*7))\"; exit 3");
    EXPECT_EQ(shell.Result().Bytes(), "x\n42");
    EXPECT_EQ(shell.ErrorCode(), 3);
    shell.Execute("nothing-of-that-name");
    EXPECT_EQ(shell.Result().Bytes(), "");
    EXPECT_NE(shell.ErrorCode(), 0);
}

TEST(Shell, GivesWhatTheCommandComplainedOf) {
    TestRuntime test;
    const std::pair<const char*, std::string> cases[] = {
        {"echo fine", ""},
        {"echo; echo >&2; echo first >&2; echo second >&2; echo >&2", "second"},
        {"echo say: why >&2; echo noise >&2; exit 1", "say: why"},
        {"exit 3", "the command ended with status 3"},
        {"x `y", "sh: 1: Syntax error: EOF in backquote substitution"},
        {"cat \"$PWD/gone\"", "cat: gone: No such file or directory"},
        {"head -c 30000000 /dev/zero | tr '\\0' x >&2", std::string(200, 'x')},
    };
    for (const auto& [line, complaint] : cases) {
        Shell shell;
        shell.Execute(line);
        EXPECT_EQ(shell.Complaint().Bytes(), complaint) << line;
    }
}

TEST(CommandCacheTest, OnlySentencesThatTheShellLeavesAreSpeech) {
    const std::pair<const char*, bool> commands[] = {
        {"say -v Alex \"hello; (there) 'you' & <me>\" -o /tmp/a/temp1.aiff", true},
        {"say -v en-us+f3 \"\" -o /tmp/a\\ b/temp1.aiff", true},
        {"say -v Alex \"$HOME\" -o /tmp/temp1.aiff", false},
        {"say -v Alex \"`date`\" -o /tmp/temp1.aiff", false},
        {"say -v Alex \"a\\b\" -o /tmp/temp1.aiff", false},
        {"say -v Alex \"a\" -o /tmp/x; date \"\" -o /tmp/temp1.aiff", false},
        {"say -v Alex \"a\"; date; \"b\" -o /tmp/temp1.aiff", false},
        {"say -v Alex;date \"a\" -o /tmp/temp1.aiff", false},
        {"SayKotoeri \"a\" -o /tmp/temp1.aiff", false},
        {"say -v Alex", false}};
    for (const auto& [command, isSpeech] : commands)
        EXPECT_EQ(CommandCache::IsSpeech(command), isSpeech) << command;
}

}  // namespace
}  // namespace sorakaze
