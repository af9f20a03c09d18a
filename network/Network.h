// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// The thread on which all connections live. It resolves no names, runs no logic and never waits for the
// baton.
#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "network/ResolverPool.h"

namespace sorakaze::network {

class Network : public std::enable_shared_from_this<Network> {
  public:
    struct Loop;

    /// Set by tests.
    struct Settings {
        Resolver resolver = ResolveWithSystem;
        /// How long an attempt may take while there are other addresses to try. The last one's is the
        /// system's.
        std::chrono::milliseconds connectTimeout{3000};
    };

    /// Throws std::system_error where the system has no thread or descriptor left.
    Network();
    ~Network();

    /// Ends all connections and the thread. Later requests are dropped.
    void Stop();

    // Any thread:

    /// For connections from now on.
    void SetSettings(Settings settings);
    std::chrono::milliseconds ConnectTimeout();

    /// Runs `call` on the network's thread.
    void Post(std::function<void()> call);
    /// `done` is called on the network's thread with the host's addresses, or not at all once `wanted` has
    /// gone. Throws std::system_error where the system has no thread left.
    void Resolve(const std::string& host, std::weak_ptr<void> wanted,
                 std::function<void(const std::vector<std::string>&)> done);

    /// For the network's thread, and for what is made for it.
    Loop& GetLoop() { return *loop_; }

  private:
    const std::shared_ptr<ResolverPool> resolvers_ = std::make_shared<ResolverPool>();
    const std::unique_ptr<Loop> loop_;
    std::mutex mutex_;  ///< guards both below
    bool stopped_ = false;
    Settings settings_;
    std::thread thread_;
};

}  // namespace sorakaze::network
