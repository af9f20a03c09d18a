// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// Parts of web addresses. Pure functions of any bytes; any thread.
#pragma once

#include <string>

namespace sorakaze::web {

/// Empty for an address that can't be read.
struct AddressParts {
    std::string scheme;  ///< in lower case
    std::string host;    ///< an IPv6 address in square brackets
    std::string port;    ///< the scheme's own where the address names none
};
AddressParts ParseAddress(const std::string& address);

/// The address that `reference` means in a page at `base`. With an empty `base` the reference must be an
/// address itself. Empty if there is none.
std::string Resolve(const std::string& base, const std::string& reference);

}  // namespace sorakaze::web
