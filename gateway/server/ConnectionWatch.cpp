// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "gateway/server/ConnectionWatch.h"

#include <sys/socket.h>

#include <algorithm>
#include <utility>

#include "base/BlockedSignals.h"

namespace sorakaze::gateway {

ConnectionWatch::ConnectionWatch(Bounds bounds) : bounds_(bounds) {
    const BlockedSignals held;
    thread_ = std::jthread([this](const std::stop_token& stop) { Run(stop); });
}

void ConnectionWatch::Opened(int socket) {
    const std::lock_guard lock(mutex_);
    connections_.push_back({socket, false, Clock::now() + bounds_.waitingTime});
    ShutDownOldestWaiting();
    hasChanged_ = true;
    changed_.notify_all();
}

void ConnectionWatch::RequestAdmitted(int socket) {
    SetAdmitted(socket, true);
}

void ConnectionWatch::RequestAnswered(int socket) {
    SetAdmitted(socket, false);
}

void ConnectionWatch::SetAdmitted(int socket, bool admitted) {
    const std::lock_guard lock(mutex_);
    for (Connection& connection : connections_) {
        if (connection.socket != socket) continue;
        connection.admitted = admitted;
        connection.deadline = Clock::now() + (admitted ? bounds_.admittedTime : bounds_.waitingTime);
    }
    hasChanged_ = true;
    changed_.notify_all();
}

void ConnectionWatch::Closed(int socket) {
    const std::lock_guard lock(mutex_);
    std::erase_if(connections_, [&](const Connection& connection) { return connection.socket == socket; });
}

void ConnectionWatch::ShutDownOldestWaiting() {
    const auto isWaiting = [](const Connection& connection) {
        return !connection.admitted && connection.deadline != Clock::time_point::max();
    };
    const auto waiting = std::ranges::count_if(connections_, isWaiting);
    if (static_cast<std::size_t>(waiting) <= bounds_.waiting) return;
    ShutDown(*std::ranges::find_if(connections_, isWaiting));
}

/// The server closes the socket itself, when it notices.
void ConnectionWatch::ShutDown(Connection& connection) {
    connection.deadline = Clock::time_point::max();
    ::shutdown(connection.socket, SHUT_RDWR);
}

ConnectionWatch::Clock::time_point ConnectionWatch::ShutDownOverdue() {
    auto next = Clock::time_point::max();
    const auto now = Clock::now();
    for (Connection& connection : connections_) {
        if (connection.deadline <= now) ShutDown(connection);
        next = std::min(next, connection.deadline);
    }
    return next;
}

void ConnectionWatch::Run(const std::stop_token& stop) {
    std::unique_lock lock(mutex_);
    const auto changed = [this] { return std::exchange(hasChanged_, false); };
    while (!stop.stop_requested()) {
        const auto next = ShutDownOverdue();
        if (next == Clock::time_point::max()) {
            changed_.wait(lock, stop, changed);
        } else {
            changed_.wait_until(lock, stop, next, changed);
        }
    }
}

}  // namespace sorakaze::gateway
