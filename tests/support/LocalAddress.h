// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <sys/socket.h>
#include <sys/un.h>

#include <cstddef>
#include <string>

namespace sorakaze::test {

/// The address of a local socket; a name that begins with @ is an abstract one.
struct LocalAddress {
    explicit LocalAddress(const std::string& name)
        : size(static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + name.size())) {
        name.copy(address.sun_path, sizeof address.sun_path - 1);
        if (name.starts_with('@')) address.sun_path[0] = 0;
    }
    const sockaddr* Get() const { return reinterpret_cast<const sockaddr*>(&address); }

    sockaddr_un address{AF_UNIX, {}};
    socklen_t size;
};

}  // namespace sorakaze::test
