// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/output/Loudspeaker.h"

#include <array>
#include <atomic>
#include <thread>

#include "app/output/DeviceThread.h"
#include "app/output/SilentClock.h"

namespace sorakaze::output {
namespace {

using Clock = SilentClock::Clock;
using namespace std::chrono_literals;

/// Opening a device takes some tenths of a second. For that long the engine isn't run at first, so that a
/// sound that is started at once is heard from its beginning.
constexpr auto kStartTimeout = 500ms;
constexpr auto kRetryInterval = 2s;
/// A device works when it has asked for more buffers than it can hold. A server that was idle may need two
/// seconds for that.
constexpr std::uint64_t kCallbacksOfWorkingDevice = 4;
constexpr auto kFirstCallbacksTimeout = 4s;
/// A device that hasn't asked for a buffer for ten times what it holds is taken for lost.
constexpr auto kCallbackTimeout = 500ms;
/// For the last fade, should the device stop asking for buffers.
constexpr auto kFadeTimeout = 500ms;

}  // namespace

/// The control thread decides who mixes, and mixes itself while there is no device. The constructor starts
/// it, the destructor ends it. It calls nothing of a sound system and so never hangs in one.
struct Loudspeaker::Impl {
    explicit Impl(sound::MixingEngine& mixingEngine)
        : engine(mixingEngine),
          shared(std::make_shared<SharedDevice>(mixingEngine)),
          device(shared),
          control([this] { Run(); }) {}

    ~Impl() {
        {
            const std::lock_guard lock(shared->mutex);
            shared->stopping = true;
            shared->stateChanged.notify_one();
        }
        control.join();
    }

    using Lock = std::unique_lock<std::mutex>;

    void Run();
    void RunSilently(Lock& lock);
    void RunDevice(Lock& lock);
    bool CheckDevice(Lock& lock, Clock::time_point now);
    void Order(Lock& lock, DeviceOrder order, Clock::time_point now);
    void FadeOut(Lock& lock);

    sound::MixingEngine& engine;
    std::atomic<bool> audible{false};  // written by the control thread
    std::shared_ptr<SharedDevice> shared;
    DeviceThread device;

    // The control thread's own.
    Clock::time_point startTimeoutEnd;
    Clock::time_point lastAttempt;
    std::uint64_t callbacksBefore = 0;  ///< when the device was ordered to open
    std::array<float, SilentClock::kBlock * sound::kChannels> scratch;

    std::thread control;  ///< the last member: it uses the others
};

void Loudspeaker::Impl::Run() {
    Lock lock(shared->mutex);
    const auto now = Clock::now();
    startTimeoutEnd = now + kStartTimeout;
    Order(lock, DeviceOrder::Open, now);
    while (!shared->stopping) {
        RunSilently(lock);
        if (!shared->stopping) RunDevice(lock);
    }
}

/// Returns when the device works, or at the end.
void Loudspeaker::Impl::RunSilently(Lock& lock) {
    SilentClock time(Clock::now());
    for (;;) {
        shared->stateChanged.wait_until(lock, time.NextDeadline(), [&] { return shared->stopping; });
        const auto now = Clock::now();
        if (shared->stopping || CheckDevice(lock, now)) return;
        const std::int64_t due = time.TakeDueBlocks(now);
        if (now < startTimeoutEnd && shared->state != DeviceState::Closed) continue;
        lock.unlock();
        for (std::int64_t block = 0; block < due; ++block) shared->playback.MixSilently(scratch);
        lock.lock();
    }
}

/// Opens and closes the device as its state requires. True when it works.
bool Loudspeaker::Impl::CheckDevice(Lock& lock, Clock::time_point now) {
    switch (shared->state) {
        case DeviceState::Busy:
            return false;
        case DeviceState::Open:
            if (shared->playback.CallbackCount() >= callbacksBefore + kCallbacksOfWorkingDevice) return true;
            if (now - lastAttempt > kFirstCallbacksTimeout) Order(lock, DeviceOrder::Close, now);
            return false;
        case DeviceState::Lost:
            Order(lock, DeviceOrder::Close, now);
            return false;
        case DeviceState::Closed:
            if (now - lastAttempt >= kRetryInterval) Order(lock, DeviceOrder::Open, now);
            return false;
    }
    return false;
}

void Loudspeaker::Impl::Order(Lock& lock, DeviceOrder order, Clock::time_point now) {
    if (order == DeviceOrder::Open) {
        lastAttempt = now;
        callbacksBefore = shared->playback.CallbackCount();
    }
    device.Order(lock, order);
}

/// Returns when the device is lost, or at the end.
void Loudspeaker::Impl::RunDevice(Lock& lock) {
    shared->playback.GiveToDevice();
    audible.store(true);
    std::uint64_t callbacks;
    do {
        callbacks = shared->playback.CallbackCount();
        shared->stateChanged.wait_for(lock, kCallbackTimeout,
                                      [&] { return shared->stopping || shared->state != DeviceState::Open; });
    } while (!shared->stopping && shared->state == DeviceState::Open &&
             shared->playback.CallbackCount() != callbacks);
    if (shared->stopping) FadeOut(lock);
    audible.store(false);
    shared->playback.TakeFromDevice();
    shared->description = "no sound device: it has gone";
    if (!shared->stopping) Order(lock, DeviceOrder::Close, Clock::now());
}

void Loudspeaker::Impl::FadeOut(Lock& lock) {
    shared->playback.FadeOut();
    const auto end = Clock::now() + kFadeTimeout;
    while (!shared->playback.HasFaded() && shared->state == DeviceState::Open && Clock::now() < end)
        shared->stateChanged.wait_for(lock, 10ms);
}

Loudspeaker::Loudspeaker(sound::MixingEngine& engine) : impl_(std::make_unique<Impl>(engine)) {}

Loudspeaker::~Loudspeaker() = default;

bool Loudspeaker::IsAudible() const {
    return impl_->audible.load();
}

std::string Loudspeaker::Description() const {
    const std::lock_guard lock(impl_->shared->mutex);
    return impl_->shared->description;
}

std::uint64_t Loudspeaker::Underruns() const {
    return impl_->shared->playback.Gaps() + impl_->engine.Underruns();
}

}  // namespace sorakaze::output
