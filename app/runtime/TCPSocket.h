// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// A TCP connection as the logic sees it. The network's work is done without the baton; what came of it waits
// until Poll takes it up and fires the events on the thread that called Poll.
#pragma once

#include <cstdint>
#include <memory>

#include "app/runtime/String.h"

namespace sorakaze {

/// Codes of LastErrorCode. Other numbers don't occur.
struct SocketError {
    static constexpr std::int32_t kNone = 0;
    static constexpr std::int32_t kNoDriver = 100;      ///< the system gives no socket
    static constexpr std::int32_t kLost = 102;          ///< closed by the other end, or torn
    static constexpr std::int32_t kNameNotFound = 103;  ///< the host's name, or no name at all
    static constexpr std::int32_t kAddressInUse = 105;
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

    /// Drops the present connection, starts connecting and returns; Connected or Error follows. Every address
    /// of a name is tried.
    void Connect();
    /// Drops the connection, and every event of it that hasn't fired. What was received stays readable.
    void Close();
    /// Drops the received data and what hasn't been sent.
    void Purge();
    /// Fires the events that are due, on the calling thread: Connected, DataAvailable, SendComplete, Error.
    /// Error comes behind the last data, also when the peer closes. A Poll from within an event fires what is
    /// due behind it.
    void Poll();
    /// Queues bytes. Where there is no connection, Error follows with kInvalidState.
    void Write(const String& data);
    /// The received data, left where it is. Costs a copy.
    String Lookahead() const;
    /// Removes and gives `n` bytes, all that are there if fewer.
    String Read(std::int32_t n);
    String ReadAll();
    bool IsConnected() const;
    std::int32_t LastErrorCode() const;

    /// True when a Poll would fire an event. Any thread. Every change to true is told by
    /// Scheduler::Notify, so that a waiting condition may ask it.
    bool HasEvents() const;

  protected:
    virtual void Event_Connected() {}
    virtual void Event_DataAvailable() {}
    virtual void Event_Error() {}
    virtual void Event_SendComplete() {}
};

class TCPSocket : public SocketCore {};

}  // namespace sorakaze
