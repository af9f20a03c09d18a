// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// One connection to the system's sound through SDL. SDL's audio part is started for each connection, so that
// it finds the sound server anew. The methods may block for any time.
#pragma once

#include <functional>
#include <memory>
#include <string>

#include "app/output/Playback.h"

namespace sorakaze::output {

class SdlDevice {
  public:
    /// `onLoss` is called once or more, on any thread, when the open device has vanished.
    SdlDevice(Playback& playback, std::function<void()> onLoss);
    /// On the thread that opened and closed.
    ~SdlDevice();
    SdlDevice(const SdlDevice&) = delete;
    SdlDevice& operator=(const SdlDevice&) = delete;

    // One thread:

    /// Opens the device that the system has chosen and starts it; false if there is none that can be heard.
    bool Open();
    void Close();
    /// The driver, or why there is no device.
    const std::string& Description() const { return description_; }

  private:
    struct Connection;
    bool Fail(const std::string& reason);

    Playback& playback_;
    std::function<void()> onLoss_;
    std::unique_ptr<Connection> connection_;
    std::string description_;
};

}  // namespace sorakaze::output
