// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>

#include "app/runtime/String.h"

namespace sorakaze::http {

/// What a URL says of where to connect and what to ask for. Its scheme doesn't matter, a user name isn't
/// understood.
struct UrlParts {
    String server;          ///< with the port, as in the Host header
    String path;            ///< from the slash on, with query and fragment; "/" where there is none
    String address;         ///< the server without the port
    std::int32_t port = 0;  ///< 0 where none is named; may be out of the range of ports
};
UrlParts ParseURL(const String& url);

/// A form's name or value. What is escaped is a list of its own, not all that isn't safe: letters, digits,
/// the other signs and everything beyond ASCII stay. A blank becomes "+".
String EncodeURLString(const String& text);

}  // namespace sorakaze::http
