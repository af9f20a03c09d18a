// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// What a wait for the network costs while nothing arrives, and how fast a socket receives over loopback.
#include <benchmark/benchmark.h>

#include <ctime>
#include <memory>
#include <string>
#include <thread>

#include "app/runtime/Thread.h"
#include "tests/app/runtime/sockets/Peer.h"

namespace {

using namespace sorakaze;

double ProcessSeconds() {
    timespec time{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) / 1e9;
}

/// A thread that waits for a page while the main thread handles events, for two seconds of the wall clock.
/// `core` is the share of one core that the process uses meanwhile, all its threads together.
void WaitWithNothingArriving(benchmark::State& state) {
    test::TestRuntime test(std::make_unique<WallClock>());
    const test::Listener listener;
    Thread thread;
    thread.RunEvent = [&] {
        test::NotingSocket socket(listener);
        socket.Until([] { return false; });
    };
    thread.Run();
    test.Pass(6);
    const auto peer = listener.Accept();
    double used = 0;
    double passed = 0;
    for ([[maybe_unused]] auto _ : state) {
        used -= ProcessSeconds();
        test.Pass(120);
        used += ProcessSeconds();
        passed += 2;
    }
    state.counters["core"] = used / passed;
}
BENCHMARK(WaitWithNothingArriving)->Unit(benchmark::kMillisecond)->Iterations(3)->UseRealTime();

void Receive200Megabytes(benchmark::State& state) {
    test::TestRuntime test(std::make_unique<WallClock>());
    const test::Listener listener("127.0.0.1", 0, 128, 0);
    constexpr std::size_t kSize = 200'000'000;
    const std::string piece(1 << 20, 'x');
    for ([[maybe_unused]] auto _ : state) {
        test::NotingSocket socket(listener);
        auto peer = listener.Accept();
        std::thread sender([&] {
            for (std::size_t sent = 0; sent < kSize; sent += piece.size()) {
                peer.Send(piece.substr(0, kSize - sent));
            }
            peer.Close();
        });
        std::size_t received = 0;
        socket.Until([&] {
            received += socket.ReadAll().Bytes().size();
            return socket.log.ends_with("E102");
        });
        sender.join();
        if (received != kSize) state.SkipWithError("bytes are missing");
    }
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(kSize));
}
BENCHMARK(Receive200Megabytes)->Unit(benchmark::kMillisecond)->UseRealTime();

void ConnectAndClose(benchmark::State& state) {
    test::TestRuntime test(std::make_unique<WallClock>());
    const test::Listener listener;
    test::NotingSocket socket;
    for ([[maybe_unused]] auto _ : state) {
        socket.log.clear();
        socket.ConnectTo(listener.Port());
        listener.Accept();
        socket.UntilLogEnds("E102");
    }
}
BENCHMARK(ConnectAndClose)->Unit(benchmark::kMicrosecond)->UseRealTime();

}  // namespace
