// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// What the tests of the HTTP client against servers share.
#pragma once

#include <atomic>
#include <chrono>
#include <filesystem>
#include <memory>
#include <thread>

#include "app/runtime/Thread.h"
#include "http/HTTPSocket.h"
#include "tests/support/SkippingClock.h"
#include "tests/support/TestRuntime.h"

namespace sorakaze::test {

/// Long enough for a busy machine: no test is to reach it.
inline constexpr std::int32_t kPatience = 60;

/// A client that counts what its socket tells it.
class Client : public HTTPSocket {
  public:
    Client() {
        Constructor();
        Yield = true;
    }

    /// Get, for servers that look after the client.
    String Fetch(const String& url, std::int32_t timeout) {
        const String page = Get(url, timeout);
        gone = true;
        return page;
    }
    /// On a server's thread: waits until that many pieces of the response were taken up, or the wait for it
    /// is over.
    void UntilPieces(int count) const {
        while (pieces < count && !gone) std::this_thread::sleep_for(std::chrono::microseconds(100));
    }

    /// Polls until then, as whoever uses the forms that don't wait does.
    void PollUntil(FunctionRef<bool()> done) {
        while (!done()) {
            WaitWhile([&] { return !HasEvents(); });
            Poll();
        }
    }

    std::atomic<int> pieces{0};    ///< any thread
    std::atomic<int> attempts{0};  ///< connections that came about
    std::atomic<bool> gone{false};

  protected:
    void Event_Connected() override {
        ++attempts;
        HTTPSocket::Event_Connected();
    }
    void Event_DataAvailable() override {
        HTTPSocket::Event_DataAvailable();
        ++pieces;
    }
};

inline FolderItemRef FileAt(const std::filesystem::path& path) {
    return std::make_shared<FolderItem>(path);
}

/// Descriptors that this process has open.
inline std::ptrdiff_t OpenDescriptors() {
    return std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {});
}

}  // namespace sorakaze::test
