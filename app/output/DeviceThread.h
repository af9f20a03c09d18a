// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// The thread that opens and closes the device, because a dead sound server can block it for any time. The
// control thread gives it orders and never waits for it without a limit. It sleeps between orders, and never
// mixes.
#pragma once

#include <condition_variable>
#include <memory>
#include <mutex>
#include <string>
#include <thread>

#include "app/output/Playback.h"

namespace sorakaze::output {

enum class DeviceState {
    Closed,  ///< never opened, closed, or the attempt to open it has failed
    Busy,    ///< being opened or closed
    Open,    ///< it asks for buffers, or is about to
    Lost,    ///< it was open and has vanished; to be closed
};

enum class DeviceOrder { None, Open, Close, End };

/// What the control thread and the device's threads share.
struct SharedDevice {
    explicit SharedDevice(sound::MixingEngine& engine) : playback(engine) {}

    Playback playback;

    std::mutex mutex;                      // guards the rest
    std::condition_variable stateChanged;  ///< the state has changed, or the control thread is to end
    std::condition_variable orderGiven;    ///< there is an order
    DeviceState state = DeviceState::Closed;
    DeviceOrder order = DeviceOrder::None;  ///< reset by the device's thread
    bool lost = false;                      ///< the device has vanished since the last order to open it
    bool ended = false;                     ///< the device's thread has ended
    bool stopping = false;                  ///< the control thread is to end
    std::string description = "no sound device yet";
};

class DeviceThread {
  public:
    explicit DeviceThread(std::shared_ptr<SharedDevice> shared);
    /// Closes the device and ends the thread. A thread that hangs in a dead server is detached: it ends when
    /// the server returns, and never touches the engine.
    ~DeviceThread();
    DeviceThread(const DeviceThread&) = delete;
    DeviceThread& operator=(const DeviceThread&) = delete;

    /// The state is Busy until the order has been carried out. The caller holds the lock of the shared
    /// device.
    void Order(std::unique_lock<std::mutex>& shared, DeviceOrder order);

  private:
    static void Run(std::shared_ptr<SharedDevice> shared);

    std::shared_ptr<SharedDevice> shared_;
    std::thread thread_;
};

}  // namespace sorakaze::output
