// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// What a response's head costs, and a body in pieces, and a wait with nothing arriving.
#include <benchmark/benchmark.h>
#include <time.h>

#include <string>
#include <string_view>

#include "app/runtime/Thread.h"
#include "tests/http/HttpTesting.h"
#include "tests/support/ScriptedServer.h"
#include "tests/support/TestRuntime.h"

namespace {

using namespace sorakaze;

constexpr const char* kHead =
    "HTTP/1.1 200 OK\r\n"
    "Date: Mon, 23 Nov 2026 00:40:50 GMT\r\n"
    "Server: mw-web.eqiad.main-6f7b9c8d5f-x2k4p\r\n"
    "X-Content-Type-Options: nosniff\r\n"
    "Content-Language: en\r\n"
    "Accept-CH: \r\n"
    "Last-Modified: Sun, 22 Nov 2026 21:14:07 GMT\r\n"
    "Content-Type: text/html; charset=UTF-8\r\n"
    "Age: 10243\r\n"
    "X-Cache: cp3066 hit, cp3066 hit/14\r\n"
    "X-Cache-Status: hit-front\r\n"
    "Server-Timing: cache;desc=\"hit-front\", host;desc=\"cp3066\"\r\n"
    "Strict-Transport-Security: max-age=106384710; includeSubDomains; preload\r\n"
    "Report-To: { \"group\": \"errors\", \"max_age\": 604800, \"endpoints\": [{ \"url\": "
    "\"https://r.example/v1\" }] }\r\n"
    "NEL: { \"report_to\": \"errors\", \"max_age\": 604800, \"failure_fraction\": 0.05, "
    "\"success_fraction\": 0.0}\r\n"
    "Set-Cookie: Last-Access=23-Nov-2026;Path=/;HttpOnly;secure;Expires=Fri, 25 Dec 2026 00:00:00 GMT\r\n"
    "Set-Cookie: GeoIP=NL:NH:Amsterdam:52.37:4.90:v4; Path=/; secure; Domain=.example.org\r\n"
    "Accept-Ranges: bytes\r\n"
    "Content-Length: 188542\r\n"
    "Connection: close";

void ParseHeadOf20Lines(benchmark::State& state) {
    InternetHeaders headers;
    const String head = kHead;
    for ([[maybe_unused]] auto _ : state) headers._ParseHeaders(head);
}
BENCHMARK(ParseHeadOf20Lines)->Unit(benchmark::kMicrosecond);

/// From the connection to the parsed head, without the network.
void TakeResponseOf20Lines(benchmark::State& state) {
    const test::TestRuntime runtime;
    test::Client client;
    const std::string response = std::string(kHead) + "\r\n\r\nbody";
    for ([[maybe_unused]] auto _ : state) {
        client.Open("GET", true);
        client.Arrive(response);
    }
}
BENCHMARK(TakeResponseOf20Lines)->Unit(benchmark::kMicrosecond);

void HeadOf100000Lines(benchmark::State& state) {
    std::string head;
    for (int i = 0; i < 100'000; ++i)
        head += (state.range(0) ? "Name" + std::to_string(i) : "Name") + ": value\r\n";
    const String text(head);
    InternetHeaders headers;
    for ([[maybe_unused]] auto _ : state) headers._ParseHeaders(text);
}
BENCHMARK(HeadOf100000Lines)->ArgName("differentNames")->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);

/// A page of 4 MB of kana in pieces of 16 KB, its length asked for after each.
void PageInPieces(benchmark::State& state) {
    std::string piece;
    while (piece.size() < 16u << 10) piece += "素早い茶色の狐が";
    const String text(piece);
    for ([[maybe_unused]] auto _ : state) {
        http::PageBuffer page;
        for (int i = 0; i < 256; ++i) {
            page.Append(text);
            benchmark::DoNotOptimize(page.Length());
        }
    }
    state.SetBytesProcessed(state.iterations() * 256 * static_cast<std::int64_t>(piece.size()));
}
BENCHMARK(PageInPieces)->Unit(benchmark::kMillisecond);

/// Ten seconds of a wait with nothing arriving, while nothing else goes on; the share of a core that it
/// takes.
void WaitForSilence(benchmark::State& state) {
    test::ScriptedServer silent([](auto& connection) { connection.WaitForClose(); });
    test::TestRuntime runtime(std::make_unique<WallClock>());
    const auto processorTime = [] {
        timespec time{};
        clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
        return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
    };
    const bool onMain = state.range(0) != 0;
    for ([[maybe_unused]] auto _ : state) {
        const double before = processorTime();
        const auto wait = [&] {
            test::Client client;
            client.Yield = true;
            client.Get(silent.Url(), 10);
        };
        Thread thread;
        thread.RunEvent = wait;
        if (onMain)
            wait();
        else
            thread.Run();
        WaitWhile([&] { return thread.State() == Thread::kRunning; });
        state.counters["core_percent"] = (processorTime() - before) * 10;
    }
}
BENCHMARK(WaitForSilence)
    ->ArgName("mainThread")
    ->Arg(0)
    ->Arg(1)
    ->Iterations(1)
    ->UseRealTime()
    ->Unit(benchmark::kSecond);

}  // namespace
