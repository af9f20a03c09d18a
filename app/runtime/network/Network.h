// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// The thread on which all connections live. It serves them, looks nothing up, runs no logic and never waits
// for the baton.
#pragma once

#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "app/runtime/network/LookUps.h"

namespace sorakaze::network {

class Network : public std::enable_shared_from_this<Network> {
  public:
    struct Loop;

    /// Throws std::system_error where the system has no thread or descriptor left.
    Network();
    ~Network();

    /// Ends all connections and the thread. What is asked for afterwards is dropped.
    void Stop();

    /// In place of the system's resolver, for look-ups from now on.
    void SetResolver(Resolver resolver);

    // Any thread:

    /// Runs `call` on the network's thread.
    void Post(std::function<void()> call);
    /// `done` is called on the network's thread with the host's addresses, or not at all once `wanted` has
    /// gone. Throws std::system_error where the system has no thread left.
    void LookUp(const std::string& host, std::weak_ptr<void> wanted,
                std::function<void(const std::vector<std::string>&)> done);

    /// For the network's thread, and for what is made for it.
    Loop& GetLoop() { return *loop_; }

  private:
    const std::shared_ptr<LookUps> lookUps_ = std::make_shared<LookUps>();
    const std::unique_ptr<Loop> loop_;
    std::mutex mutex_;  ///< guards both below
    bool stopped_ = false;
    Resolver resolver_ = ResolveBySystem;
    std::thread thread_;
};

}  // namespace sorakaze::network
