// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// The thread on which all connections live. It serves them, looks nothing up, runs no logic and never waits
// for the baton.
#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "network/LookUps.h"

namespace sorakaze::network {

class Network : public std::enable_shared_from_this<Network> {
  public:
    struct Loop;

    /// What a test puts in the world's place.
    struct Surroundings {
        Resolver resolver = ResolveBySystem;
        /// How long an address may stay silent while there are others to try. The last one has the system's
        /// patience.
        std::chrono::milliseconds patience{3000};
    };

    /// Throws std::system_error where the system has no thread or descriptor left.
    Network();
    ~Network();

    /// Ends all connections and the thread. What is asked for afterwards is dropped.
    void Stop();

    // Any thread:

    /// For connections from now on.
    void SetSurroundings(Surroundings surroundings);
    std::chrono::milliseconds Patience();

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
    Surroundings surroundings_;
    std::thread thread_;
};

}  // namespace sorakaze::network
