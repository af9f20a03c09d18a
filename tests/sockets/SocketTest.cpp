// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include <fcntl.h>
#include <sys/resource.h>

#include <algorithm>
#include <chrono>
#include <future>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "app/runtime/Thread.h"
#include "app/runtime/network/Network.h"
#include "tests/sockets/Peer.h"

namespace sorakaze {
namespace {

using test::Listener;
using test::NotingSocket;
using test::OpenDescriptors;
using test::PeerEnd;
using test::TestRuntime;

using Addresses = std::vector<std::string>;

std::string Noise(std::size_t size) {
    std::string noise(size, '\0');
    for (std::size_t i = 0; i < size; ++i) noise[i] = static_cast<char>(i * 7 + i / 251);
    return noise;
}

/// An address that never answers: its listener takes nobody in any more.
struct SilentAddress {
    explicit SilentAddress(int port = 0)
        : listener("127.0.0.2", port, 0), filling(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
        listener.ConnectHere(filling.Descriptor());
    }
    Listener listener;
    PeerEnd filling;
};

TEST(Sockets, ConnectEchoCloseInOrder) {
    TestRuntime test;
    const Listener listener;
    NotingSocket socket(listener);
    EXPECT_EQ(socket.log, "");
    EXPECT_FALSE(socket.IsConnected());
    auto peer = listener.Accept();
    socket.UntilLogEnds("C");
    EXPECT_TRUE(socket.IsConnected());
    socket.Write("hello, peer");
    EXPECT_EQ(peer.Receive(11), "hello, peer");
    socket.UntilLogEnds("S");
    peer.Send("good bye");
    socket.UntilLogEnds("D");
    peer.Close();
    socket.UntilLogEnds("E102");
    EXPECT_EQ(socket.log, "CSDE102");
    EXPECT_FALSE(socket.IsConnected());
    EXPECT_EQ(socket.Lookahead().Bytes(), "good bye");
    EXPECT_EQ(socket.Read(5).Bytes(), "good ");
    EXPECT_EQ(socket.LookaheadView(), "bye");
    EXPECT_EQ(socket.Read(0).Bytes(), "");
    EXPECT_EQ(socket.Read(9).Bytes(), "bye");
    EXPECT_EQ(socket.ReadAll().Bytes(), "");
    EXPECT_FALSE(socket.HasEvents());
}

TEST(Sockets, FailuresToConnectAndToWrite) {
    TestRuntime test;
    Listener gone;
    gone.Close();
    test.runtime.Network()->SetSurroundings({[](const std::string&) { return Addresses{}; }});
    const struct {
        const char* what;
        String address;
        int port;
        const char* log;
    } cases[] = {
        {"nobody listens", "127.0.0.1", gone.Port(), "E61"},
        {"no address", "", 80, "E103"},
        {"a name behind a NUL", std::string("127.0.0.1\0.example", 18), 80, "E103"},
        {"an unknown name", "unknown", 80, "E103"},
        {"port 0", "127.0.0.1", 0, "E107"},
        {"port beyond the last", "127.0.0.1", 65536, "E107"},
        {"port below the first", "127.0.0.1", -1, "E107"},
    };
    for (const auto& each : cases) {
        SCOPED_TRACE(each.what);
        NotingSocket socket;
        socket.Address = each.address;
        socket.Port = each.port;
        socket.Connect();
        EXPECT_EQ(socket.LastErrorCode(), SocketError::kNone);
        socket.UntilLogEnds(each.log);
        socket.Poll();
        EXPECT_EQ(socket.log, each.log) << "once only";
        socket.Write("nobody reads this");
        EXPECT_TRUE(socket.HasEvents());
        socket.UntilLogEnds("E106");
        EXPECT_EQ(socket.LastErrorCode(), SocketError::kInvalidState);
    }
    // The system's own resolver, with a name that no server is asked for.
    test.runtime.Network()->SetSurroundings({});
    NotingSocket socket;
    socket.ConnectTo(80, std::string(300, 'a').c_str());
    socket.UntilLogEnds("E103");
}

TEST(Sockets, TheSystemHasNoDescriptorLeft) {
    TestRuntime test;
    const Listener listener;
    NotingSocket socket(listener);
    socket.UntilLogEnds("C");
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

TEST(Sockets, EveryAddressOfANameIsTried) {
    TestRuntime test;
    const Listener listener;
    const SilentAddress silent(listener.Port());
    test.runtime.Network()->SetSurroundings({[](const std::string& host) {
                                                 EXPECT_EQ(host, "station.example");
                                                 return Addresses{"127.0.0.3", "127.0.0.2", "?", "127.0.0.1"};
                                             },
                                             std::chrono::milliseconds(20)});
    NotingSocket socket(listener, "station.example");
    socket.UntilLogEnds("C");
    EXPECT_EQ(socket.log, "C");
    auto peer = listener.Accept();
    peer.Send("x");
    socket.UntilLogEnds("D");
}

TEST(Sockets, IPv6WithAndWithoutBrackets) {
    TestRuntime test;
    const Listener listener("::1");
    if (!listener.Works()) GTEST_SKIP() << "this machine has no IPv6";
    for (const char* address : {"::1", "[::1]"}) {
        NotingSocket socket(listener, address);
        auto peer = listener.Accept();
        socket.UntilLogEnds("C");
        peer.Close();
        socket.UntilLogEnds("E102");
    }
}

TEST(Sockets, ALookUpThatHangsHoldsNothingUp) {
    std::promise<void> release;
    std::weak_ptr<int> lookingUp;
    {
        TestRuntime test;
        const Listener listener;
        auto alive = std::make_shared<int>();
        lookingUp = alive;
        test.runtime.Network()->SetSurroundings(
            {[alive = std::move(alive), released = release.get_future().share()](const std::string& host) {
                if (host == "hangs") released.wait();
                return Addresses{"127.0.0.1"};
            }});
        NotingSocket hanging(listener, "hangs");
        NotingSocket other(listener, "quick");
        other.UntilLogEnds("C");
        auto peer = listener.Accept();
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

TEST(Sockets, AResetInEveryPhaseIsTheEnd) {
    TestRuntime test;
    {
        SCOPED_TRACE("before the other end has taken it");
        Listener listener;
        NotingSocket socket(listener);
        socket.UntilLogEnds("C");
        listener.Close();
        socket.UntilLogEnds("CE102");
    }
    const Listener listener;
    {
        SCOPED_TRACE("behind data");
        NotingSocket socket(listener);
        auto peer = listener.Accept();
        socket.UntilLogEnds("C");
        peer.Send("half");
        peer.Reset();
        socket.UntilLogEnds("E102");
        EXPECT_EQ(socket.log, "CDE102");
        EXPECT_EQ(socket.ReadAll().Bytes(), "half");
    }
    {
        SCOPED_TRACE("while sending");
        NotingSocket socket(listener);
        auto peer = listener.Accept();
        socket.UntilLogEnds("C");
        socket.Write(Noise(20 << 20));
        peer.Receive(100'000);
        peer.Send("enough");
        peer.Reset();
        socket.UntilLogEnds("E102");
        EXPECT_EQ(socket.log, "CDE102") << "not all was sent";
        EXPECT_EQ(socket.ReadAll().Bytes(), "enough");
    }
}

/// Each event with each thing that its handler may do to the socket, while more is due behind it.
TEST(Sockets, HandlersMayCloseReconnectAndEndTheSocket) {
    TestRuntime test;
    const Listener listener;
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
            auto next = listener.Accept();
            next.Send("new");
            socket->UntilLogEnds("D");
            EXPECT_EQ(socket->log, "CD") << "and nothing of the old connection";
            EXPECT_EQ(socket->ReadAll().Bytes(), "new");
        }
    }
}

TEST(Sockets, APollWithinAnEventFiresWhatIsDueBehindIt) {
    TestRuntime test;
    const Listener listener;
    NotingSocket socket(listener);
    socket.onEvent = [&](char event) {
        if (event == 'C') socket.UntilLogEnds("E102");
        socket.log += event == 'E' ? "" : ")";
    };
    auto peer = listener.Accept();
    peer.Send("page");
    peer.Close();
    socket.UntilLogEnds("E102)");
    EXPECT_EQ(socket.log, "CD)E102)");
}

TEST(Sockets, WhatNobodyTakesStaysWithTheSender) {
    TestRuntime test;
    const Listener listener;
    NotingSocket socket(listener);
    auto peer = listener.Accept();
    socket.UntilLogEnds("C");
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

TEST(Sockets, WritesToAPeerThatDoesntReadWaitAndCanBeDropped) {
    TestRuntime test;
    const Listener listener;
    const std::string all = Noise(16 << 20);
    NotingSocket socket(listener);
    auto peer = listener.Accept();
    socket.UntilLogEnds("C");
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
    for (; rest.ends_with('.'); sent += rest.size()) rest = peer.ReceiveSome();
    EXPECT_TRUE(rest.ends_with('!'));
    EXPECT_LT(sent, 16u << 20);
    socket.UntilLogEnds("S");
    EXPECT_EQ(socket.log, "CDSDS");
}

TEST(Sockets, EndWhereverTheyStandAlsoBehindTheApplication) {
    const SilentAddress silent;
    const Listener listener;
    std::optional<NotingSocket> connected;
    std::optional<NotingSocket> connecting;
    std::vector<PeerEnd> peers;
    {
        TestRuntime test;
        for (int round = 0; round < 2; ++round) {
            connecting.emplace(silent.listener, "127.0.0.2");
            connected.emplace(listener);
            peers.push_back(listener.Accept());
            connected->UntilLogEnds("C");
            connected->Write(Noise(4 << 20));
            peers.back().Send(Noise(100'000));
            EXPECT_EQ(connecting->log, "");
        }
    }
    for (const PeerEnd& peer : peers) EXPECT_LT(peer.Receive(4 << 20).size(), 4u << 20);
    EXPECT_TRUE(connected->IsConnected()) << "nobody polled";
}

TEST(Sockets, AKilledThreadLetsGoOfItsConnection) {
    TestRuntime test;
    const SilentAddress silent;
    const Listener listener;
    std::promise<void> release;
    test.runtime.Network()->SetSurroundings({[released = release.get_future().share()](const std::string&) {
        released.wait();
        return Addresses{};
    }});
    for (const char* where : {"127.0.0.1", "127.0.0.2", "hangs"}) {
        SCOPED_TRACE(where);
        bool waits = false;
        int unwound = 0;
        Thread thread;
        thread.RunEvent = [&] {
            const std::shared_ptr<void> atTheEnd(nullptr, [&](void*) { ++unwound; });
            NotingSocket socket(where == std::string("127.0.0.2") ? silent.listener : listener, where);
            waits = true;
            socket.Until([] { return false; });
        };
        thread.Run();
        App.DoEventsWhile([&] { return !waits; });
        test.Pass(1);
        thread.Kill();
        App.DoEventsWhile([&] { return unwound == 0; });
        EXPECT_TRUE(where != std::string("127.0.0.1") || listener.Accept().Receive(1).empty());
    }
    release.set_value();
    // Ten minutes, which nothing holds to the wall any more.
    test.Pass(36000);
}

TEST(Sockets, TenThousandConnectionsLeaveNoDescriptor) {
    TestRuntime test;
    const Listener listener;
    NotingSocket socket(listener);
    socket.UntilLogEnds("C");
    listener.Accept();
    socket.UntilLogEnds("E102");
    const Listener ignored;
    const std::size_t before = OpenDescriptors();
    for (int i = 0; i < 2500; ++i) {
        socket.ConnectTo(ignored.Port());
        for (const char* way : {"given up", "torn", "closed there"}) {
            socket.log.clear();
            socket.ConnectTo(listener.Port());
            auto peer = listener.Accept();
            if (way == std::string("given up")) socket.UntilLogEnds("C");
            if (way == std::string("given up")) continue;
            if (way == std::string("torn")) peer.Reset();
            peer.Close();
            socket.Until([&] { return socket.log.find('E') != std::string::npos; });
        }
    }
    socket.Close();
    socket.Until([&] { return OpenDescriptors() <= before; });
}

}  // namespace
}  // namespace sorakaze
