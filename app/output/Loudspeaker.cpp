// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/output/Loudspeaker.h"

#include <array>
#include <atomic>
#include <thread>

#include "app/output/DeviceThread.h"
#include "app/output/TrueTime.h"

namespace sorakaze::output {
namespace {

using Clock = TrueTime::Clock;
using namespace std::chrono_literals;

/// Opening a device takes some tenths of a second. For that long the engine stands still at first, so that
/// what is started at once is heard from its beginning.
constexpr auto kGrace = 500ms;
constexpr auto kBetweenAttempts = 2s;
/// A device has shown that it lives when it has asked for more buffers than it takes to fill it. A server
/// that was idle may need two seconds for that.
constexpr std::uint64_t kProof = 4;
constexpr auto kLongestProof = 4s;
/// A device that hasn't asked for a buffer for so long, ten times what it holds, is dead.
constexpr auto kSignOfLife = 500ms;
/// How long a fade may take that the device holds up.
constexpr auto kLongestFade = 500ms;

}  // namespace

/// The control thread: it decides who mixes, and while there is no device it mixes by itself. The constructor
/// starts it, the destructor ends it. It calls nothing of a sound system and so never hangs in one.
struct Loudspeaker::Impl {
    explicit Impl(sound::MixingEngine& mixingEngine)
        : engine(mixingEngine),
          desk(std::make_shared<DeviceDesk>(mixingEngine)),
          device(desk),
          control([this] { Run(); }) {}

    ~Impl() {
        {
            const std::lock_guard lock(desk->mutex);
            desk->stopping = true;
            desk->toControl.notify_one();
        }
        control.join();
    }

    using Lock = std::unique_lock<std::mutex>;

    void Run();
    void RunUnheard(Lock& lock);
    void RunHeard(Lock& lock);
    bool LookAfterDevice(Lock& lock, Clock::time_point now);
    void Order(Lock& lock, DeviceOrder order, Clock::time_point now);
    void FadeOut(Lock& lock);

    sound::MixingEngine& engine;
    std::atomic<bool> audible{false};  // written by the control thread
    std::shared_ptr<DeviceDesk> desk;
    DeviceThread device;

    // The control thread's own.
    Clock::time_point graceEnd;
    Clock::time_point lastAttempt;
    std::uint64_t beatsBefore = 0;  ///< when the device was ordered to open
    std::array<float, TrueTime::kBlock * sound::kChannels> unheard;

    std::thread control;  ///< the last member: it uses the others
};

void Loudspeaker::Impl::Run() {
    Lock lock(desk->mutex);
    const auto now = Clock::now();
    graceEnd = now + kGrace;
    Order(lock, DeviceOrder::Open, now);
    while (!desk->stopping) {
        RunUnheard(lock);
        if (!desk->stopping) RunHeard(lock);
    }
}

/// Until the device has shown that it lives, or the end.
void Loudspeaker::Impl::RunUnheard(Lock& lock) {
    TrueTime time(Clock::now());
    for (;;) {
        desk->toControl.wait_until(lock, time.NextDeadline(), [&] { return desk->stopping; });
        const auto now = Clock::now();
        if (desk->stopping || LookAfterDevice(lock, now)) return;
        const std::int64_t due = time.TakeDue(now);
        if (now < graceEnd && desk->state != DeviceState::Closed) continue;
        lock.unlock();
        for (std::int64_t block = 0; block < due; ++block) desk->playback.MixUnheard(unheard);
        lock.lock();
    }
}

/// True when the device is ready to play.
bool Loudspeaker::Impl::LookAfterDevice(Lock& lock, Clock::time_point now) {
    switch (desk->state) {
        case DeviceState::Busy:
            return false;
        case DeviceState::Open:
            if (desk->playback.Beats() >= beatsBefore + kProof) return true;
            if (now - lastAttempt > kLongestProof) Order(lock, DeviceOrder::Close, now);
            return false;
        case DeviceState::Lost:
            Order(lock, DeviceOrder::Close, now);
            return false;
        case DeviceState::Closed:
            if (now - lastAttempt >= kBetweenAttempts) Order(lock, DeviceOrder::Open, now);
            return false;
    }
    return false;
}

void Loudspeaker::Impl::Order(Lock& lock, DeviceOrder order, Clock::time_point now) {
    if (order == DeviceOrder::Open) {
        lastAttempt = now;
        beatsBefore = desk->playback.Beats();
    }
    device.Order(lock, order);
}

/// Until the device is lost, or the end.
void Loudspeaker::Impl::RunHeard(Lock& lock) {
    desk->playback.GiveToDevice();
    audible.store(true);
    std::uint64_t beats;
    do {
        beats = desk->playback.Beats();
        desk->toControl.wait_for(lock, kSignOfLife,
                                 [&] { return desk->stopping || desk->state != DeviceState::Open; });
    } while (!desk->stopping && desk->state == DeviceState::Open && desk->playback.Beats() != beats);
    if (desk->stopping) FadeOut(lock);
    audible.store(false);
    desk->playback.TakeFromDevice();
    desk->description = "no sound device: it has gone";
    if (!desk->stopping) Order(lock, DeviceOrder::Close, Clock::now());
}

void Loudspeaker::Impl::FadeOut(Lock& lock) {
    desk->playback.FadeOut();
    const auto end = Clock::now() + kLongestFade;
    while (!desk->playback.HasFaded() && desk->state == DeviceState::Open && Clock::now() < end)
        desk->toControl.wait_for(lock, 10ms);
}

Loudspeaker::Loudspeaker(sound::MixingEngine& engine) : impl_(std::make_unique<Impl>(engine)) {}

Loudspeaker::~Loudspeaker() = default;

bool Loudspeaker::IsAudible() const {
    return impl_->audible.load();
}

std::string Loudspeaker::Description() const {
    const std::lock_guard lock(impl_->desk->mutex);
    return impl_->desk->description;
}

std::uint64_t Loudspeaker::Underruns() const {
    return impl_->desk->playback.Gaps() + impl_->engine.Underruns();
}

}  // namespace sorakaze::output
