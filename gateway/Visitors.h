// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// Who is connected to a server, and since when. Anybody on the machine can connect and then say nothing, or a
// byte now and then: such strangers are dropped after a time, and at once where there are too many of them,
// so that whoever has leave to ask always finds room. A thread, which this owns, looks at the time; it is
// woken by who comes and goes, and touches nothing but the connections here.
#pragma once

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <list>
#include <mutex>
#include <stop_token>
#include <thread>

namespace sorakaze::gateway {

/// Called from any thread.
class Visitors {
  public:
    struct Bounds {
        std::size_t strangers;  ///< more of them end the oldest one
        std::chrono::milliseconds strangersTime;
        std::chrono::milliseconds guestsTime;
    };

    explicit Visitors(Bounds bounds);

    /// A connection begins, a stranger's. `socket` is open until Left.
    void Came(int socket);
    /// It has asked what it may ask.
    void IsGuest(int socket);
    /// It has its answer, and may ask for something else.
    void IsStranger(int socket);
    void Left(int socket);

  private:
    using Clock = std::chrono::steady_clock;
    struct Visitor {
        int socket;
        bool guest;
        Clock::time_point until;  ///< the end of time once it has been dropped
    };

    void Set(int socket, bool guest);
    void DropOldestStranger();
    static void Drop(Visitor& visitor);
    /// When the next one is late.
    Clock::time_point DropLate();
    void Run(const std::stop_token& stop);

    const Bounds bounds_;
    std::mutex mutex_;  ///< guards what follows, and the sockets in it against being closed
    std::condition_variable_any changed_;
    std::list<Visitor> visitors_;  ///< the longest here first
    bool anyNew_ = false;          ///< since the thread last looked
    std::jthread thread_;          ///< last: it stops before anything else goes
};

}  // namespace sorakaze::gateway
