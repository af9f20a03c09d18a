// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// Ends connections to a server that take up room without being entitled to it. Any program on the machine can
// connect and then send nothing, or a byte now and then. A connection is therefore closed when it hasn't sent
// an admitted request in time, and the oldest of them at once when there are too many. A thread, which this
// owns, watches the time; it touches nothing but the connections here.
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
class ConnectionWatch {
  public:
    struct Bounds {
        std::size_t waiting;  ///< connections without an admitted request; one more ends the oldest
        std::chrono::milliseconds waitingTime;   ///< until a request is admitted
        std::chrono::milliseconds admittedTime;  ///< from its admission until its answer has been read
    };

    explicit ConnectionWatch(Bounds bounds);

    /// `socket` stays open until Closed.
    void Opened(int socket);
    void RequestAdmitted(int socket);
    void RequestAnswered(int socket);
    void Closed(int socket);

  private:
    using Clock = std::chrono::steady_clock;
    struct Connection {
        int socket;
        bool admitted;
        Clock::time_point deadline;  ///< the end of time once it has been shut down
    };

    void SetAdmitted(int socket, bool admitted);
    void ShutDownOldestWaiting();
    static void ShutDown(Connection& connection);
    /// Returns the next deadline.
    Clock::time_point ShutDownOverdue();
    void Run(const std::stop_token& stop);

    const Bounds bounds_;
    std::mutex mutex_;  ///< guards what follows, and the sockets in it against being closed
    std::condition_variable_any changed_;
    std::list<Connection> connections_;  ///< oldest first
    bool hasChanged_ = false;            ///< since the thread last looked
    std::jthread thread_;                ///< last: it stops before the other members are destroyed
};

}  // namespace sorakaze::gateway
