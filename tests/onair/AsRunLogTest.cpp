// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <csignal>
#include <nlohmann/json.hpp>

#include "onair/AsRunLog.h"
#include "tests/sound/SoundTesting.h"

namespace sorakaze::onair {
namespace {

using sound::testing::ScratchFolder;

/// The lines of a file that are JSON, and how many aren't.
struct Lines {
    explicit Lines(const std::filesystem::path& file) {
        std::ifstream in(file);
        for (std::string line; std::getline(in, line);) {
            auto json = nlohmann::json::parse(line, nullptr, false);
            if (json.is_discarded())
                ++torn;
            else
                whole.push_back(std::move(json));
        }
    }
    std::vector<nlohmann::json> whole;
    int torn = 0;
};

struct Log : testing::Test {
    static constexpr auto kDay = std::chrono::hours(24);
    WallTime now = WallTime(std::chrono::seconds(1795604400));
    ScratchFolder folder;
    std::filesystem::path File() const { return folder / (IsoDay(now) + ".jsonl"); }
    std::unique_ptr<AsRunLog> Open() {
        return std::make_unique<AsRunLog>(folder / ".", [this] { return now; });
    }
};

TEST_F(Log, EachDayHasItsFileWhereverTheClockGoes) {
    const auto log = Open();
    const auto first = File();
    log->Note("one");
    log->OnShowEvent({60, ShowEvent::Kind::Track, {{"title", String("a\xFF\nb")}, {"number", 3}}});
    now += kDay;
    log->Note("two");
    log->Flush();
    const Lines next(File());
    now -= kDay;
    log->Note("three");
    log->Flush();
    const Lines lines(first);
    ASSERT_EQ(lines.whole.size(), 3u);
    EXPECT_EQ(lines.whole[1].at("title"), "a\uFFFD\nb");
    EXPECT_EQ(lines.whole[1].at("at"), IsoTime(now));
    EXPECT_EQ(lines.whole[2].at("what"), "three");
    ASSERT_EQ(next.whole.size(), 1u);
    EXPECT_EQ(log->TakeNews(), "");
}

TEST_F(Log, AFullDiskLosesOnlyWhatDoesNotFit) {
    std::signal(SIGXFSZ, SIG_IGN);
    const auto log = Open();
    log->Note("before");
    log->Flush();
    rlimit old{};
    getrlimit(RLIMIT_FSIZE, &old);
    rlimit full = old;
    full.rlim_cur = std::filesystem::file_size(File()) + 10;
    setrlimit(RLIMIT_FSIZE, &full);
    log->Note("lost");
    log->Flush();
    EXPECT_NE(log->TakeNews().find("can't be written"), std::string::npos);
    log->Note("lost too");
    log->Flush();
    EXPECT_EQ(log->TakeNews(), "");  // it has been told of
    setrlimit(RLIMIT_FSIZE, &old);
    log->Note("after");
    log->Flush();
    EXPECT_NE(log->TakeNews().find("2 lines are lost"), std::string::npos);
    const Lines lines(File());
    ASSERT_EQ(lines.whole.size(), 3u);
    EXPECT_EQ(lines.whole[1].at("lost"), 2);
    EXPECT_EQ(lines.whole[2].at("what"), "after");
    EXPECT_EQ(lines.torn, 1);
}

TEST_F(Log, ContinuesBehindWhatAnEndHasTorn) {
    std::ofstream(File()) << R"({"what": "torn)";
    Open()->Note("after");
    const Lines lines(File());
    ASSERT_EQ(lines.whole.size(), 1u);
    EXPECT_EQ(lines.torn, 1);
}

TEST_F(Log, AFileThatWasMovedAwayIsBegunAnew) {
    const auto log = Open();
    log->Note("one");
    log->Flush();
    std::filesystem::rename(File(), folder / "moved");
    log->Reopen();
    log->Note("two");
    log->Flush();
    ASSERT_EQ(Lines(File()).whole.size(), 1u);
    ASSERT_EQ(Lines(folder / "moved").whole.size(), 1u);
}

TEST_F(Log, APlaceThatCantBeWrittenIsSaidInOneLine) {
    const auto why = [](const std::filesystem::path& place) -> std::string {
        try {
            AsRunLog log(place);
        } catch (const std::runtime_error& error) {
            return error.what();
        }
        return "";
    };
    std::ofstream(folder / "file") << "x";
    EXPECT_NE(why(folder / "file").find("No log can be written in"), std::string::npos);
    EXPECT_NE(why("/proc/log").find("No log can be written in /proc/log: "), std::string::npos);
    std::filesystem::create_directories(folder / "pipes");
    ASSERT_EQ(
        mkfifo((folder / "pipes" / (IsoDay(std::chrono::system_clock::now()) + ".jsonl")).c_str(), 0600), 0);
    EXPECT_NE(why(folder / "pipes"), "");
}

}  // namespace
}  // namespace sorakaze::onair
