// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// Connections to a server under test.
#pragma once

#include <cstdlib>
#include <string>

#include "tests/app/runtime/sockets/Peer.h"

namespace sorakaze::test {

/// The user's proxy must not be asked for what is on this machine.
inline const int kNoProxy = ::setenv("no_proxy", "*", 1);

inline PeerEnd Connected(int port, const char* address = "127.0.0.1") {
    return PeerEnd(Place(address, port));
}

/// Sends a request and returns all that comes until the server closes.
inline std::string Ask(int port, const std::string& request) {
    const PeerEnd client = Connected(port);
    client.Send(request);
    return client.Receive(1 << 18);
}

}  // namespace sorakaze::test
