// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// Whole conversations in any pieces, by a waiting request and by one with events. The first byte chooses the
// pieces, the rest is what the server says. Where the head ends is told as by a search from the start after
// every piece.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <optional>
#include <random>
#include <string>
#include <string_view>
#include <utility>

#include "http/LineEnd.h"
#include "tests/http/HttpTesting.h"
#include "tests/support/TestRuntime.h"

namespace {

using namespace sorakaze;

void Expect(bool truth) {
    if (!truth) std::abort();
}

/// Size of the head and of what follows it, as the rule says it.
std::optional<std::pair<std::size_t, std::size_t>> HeadEnd(std::string_view text) {
    const std::string shown(http::DetermineEOLCharacter(text));
    if (const auto at = text.find(shown + shown); at != std::string_view::npos)
        return {{at, 2 * shown.size()}};
    std::optional<std::pair<std::size_t, std::size_t>> last;
    for (const std::string_view end : {"\n\n", "\r\n\r\n", "\r\r"}) {
        if (const auto at = text.find(end); at != std::string_view::npos) last = {at, end.size()};
    }
    return last;
}

void Talk(std::string_view bytes, unsigned pieces, bool waits) {
    std::mt19937 draw(pieces);
    const std::size_t most = 1u << pieces % 12;
    test::Client client;
    if (pieces & 16) {
        client.AuthenticationRequired = [](const String&, const InternetHeadersRef&, String& name, String&) {
            name = "n";
            return true;
        };
        client.ProxyAuthenticationRequired = client.AuthenticationRequired;
    }
    client.NoteEvents();
    client.Open("GET", waits);
    std::optional<std::pair<std::size_t, std::size_t>> end;
    std::size_t size = 0;
    while (size < bytes.size()) {
        const std::size_t piece = std::min<std::size_t>(bytes.size() - size, 1 + draw() % most);
        client.Arrive(bytes.substr(size, piece));
        size += piece;
        if (!end) end = HeadEnd(bytes.substr(0, size));
        Expect(end.has_value() == client.HasHead());
        if (client.Keys() != "/") return;
        const std::string_view body = end ? bytes.substr(0, size).substr(end->first + end->second) : "";
        Expect(client.Page() == body);
        Expect(client.PageLength() == Len(client.Page()));
    }
    client.End();
    Expect(client.IsComplete() == (end || bytes.empty()));
    client.Outcome();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static auto* const runtime = new test::TestRuntime();
    if (!runtime || size == 0) return 0;
    const std::string_view bytes(reinterpret_cast<const char*>(data) + 1, size - 1);
    Talk(bytes, data[0], true);
    Talk(bytes, data[0], false);
    return 0;
}
