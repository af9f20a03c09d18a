// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// A runtime for a test: the studio's clock, a folder of its own as the application's, messages noted.
#pragma once

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <mutex>
#include <stop_token>
#include <string>
#include <vector>

#include "app/runtime/Runtime.h"

namespace sorakaze::test {

class TemporaryFolder {
  public:
    TemporaryFolder() {
        std::string name = (std::filesystem::temp_directory_path() / "sorakaze-test-XXXXXX").string();
        path_ = mkdtemp(name.data());
    }
    ~TemporaryFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    const std::filesystem::path& Path() const { return path_; }
    std::filesystem::path operator/(const std::string& name) const { return path_ / name; }
    std::filesystem::path Write(const std::filesystem::path& name, const std::string& bytes) const {
        const auto file = path_ / name;
        std::filesystem::create_directories(file.parent_path());
        std::ofstream(file, std::ios::binary) << bytes;
        return file;
    }

  private:
    std::filesystem::path path_;
};

inline std::string ReadBytes(const std::filesystem::path& file) {
    std::ifstream in(file, std::ios::binary);
    return {std::istreambuf_iterator(in), {}};
}

/// Answers messages at once, or with `hold` set only when they are cancelled.
class TestHost : public Host {
  public:
    void ShowMessage(const Message& message, std::stop_token cancelled) override {
        const std::lock_guard lock(mutex_);
        messages_.push_back(message.text.Bytes());
        details_.push_back(message.details.Bytes());
        if (hold) {
            std::mutex gate;
            std::condition_variable_any answered;
            std::unique_lock held(gate);
            answered.wait(held, cancelled, [] { return false; });
        }
    }
    /// With `hold` set nobody answers.
    std::function<bool()> LeaveMessage(const Message& message) override {
        const std::lock_guard lock(mutex_);
        messages_.push_back(message.text.Bytes());
        details_.push_back(message.details.Bytes());
        return [this] { return !hold; };
    }
    std::vector<std::string> Messages() {
        const std::lock_guard lock(mutex_);
        return messages_;
    }
    std::vector<std::string> Details() {
        const std::lock_guard lock(mutex_);
        return details_;
    }

    std::atomic<bool> hold{false};

  private:
    std::mutex mutex_;
    std::vector<std::string> messages_;
    std::vector<std::string> details_;
};

struct TestRuntime {
    explicit TestRuntime(std::unique_ptr<Clock> clock = std::make_unique<StudioClock>(),
                         sound::MixingEngine* engine = nullptr, std::uint64_t seed = 1)
        : runtime({std::move(clock), folder.Path(), engine, seed}, host) {}

    /// Lets `ticks` pass, events handled.
    void Pass(TickCount ticks) {
        const TickCount end = runtime.GetClock().Tick() + ticks;
        runtime.Events().DoEventsWhile([&] { return runtime.GetClock().Tick() < end; });
    }

    TemporaryFolder folder;
    TestHost host;
    Runtime runtime;
};

}  // namespace sorakaze::test
