// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/output/DeviceThread.h"

#include <chrono>
#include <utility>

#include "app/output/SdlDevice.h"

namespace sorakaze::output {
namespace {

/// An orderly end takes two buffers. Closing the window must not wait for a server.
constexpr auto kCloseTimeout = std::chrono::milliseconds(400);

}  // namespace

DeviceThread::DeviceThread(std::shared_ptr<SharedDevice> shared)
    : shared_(std::move(shared)), thread_(Run, shared_) {}

DeviceThread::~DeviceThread() {
    {
        std::unique_lock lock(shared_->mutex);
        Order(lock, DeviceOrder::End);
        if (!shared_->stateChanged.wait_for(lock, kCloseTimeout, [&] { return shared_->ended; })) {
            thread_.detach();
            return;
        }
    }
    thread_.join();
}

void DeviceThread::Order(std::unique_lock<std::mutex>&, DeviceOrder order) {
    shared_->order = order;
    shared_->state = DeviceState::Busy;
    shared_->orderGiven.notify_one();
}

void DeviceThread::Run(std::shared_ptr<SharedDevice> shared) {
    SdlDevice device(shared->playback, [&shared = *shared] {
        const std::lock_guard lock(shared.mutex);
        shared.lost = true;
        if (shared.state == DeviceState::Open) shared.state = DeviceState::Lost;
        shared.stateChanged.notify_one();
    });
    std::unique_lock lock(shared->mutex);
    for (;;) {
        shared->orderGiven.wait(lock, [&] { return shared->order != DeviceOrder::None; });
        const DeviceOrder order = std::exchange(shared->order, DeviceOrder::None);
        if (order == DeviceOrder::Open) shared->lost = false;
        lock.unlock();
        bool open = false;
        if (order == DeviceOrder::Open)
            open = device.Open();
        else
            device.Close();
        lock.lock();
        if (order == DeviceOrder::End) break;
        if (order == DeviceOrder::Open) shared->description = device.Description();
        // An order to end may have come meanwhile.
        if (shared->order == DeviceOrder::None)
            shared->state = !open          ? DeviceState::Closed
                            : shared->lost ? DeviceState::Lost
                                           : DeviceState::Open;
        shared->stateChanged.notify_one();
    }
    shared->ended = true;
    shared->stateChanged.notify_one();
}

}  // namespace sorakaze::output
