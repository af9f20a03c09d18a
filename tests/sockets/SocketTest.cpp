// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include <string>

#include "tests/sockets/Peer.h"

namespace sorakaze {
namespace {

using test::Listener;
using test::NotingSocket;
using test::TestRuntime;

TEST(Sockets, ConnectEchoCloseInOrder) {
    TestRuntime test;
    const Listener listener;
    NotingSocket socket(listener);
    EXPECT_EQ(socket.log, "");
    EXPECT_FALSE(socket.IsConnected());
    auto peer = listener.Accept();
    socket.UntilLogEnds("C");
    EXPECT_TRUE(socket.IsConnected());
    socket.Write("hello, ");
    socket.Write("peer");
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
    EXPECT_EQ(socket.Read(9).Bytes(), "bye");
    EXPECT_EQ(socket.ReadAll().Bytes(), "");
    EXPECT_FALSE(socket.HasEvents());
}

}  // namespace
}  // namespace sorakaze
