// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// The other end for a test: a listener on loopback with plain system calls, and a socket that notes its
// events.
#pragma once

#include <dirent.h>
#include <gtest/gtest.h>
#include <netdb.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>
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
    /// What is there; empty where the other end has closed.
    std::string ReceiveSome() const {
        std::string bytes(1 << 16, '\0');
        bytes.resize(
            static_cast<std::size_t>(std::max<ssize_t>(recv(descriptor_, bytes.data(), bytes.size(), 0), 0)));
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
    /// A small window by default: a peer that doesn't read is noticed soon. 0 for the system's.
    explicit Listener(const char* address = "127.0.0.1", int port = 0, int backlog = 128,
                      int window = 64 * 1024) {
        addrinfo hints{};
        hints.ai_flags = AI_NUMERICHOST;
        hints.ai_socktype = SOCK_STREAM;
        addrinfo* found = nullptr;
        if (getaddrinfo(address, std::to_string(port).c_str(), &hints, &found) != 0) return;
        std::memcpy(&bound_, found->ai_addr, found->ai_addrlen);
        size_ = found->ai_addrlen;
        freeaddrinfo(found);
        descriptor_ = PeerEnd(socket(bound_.ss_family, SOCK_STREAM | SOCK_CLOEXEC, 0));
        if (window > 0) setsockopt(descriptor_.Descriptor(), SOL_SOCKET, SO_RCVBUF, &window, sizeof window);
        const int reuse = 1;
        setsockopt(descriptor_.Descriptor(), SOL_SOCKET, SO_REUSEADDR, &reuse, sizeof reuse);
        auto* place = reinterpret_cast<sockaddr*>(&bound_);
        works_ = bind(descriptor_.Descriptor(), place, size_) == 0 &&
                 listen(descriptor_.Descriptor(), backlog) == 0 &&
                 getsockname(descriptor_.Descriptor(), place, &size_) == 0;
    }
    bool Works() const { return works_; }
    int Port() const {
        // At the same place for both families.
        return ntohs(reinterpret_cast<const sockaddr_in*>(&bound_)->sin_port);
    }
    PeerEnd Accept() const {
        return PeerEnd(accept4(descriptor_.Descriptor(), nullptr, nullptr, SOCK_CLOEXEC));
    }
    void ConnectHere(int descriptor) const {
        EXPECT_EQ(connect(descriptor, reinterpret_cast<const sockaddr*>(&bound_), size_), 0);
    }
    void Close() { descriptor_.Close(); }

  private:
    PeerEnd descriptor_{-1};
    sockaddr_storage bound_{};
    socklen_t size_ = 0;
    bool works_ = false;
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
