// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// A server on loopback whose every word a test writes: one thread, one connection after the other, each
// served by a script. It ends with its scope, whatever the script or the client does.
#pragma once

#include <arpa/inet.h>
#include <netdb.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstdlib>
#include <functional>
#include <mutex>
#include <stdexcept>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

namespace sorakaze::test {

class ScriptedServer {
  public:
    /// One connection, for its script. Every operation comes back early when the server ends.
    class Connection {
      public:
        Connection(ScriptedServer& server, int socket, std::size_t number)
            : server_(server), socket_(socket), number_(number) {}

        /// The request: its head, and as much body as its Content-length says, however that is spelt. What
        /// there was of it if the client has gone.
        std::string ReadRequest() {
            std::string request;
            const auto isWhole = [&request] {
                constexpr std::string_view kLength = "ength: ";
                const std::size_t end = request.find("\r\n\r\n"), length = request.find(kLength);
                const char* const body = length < end ? &request[length + kLength.size()] : "0";
                return end < request.size() && request.size() - end - 4 >= std::strtoul(body, nullptr, 10);
            };
            while (!isWhole() && Receive(request)) {
            }
            const std::lock_guard lock(server_.mutex_);
            server_.requests_.push_back(request);
            return request;
        }
        /// False if the client or the server has gone.
        bool Send(std::string_view bytes) {
            while (!bytes.empty()) {
                if (!server_.Wait(socket_, POLLOUT)) return false;
                const ssize_t sent = send(socket_, bytes.data(), bytes.size(), MSG_NOSIGNAL | MSG_DONTWAIT);
                if (sent < 0 && errno != EAGAIN) return false;
                if (sent > 0) bytes.remove_prefix(static_cast<std::size_t>(sent));
            }
            return true;
        }
        /// The same in pieces of `size`, each in a packet of its own.
        bool SendInPieces(std::string_view bytes, std::size_t size) {
            for (; !bytes.empty(); bytes.remove_prefix(std::min(size, bytes.size())))
                if (!Send(bytes.substr(0, size))) return false;
            return true;
        }
        /// Returns when the client has closed the connection. What it sends until then is dropped.
        void WaitForClose() {
            for (std::string dropped; Receive(dropped);) dropped.clear();
        }
        /// Ends the connection by a reset in place of an orderly close.
        void Reset() {
            const linger atOnce{1, 0};
            setsockopt(socket_, SOL_SOCKET, SO_LINGER, &atOnce, sizeof atOnce);
        }
        /// Which connection of the server this is, from 0.
        std::size_t Number() const { return number_; }

      private:
        /// Adds what has come; false if nothing will.
        bool Receive(std::string& text) {
            char bytes[4096];
            const ssize_t got = server_.Wait(socket_, POLLIN) ? recv(socket_, bytes, sizeof bytes, 0) : 0;
            if (got > 0) text.append(bytes, static_cast<std::size_t>(got));
            return got > 0;
        }

        ScriptedServer& server_;
        const int socket_;
        const std::size_t number_;
    };
    using Script = std::function<void(Connection&)>;

    enum class Address { V4, V6 };

    explicit ScriptedServer(Script script, Address address = Address::V4) : script_(std::move(script)) {
        addrinfo* place = nullptr;
        if (getaddrinfo(address == Address::V4 ? "127.0.0.1" : "::1", nullptr, nullptr, &place) != 0)
            throw std::runtime_error("no loopback");
        listener_ = socket(place->ai_family, SOCK_STREAM | SOCK_CLOEXEC, 0);
        const bool listens = bind(listener_, place->ai_addr, place->ai_addrlen) == 0 &&
                             listen(listener_, 64) == 0 &&
                             getsockname(listener_, place->ai_addr, &place->ai_addrlen) == 0;
        // At the same place in an address of either kind.
        port_ = ntohs(reinterpret_cast<const sockaddr_in*>(place->ai_addr)->sin_port);
        freeaddrinfo(place);
        if (!listens) throw std::runtime_error("no server on loopback");
        thread_ = std::thread([this] { Serve(); });
    }
    ~ScriptedServer() {
        shutdown(listener_, SHUT_RDWR);
        thread_.join();
        close(listener_);
    }
    ScriptedServer(const ScriptedServer&) = delete;
    ScriptedServer& operator=(const ScriptedServer&) = delete;

    /// A script for the plainest server: reads the request, sends these bytes, closes.
    static Script Answer(const std::string& bytes) {
        return [bytes](Connection& client) {
            client.ReadRequest();
            client.Send(bytes);
        };
    }

    std::uint16_t Port() const { return port_; }
    std::string Url(const std::string& path = "/") const {
        return "http://127.0.0.1:" + std::to_string(port_) + path;
    }
    /// What ReadRequest has read so far, one entry a call.
    std::vector<std::string> Requests() const {
        const std::lock_guard lock(mutex_);
        return requests_;
    }

  private:
    /// Until the socket is ready; false if the server ends, which hangs its listener up.
    bool Wait(int socket, short events) const {
        pollfd waits[] = {{listener_, 0, 0}, {socket, events, 0}};
        while (poll(waits, 2, -1) < 0) {
        }
        return waits[0].revents == 0;
    }
    void Serve() {
        for (std::size_t number = 0; Wait(listener_, POLLIN); ++number) {
            const int client = accept4(listener_, nullptr, nullptr, SOCK_CLOEXEC);
            const int now = 1;
            setsockopt(client, IPPROTO_TCP, TCP_NODELAY, &now, sizeof now);
            Connection connection(*this, client, number);
            if (client >= 0) script_(connection);
            close(client);
        }
    }

    const Script script_;
    int listener_ = -1;
    std::uint16_t port_ = 0;
    mutable std::mutex mutex_;  ///< guards requests_
    std::vector<std::string> requests_;
    std::thread thread_;
};

}  // namespace sorakaze::test
