// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// Any bytes as a head: every entry is found by its name, and goes with it.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

#include "http/InternetHeaders.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace sorakaze;
    InternetHeaders headers;
    const std::string text(reinterpret_cast<const char*>(data), size);
    headers._ParseHeaders(text);
    headers._FormatEmailHeaders();
    if (headers.Source().Bytes() != text) std::abort();
    while (headers.Count() > 0) {
        const String name = headers.Name(0);
        const std::int32_t instances = headers.NameCount(name);
        const std::int32_t others = headers.Count() - instances;
        if (headers.Value(name, 0).Bytes() != headers.Value(0).Bytes()) std::abort();
        if (instances > 1) headers.Delete(name, size % static_cast<std::size_t>(instances));
        headers.AppendHeader(name, "again");
        if (headers.NameCount(name) != (instances > 1 ? instances : 2)) std::abort();
        headers.Delete(name);
        if (headers.Count() != others) std::abort();
    }
    return 0;
}
