// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// The thread that opens and closes the device, because a dead sound server can hold it up for as long as it
// likes. The control thread commands it and never waits for it without a bound. It sleeps while nothing is
// asked of it, and never mixes.
#pragma once

#include <condition_variable>
#include <memory>
#include <mutex>
#include <string>
#include <thread>

#include "app/output/Playback.h"

namespace sorakaze::output {

enum class DeviceState {
    Closed,  ///< not there: never asked for, closed, or the attempt to open it has failed
    Busy,    ///< being opened or closed
    Open,    ///< it asks for buffers, or is about to
    Lost,    ///< it was open and has vanished; to be closed
};

enum class DeviceOrder { None, Open, Close, End };

/// What the control thread and the device's threads tell one another.
struct DeviceDesk {
    explicit DeviceDesk(sound::MixingEngine& engine) : playback(engine) {}

    Playback playback;

    std::mutex mutex;                   // guards all below
    std::condition_variable toControl;  ///< the state has changed, or the control thread is to end
    std::condition_variable toDevice;   ///< there is an order
    DeviceState state = DeviceState::Closed;
    DeviceOrder order = DeviceOrder::None;  ///< taken away by the device's thread
    bool lost = false;                      ///< the device has vanished since the last order to open it
    bool gone = false;                      ///< the device's thread has ended
    bool stopping = false;                  ///< the control thread is to end
    std::string description = "no sound device yet";
};

class DeviceThread {
  public:
    explicit DeviceThread(std::shared_ptr<DeviceDesk> desk);
    /// Closes the device and ends the thread. One that hangs in a dead server is left to itself: it ends when
    /// the server lets go of it, and the engine is never touched by it.
    ~DeviceThread();
    DeviceThread(const DeviceThread&) = delete;
    DeviceThread& operator=(const DeviceThread&) = delete;

    /// The state is Busy from here until the order has been carried out.
    void Order(std::unique_lock<std::mutex>& desk, DeviceOrder order);

  private:
    static void Run(std::shared_ptr<DeviceDesk> desk);

    std::shared_ptr<DeviceDesk> desk_;
    std::thread thread_;
};

}  // namespace sorakaze::output
