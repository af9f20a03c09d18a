// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// Any bytes as a URL, and as a value of a form.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

#include "http/Url.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace sorakaze;
    const std::string url(reinterpret_cast<const char*>(data), size);
    const http::UrlParts parts = http::ParseURL(url);
    const std::string& server = parts.server.Bytes();
    const std::string& path = parts.path.Bytes();
    const bool ends = url.ends_with(server + path) || (path == "/" && url.ends_with(server));
    const bool begins = server.starts_with(parts.address.Bytes());
    if (!ends || !begins || path[0] != '/' || server.find('/') != std::string::npos) std::abort();
    if (http::EncodeURLString(url).Bytes().find_first_of("&= \r\n") != std::string::npos) std::abort();
    return 0;
}
