// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// What the logic runs on, made once by the host (the desktop, the studio, a test) on its main thread:
// threads, time, events, scripts, the place of the application and the run's temporary folder. The logic
// reaches it through the operations at the end of this file and through the classes of the neighbouring
// headers.
#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <random>
#include <stop_token>
#include <string>

#include "app/runtime/Clock.h"
#include "app/runtime/CommandCache.h"
#include "app/runtime/EventLoop.h"
#include "app/runtime/Exceptions.h"
#include "app/runtime/RunFolder.h"
#include "app/runtime/Scheduler.h"
#include "app/runtime/Scripts.h"
#include "app/runtime/String.h"

namespace sorakaze {

namespace network {
class Network;
}
namespace sound {
class MixingEngine;
}

struct Message {
    String text;
    /// For whoever wants to know more: why, and where. Lines; may be empty.
    String details;
};

/// What a host supplies.
class Host {
  public:
    virtual ~Host() = default;

    /// Shows a message with one button. Returns when the user has answered, or when `cancelled` is requested
    /// because the calling thread was killed. Called without the baton.
    virtual void ShowMessage(const Message& message, std::stop_token cancelled) = 0;
    /// Shows a message that may stay unanswered, and returns at once. The result tells, from then on, whether
    /// the user has answered; it is called with the baton. Called with the baton.
    virtual std::function<bool()> LeaveMessage(const Message& message) = 0;
};

class Runtime {
  public:
    struct Options {
        std::unique_ptr<Clock> clock;
        /// The folder that holds the application.
        std::filesystem::path appFolder;
        /// Plays the sounds; null for an application without sound. Outlives the runtime.
        sound::MixingEngine* engine = nullptr;
        /// The same seed gives the same random numbers; without one each run has its own.
        std::optional<std::uint64_t> seed;
    };

    /// The calling thread becomes the main thread. `host` outlives the runtime. There is one runtime at a
    /// time.
    Runtime(Options options, Host& host);
    /// Ends the connections, kills the threads and removes the temporary folder.
    ~Runtime();

    static Runtime& Current();

    // Any thread:

    Clock& GetClock() { return *clock_; }
    Scheduler& Threads() { return *scheduler_; }
    EventLoop& Events() { return *events_; }
    ScriptTable& Scripts() { return scripts_; }
    sound::MixingEngine* Engine() const { return engine_; }

    const std::filesystem::path& AppFolder() const { return appFolder_; }
    /// The application's Resources, which commands are looked for in first.
    std::filesystem::path ResourcesFolder() const;

    // With the baton only:

    /// Where sockets connect, made at the first call. Throws std::system_error where the system has no thread
    /// or descriptor left.
    const std::shared_ptr<network::Network>& Network();

    /// The run's private folder (mode 0700), made at the first call, which also removes those of crashed
    /// runs. Empty where none can be made.
    const std::filesystem::path& TemporaryFolder();
    /// The folder that holds it and all other files of the run, for a host that ends without its destructors
    /// to remove. Empty where none can be made.
    std::filesystem::path FolderOfTheRun();

    /// A seed for a new Random.
    std::uint32_t NextSeed() {
        scheduler_->AssertBaton();
        return seeds_();
    }

    /// A show begins. Changes ShowSeed and none of the numbers that others draw.
    void BeginShow() { ++shows_; }
    /// A number of the present show's own, for what is drawn beside its script: the same in each run with the
    /// same seed.
    std::uint64_t ShowSeed() const { return std::uint64_t{seed_} << 32 | shows_; }

    /// Shows the user an exception that left a thread or an event handler, with its class and message, and
    /// what it means.
    void ReportUncaught(std::exception_ptr exception);
    void ShowMessage(const String& text, const String& details = {});
    /// Called with the baton before a message is shown; may add to its details. May be empty.
    std::function<void(Message&)> onMessage;
    /// From now on a message that nobody answers stays on the screen, and whoever waits for it goes on after
    /// that time. Empty: whoever waits goes on waiting.
    void AnswerMessagesAfter(std::optional<double> seconds) { answerAfter_ = seconds; }

    /// Where commands that were given before are known; null for none. It outlives the runtime.
    void SetCommandCache(CommandCache* cache) { commandCache_ = cache; }
    CommandCache* GetCommandCache() const { return commandCache_; }

  private:
    Host& host_;
    std::unique_ptr<Clock> clock_;
    std::filesystem::path appFolder_;
    sound::MixingEngine* engine_;
    std::unique_ptr<RunFolder> runFolder_;
    const std::uint32_t seed_;
    std::mt19937 seeds_;
    std::uint32_t shows_ = 0;
    CommandCache* commandCache_ = nullptr;
    std::optional<double> answerAfter_;  ///< for the baton's holder
    ScriptTable scripts_;
    std::unique_ptr<Scheduler> scheduler_;
    std::unique_ptr<EventLoop> events_;
    std::shared_ptr<network::Network> network_;
};

/// For operations that only the baton's holder may call. Does nothing in a release build.
void AssertBaton();

/// Sixtieths of a second from a start that doesn't matter. Any thread.
std::int32_t Ticks();

/// A modal message with one button. Returns when the user has answered.
void MsgBox(const String& text);

/// The end of a working pass of a loop.
inline void Yield() {
    Runtime::Current().Threads().Yield();
}

/// A waiting pass: others run for as long as `condition` holds.
inline void WaitWhile(FunctionRef<bool()> condition) {
    Runtime::Current().Threads().WaitWhile(condition);
}

}  // namespace sorakaze
