// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/runtime/TCPSocket.h"

#include <algorithm>
#include <mutex>
#include <optional>
#include <string>
#include <system_error>
#include <utility>

#include "app/runtime/Runtime.h"
#include "network/Connection.h"

namespace sorakaze {
namespace {

using network::Connection;
using network::Exchange;
using network::Failure;

std::int32_t CodeOf(Failure failure) {
    switch (failure) {
        case Failure::NoSocket:
            return SocketError::kNoDriver;
        case Failure::NoAddress:
            return SocketError::kNameNotFound;
        case Failure::AddressInUse:
            return SocketError::kAddressInUse;
        case Failure::Unreachable:
            return SocketError::kRefused;
        case Failure::Lost:
            return SocketError::kLost;
    }
    return SocketError::kLost;
}

std::string HostOf(const String& address) {
    const std::string& host = address.Bytes();
    const bool bracketed = host.size() > 2 && host.front() == '[' && host.back() == ']';
    return bracketed ? host.substr(1, host.size() - 2) : host;
}

}  // namespace

/// Outlives a socket that is destroyed in an event, for as long as Poll needs it.
struct SocketCore::Core {
    /// Guards the changes of `exchange` and `ownError`, which the baton's holder makes, against HasEvents.
    mutable std::mutex mutex;
    std::shared_ptr<Exchange> exchange;      ///< of the connection or the attempt; null for none
    std::optional<std::int32_t> ownError;    ///< an error found without the network, not fired yet
    std::shared_ptr<Connection> connection;  ///< goes with `exchange`
    std::string received;
    std::size_t taken = 0;      ///< bytes of `received` that were read
    std::uint64_t removed = 0;  ///< bytes removed before those of `received`
    std::uint64_t number = 0;   ///< of the connection
    bool connected = false;
    bool ended = false;  ///< the socket is no more
    std::int32_t lastError = SocketError::kNone;
    std::optional<Bounds> bounds;

    /// Lets go of the connection.
    void Detach() {
        connected = false;
        if (!exchange) return;
        exchange->Abandon();
        connection->Drop();
        connection.reset();
        const std::lock_guard lock(mutex);
        exchange.reset();
    }

    void SetOwnError(std::optional<std::int32_t> code) {
        {
            const std::lock_guard lock(mutex);
            ownError = code;
        }
        if (code) Runtime::Current().Threads().Notify();
    }

    std::string_view Unread() const { return std::string_view(received).substr(taken); }

    void DropReceived() {
        removed += received.size();
        received.clear();
        taken = 0;
    }

    bool TakeReceived() {
        if (taken > received.size() / 2) {
            received.erase(0, taken);
            removed += std::exchange(taken, 0);
        }
        if (!exchange->TakeReceived(received)) return false;
        if (exchange->IsPaused()) connection->Serve();
        return true;
    }

    void Open(const std::string& host, std::int32_t port) {
        if (port < 1 || port > 65535) {
            SetOwnError(SocketError::kInvalidPort);
            return;
        }
        if (host.empty() || host.find('\0') != std::string::npos) {
            SetOwnError(SocketError::kNameNotFound);
            return;
        }
        auto& runtime = Runtime::Current();
        try {
            auto made = std::make_shared<Exchange>([&threads = runtime.Threads()] { threads.Notify(); });
            const network::Bounds outer =
                bounds ? network::Bounds{bounds->time, bounds->received} : network::Bounds{};
            connection =
                Connection::Open(runtime.Network(), host, static_cast<std::uint16_t>(port), made, outer);
            const std::lock_guard lock(mutex);
            exchange = std::move(made);
        } catch (const std::system_error&) {
            SetOwnError(SocketError::kNoDriver);
        }
    }
};

SocketCore::SocketCore() : core_(std::make_shared<Core>()) {}

SocketCore::~SocketCore() {
    AssertBaton();
    core_->ended = true;
    core_->Detach();
}

void SocketCore::SetBounds(const Bounds& bounds) {
    core_->bounds = bounds;
}

void SocketCore::Connect() {
    AssertBaton();
    Close();
    core_->DropReceived();
    core_->lastError = SocketError::kNone;
    core_->Open(HostOf(Address), Port);
}

void SocketCore::Close() {
    AssertBaton();
    ++core_->number;
    core_->Detach();
    core_->SetOwnError(std::nullopt);
}

void SocketCore::Purge() {
    AssertBaton();
    core_->DropReceived();
    if (!core_->exchange) return;
    core_->exchange->Purge();
    if (core_->exchange->IsPaused()) core_->connection->Serve();
}

void SocketCore::Poll() {
    AssertBaton();
    // An event may destroy the socket or start another connection: then the rest must not be done.
    const std::shared_ptr<Core> core = core_;
    const std::shared_ptr<Exchange> exchange = core->exchange;
    const auto over = [&] { return core->ended || core->exchange != exchange; };
    if (exchange) {
        if (exchange->TakeConnected()) {
            core->connected = true;
            Event_Connected();
            if (over()) return;
        }
        if (core->TakeReceived()) {
            Event_DataAvailable();
            if (over()) return;
            if (core->bounds && core->Unread().size() > core->bounds->unread) {
                core->DropReceived();
                core->Detach();
                core->lastError = SocketError::kLost;
                Event_Error();
                return;
            }
        }
        if (exchange->TakeSent()) {
            Event_SendComplete();
            if (over()) return;
        }
        if (const auto failure = exchange->TakeFailure()) {
            core->Detach();
            core->lastError = CodeOf(*failure);
            Event_Error();
            return;
        }
    }
    if (const auto code = core->ownError) {
        core->SetOwnError(std::nullopt);
        core->lastError = *code;
        Event_Error();
    }
}

void SocketCore::Write(const String& data) {
    AssertBaton();
    if (!core_->connected) {
        // The reason for the missing connection is reported first.
        if (!core_->ownError) core_->SetOwnError(SocketError::kInvalidState);
        return;
    }
    core_->exchange->Queue(data.Bytes());
    core_->connection->Serve();
}

String SocketCore::Lookahead() const {
    return String(core_->Unread());
}

std::string_view SocketCore::LookaheadView() const {
    return core_->Unread();
}

String SocketCore::Read(std::int32_t n) {
    const auto unread = core_->Unread();
    if (n <= 0) return {};
    if (static_cast<std::size_t>(n) >= unread.size()) return ReadAll();
    core_->taken += static_cast<std::size_t>(n);
    return String(unread.substr(0, static_cast<std::size_t>(n)));
}

String SocketCore::ReadAll() {
    core_->removed += core_->received.size();
    std::string all = std::exchange(core_->received, {});
    all.erase(0, std::exchange(core_->taken, 0));
    return all;
}

bool SocketCore::IsConnected() const {
    return core_->connected;
}

std::int32_t SocketCore::LastErrorCode() const {
    return core_->lastError;
}

bool SocketCore::HasEvents() const {
    const std::lock_guard lock(core_->mutex);
    return core_->ownError || (core_->exchange && core_->exchange->AnyDue());
}

std::uint64_t SocketCore::ConnectionNumber() const {
    return core_->number;
}

std::uint64_t SocketCore::ReadPosition() const {
    return core_->removed + core_->taken;
}

void SocketCore::Receive(std::string_view bytes) {
    core_->received += bytes;
}

}  // namespace sorakaze
