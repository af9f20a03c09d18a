// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/runtime/Runtime.h"

#include <cassert>
#include <utility>

#include "network/Network.h"

namespace sorakaze {
namespace {

Runtime* current = nullptr;

constexpr const char* kUnexpected = "The system refused something, and what was under way could not go on.";

}  // namespace

Runtime::Runtime(Options options, Host& host)
    : host_(host),
      clock_(std::move(options.clock)),
      appFolder_(std::filesystem::absolute(options.appFolder).lexically_normal()),
      engine_(options.engine),
      seed_(static_cast<std::uint32_t>(options.seed ? *options.seed : std::random_device()())),
      seeds_(seed_) {
    assert(!current);
    if (!appFolder_.has_filename()) appFolder_ = appFolder_.parent_path();
    const auto tell = [this](std::exception_ptr exception) { ReportUncaught(std::move(exception)); };
    current = this;
    scheduler_ = std::make_unique<Scheduler>(*clock_, tell);
    events_ = std::make_unique<EventLoop>(*scheduler_, *clock_, tell);
}

Runtime::~Runtime() {
    // Its thread tells the scheduler of what happens.
    if (network_) network_->Stop();
    // What the threads' destructors reach is still whole.
    scheduler_->EndThreads();
    scheduler_.reset();
    current = nullptr;
    runFolder_.reset();
}

Runtime& Runtime::Current() {
    assert(current);
    return *current;
}

std::filesystem::path Runtime::ResourcesFolder() const {
    return appFolder_ / "Sorakaze.app" / "Contents" / "Resources";
}

const std::shared_ptr<network::Network>& Runtime::Network() {
    AssertBaton();
    if (!network_) network_ = std::make_shared<network::Network>();
    return network_;
}

const std::filesystem::path& Runtime::TemporaryFolder() {
    static const std::filesystem::path kNone;
    AssertBaton();
    if (!runFolder_) runFolder_ = RunFolder::Make();
    return runFolder_ ? runFolder_->Files() : kNone;
}

std::filesystem::path Runtime::FolderOfTheRun() {
    TemporaryFolder();
    return runFolder_ ? runFolder_->Path() : std::filesystem::path();
}

void Runtime::ReportUncaught(std::exception_ptr exception) {
    try {
        std::rethrow_exception(std::move(exception));
    } catch (const RuntimeException& error) {
        ShowMessage(String(error.ClassName()) + ": " + error.Message(), error.Meaning());
    } catch (const std::exception& error) {
        ShowMessage(String("Exception: ") + error.what(), kUnexpected);
    } catch (...) {
        ShowMessage("Exception", kUnexpected);
    }
}

void Runtime::ShowMessage(const String& text, const String& details) {
    AssertBaton();
    Message message{text, details};
    if (onMessage) onMessage(message);
    if (answerAfter_) {
        const auto isAnswered = host_.LeaveMessage(message);
        const auto end = clock_->Tick() + static_cast<TickCount>(*answerAfter_ * kTicksPerSecond);
        scheduler_->WaitWhile([&] { return !isAnswered() && clock_->Tick() < end; });
        return;
    }
    scheduler_->Block(Blocking::ClockStopped,
                      [&](std::stop_token cancelled) { host_.ShowMessage(message, std::move(cancelled)); });
}

void AssertBaton() {
    // Sockets may outlive the runtime.
    if (current) current->Threads().AssertBaton();
}

std::int32_t Ticks() {
    return static_cast<std::int32_t>(Runtime::Current().GetClock().Tick());
}

void MsgBox(const String& text) {
    Runtime::Current().ShowMessage(text);
}

}  // namespace sorakaze
