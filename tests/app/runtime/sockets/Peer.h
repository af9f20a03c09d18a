// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// The other end for a test: a listener on loopback with plain system calls, and a socket that notes its
// events.
#pragma once

#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <functional>
#include <string>
#include <utility>

#include "app/runtime/Application.h"
#include "app/runtime/TCPSocket.h"
#include "tests/support/TestRuntime.h"

namespace sorakaze::test {

/// Bytes of every value, no two pieces of them alike.
inline std::string Noise(std::size_t size) {
    std::string noise(size, '\0');
    for (std::size_t i = 0; i < size; ++i) noise[i] = static_cast<char>(i * 7 + i / 251);
    return noise;
}

inline sockaddr_in Place(const char* address, int port) {
    return {AF_INET, htons(static_cast<in_port_t>(port)), {inet_addr(address)}, {}};
}

/// One end of a connection; its calls block.
struct PeerEnd {
    explicit PeerEnd(int accepted) : descriptor(accepted) {}
    /// -1 where nobody listens. From an address of its own: a socket that connects to a free port of its own
    /// address can meet itself.
    explicit PeerEnd(const sockaddr_in& to) : descriptor(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
        const sockaddr_in from = Place("127.0.0.9", 0);
        bind(descriptor, reinterpret_cast<const sockaddr*>(&from), sizeof from);
        if (connect(descriptor, reinterpret_cast<const sockaddr*>(&to), sizeof to) != 0) Close();
    }
    ~PeerEnd() { Close(); }
    PeerEnd(PeerEnd&& other) noexcept : descriptor(std::exchange(other.descriptor, -1)) {}

    void Send(const std::string& bytes) const { send(descriptor, bytes.data(), bytes.size(), MSG_NOSIGNAL); }
    /// `n` bytes, fewer where the other end closes; without MSG_WAITALL what is there.
    std::string Receive(std::size_t n, int flags = MSG_WAITALL) const {
        std::string bytes(n, '\0');
        bytes.resize(static_cast<std::size_t>(
            std::max<ssize_t>(recv(descriptor, bytes.data(), bytes.size(), flags), 0)));
        return bytes;
    }
    void Close() {
        if (descriptor >= 0) close(std::exchange(descriptor, -1));
    }
    /// Tears the connection.
    void Reset() {
        const linger now{1, 0};
        setsockopt(descriptor, SOL_SOCKET, SO_LINGER, &now, sizeof now);
        Close();
    }

    int descriptor;
};

class Listener {
  public:
    /// A small window by default: a peer that doesn't read is noticed soon. 0 for the system's.
    explicit Listener(const char* address = "127.0.0.1", int port = 0, int backlog = 128,
                      int window = 64 * 1024)
        : bound_(Place(address, port)), end_(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
        if (window > 0) setsockopt(end_.descriptor, SOL_SOCKET, SO_RCVBUF, &window, sizeof window);
        auto* const place = reinterpret_cast<sockaddr*>(&bound_);
        socklen_t size = sizeof bound_;
        EXPECT_EQ(bind(end_.descriptor, place, size) + listen(end_.descriptor, backlog), 0);
        getsockname(end_.descriptor, place, &size);
    }
    int Port() const { return ntohs(bound_.sin_port); }
    PeerEnd Accept() const { return PeerEnd(accept4(end_.descriptor, nullptr, nullptr, SOCK_CLOEXEC)); }
    void Close() { end_.Close(); }

  private:
    sockaddr_in bound_;
    PeerEnd end_;
};

/// Notes its events in `log`: C, D, S, and E with the code.
class NotingSocket : public TCPSocket {
  public:
    NotingSocket() = default;
    explicit NotingSocket(const Listener& to, const char* address = "127.0.0.1") {
        ConnectTo(to.Port(), address);
    }

    void ConnectTo(int port, const std::string& address = "127.0.0.1") {
        Address = address;
        Port = port;
        Connect();
    }
    /// Polls and waits until `condition` holds, as the logic does.
    void Until(FunctionRef<bool()> condition) {
        const Scheduler::FollowWallClock followWall(Runtime::Current().Threads());
        const std::int32_t deadline = Ticks() + 30 * kTicksPerSecond;
        for (Poll(); !condition(); Poll()) {
            App.DoEventsWhile([&] { return !HasEvents() && Ticks() <= deadline; });
            if (Ticks() > deadline) FAIL() << "waited in vain behind " << log;
        }
    }
    void UntilLogEnds(const std::string& end) {
        Until([&] { return log.ends_with(end); });
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

}  // namespace sorakaze::test
