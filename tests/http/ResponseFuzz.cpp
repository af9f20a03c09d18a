// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// Whole conversations in any pieces, by a waiting request and by one with events. The first byte chooses the
// pieces, the rest is what the server says. Where the head ends is told as by a search from the start after
// every piece.
#include <algorithm>
#include <cstdlib>
#include <random>

#include "tests/http/HttpTesting.h"
#include "tests/support/TestRuntime.h"

namespace {

using namespace sorakaze;

void Expect(bool truth) {
    if (!truth) std::abort();
}

void Talk(std::string_view bytes, unsigned pieces, bool waits) {
    std::mt19937 draw(pieces);
    const std::size_t most = 1u << pieces % 12;
    test::Client client;
    if (pieces & 16) client.Answer(1, "n", "p");
    client.NoteEvents();
    client.Open("GET", waits);
    std::optional<http::HeadSearch::HeadEnd> end;
    for (std::size_t size = 0; size < bytes.size();) {
        const std::size_t piece = std::min<std::size_t>(bytes.size() - size, 1 + draw() % most);
        client.Arrive(bytes.substr(size, piece));
        size += piece;
        if (!end) end = http::HeadSearch().FindEnd(bytes.substr(0, size), 0);
        Expect(end.has_value() == client.HasHead());
        if (client.Keys() != "/") return;
        Expect(!end || client.Page() == bytes.substr(0, size).substr(end->headSize + 2 * end->lineEndSize));
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
    for (const bool waits : {true, false}) Talk(bytes, data[0], waits);
    return 0;
}
