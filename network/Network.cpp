// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "network/Network.h"

#include <asio/post.hpp>
#include <utility>

#include "network/Loop.h"

namespace sorakaze::network {

Network::Network() : loop_(std::make_unique<Loop>()) {
    thread_ = std::thread([this] { loop_->context.run(); });
}

Network::~Network() {
    Stop();
}

void Network::Stop() {
    {
        const std::lock_guard lock(mutex_);
        if (std::exchange(stopped_, true)) return;
    }
    asio::post(loop_->context, [this] {
        const auto living = loop_->living;
        for (Endable* each : living) each->End();
        loop_->work.reset();
    });
    thread_.join();
}

void Network::SetSettings(Settings settings) {
    const std::lock_guard lock(mutex_);
    settings_ = std::move(settings);
}

std::chrono::milliseconds Network::ConnectTimeout() {
    const std::lock_guard lock(mutex_);
    return settings_.connectTimeout;
}

void Network::Post(std::function<void()> call) {
    const std::lock_guard lock(mutex_);
    if (!stopped_) asio::post(loop_->context, std::move(call));
}

void Network::Resolve(const std::string& host, std::weak_ptr<void> wanted,
                      std::function<void(const std::vector<std::string>&)> done) {
    ResolverPool::Job job{host, {}, std::move(wanted), {}};
    {
        const std::lock_guard lock(mutex_);
        job.resolve = settings_.resolver;
    }
    job.done = [self = weak_from_this(), done = std::move(done)](std::vector<std::string> addresses) {
        if (const auto network = self.lock()) {
            network->Post([done, addresses = std::move(addresses)] { done(addresses); });
        }
    };
    resolvers_->Start(std::move(job));
}

}  // namespace sorakaze::network
