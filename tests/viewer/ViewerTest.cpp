// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// The application's side of the viewer, with shell scripts in the place of the web engine. What the engine
// does with a page is tried in the real window, by scripts/try-viewer.
#include <gtest/gtest.h>

#include <QChildEvent>
#include <QCoreApplication>
#include <QDeadlineTimer>
#include <csignal>
#include <fstream>
#include <optional>
#include <thread>

#include "app/viewer/Viewer.h"
#include "tests/support/TestRuntime.h"

namespace sorakaze::viewer {
namespace {

/// Notes the page, and itself with a child that would stay behind.
constexpr const char* kPatient = "#!/bin/sh\nsleep 60 &\necho \"$1 $$ $!\" >>\"$0.log\"\nwait\n";

struct ViewerTest : testing::Test {
    std::filesystem::path Program(const std::string& text) const {
        const auto program = folder.Write("program", text);
        std::filesystem::permissions(program, std::filesystem::perms::owner_all);
        return program;
    }
    /// What the started programs have noted, as soon as there are so many lines.
    std::vector<std::string> Notes(std::size_t count) const {
        std::vector<std::string> lines;
        EXPECT_TRUE(Soon([&] {
            lines.clear();
            std::ifstream log(folder.Path() / "program.log");
            for (std::string line; std::getline(log, line) && !log.eof();) lines.push_back(line);
            return lines.size() >= count;
        }));
        lines.resize(count);
        return lines;
    }
    static bool Soon(const std::function<bool()>& holds) {
        for (const QDeadlineTimer deadline(10'000); !deadline.hasExpired();) {
            QCoreApplication::processEvents(QEventLoop::AllEvents, 10);
            if (holds()) return true;
        }
        return false;
    }
    /// Both processes of a note are gone, or nobody has asked for their status yet.
    static bool Ended(const std::string& note) {
        std::istringstream words(note);
        std::string page;
        for (pid_t process = (words >> page, 0); words >> process;) {
            std::ifstream stat("/proc/" + std::to_string(process) + "/stat");
            std::string id, name, state;
            if (stat >> id >> name >> state && state != "Z") return false;
        }
        return true;
    }
    static void Await(const std::string& note) {
        EXPECT_TRUE(Soon([&] { return Ended(note); })) << note;
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
    const auto load = [&](const char* empty, const char* page) {
        std::thread([&] {
            viewer->Load(empty);
            viewer->Load(page);
        }).join();
    };
    load("/blank", "/first");
    const std::string first = Notes(1).back();
    EXPECT_EQ(first.substr(0, 7), "/first ");
    EXPECT_FALSE(Ended(first));
    load("/blank", "/with blanks & 'quotes'");
    const std::string second = Notes(2).back();
    EXPECT_EQ(second.substr(0, 23), "/with blanks & 'quotes'");
    Await(first);
    const std::string numbers = "x " + second.substr(24);
    EXPECT_FALSE(Ended(numbers));
    viewer.reset();
    Await(numbers);
}

TEST_F(ViewerTest, EndsWithAPageThatIsBeingStarted) {
    std::optional<CountingViewer> viewer(Program(kPatient));
    viewer->Load("/page");
    viewer.reset();
    viewer.emplace(Program(kPatient));
    viewer->Load("/page");
    EXPECT_TRUE(Soon([&] { return viewer->begun == 1; }));
    viewer.reset();
}

TEST_F(ViewerTest, AProgramThatFailsIsToldOfOnceAndTriedAgain) {
    const std::string broken =
        "#!/bin/sh\necho x >>\"$0.log\"\necho no >&2\necho 'library is missing' >&2\nexit 127\n";
    const struct {
        std::filesystem::path program;
        const char* why;
    } cases[] = {{"/nonexistent/viewer", "No such file"}, {Program(broken), "library is missing"}};
    for (const auto& [program, why] : cases) {
        testing::internal::CaptureStderr();
        CountingViewer viewer(program);
        for (int round = 1; round <= 2; ++round) {
            viewer.Load("/page");
            EXPECT_TRUE(Soon([&] { return viewer.done == round; }));
        }
        const std::string told = testing::internal::GetCapturedStderr();
        EXPECT_NE(told.find(why), std::string::npos) << told;
        EXPECT_EQ(std::count(told.begin(), told.end(), '\n'), 1) << told;
    }
    EXPECT_EQ(Notes(2).size(), 2u);
}

}  // namespace
}  // namespace sorakaze::viewer

int main(int argc, char** argv) {
    QCoreApplication application(argc, argv);
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
