// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// The HTTP client against hostile and broken servers, without waiting in real time. What their bytes are
// parsed to is in tests/http/ValuesTest.cpp.
#include <gtest/gtest.h>

#include <thread>

#include "app/runtime/Thread.h"
#include "tests/http/HttpTesting.h"
#include "tests/support/ScriptedServer.h"
#include "tests/support/SkippingClock.h"
#include "tests/support/TestRuntime.h"

namespace sorakaze::test {
namespace {

using namespace std::chrono_literals;
using namespace std::string_literals;
using Peer = ScriptedServer::Connection;

const std::string kHead = "HTTP/1.0 200 OK\r\nContent-type: text/plain\r\n\r\n";

struct HostileServers : testing::Test {
    /// Any thread: that many seconds have passed for whoever waits.
    void Skip(std::chrono::seconds time) {
        clock.Skip(time);
        world.runtime.Threads().Notify();
    }

    SkippingClock& clock = *new SkippingClock(false);
    TestRuntime world{std::unique_ptr<Clock>(&clock)};
};

TEST_F(HostileServers, EveryRequestEnds) {
    using Script = std::function<void(Peer&, const WatchedClient&)>;
    enum class End { Close, Reset, Silence };
    // Says something, and when the client has got it, ends so.
    const auto says = [](std::string bytes, End end = End::Close) {
        return Script([bytes, end](Peer& peer, const WatchedClient& client) {
            peer.ReadRequest();
            peer.Send(bytes);
            client.UntilPieces(bytes.empty() || end == End::Close ? 0 : 1);
            if (end == End::Reset) peer.Reset();
            if (end == End::Silence) peer.WaitForClose();
        });
    };
    std::string manyNames = "HTTP/1.0 200 OK\r\n";
    for (int i = 0; i < 100'000; ++i) manyNames += (i % 2 ? "Y" : "X" + std::to_string(i)) + ": a\r\n";
    constexpr int kNever = -1;
    const struct Case {
        const char* name;
        Script script;
        int status;
        std::string page;
        int timeFliesAfter = kNever;  ///< pieces of the response; the wait then ends by its time
        std::string header = {};      ///< what "X" reads as
    } cases[] = {
        {"one byte at a time",
         [](Peer& peer, const WatchedClient&) {
             peer.ReadRequest();
             peer.SendInPieces("HTTP/1.0 200 OK\r\nX: a\r\n b\r\n\r\nthe body", 1);
         },
         200, "the body", kNever, "a b"},
        {"3 GB claimed", says("HTTP/1.0 200 OK\r\nContent-length: 3000000000\r\n\r\nbody"), 200, "body"},
        {"a head without end",
         [](Peer& peer, const WatchedClient&) {
             peer.ReadRequest();
             peer.Send("HTTP/1.0 200 OK\r\n");
             while (peer.Send("X: a\r\n")) continue;
         },
         0, "", 1},
        {"100,000 header lines", says(manyNames + "X: a\r\n\r\nbody"), 200, "body", kNever, "a"},
        {"closes at once", [](Peer&, const WatchedClient&) {}, 0, ""},
        {"speaks before it is asked",
         [](Peer& peer, const WatchedClient&) {
             peer.Send(kHead + "body");
             peer.ReadRequest();
         },
         200, "body"},
        {"reset at once", [](Peer& peer, const WatchedClient&) { peer.Reset(); }, 0, ""},
        {"reset when asked", says("", End::Reset), 0, ""},
        {"reset in the body", says(kHead + "bo", End::Reset), 200, "bo"},
        // A head without an end is waited for even when nobody is left to send it.
        {"reset in the head", says("HTTP/1.0 200 OK\r\nX: a\r\n", End::Reset), 0, "", 1},
        {"closed in the head", says("HTTP/1.0 200 OK\r\nX: a\r\n"), 0, "", 1},
        {"silent", [](Peer& peer, const WatchedClient&) { peer.WaitForClose(); }, 0, "", 0},
        {"silent in the head", says("HTTP/1.0 200 OK\r\nX: a\r\n", End::Silence), 0, "", 1},
        {"silent in the body", says(kHead + "bo", End::Silence), 200, "bo", 1},
    };
    for (const bool onThread : {false, true}) {
        for (const auto& row : cases) {
            SCOPED_TRACE(std::string(row.name) + (onThread ? ", on a thread" : ", on the main thread"));
            Thread thread;
            thread.RunEvent = [&] {
                WatchedClient client;
                const ScriptedServer server([&](Peer& peer) { row.script(peer, client); });
                const std::jthread time([&](const std::stop_token& ended) {
                    for (; !ended.stop_requested(); std::this_thread::sleep_for(1ms))
                        if (row.timeFliesAfter != kNever && client.attempts > 0 &&
                            client.pieces >= row.timeFliesAfter)
                            Skip(std::chrono::seconds(kLongSeconds));
                });
                EXPECT_EQ(client.Get(server.Url(), kLongSeconds).Bytes(), row.page);
                client.gone = true;
                EXPECT_EQ(client.HTTPStatusCode(), row.status);
                EXPECT_TRUE(row.timeFliesAfter == kNever || !client.IsConnected());
                // A connection that was torn before it was noticed counts as none.
                if (row.timeFliesAfter != kNever || client.attempts > 0) {
                    EXPECT_EQ(client.ErrorCode(), row.timeFliesAfter == kNever ? 0 : -1);
                }
                if (row.header.empty()) return;
                EXPECT_EQ(client.PageHeaders()->Value("X").Bytes(), row.header);
            };
            onThread ? thread.Run() : thread.RunEvent();
            world.runtime.Events().DoEventsWhile([&] { return thread.State() == Thread::kRunning; });
        }
    }
}

// Nobody wakes it.
TEST(SilentServer, AWaitEndsByItself) {
    TestRuntime world(std::make_unique<WallClock>());
    const ScriptedServer server([](Peer& peer) { peer.WaitForClose(); });
    Thread thread;
    thread.RunEvent = [&] {
        WatchedClient client;
        EXPECT_EQ(client.Get(server.Url(), 1), "");
        EXPECT_EQ(client.ErrorCode(), -1);
    };
    thread.RunEvent();
    thread.Run();
    world.runtime.Events().DoEventsWhile([&] { return thread.State() == Thread::kRunning; });
}

// As servers do that find a request too large.
TEST_F(HostileServers, AnAnswerArrivesWhileThePostIsNotRead) {
    const ScriptedServer server([](Peer& peer) { peer.Send("HTTP/1.0 413 Too large\r\n\r\nbody"); });
    WatchedClient client;
    for (int i = 0; i < 5; ++i) {
        client.SetPostContent(std::string(8 << 20, 'x'), "text/plain");
        EXPECT_EQ(client.Post(server.Url(), kLongSeconds), "body");
        EXPECT_EQ(client.HTTPStatusCode(), 413);
        EXPECT_EQ(client.ErrorCode(), 0);
    }
}

TEST_F(HostileServers, OnlyABodyThatGrowsKeepsAWaitAlive) {
    const std::string body = "a body that takes its time";
    enum class Slow { Body, Head, Download };
    for (const Slow slow : {Slow::Body, Slow::Head, Slow::Download}) {
        SCOPED_TRACE(static_cast<int>(slow));
        WatchedClient client;
        const ScriptedServer server([&](Peer& peer) {
            peer.ReadRequest();
            int pieces = 0;
            if (slow != Slow::Head && peer.Send(kHead)) client.UntilPieces(++pieces);
            for (const char byte : slow == Slow::Head ? kHead : body) {
                Skip(29s);
                if (!peer.Send({&byte, 1})) break;
                client.UntilPieces(++pieces);
            }
        });
        const auto file = std::make_shared<FolderItem>(world.folder.Path() / "download");
        if (slow == Slow::Download)
            EXPECT_FALSE(client.Get(server.Url(), file, 30));
        else
            EXPECT_EQ(client.Get(server.Url(), 30).Bytes(), slow == Slow::Body ? body : "");
        client.gone = true;
        EXPECT_EQ(client.ErrorCode(), slow == Slow::Body ? 0 : -1);
    }
}

TEST_F(HostileServers, AWaitWithoutATimeEndsWhenItIsKilled) {
    std::atomic<int> closed{0};
    const ScriptedServer server([&](Peer& peer) {
        // A body without end, then silence.
        peer.Send(kHead);
        while (peer.Number() == 0 && peer.Send(kHead)) {
        }
        peer.WaitForClose();
        ++closed;
    });
    const auto folder = std::make_shared<FolderItem>(world.folder.Path());
    for (const int pieces : {20, 1, 0}) {
        std::shared_ptr<WatchedClient> client;
        bool wentOn = false;
        Thread thread;
        thread.RunEvent = [&] {
            const auto waiting = client = std::make_shared<WatchedClient>();
            // A folder can't be written to; the wait forgets that it knew, and waits for what can't come.
            pieces == 0 ? (void)waiting->Get("", folder, 0) : (void)waiting->Get(server.Url(), 0);
            wentOn = true;
        };
        thread.Run();
        world.runtime.Events().DoEventsWhile([&] { return !client || client->pieces < pieces; });
        Skip(24h);
        for (int turn = 0; turn < 3; ++turn) sorakaze::Yield();
        EXPECT_EQ(thread.State(), Thread::kRunning);
        client.reset();
        thread.Kill();
        EXPECT_EQ(thread.State(), Thread::kNotRunning);
        EXPECT_FALSE(wentOn);
    }
    world.runtime.Events().DoEventsWhile([&] { return closed < 2; });
}

}  // namespace
}  // namespace sorakaze::test
