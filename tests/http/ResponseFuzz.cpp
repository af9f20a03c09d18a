// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// A response in any pieces: its head ends where a search from the start after every piece finds its end, and
// the length of its page is that of all its text. The first byte chooses the pieces.
#include <algorithm>
#include <cstdlib>
#include <random>

#include "http/HeadParser.h"
#include "http/HeadSearch.h"
#include "http/PageBuffer.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace sorakaze;
    if (size == 0) return 0;
    const std::string_view bytes(reinterpret_cast<const char*>(data) + 1, size - 1);
    std::mt19937 draw(data[0]);
    const std::size_t most = 1u << data[0] % 12;
    http::HeadSearch search;
    http::PageBuffer page;
    for (std::size_t end = 0; end < bytes.size();) {
        const std::size_t piece = std::min<std::size_t>(bytes.size() - end, 1 + draw() % most);
        page.Append(String(bytes.substr(end, piece)));
        end += piece;
        const std::string_view arrived = bytes.substr(0, end);
        const auto found = search.FindEnd(arrived, 0), expected = http::HeadSearch().FindEnd(arrived, 0);
        if (found.has_value() != expected.has_value()) std::abort();
        if (found && (found->headSize != expected->headSize || found->lineEndSize != expected->lineEndSize))
            std::abort();
        if (found && found->headSize + 2 * found->lineEndSize > end) std::abort();
        if (page.Length() != Len(page.Text())) std::abort();
    }
    http::ParseStatus(bytes);
    for (const http::HeaderField& field : http::ParseHeaderFields(String(bytes)))
        if (field.name.Bytes().find(':') != std::string::npos) std::abort();
    return 0;
}
