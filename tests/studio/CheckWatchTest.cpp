// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// sorakaze-studio check --watch, as an editor would start it: each check is a line of its output.
#include <poll.h>

#include <csignal>
#include <filesystem>
#include <fstream>

#include "base/FileDescriptor.h"
#include "tests/studio/StudioRun.h"

namespace sorakaze::test {
namespace {

namespace fs = std::filesystem;

constexpr const char* kRight = "mode: songs 1\nintro: 0, play [[iTunes]]\nintroW: 0, play [[iTunes]]\n";
constexpr const char* kWrong = "mode: minutes 1\nintro: 0, play [[iTunes]]\nintroW: 0, play [[iTunes]]\n";

/// Reads a pipe line by line.
class Lines {
  public:
    explicit Lines(const fs::path& pipe)
        : pipe_(::open(pipe.c_str(), O_RDWR | O_NONBLOCK | O_CLOEXEC)) {}  // both, so that it has no end

    /// The codes of the next line's findings. Gives up after a minute.
    std::string NextCodes() {
        const std::string line = Next();
        const auto findings = nlohmann::json::parse(line, nullptr, false);
        if (!findings.is_array()) return "no array: " + line;
        std::string codes;
        for (const auto& finding : findings)
            codes += (codes.empty() ? "" : " ") + finding.at("code").get<std::string>();
        return codes;
    }

  private:
    std::string Next() {
        for (;;) {
            if (const auto end = text_.find('\n'); end != std::string::npos) {
                const std::string line = text_.substr(0, end);
                text_.erase(0, end + 1);
                return line;
            }
            pollfd ready{pipe_.Get(), POLLIN, 0};
            if (::poll(&ready, 1, 60'000) != 1) return "nothing";
            char bytes[4096];
            const ssize_t size = ::read(pipe_.Get(), bytes, sizeof bytes);
            if (size > 0) text_.append(bytes, static_cast<std::size_t>(size));
        }
    }

    FileDescriptor pipe_;
    std::string text_;
};

TEST(CheckWatch, ChecksAfterEachSaveUntilItIsInterrupted) {
    const StudioStation station;
    const fs::path program = station.Write("Programs/A.txt", kRight);
    ASSERT_EQ(::mkfifo((station.Path() / "pipe").c_str(), 0600), 0);
    Lines lines(station.Path() / "pipe");
    Program watch({STUDIO_PROGRAM, "check", "--watch", "--json", "--station", station.Path()},
                  station.Path() / "pipe");
    EXPECT_EQ(lines.NextCodes(), "");
    station.Write("Programs/A.txt", kWrong);
    EXPECT_EQ(lines.NextCodes(), "bad-mode") << "written in place";
    fs::rename(station.Write("saved", kRight), program);
    EXPECT_EQ(lines.NextCodes(), "") << "another file in its place";
    fs::rename(program, station.Path() / "backup");
    fs::rename(station.Write("saved", kWrong), program);
    EXPECT_EQ(lines.NextCodes(), "bad-mode") << "taken away, and another in its place";
    station.Write("Programs/B.txt", kWrong);
    EXPECT_EQ(lines.NextCodes(), "bad-mode bad-mode") << "a new one";
    fs::remove(program);
    EXPECT_EQ(lines.NextCodes(), "bad-mode") << "removed";
    watch.Signal(SIGINT);
    EXPECT_EQ(watch.Wait(), 0);
}

}  // namespace
}  // namespace sorakaze::test
