// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// The other end for a test: a listener on loopback with plain system calls, and a socket that notes its
// events.
#pragma once

#include <arpa/inet.h>
#include <dirent.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <functional>
#include <string>
#include <utility>

#include "app/runtime/Application.h"
#include "app/runtime/TCPSocket.h"
#include "tests/support/TestRuntime.h"

namespace sorakaze::test {

/// One accepted connection; its calls block.
class PeerEnd {
  public:
    explicit PeerEnd(int descriptor) : descriptor_(descriptor) {}
    ~PeerEnd() { Close(); }
    PeerEnd(PeerEnd&& other) noexcept : descriptor_(std::exchange(other.descriptor_, -1)) {}
    PeerEnd& operator=(PeerEnd&& other) noexcept {
        std::swap(descriptor_, other.descriptor_);
        return *this;
    }

    void Send(const std::string& bytes) const {
        for (std::size_t at = 0; at < bytes.size();) {
            const ssize_t sent = send(descriptor_, bytes.data() + at, bytes.size() - at, MSG_NOSIGNAL);
            if (sent <= 0) return;
            at += static_cast<std::size_t>(sent);
        }
    }
    /// `n` bytes, fewer where the other end closes.
    std::string Receive(std::size_t n) const {
        std::string bytes(n, '\0');
        std::size_t at = 0;
        while (at < n) {
            const ssize_t received = recv(descriptor_, bytes.data() + at, n - at, 0);
            if (received <= 0) break;
            at += static_cast<std::size_t>(received);
        }
        bytes.resize(at);
        return bytes;
    }
    void Close() {
        if (descriptor_ >= 0) close(std::exchange(descriptor_, -1));
    }
    /// Tears the connection.
    void Reset() {
        const linger now{1, 0};
        setsockopt(descriptor_, SOL_SOCKET, SO_LINGER, &now, sizeof now);
        Close();
    }
    int Descriptor() const { return descriptor_; }

  private:
    int descriptor_;
};

class Listener {
  public:
    explicit Listener(int family = AF_INET) : descriptor_(socket(family, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
        sockaddr_in6 six{};
        six.sin6_family = AF_INET6;
        six.sin6_addr = in6addr_loopback;
        sockaddr_in four{};
        four.sin_family = AF_INET;
        four.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        const bool isSix = family == AF_INET6;
        auto* address = isSix ? reinterpret_cast<sockaddr*>(&six) : reinterpret_cast<sockaddr*>(&four);
        socklen_t size = isSix ? sizeof six : sizeof four;
        // A small window: a peer that doesn't read is noticed soon.
        const int window = 64 * 1024;
        setsockopt(descriptor_.Descriptor(), SOL_SOCKET, SO_RCVBUF, &window, sizeof window);
        works_ = bind(descriptor_.Descriptor(), address, size) == 0 &&
                 listen(descriptor_.Descriptor(), 128) == 0 &&
                 getsockname(descriptor_.Descriptor(), address, &size) == 0;
        port_ = ntohs(isSix ? six.sin6_port : four.sin_port);
    }
    bool Works() const { return works_; }
    int Port() const { return port_; }
    PeerEnd Accept() const {
        return PeerEnd(accept4(descriptor_.Descriptor(), nullptr, nullptr, SOCK_CLOEXEC));
    }
    void Close() { descriptor_.Close(); }

  private:
    PeerEnd descriptor_;
    bool works_ = false;
    int port_ = 0;
};

/// Notes its events in `log`: C, D, S, and E with the code.
class NotingSocket : public TCPSocket {
  public:
    NotingSocket() = default;
    explicit NotingSocket(const Listener& to, const char* address = "127.0.0.1") {
        ConnectTo(to.Port(), address);
    }

    void ConnectTo(int port, const char* address = "127.0.0.1") {
        Address = address;
        Port = port;
        Connect();
    }
    /// Polls and waits until `condition` holds, as the logic does.
    void Until(FunctionRef<bool()> condition) {
        const Scheduler::KeepToWall toTheWall(Runtime::Current().Threads());
        const std::int32_t deadline = Ticks() + 30 * kTicksPerSecond;
        for (;;) {
            Poll();
            if (condition()) return;
            App.DoEventsWhile([&] { return !HasEvents() && Ticks() <= deadline; });
            if (Ticks() > deadline) {
                ADD_FAILURE() << "waited in vain behind " << log;
                return;
            }
        }
    }
    void UntilLogEnds(const std::string& end) {
        Until([&] { return log.size() >= end.size() && log.ends_with(end); });
    }

    std::string log;
    std::function<void(char)> onEvent;

  protected:
    void Event_Connected() override { Note("C"); }
    void Event_DataAvailable() override { Note("D"); }
    void Event_SendComplete() override { Note("S"); }
    void Event_Error() override { Note("E" + std::to_string(LastErrorCode())); }

  private:
    void Note(const std::string& event) {
        log += event;
        if (onEvent) onEvent(event[0]);
    }
};

inline std::size_t OpenDescriptors() {
    std::size_t count = 0;
    DIR* folder = opendir("/proc/self/fd");
    while (readdir(folder)) ++count;
    closedir(folder);
    return count;
}

}  // namespace sorakaze::test
