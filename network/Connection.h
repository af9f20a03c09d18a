// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// One TCP connection, from resolving the name to its end. Its results go to its Exchange.
#pragma once

#include <chrono>
#include <cstdint>
#include <limits>
#include <memory>
#include <string>

#include "network/Exchange.h"
#include "network/Network.h"

namespace sorakaze::network {

/// A connection that exceeds one is cut.
struct Bounds {
    std::chrono::milliseconds time = std::chrono::milliseconds::max();   ///< from resolving the name on
    std::uint64_t received = std::numeric_limits<std::uint64_t>::max();  ///< bytes
};

class Connection {
  public:
    virtual ~Connection() = default;

    /// Begins to connect and returns. `host` is a name or a numeric address. All addresses of a name are
    /// tried in turn.
    static std::shared_ptr<Connection> Open(std::shared_ptr<Network> network, std::string host,
                                            std::uint16_t port, std::shared_ptr<Exchange> exchange,
                                            Bounds bounds);

    // Any thread:

    /// The exchange has something to send, or room again.
    virtual void Serve() = 0;
    /// Ends the connection, or the attempt, without an event.
    virtual void Drop() = 0;
};

}  // namespace sorakaze::network
