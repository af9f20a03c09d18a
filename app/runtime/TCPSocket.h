// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// A TCP connection as the logic sees it. The network works without the baton; its results wait until Poll
// takes them and fires the events on the calling thread. Between two Polls nothing changes: IsConnected,
// LastErrorCode and the reading operations give the state of the last Poll.
//
// Every operation needs the baton. All are allowed within an event, even Close, Connect and the destruction
// of the socket.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string_view>

#include "app/runtime/String.h"

namespace sorakaze {

/// Codes of LastErrorCode. Other numbers don't occur.
struct SocketError {
    static constexpr std::int32_t kNone = 0;
    static constexpr std::int32_t kNoDriver = 100;      ///< the system gives no socket
    static constexpr std::int32_t kLost = 102;          ///< closed by the other end, or cut
    static constexpr std::int32_t kNameNotFound = 103;  ///< the host's name, or no name at all
    static constexpr std::int32_t kAddressInUse = 105;  ///< no port is left on this side
    static constexpr std::int32_t kInvalidState = 106;  ///< Write without a connection
    static constexpr std::int32_t kInvalidPort = 107;   ///< a port outside 1 to 65535
    static constexpr std::int32_t kRefused = 61;        ///< nobody listens, or the host can't be reached
};

class SocketCore {
  public:
    SocketCore();
    virtual ~SocketCore();
    SocketCore(const SocketCore&) = delete;
    SocketCore& operator=(const SocketCore&) = delete;

    /// The remote end for the next Connect: a name or a numeric address (IPv4, or IPv6 with or without square
    /// brackets), and the port.
    String Address;
    std::int32_t Port = 0;

    /// Limits of a connection. A connection that exceeds one is cut: Error
    /// comes with kLost, or with kRefused before Connected.
    struct Bounds {
        std::chrono::milliseconds time;  ///< in all, from Connect on, by the wall's clock
        std::uint64_t received;          ///< bytes in all
        std::size_t unread;              ///< bytes after a DataAvailable; those are dropped, too
    };
    /// For the next connections. There are none at first.
    void SetBounds(const Bounds& bounds);

    /// Drops the present connection with all that was received, starts connecting and returns; Connected or
    /// Error follows. Every address of a name is tried in turn: one that stays silent for three seconds while
    /// there are others to try, and the last one for as long as the system takes, some two minutes.
    void Connect();
    /// Drops the connection or the attempt, and every event of it that hasn't fired. What Poll has taken up
    /// stays readable.
    void Close();
    /// Drops the received data and what hasn't been sent.
    void Purge();
    /// Fires the events that are due, on the calling thread, each kind once at most: Connected,
    /// DataAvailable, SendComplete, Error, in this order. Error comes after the last data, also when the
    /// peer closes. A Poll from within an event fires what is due after it.
    ///
    /// What is taken up and left unread grows with each Poll, up to the bound if there is one: 1 MB may wait
    /// to be taken up, then the network waits for the next Poll, and the sender with it.
    void Poll();
    /// Queues bytes; SendComplete follows when all that was queued has been handed to the system. Where there
    /// is no connection (yet, or any more), Error follows with kInvalidState, and the bytes are dropped.
    void Write(const String& data);
    /// The received data, left where it is. Costs a copy.
    String Lookahead() const;
    /// The same without a copy. Valid until the next operation that isn't const.
    std::string_view LookaheadView() const;
    /// Removes and gives `n` bytes, all that are there if fewer.
    String Read(std::int32_t n);
    String ReadAll();
    /// True from Connected on until Error or Close; false within Error.
    bool IsConnected() const;
    /// The code that the last Error came with; kNone again from Connect on.
    std::int32_t LastErrorCode() const;

    /// True when a Poll would fire an event. Any thread. Every change to true is told by
    /// Scheduler::Notify, so that a waiting condition may ask it:
    ///
    ///     const Scheduler::FollowWallClock followWall(Runtime::Current().Threads());
    ///     while (...) {
    ///         socket.Poll();
    ///         App.DoEventsWhile([&] { return !socket.HasEvents() && Ticks() <= deadline; });
    ///     }
    bool HasEvents() const;

  protected:
    virtual void Event_Connected() {}
    virtual void Event_DataAvailable() {}
    virtual void Event_Error() {}
    virtual void Event_SendComplete() {}

    /// Another number from every Connect and Close on: code that continues after an event can see
    /// whether its handler has changed the connection.
    std::uint64_t ConnectionNumber() const;
    /// How many bytes, of all connections, have been read or dropped: where LookaheadView() begins.
    std::uint64_t ReadPosition() const;
    /// Adds to the received data, as if it had been taken up. For sockets without a network.
    void Receive(std::string_view bytes);

  private:
    struct Core;
    const std::shared_ptr<Core> core_;
};

class TCPSocket : public SocketCore {};

}  // namespace sorakaze
