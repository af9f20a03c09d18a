// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// Pure functions; any thread.
#pragma once

#include <cstdint>

#include "app/runtime/String.h"

namespace sorakaze::http {

/// Where to connect, and what to ask for. A URL's scheme is ignored; a user name is not supported.
struct UrlParts {
    String server;          ///< with the port, as in the Host header
    String path;            ///< from the slash on, with query and fragment; "/" if there is none
    String address;         ///< the server without the port
    std::int32_t port = 0;  ///< 0 if none is named; may be no valid port
};
UrlParts ParseURL(const String& url);

/// Encodes a form's name or value. Only the characters of a fixed list are escaped; all others, also outside
/// ASCII, are left as they are. A blank becomes "+".
String EncodeURLString(const String& text);

}  // namespace sorakaze::http
