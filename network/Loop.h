// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// The inside of Network, for what lives on its thread.
#pragma once

#include <array>
#include <asio/executor_work_guard.hpp>
#include <asio/io_context.hpp>
#include <set>

#include "network/Network.h"

namespace sorakaze::network {

/// Ends when the network does.
class Endable {
  public:
    virtual ~Endable() = default;
    virtual void End() = 0;
};

struct Network::Loop {
    asio::io_context context{1};
    asio::executor_work_guard<asio::io_context::executor_type> work{context.get_executor()};
    std::set<Endable*> living;             ///< the network's thread only
    std::array<char, 256 * 1024> scratch;  ///< likewise: where received bytes land
};

}  // namespace sorakaze::network
