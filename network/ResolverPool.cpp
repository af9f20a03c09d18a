// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "network/ResolverPool.h"

#include <netdb.h>
#include <sys/socket.h>

#include <thread>
#include <utility>

namespace sorakaze::network {

std::vector<std::string> ResolveWithSystem(const std::string& host) {
    addrinfo hints{};
    hints.ai_family = AF_UNSPEC;
    hints.ai_socktype = SOCK_STREAM;
    addrinfo* first = nullptr;
    if (getaddrinfo(host.c_str(), nullptr, &hints, &first) != 0) return {};
    const std::unique_ptr<addrinfo, void (*)(addrinfo*)> owner(first, freeaddrinfo);
    std::vector<std::string> addresses;
    for (const addrinfo* info = first; info; info = info->ai_next) {
        char text[NI_MAXHOST];
        if (getnameinfo(info->ai_addr, info->ai_addrlen, text, sizeof text, nullptr, 0, NI_NUMERICHOST) ==
            0) {
            addresses.emplace_back(text);
        }
    }
    return addresses;
}

void ResolverPool::Start(Job job) {
    const std::lock_guard lock(mutex_);
    waiting_.push_back(std::move(job));
    if (threads_ == kMostThreads) return;
    try {
        std::thread([self = shared_from_this()] { self->Work(); }).detach();
        ++threads_;
    } catch (...) {
        if (threads_ > 0) return;  // one of those takes it on
        waiting_.pop_back();
        throw;
    }
}

void ResolverPool::Work() {
    for (;;) {
        Job job;
        {
            const std::lock_guard lock(mutex_);
            if (waiting_.empty()) {
                --threads_;
                return;
            }
            job = std::move(waiting_.front());
            waiting_.pop_front();
        }
        if (job.wanted.expired()) continue;
        auto addresses = job.resolve(job.host);
        job.done(std::move(addresses));
    }
}

}  // namespace sorakaze::network
