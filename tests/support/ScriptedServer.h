// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// A server on loopback whose every word a test writes: one thread, one connection after the other, each
// served by a script. It ends with its scope, whatever the script or the client does.
#pragma once

#include <arpa/inet.h>
#include <fcntl.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <functional>
#include <mutex>
#include <stdexcept>
#include <string>
#include <string_view>
#include <thread>
#include <utility>
#include <vector>

namespace sorakaze::test {

class ScriptedServer {
  public:
    /// One connection, for its script. Every operation comes back early when the server ends.
    class Connection {
      public:
        /// The request: its head, and as much body as its Content-length says. What there was of it if the
        /// client has gone.
        std::string ReadRequest();
        /// False if the client or the server has gone.
        bool Send(std::string_view bytes);
        /// The same in pieces of `size`, each in a packet of its own.
        bool SendInPieces(std::string_view bytes, std::size_t size);
        /// Returns when the client has closed the connection. What it sends until then is dropped.
        void WaitForClose();
        /// Ends the connection by a reset in place of an orderly close.
        void Reset();
        /// Which connection of the server this is, from 0.
        std::size_t Number() const { return number_; }

      private:
        friend class ScriptedServer;
        Connection(ScriptedServer& server, int socket, std::size_t number)
            : server_(server), socket_(socket), number_(number) {}
        bool Wait(short events) const { return server_.Wait(socket_, events); }

        ScriptedServer& server_;
        int socket_;
        std::size_t number_;
    };
    using Script = std::function<void(Connection&)>;

    enum class Address { V4, V6 };

    explicit ScriptedServer(Script script, Address address = Address::V4);
    ~ScriptedServer();
    ScriptedServer(const ScriptedServer&) = delete;
    ScriptedServer& operator=(const ScriptedServer&) = delete;

    /// A script for the plainest server: reads the request, sends these bytes, closes.
    static Script Answer(std::string bytes) {
        return [bytes = std::move(bytes)](Connection& client) {
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
    /// Until the socket is ready; false if the server ends.
    bool Wait(int socket, short events) const;
    void Serve();

    const Script script_;
    int listener_ = -1;
    int ends_[2] = {-1, -1};  ///< a pipe; closing its far end tells the thread to end
    std::uint16_t port_ = 0;
    mutable std::mutex mutex_;  ///< guards requests_
    std::vector<std::string> requests_;
    std::thread thread_;
};

inline ScriptedServer::ScriptedServer(Script script, Address address) : script_(std::move(script)) {
    const bool v4 = address == Address::V4;
    sockaddr_storage place{};
    auto& place4 = reinterpret_cast<sockaddr_in&>(place);
    auto& place6 = reinterpret_cast<sockaddr_in6&>(place);
    place.ss_family = v4 ? AF_INET : AF_INET6;
    if (v4)
        place4.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    else
        place6.sin6_addr = in6addr_loopback;
    socklen_t size = v4 ? sizeof place4 : sizeof place6;
    auto* name = reinterpret_cast<sockaddr*>(&place);
    listener_ = socket(place.ss_family, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (listener_ < 0 || bind(listener_, name, size) != 0 || listen(listener_, 64) != 0 ||
        getsockname(listener_, name, &size) != 0 || pipe2(ends_, O_CLOEXEC) != 0)
        throw std::runtime_error("no server on loopback");
    port_ = ntohs(v4 ? place4.sin_port : place6.sin6_port);
    thread_ = std::thread([this] { Serve(); });
}

inline ScriptedServer::~ScriptedServer() {
    close(ends_[1]);
    thread_.join();
    close(ends_[0]);
    close(listener_);
}

inline bool ScriptedServer::Wait(int socket, short events) const {
    pollfd waits[] = {{ends_[0], POLLIN, 0}, {socket, events, 0}};
    while (poll(waits, 2, -1) < 0) {
    }
    return waits[0].revents == 0;
}

inline void ScriptedServer::Serve() {
    for (std::size_t number = 0; Wait(listener_, POLLIN); ++number) {
        const int client = accept4(listener_, nullptr, nullptr, SOCK_CLOEXEC);
        if (client < 0) continue;
        const int now = 1;
        setsockopt(client, IPPROTO_TCP, TCP_NODELAY, &now, sizeof now);
        Connection connection(*this, client, number);
        script_(connection);
        close(client);
    }
}

inline std::string ScriptedServer::Connection::ReadRequest() {
    std::string request;
    std::size_t whole = std::string::npos;
    char bytes[4096];
    while (request.size() < whole && Wait(POLLIN)) {
        const ssize_t got = recv(socket_, bytes, sizeof bytes, 0);
        if (got <= 0) break;
        request.append(bytes, static_cast<std::size_t>(got));
        const std::size_t end = request.find("\r\n\r\n");
        if (whole != std::string::npos || end == std::string::npos) continue;
        constexpr std::string_view kLength = "\r\nContent-length: ";
        const std::size_t length = request.find(kLength);
        whole = end + 4;
        if (length < end) whole += std::strtoul(&request[length + kLength.size()], nullptr, 10);
    }
    const std::lock_guard lock(server_.mutex_);
    server_.requests_.push_back(request);
    return request;
}

inline bool ScriptedServer::Connection::Send(std::string_view bytes) {
    while (!bytes.empty()) {
        if (!Wait(POLLOUT)) return false;
        const ssize_t sent = send(socket_, bytes.data(), bytes.size(), MSG_NOSIGNAL | MSG_DONTWAIT);
        if (sent < 0 && errno != EAGAIN) return false;
        if (sent > 0) bytes.remove_prefix(static_cast<std::size_t>(sent));
    }
    return true;
}

inline bool ScriptedServer::Connection::SendInPieces(std::string_view bytes, std::size_t size) {
    for (; !bytes.empty(); bytes.remove_prefix(std::min(size, bytes.size()))) {
        if (!Send(bytes.substr(0, size))) return false;
    }
    return true;
}

inline void ScriptedServer::Connection::WaitForClose() {
    char dropped[4096];
    while (Wait(POLLIN) && recv(socket_, dropped, sizeof dropped, 0) > 0) {
    }
}

inline void ScriptedServer::Connection::Reset() {
    const linger atOnce{1, 0};
    setsockopt(socket_, SOL_SOCKET, SO_LINGER, &atOnce, sizeof atOnce);
}

}  // namespace sorakaze::test
