// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// The application's side of the viewer, with shell scripts in the place of the web engine. What the engine
// does with a page is tried in the real window, by scripts/try-viewer.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <QChildEvent>
#include <QElapsedTimer>
#include <csignal>
#include <optional>
#include <thread>

#include "app/viewer/Viewer.h"
#include "tests/app/desktop/RunUntil.h"
#include "tests/support/TestRuntime.h"

namespace sorakaze::viewer {
namespace {

using desktop::RunUntil;

/// Notes the page, and itself with a child that would stay behind.
constexpr const char* kPatient =
    "#!/bin/sh\nread address\nread script\nread whose\nread page\nsleep 60 &\n"
    "echo \"$address $script $whose $page $$ $!\" >>\"$0.log\"\nwait\n";

struct ViewerTest : testing::Test {
    std::filesystem::path Program(const std::string& text) const {
        const auto program = folder.Write("program", text);
        std::filesystem::permissions(program, std::filesystem::perms::owner_all);
        return program;
    }
    /// The last of what the started programs have noted, as soon as there are so many lines.
    std::string Note(std::ptrdiff_t lines) const {
        std::string log;
        EXPECT_TRUE(RunUntil([&] {
            log = test::ReadBytes(folder / "program.log");
            return std::count(log.begin(), log.end(), '\n') == lines;
        }));
        return log.substr(log.rfind('\n', log.size() - 2) + 1);
    }
    /// Both processes of a note are gone, or nobody has asked for their status yet.
    static bool Ended(const std::string& note) {
        std::istringstream words(note);
        for (std::string word; words >> word;)
            if (std::filesystem::exists("/proc/" + word + "/exe")) return false;
        return true;
    }

    test::TemporaryFolder folder;
};

/// Counts the processes that were started and that are done with.
struct CountingViewer : Viewer {
    using Viewer::Viewer;
    void childEvent(QChildEvent* event) override { ++(event->added() ? begun : done); }

    int begun = 0;
    int done = 0;
};

TEST_F(ViewerTest, TheLastOfSeveralPagesRunsAndNothingOfTheOthersStays) {
    std::optional<Viewer> viewer(Program(kPatient));
    const auto empty = folder.Write("blank.html", "blank\n");
    const auto load = [&](const std::string& text) {
        const auto page = folder.Write("temp.html", text + '\n');
        std::thread([&] {
            viewer->Load(empty);
            viewer->Load(page, {"http://host/form", "script", true});
        }).join();
        folder.Write("temp.html", "somebody else's\n");
    };
    load("first");
    const std::string first = Note(1);
    EXPECT_EQ(first.substr(0, 34), "http://host/form script own first ");
    EXPECT_FALSE(Ended(first));
    load("with blanks & 'quotes'");
    const std::string second = Note(2);
    EXPECT_EQ(second.substr(28, 23), "with blanks & 'quotes' ");
    EXPECT_TRUE(RunUntil([&] { return Ended(first); }));
    EXPECT_FALSE(Ended(second));
    viewer.reset();
    EXPECT_TRUE(RunUntil([&] { return Ended(second); }));
}

TEST_F(ViewerTest, EndsWithAPageThatIsBeingStarted) {
    std::optional<CountingViewer> viewer(Program(kPatient));
    const auto page = folder.Write("page", "page\n");
    viewer->Load(page);
    viewer.reset();
    viewer.emplace(Program(kPatient));
    viewer->Load(page);
    EXPECT_TRUE(RunUntil([&] { return viewer->begun == 1; }));
    viewer.reset();
}

TEST_F(ViewerTest, AProgramThatFailsIsToldOfOnceAndTriedAgain) {
    const std::string broken =
        "#!/bin/sh\necho x >>\"$0.log\"\necho no >&2\necho 'library is missing' >&2\nexit 127\n";
    const std::pair<std::filesystem::path, const char*> cases[] = {{"/nonexistent/viewer", "No such file"},
                                                                   {Program(broken), "library is missing"}};
    for (const auto& [program, why] : cases) {
        std::vector<std::string> told;
        CountingViewer viewer(program);
        viewer.OnFailure([&told](const std::string& reason) { told.push_back(reason); });
        for (int round = 1; round <= 2; ++round) {
            viewer.Load(folder.Write("page", "page\n"));
            EXPECT_TRUE(RunUntil([&] { return viewer.done == round; }));
        }
        ASSERT_EQ(told.size(), 1u);
        EXPECT_NE(told[0].find(why), std::string::npos) << told[0];
    }
    Note(2);
}

TEST_F(ViewerTest, WhatAProgramLacksIsToldOfOnceAndNotAsItsEnd) {
    testing::internal::CaptureStderr();
    CountingViewer viewer(Program("#!/bin/sh\necho 'sorakaze-viewer: no sandbox' >&2\necho bad >&2\n"));
    std::string told;
    viewer.OnFailure([&told](const std::string& why) { told += why; });
    for (int round = 1; round <= 2; ++round) {
        viewer.Load(folder.Write("page", "page\n"));
        EXPECT_TRUE(RunUntil([&] { return viewer.done == round; }));
    }
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "sorakaze-viewer: no sandbox\n");
    EXPECT_EQ(told, (folder / "program").string() + " has ended: bad");
}

TEST_F(ViewerTest, APageIsAudibleUntilItSaysOtherwiseOrEnds) {
    const struct {
        const char* name;
        const char* then;  ///< when it has been heard
        bool replaced = false;
    } cases[] = {{"it says it", "echo silent; sleep 60"},
                 {"it ends", "echo 'no more' >&2"},
                 {"it is replaced", "sleep 60", true},
                 {"it floods", "yes audible"}};
    for (const auto& [name, then, replaced] : cases) {
        SCOPED_TRACE(name);
        testing::internal::CaptureStderr();
        std::string told;
        Viewer viewer(Program("#!/bin/sh\necho audible\nuntil [ -e \"$0.heard\" ]; do sleep 0.01; done\n" +
                              std::string(then) + "\n"));
        viewer.OnAudible([&told](bool audible) { told += audible ? '1' : '0'; });
        const auto page = folder.Write("page", "page\n");
        viewer.Load(page);
        EXPECT_TRUE(RunUntil([&] { return told == "1"; }));
        folder.Write("program.heard", "");
        if (replaced) {
            Program("#!/bin/sh\nsleep 60\n");
            viewer.Load(page);
        }
        EXPECT_TRUE(RunUntil([&] { return told == "10"; })) << told;
        testing::internal::GetCapturedStderr();
        std::filesystem::remove(folder / "program.heard");
    }
}

TEST_F(ViewerTest, WhatIsNoFileOfItsOwnIsNotShown) {
    const auto page = folder.Write("page", "page\n");
    std::filesystem::create_symlink(page, folder / "link");
    ASSERT_EQ(::mkfifo((folder / "pipe").c_str(), 0600), 0);
    for (const char* name : {"link", "pipe", "nothing", "."}) {
        std::string told;
        CountingViewer viewer(Program(kPatient));
        viewer.OnFailure([&told](const std::string& why) { told += why; });
        viewer.Load(folder / name);
        QElapsedTimer hesitation;
        hesitation.start();
        RunUntil([&] { return viewer.begun > 0 || hesitation.hasExpired(100); });
        EXPECT_EQ(viewer.begun, 0) << name;
        EXPECT_NE(told.find("can't be read"), std::string::npos) << name << told;
    }
}

}  // namespace
}  // namespace sorakaze::viewer

int main(int argc, char** argv) {
    QCoreApplication application(argc, argv);
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
