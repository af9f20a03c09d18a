// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// What the tests of the HTTP client against servers share.
#pragma once

#include <atomic>
#include <chrono>
#include <thread>

#include "http/HTTPSocket.h"
#include "tests/support/TestRuntime.h"

namespace sorakaze::test {

/// Long enough for a busy machine: no test is to reach it.
inline constexpr std::int32_t kPatience = 60;

/// A client that counts what its socket tells it.
struct Client : HTTPSocket {
    Client() {
        Constructor();
        Yield = true;
    }
    /// On a server's thread: waits until that many pieces of the response were taken up, or the wait for it
    /// is over.
    void UntilPieces(int count) const {
        while (pieces < count && !gone) std::this_thread::sleep_for(std::chrono::microseconds(100));
    }
    void Event_Connected() override {
        ++attempts;
        HTTPSocket::Event_Connected();
    }
    void Event_DataAvailable() override {
        HTTPSocket::Event_DataAvailable();
        ++pieces;
    }

    std::atomic<int> pieces{0};    ///< any thread
    std::atomic<int> attempts{0};  ///< connections that came about
    std::atomic<bool> gone{false};
};

}  // namespace sorakaze::test
