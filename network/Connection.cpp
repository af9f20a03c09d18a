// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "network/Connection.h"

#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <asio/buffer.hpp>
#include <asio/ip/tcp.hpp>
#include <asio/steady_timer.hpp>
#include <cerrno>
#include <system_error>
#include <utility>
#include <vector>

#include "network/Loop.h"

namespace sorakaze::network {
namespace {

using asio::ip::tcp;

/// Bytes sent at once before other connections have their turn.
constexpr std::size_t kSendTurn = 1 << 20;

Failure FailureOf(const std::error_code& error) {
    switch (error.value()) {
        case EMFILE:
        case ENFILE:
        case ENOBUFS:
        case ENOMEM:
        case EAFNOSUPPORT:
        case EPROTONOSUPPORT:
            return Failure::NoSocket;
        case EADDRINUSE:
        case EADDRNOTAVAIL:
            return Failure::AddressInUse;
        default:
            return Failure::Unreachable;
    }
}

/// Lives on the network's thread, kept alive by its pending operations.
class TcpConnection final : public Connection,
                            public Endable,
                            public std::enable_shared_from_this<TcpConnection> {
  public:
    TcpConnection(std::shared_ptr<Network> network, std::shared_ptr<Exchange> exchange, std::uint16_t port,
                  Bounds bounds)
        : network_(std::move(network)),
          exchange_(std::move(exchange)),
          port_(port),
          bounds_(bounds),
          socket_(network_->GetLoop().context),
          connectTimer_(network_->GetLoop().context),
          deadline_(network_->GetLoop().context) {}

    void Serve() override {
        network_->Post([self = shared_from_this()] {
            if (!self->connected_) return;
            if (!self->sending_) self->Send();
            if (self->exchange_->EndPause()) self->AwaitData();
        });
    }

    void Drop() override {
        network_->Post([self = shared_from_this()] { self->End(); });
    }

    void End() override {
        network_->GetLoop().living.erase(this);
        over_ = true;
        connected_ = false;
        std::error_code ignored;
        socket_.close(ignored);
        connectTimer_.cancel();
        deadline_.cancel();
    }

    void Begin(const std::string& host) {
        network_->GetLoop().living.insert(this);
        StartDeadline();
        std::error_code noAddress;
        asio::ip::make_address(host, noAddress);
        if (!noAddress) {
            TryAll({host});
            return;
        }
        try {
            network_->Resolve(host, weak_from_this(),
                              [wanted = weak_from_this()](const std::vector<std::string>& found) {
                                  const auto self = wanted.lock();
                                  if (self && !self->over_) self->TryAll(found);
                              });
        } catch (const std::system_error&) {
            Fail(Failure::NoSocket);
        }
    }

  private:
    void StartDeadline() {
        if (bounds_.time == std::chrono::milliseconds::max()) return;
        deadline_.expires_after(bounds_.time);
        deadline_.async_wait([wanted = weak_from_this()](std::error_code cancelled) {
            const auto self = wanted.lock();
            if (self && !cancelled && !self->over_)
                self->Fail(self->connected_ ? Failure::Lost : Failure::Unreachable);
        });
    }

    void TryAll(const std::vector<std::string>& addresses) {
        for (const auto& text : addresses) {
            std::error_code noAddress;
            const auto address = asio::ip::make_address(text, noAddress);
            if (!noAddress) untried_.emplace_back(address, port_);
        }
        TryNext();
    }

    void TryNext() {
        while (next_ < untried_.size()) {
            const tcp::endpoint to = untried_[next_++];
            std::error_code error;
            socket_.close(error);
            if (OpenSocket(to.protocol(), error)) {
                Try(to);
                return;
            }
            Note(FailureOf(error));
        }
        Fail(failure_);
    }

    /// The library's own function leaves the descriptor open in programs that are started meanwhile.
    bool OpenSocket(const tcp& protocol, std::error_code& error) {
        const int descriptor =
            ::socket(protocol.family(), SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, protocol.protocol());
        if (descriptor < 0) {
            error.assign(errno, std::system_category());
            return false;
        }
        socket_.assign(protocol, descriptor, error);
        if (error) ::close(descriptor);
        return !error;
    }

    void Try(const tcp::endpoint& to) {
        socket_.async_connect(to, [self = shared_from_this(), to](std::error_code error) {
            if (!self->over_) self->AttemptEnded(to, error);
        });
        if (next_ == untried_.size()) return;
        connectTimer_.expires_after(network_->ConnectTimeout());
        connectTimer_.async_wait([self = shared_from_this(), attempt = next_](std::error_code cancelled) {
            if (cancelled || self->over_ || self->connected_ || self->next_ != attempt) return;
            // The attempt ends with an error, which leads to the next one.
            std::error_code ignored;
            self->socket_.close(ignored);
        });
    }

    void AttemptEnded(const tcp::endpoint& to, const std::error_code& error) {
        connectTimer_.cancel();
        std::error_code unknown;
        // A connection to an unused port of this machine can connect to itself.
        if (!error && socket_.local_endpoint(unknown) != to) {
            Connected();
            return;
        }
        Note(error ? FailureOf(error) : Failure::Unreachable);
        TryNext();
    }

    /// What to report if no address answers: NoSocket only if it was the reason for all of them.
    void Note(Failure failure) {
        const bool first = !noted_ || failure_ == Failure::NoSocket;
        noted_ = true;
        if (first) failure_ = failure;
    }

    void Connected() {
        std::error_code ignored;
        socket_.set_option(tcp::no_delay(true), ignored);
        socket_.non_blocking(true, ignored);
        connected_ = true;
        exchange_->TellConnected();
        AwaitData();
    }

    void Fail(Failure failure) {
        End();
        exchange_->TellFailed(failure);
    }

    void AwaitData() {
        socket_.async_wait(tcp::socket::wait_read, [self = shared_from_this()](std::error_code) {
            if (!self->over_) self->Receive();
        });
    }

    void Receive() {
        auto& scratch = network_->GetLoop().scratch;
        for (;;) {
            const std::size_t room = exchange_->Room();
            if (room == 0) return;
            std::error_code error;
            const std::size_t size = std::min(room, scratch.size());
            const std::size_t count = socket_.read_some(asio::buffer(scratch.data(), size), error);
            if (error == asio::error::would_block || error == asio::error::interrupted) break;
            if (error) {
                Fail(Failure::Lost);
                return;
            }
            exchange_->TellReceived({scratch.data(), count});
            received_ += count;
            if (received_ > bounds_.received) {
                Fail(Failure::Lost);
                return;
            }
            if (count < size) break;
        }
        AwaitData();
    }

    void Send() {
        sending_ = false;
        for (std::size_t turn = 0; turn < kSendTurn;) {
            if (!exchange_->HasMore(outgoing_, sent_)) return;
            std::error_code error;
            const std::size_t count =
                socket_.write_some(asio::buffer(outgoing_.data() + sent_, outgoing_.size() - sent_), error);
            if (error == asio::error::would_block || error == asio::error::interrupted) break;
            if (error) {
                // What the other end sent before can still be read; reading finds the end.
                sending_ = true;
                outgoing_ = {};
                return;
            }
            sent_ += count;
            turn += count;
        }
        sending_ = true;
        socket_.async_wait(tcp::socket::wait_write, [self = shared_from_this()](std::error_code) {
            if (!self->over_) self->Send();
        });
    }

    const std::shared_ptr<Network> network_;
    const std::shared_ptr<Exchange> exchange_;
    const std::uint16_t port_;
    const Bounds bounds_;
    tcp::socket socket_;
    asio::steady_timer connectTimer_;
    asio::steady_timer deadline_;

    std::vector<tcp::endpoint> untried_;
    std::size_t next_ = 0;
    bool noted_ = false;
    Failure failure_ = Failure::NoAddress;
    bool connected_ = false;
    std::uint64_t received_ = 0;  ///< bytes
    bool over_ = false;
    bool sending_ = false;  ///< waits until the system takes more, or never sends again
    std::string outgoing_;
    std::size_t sent_ = 0;  ///< of outgoing_
};

}  // namespace

std::shared_ptr<Connection> Connection::Open(std::shared_ptr<Network> network, std::string host,
                                             std::uint16_t port, std::shared_ptr<Exchange> exchange,
                                             Bounds bounds) {
    auto connection = std::make_shared<TcpConnection>(network, std::move(exchange), port, bounds);
    network->Post([connection, host = std::move(host)] { connection->Begin(host); });
    return connection;
}

}  // namespace sorakaze::network
