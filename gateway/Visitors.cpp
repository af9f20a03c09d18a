// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "gateway/Visitors.h"

#include <sys/socket.h>

#include <algorithm>
#include <utility>

#include "base/BlockedSignals.h"

namespace sorakaze::gateway {

Visitors::Visitors(Bounds bounds) : bounds_(bounds) {
    const BlockedSignals held;
    thread_ = std::jthread([this](const std::stop_token& stop) { Run(stop); });
}

void Visitors::Came(int socket) {
    const std::lock_guard lock(mutex_);
    visitors_.push_back({socket, false, Clock::now() + bounds_.strangersTime});
    DropOldestStranger();
    anyNew_ = true;
    changed_.notify_all();
}

void Visitors::IsGuest(int socket) {
    Set(socket, true);
}

void Visitors::IsStranger(int socket) {
    Set(socket, false);
}

void Visitors::Set(int socket, bool guest) {
    const std::lock_guard lock(mutex_);
    for (Visitor& visitor : visitors_) {
        if (visitor.socket != socket) continue;
        visitor.guest = guest;
        visitor.until = Clock::now() + (guest ? bounds_.guestsTime : bounds_.strangersTime);
    }
    anyNew_ = true;
    changed_.notify_all();
}

void Visitors::Left(int socket) {
    const std::lock_guard lock(mutex_);
    std::erase_if(visitors_, [&](const Visitor& visitor) { return visitor.socket == socket; });
}

void Visitors::DropOldestStranger() {
    const auto isStranger = [](const Visitor& visitor) {
        return !visitor.guest && visitor.until != Clock::time_point::max();
    };
    const auto strangers = std::count_if(visitors_.begin(), visitors_.end(), isStranger);
    if (static_cast<std::size_t>(strangers) <= bounds_.strangers) return;
    Drop(*std::find_if(visitors_.begin(), visitors_.end(), isStranger));
}

/// The server closes the socket itself, when it finds it torn.
void Visitors::Drop(Visitor& visitor) {
    visitor.until = Clock::time_point::max();
    ::shutdown(visitor.socket, SHUT_RDWR);
}

Visitors::Clock::time_point Visitors::DropLate() {
    auto next = Clock::time_point::max();
    const auto now = Clock::now();
    for (Visitor& visitor : visitors_) {
        if (visitor.until <= now) Drop(visitor);
        next = std::min(next, visitor.until);
    }
    return next;
}

void Visitors::Run(const std::stop_token& stop) {
    std::unique_lock lock(mutex_);
    const auto taken = [this] { return std::exchange(anyNew_, false); };
    while (!stop.stop_requested()) {
        const auto next = DropLate();
        if (next == Clock::time_point::max()) {
            changed_.wait(lock, stop, taken);
        } else {
            changed_.wait_until(lock, stop, next, taken);
        }
    }
}

}  // namespace sorakaze::gateway
