// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "http/Url.h"

#include <string_view>

namespace sorakaze::http {

/// Kept behaviour 64.
UrlParts ParseURL(const String& url) {
    constexpr std::string_view kSchemeEnd = "://";
    std::string_view rest = url.Bytes();
    const std::size_t scheme = rest.find(kSchemeEnd);
    if (scheme != std::string_view::npos) rest.remove_prefix(scheme + kSchemeEnd.size());

    const std::string_view server = rest.substr(0, rest.find('/'));
    const std::string_view path = rest.substr(server.size());
    UrlParts parts;
    parts.server = String(server);
    parts.path = path.empty() ? String("/") : String(path);
    parts.address = NthField(parts.server, ":", 1);
    parts.port = ToInt32(Val(NthField(parts.server, ":", 2)));
    return parts;
}

/// Kept behaviour 71.
String EncodeURLString(const String& text) {
    constexpr std::string_view kEscaped = "%&=,/\\][{}`~-_()*^$#!+;<>\r\n";
    std::string encoded;
    encoded.reserve(text.Bytes().size());
    for (const char character : text.Bytes()) {
        if (character == ' ')
            encoded += '+';
        else if (kEscaped.find(character) != std::string_view::npos)
            encoded += ("%" + Right("00" + Hex(character), 2)).Bytes();
        else
            encoded += character;
    }
    return encoded;
}

}  // namespace sorakaze::http
