// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/output/DeviceThread.h"

#include <chrono>
#include <utility>

#include "app/output/SdlDevice.h"

namespace sorakaze::output {
namespace {

/// An orderly end takes two buffers; who closes the window waits for no server.
constexpr auto kPatience = std::chrono::milliseconds(400);

}  // namespace

DeviceThread::DeviceThread(std::shared_ptr<DeviceDesk> desk) : desk_(std::move(desk)), thread_(Run, desk_) {}

DeviceThread::~DeviceThread() {
    {
        std::unique_lock lock(desk_->mutex);
        Order(lock, DeviceOrder::End);
        if (!desk_->toControl.wait_for(lock, kPatience, [&] { return desk_->gone; })) {
            thread_.detach();
            return;
        }
    }
    thread_.join();
}

void DeviceThread::Order(std::unique_lock<std::mutex>&, DeviceOrder order) {
    desk_->order = order;
    desk_->state = DeviceState::Busy;
    desk_->toDevice.notify_one();
}

void DeviceThread::Run(std::shared_ptr<DeviceDesk> desk) {
    SdlDevice device(desk->playback, [&desk = *desk] {
        const std::lock_guard lock(desk.mutex);
        desk.lost = true;
        if (desk.state == DeviceState::Open) desk.state = DeviceState::Lost;
        desk.toControl.notify_one();
    });
    std::unique_lock lock(desk->mutex);
    for (;;) {
        desk->toDevice.wait(lock, [&] { return desk->order != DeviceOrder::None; });
        const DeviceOrder order = std::exchange(desk->order, DeviceOrder::None);
        if (order == DeviceOrder::Open) desk->lost = false;
        lock.unlock();
        bool open = false;
        if (order == DeviceOrder::Open)
            open = device.Open();
        else
            device.Close();
        lock.lock();
        if (order == DeviceOrder::End) break;
        if (order == DeviceOrder::Open) desk->description = device.Description();
        // An order to end may have come meanwhile.
        if (desk->order == DeviceOrder::None)
            desk->state = !open ? DeviceState::Closed : desk->lost ? DeviceState::Lost : DeviceState::Open;
        desk->toControl.notify_one();
    }
    desk->gone = true;
    desk->toControl.notify_one();
}

}  // namespace sorakaze::output
