// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include <sys/resource.h>

#include <chrono>
#include <future>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "network/Network.h"
#include "tests/app/runtime/sockets/Peer.h"
#include "tests/support/ScriptedServer.h"

namespace sorakaze::test {
namespace {

using Addresses = std::vector<std::string>;

/// An address that never answers: its listener takes nobody in any more.
struct SilentAddress : Listener {
    explicit SilentAddress(int port = 0) : Listener("127.0.0.2", port, 0) {}
    const PeerEnd filling{Place("127.0.0.2", Port())};
};

struct Sockets : testing::Test {
    /// Connects `socket`; hands out the other end.
    PeerEnd Connected(NotingSocket& socket) const {
        socket.ConnectTo(listener.Port());
        socket.UntilLogEnds("C");
        return listener.Accept();
    }

    TestRuntime test;
    const Listener listener;
};

TEST_F(Sockets, ConnectEchoCloseInOrder) {
    NotingSocket socket;
    auto peer = Connected(socket);
    EXPECT_TRUE(socket.IsConnected());
    socket.Write("hello, peer");
    EXPECT_EQ(peer.Receive(11), "hello, peer");
    socket.UntilLogEnds("S");
    peer.Send("good bye");
    socket.UntilLogEnds("D");
    peer.Close();
    socket.UntilLogEnds("E102");
    EXPECT_EQ(socket.log, "CSDE102");
    EXPECT_FALSE(socket.IsConnected() || socket.HasEvents());
    EXPECT_EQ(socket.Lookahead().Bytes(), "good bye");
    EXPECT_EQ(socket.Read(5).Bytes(), "good ");
    EXPECT_EQ(socket.Read(9).Bytes(), "bye");
}

TEST_F(Sockets, NoBoundIsOutstayed) {
    constexpr std::uint64_t kMuch = 1 << 30;
    const auto logOf = [&](const SocketCore::Bounds& bounds, std::size_t piece, bool reads) {
        NotingSocket socket;
        socket.SetBounds(bounds);
        socket.onEvent = [&](char event) {
            if (event == 'D' && reads) socket.ReadAll();
        };
        const PeerEnd peer = Connected(socket);
        const std::jthread sending([&](const std::stop_token& ended) {
            for (; !ended.stop_requested(); std::this_thread::sleep_for(std::chrono::milliseconds(5)))
                peer.Send(std::string(piece, 'x'));
        });
        socket.UntilLogEnds("E102");
        EXPECT_EQ(socket.Lookahead().IsEmpty(), reads || bounds.unread < kMuch);
        return socket.log.size();
    };
    // The last one sends for ever what no other bound ends.
    logOf({std::chrono::hours(1), 1 << 20, kMuch}, 60'000, true);
    logOf({std::chrono::hours(1), kMuch, 1 << 20}, 60'000, false);
    EXPECT_GT(logOf({std::chrono::milliseconds(500), kMuch, kMuch}, 1, true), 5u);
}

TEST_F(Sockets, FailuresToConnectAndToWrite) {
    Listener gone;
    gone.Close();
    test.runtime.Network()->SetSettings({[](const std::string&) { return Addresses{}; }});
    const struct {
        std::string address;
        int port;
        const char* log;
    } cases[] = {{"127.0.0.1", gone.Port(), "E61"}, {std::string("127.0.0.1\0.example", 18), 80, "E103"},
                 {"unknown", 80, "E103"},           {"127.0.0.1", 0, "E107"},
                 {"127.0.0.1", 65536, "E107"},      {std::string(300, 'a'), 80, "E103"}};
    for (const auto& [address, port, log] : cases) {
        SCOPED_TRACE(address + ":" + std::to_string(port));
        // The system's own resolver, with a name that no server is asked for.
        if (address.size() == 300) test.runtime.Network()->SetSettings({});
        NotingSocket socket;
        socket.ConnectTo(port, address);
        socket.UntilLogEnds(log);
        socket.Poll();
        EXPECT_EQ(socket.log, log) << "once only";
        socket.Write("nobody reads this");
        socket.UntilLogEnds("E106");
    }
}

TEST_F(Sockets, TheSystemHasNoDescriptorLeft) {
    {
        // The sanitizer's first look at a class takes descriptors of its own.
        NotingSocket first;
        const auto peer = Connected(first);
        first.Connect();
        first.UntilLogEnds("CC");
        const auto again = listener.Accept();
        first.Close();
        first.Connect();
        first.UntilLogEnds("CCC");
        const auto third = listener.Accept();
    }
    NotingSocket socket;
    const auto peer = Connected(socket);
    rlimit limit{};
    getrlimit(RLIMIT_NOFILE, &limit);
    const rlimit none{3, limit.rlim_max};
    setrlimit(RLIMIT_NOFILE, &none);
    socket.Connect();
    socket.UntilLogEnds("CE100");
    setrlimit(RLIMIT_NOFILE, &limit);
    socket.Connect();
    socket.UntilLogEnds("CE100C");
}

TEST_F(Sockets, EveryAddressOfANameIsTried) {
    const SilentAddress silent(listener.Port());
    test.runtime.Network()->SetSettings({[](const std::string& host) {
                                             EXPECT_EQ(host, "station.example");
                                             return Addresses{"127.0.0.3", "127.0.0.2", "?", "127.0.0.1"};
                                         },
                                         std::chrono::milliseconds(20)});
    NotingSocket socket(listener, "station.example");
    socket.UntilLogEnds("C");
    EXPECT_EQ(socket.log, "C");
    listener.Accept().Send("x");
    socket.UntilLogEnds("DE102");
}

TEST_F(Sockets, IPv6WithAndWithoutBrackets) {
    if (access("/proc/net/if_inet6", F_OK) != 0) GTEST_SKIP() << "this machine has no IPv6";
    const ScriptedServer server([](ScriptedServer::Connection&) {}, ScriptedServer::Address::V6);
    for (const char* address : {"::1", "[::1]"}) {
        NotingSocket socket;
        socket.ConnectTo(server.Port(), address);
        socket.UntilLogEnds("CE102");
    }
}

TEST(SocketsLookUp, OneThatHangsHoldsNothingUp) {
    std::promise<void> release;
    std::weak_ptr<int> lookingUp;
    {
        TestRuntime test;
        const Listener listener;
        auto alive = std::make_shared<int>();
        lookingUp = alive;
        test.runtime.Network()->SetSettings(
            {[alive = std::move(alive), released = release.get_future().share()](const std::string& host) {
                if (host == "hangs") released.wait();
                return Addresses{"127.0.0.1"};
            }});
        NotingSocket hanging(listener, "hangs");
        NotingSocket(listener, "quick").UntilLogEnds("C");
        hanging.ConnectTo(listener.Port());
        hanging.UntilLogEnds("C");
        hanging.ConnectTo(listener.Port(), "hangs");
        hanging.Close();
        { const NotingSocket gone(listener, "hangs"); }
        hanging.ConnectTo(listener.Port(), "hangs");
        EXPECT_EQ(hanging.log, "C");
    }
    // The application has ended without having waited; what is found now is dropped.
    EXPECT_FALSE(lookingUp.expired());
    release.set_value();
    while (!lookingUp.expired()) std::this_thread::yield();
}

/// Each event with each thing that its handler may do to the socket, while more is due after it.
TEST_F(Sockets, HandlersMayCloseReconnectAndEndTheSocket) {
    const auto open = [] { return std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {}); };
    NotingSocket last;
    const auto peerOfLast = Connected(last);
    const auto before = open();
    enum class Deed { Close, Reconnect, End };
    for (const char at : {'C', 'S', 'D', 'E'}) {
        for (const Deed deed : {Deed::Close, Deed::Reconnect, Deed::End}) {
            SCOPED_TRACE(std::string("in ") + at + ", deed " + std::to_string(static_cast<int>(deed)));
            auto socket = std::make_unique<NotingSocket>(listener);
            bool done = false;
            socket->onEvent = [&](char event) {
                if (done) return;
                if (event == 'C') socket->Write("w");
                if (event != at) return;
                done = true;
                socket->log.clear();
                if (deed == Deed::Close) socket->Close();
                if (deed == Deed::Reconnect) socket->Connect();
                if (deed == Deed::End) socket.reset();
            };
            auto peer = listener.Accept();
            peer.Send("old");
            socket->Until([&] { return done || (at != 'C' && socket->log.find('S') != std::string::npos); });
            if (at == 'E') peer.Close();
            if (!done) socket->Until([&] { return done; });
            EXPECT_LE(peer.Receive(at == 'E' ? 0 : 100).size(), 1u) << "the old connection ends";
            if (deed == Deed::End) continue;
            if (deed == Deed::Close) {
                socket->Poll();
                EXPECT_EQ(socket->log, "");
                EXPECT_FALSE(socket->HasEvents() || socket->IsConnected());
                socket->Connect();
            }
            const auto next = listener.Accept();
            next.Send("new");
            socket->UntilLogEnds("D");
            EXPECT_EQ(socket->log, "CD") << "and nothing of the old connection";
            EXPECT_EQ(socket->ReadAll().Bytes(), "new");
        }
    }
    last.Until([&] { return open() <= before; });
}

TEST_F(Sockets, APollWithinAnEventFiresWhatIsDueBehindIt) {
    NotingSocket socket(listener);
    socket.onEvent = [&](char event) {
        if (event == 'C') socket.UntilLogEnds("E102");
        socket.log += event == 'E' ? "" : ")";
    };
    listener.Accept().Send("page");
    socket.UntilLogEnds("E102)");
    EXPECT_EQ(socket.log, "CD)E102)");
}

TEST_F(Sockets, WhatNobodyTakesStaysWithTheSender) {
    NotingSocket socket;
    auto peer = Connected(socket);
    const std::string all = Noise(12 << 20);
    std::thread sender([&] {
        peer.Send(all);
        peer.Close();
    });
    std::size_t before = 0;
    std::size_t most = 0;
    socket.Until([&] {
        const std::size_t now = socket.LookaheadView().size();
        most = std::max(most, now - before);
        before = now;
        return socket.log.ends_with("E102");
    });
    sender.join();
    EXPECT_LE(most, 1u << 20) << "taken up by one Poll";
    std::string read;
    while (!socket.LookaheadView().empty()) read += socket.Read(100'003).Bytes();
    EXPECT_TRUE(read == all);
}

TEST_F(Sockets, WritesToAPeerThatDoesntReadWaitAndAreDroppedOrLost) {
    const std::string all = Noise(16 << 20);
    NotingSocket socket;
    auto peer = Connected(socket);
    socket.Write(all);
    peer.Send("x");
    socket.UntilLogEnds("D");
    EXPECT_EQ(socket.log, "CD") << "not all is sent";
    EXPECT_TRUE(peer.Receive(all.size()) == all);
    socket.UntilLogEnds("S");

    socket.Write(std::string(16 << 20, '.'));
    peer.Receive(1);
    peer.Send("y");
    socket.UntilLogEnds("D");
    socket.Purge();
    EXPECT_EQ(socket.LookaheadView(), "");
    socket.Write("!");
    std::string rest = ".";
    std::size_t sent = 0;
    for (; rest.ends_with('.'); sent += rest.size()) rest = peer.Receive(1 << 16, 0);
    EXPECT_TRUE(rest.ends_with('!'));
    EXPECT_LT(sent, 16u << 20);
    socket.UntilLogEnds("S");
    EXPECT_EQ(socket.log, "CDSDS");

    socket.Write(all);
    peer.Receive(100'000);
    peer.Send("enough");
    peer.Reset();
    socket.UntilLogEnds("E102");
    EXPECT_EQ(socket.log, "CDSDSDE102") << "not all was sent";
    EXPECT_EQ(socket.ReadAll().Bytes(), "enough");
}

TEST(SocketsEnd, WhereverTheyStandAlsoBehindTheApplication) {
    const SilentAddress silent;
    const Listener listener;
    std::optional<NotingSocket> connected, connecting;
    std::vector<PeerEnd> peers;
    {
        TestRuntime test;
        for (int round = 0; round < 2; ++round) {
            connecting.emplace(silent, "127.0.0.2");
            connected.emplace(listener);
            peers.push_back(listener.Accept());
            connected->UntilLogEnds("C");
            connected->Write(Noise(4 << 20));
            peers.back().Send(Noise(100'000));
        }
    }
    for (const PeerEnd& peer : peers) EXPECT_LT(peer.Receive(4 << 20).size(), 4u << 20);
    EXPECT_TRUE(connected->IsConnected()) << "nobody polled";
}

}  // namespace
}  // namespace sorakaze::test
