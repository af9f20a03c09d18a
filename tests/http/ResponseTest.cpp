// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// Responses and URLs as bytes, without a network.
#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <vector>

#include "http/Url.h"
#include "tests/http/HttpTesting.h"
#include "tests/support/TestRuntime.h"

namespace sorakaze::test {
namespace {

using std::string_literals::operator""s;

struct Conversation {
    const char* name;
    std::string bytes;
    std::string outcome;
    const char* method = "GET";
};

/// Characters, pieces of them and strays: every cut lies in another surrounding.
const std::string kNoText =
    "\xF0\x9F\x8E\xB5\xE3\x81\x82\xC3\x80\xBF\x80\xBF\x80\xE3\x81\xF0\x9F\x80\xE3\xE3\xFF\xF4\xC3";

/// What comes of them must not depend on the pieces in which they come.
const Conversation kConversations[] = {
    {"CRLF", "HTTP/1.1 200 OK\r\nA: 1\r\nContent-Length: 4\r\n\r\nbody",
     "200/4/[A: 1\r\nContent-Length: 4]body"},
    {"LF", "HTTP/1.0 404 No\nA: 1\n\nbody\r", "404/0/[A: 1]body\r"},
    {"CR", "HTTP/1.0 200 OK\rA: 1\r\rbody", "200/0/[A: 1]body"},
    {"CRLF lines, LF at the end", "HTTP/1.0 200 OK\r\nA: 1\n\nb", "200/0/[A: 1]b"},
    {"a body of line ends", "x 7\r\n\r\n\r\n\r\n\n\n", "7/0/[]\r\n\r\n\n\n"},
    {"a body of NULs and no text", "x 200 y\r\nA: \0\r\n\r\n\0"s + kNoText + "\0"s,
     "200/0/[A: \0]\0"s + kNoText + "\0"s},
    {"longer than told", "x 200\r\nContent-length: 1\r\n\r\nabc", "200/1/[Content-length: 1]abc"},
    {"absurd length", "x 200\r\nContent-length: 99999999999 bytes\r\n\r\n",
     "200/2147483647/[Content-length: 99999999999 bytes]"},
    {"negative length", "x 200\r\nContent-length: -5\r\n\r\n", "200/-5/[Content-length: -5]"},
    {"no number of a length", "x 200\r\nContent-length: many\r\n\r\n", "200/0/[Content-length: many]"},
    {"garbage of a status", "\r\n\r\nbody", "0/0/[]body"},
    {"two blanks before the status", "HTTP/1.0  200 OK\n\n", "0/0/[]"},
    {"absurd status", "HTTP/1.0 -1e99\n\n", "-2147483648/0/[]"},
    {"HEAD", "x 302 y\r\nLocation: z\r\n\r\nbody", "302/0/[Location: z]", "head"},
    {"unanswered challenge", "x 401 y\r\nWWW-Authenticate: Basic realm=\"a\"\r\n\r\nno",
     "401/0/[WWW-Authenticate: Basic realm=\"a\"]no"},
};

TEST(Response, IsTheSameInOnePieceAndInAnyTwo) {
    const TestRuntime runtime;
    for (const Conversation& test : kConversations) {
        for (std::size_t cut = 0; cut <= test.bytes.size(); ++cut) {
            SCOPED_TRACE(test.name + " cut at "s + std::to_string(cut));
            Client client;
            client.Open(test.method, true);
            const std::string_view bytes = test.bytes;
            if (cut > 0) client.Arrive(bytes.substr(0, cut));
            EXPECT_EQ(client.PageLength(), Len(client.Page()));
            client.Arrive(bytes.substr(cut));
            EXPECT_EQ(client.PageLength(), Len(client.Page()));
            // What was known before the connection ended says the same without being complete.
            EXPECT_EQ(client.IsComplete(), std::string(test.name) == "unanswered challenge");
            client.End();
            ASSERT_EQ(client.Outcome(), test.outcome);
        }
    }
}

TEST(Response, HeadEndsWhereTheBytesAtHandSayIt) {
    const TestRuntime runtime;
    const struct {
        const char* name;
        std::vector<std::string> pieces;
        std::string outcome;
    } cases[] = {
        {"no empty line", {"x 200\r\nA: 1\r\n"}, "0/0...-"},
        {"nothing", {""}, "0/0/-"},
        {"CRLF decides, wherever it stands", {"x 200\n\nA: 1\r\n\r\nb"}, "200/0/[A: 1]b"},
        {"but not when it is late", {"x 200\n\nA: 1", "\r\n\r\nb"}, "200/0/[]A: 1\r\n\r\nb"},
        {"LF decides over CR", {"x 200\r\rA: 1\n\nb"}, "200/0/[A: 1]b"},
        {"the last of the others", {"x 200\r\nA: 1\n\nB: 2\r\rb"}, "200/0/[A: 1\n\nB: 2]b"},
        {"of those at hand", {"x 200\r\nA: 1\n\nB: 2", "\r\rb"}, "200/0/[A: 1]B: 2\r\rb"},
        {"CR where LF shows", {"x 200\nA: 1\r\rb"}, "200/0/[A: 1]b"},
        {"what the owner has read is none of it", {"owner's\r\nx 200", "\n\nb\r\r"}, "200/0/[]b\r\r"},
    };
    for (const auto& test : cases) {
        SCOPED_TRACE(test.name);
        Client client;
        client.Open("GET", true);
        SocketCore& socket = client;
        for (const auto& piece : test.pieces) {
            client.Arrive(piece);
            if (!client.HasHead()) {
                EXPECT_TRUE(socket.LookaheadView().ends_with(piece));
            }
            if (piece.starts_with("owner's")) socket.Read(9);
        }
        client.End();
        EXPECT_EQ(client.Outcome(), test.outcome);
    }
}

/// Each would be seen as a test without end if its cost grew with the square of its size.
TEST(Response, MegabytesByteByByte) {
    const TestRuntime runtime;
    const std::string head = "x 200\r\nA: " + std::string(2'000'000, 'a') + "\r\n\r\n";
    Client client;
    client.Open("GET", true);
    for (const char& byte : head) client.Arrive({&byte, 1});
    EXPECT_EQ(LenB(client.PageHeaders()->Value("A")), 2'000'000);
    const std::string kana = "あ";
    for (int i = 0; i < 1'500'000; ++i) {
        client.Arrive({&kana[static_cast<std::size_t>(i % 3)], 1});
        const int whole = i / 3 + 1;
        ASSERT_EQ(client.PageLength(), i % 3 == 1 ? whole + 1 : whole) << i;
    }
}

TEST(Response, FiresItsEventsInOrder) {
    TestRuntime runtime;
    constexpr std::string_view kOk = "x 200\r\nContent-length: 4\r\n\r\nab";
    Client client;
    client.NoteEvents();
    const auto talk = [&](const char* method, bool waits) {
        client.Open(method, waits);
        client.Arrive(kOk);
        client.Arrive("cd");
        client.End();
        client.End();
        return std::exchange(client.events, {});
    };
    EXPECT_EQ(talk("GET", false), "connected headers:200 4/4 page:abcd error:0 ");
    EXPECT_EQ(talk("HEAD", false), "connected headers:200 error:0 ");
    EXPECT_EQ(talk("GET", true), "");
    // One that comes while another is handled waits for the next.
    client.ReceiveProgress = [&](std::int32_t received, std::int32_t, const String&) {
        if (received == 2) client.Arrive("X");
    };
    EXPECT_EQ(talk("GET", false), "connected headers:200 4/4 page:abXcd error:0 ");
}

TEST(Response, AHandlerThatThrowsLeavesTheBody) {
    const TestRuntime runtime;
    for (const std::string status : {"200", "401"}) {
        Client client;
        client.AuthenticationRequired = [](auto&&...) -> bool { throw std::runtime_error("handler"); };
        client.HeadersReceived = [](auto&&...) { throw std::runtime_error("handler"); };
        client.Open("GET", false);
        EXPECT_THROW(client.Arrive("x " + status + "\r\n\r\nbo"), std::runtime_error);
        client.Arrive("dy");
        EXPECT_EQ(client.Page(), "body");
    }
}

TEST(Url, Parts) {
    const struct {
        const char *url, *server, *path, *address;
        int port;
    } cases[] = {
        {"http://host/a/b?c=d#e", "host", "/a/b?c=d#e", "host", 0},
        {"host", "host", "/", "host", 0},
        {"ftp://host:8080", "host:8080", "/", "host", 8080},
        {"", "", "/", "", 0},
        {"://", "", "/", "", 0},
        {"/a", "", "/a", "", 0},
        {"host/?u=http://other/b", "other", "/b", "other", 0},
        {"http://host?q=1/2", "host?q=1", "/2", "host?q=1", 0},
        {"http://me@host:-5:7/", "me@host:-5:7", "/", "me@host", -5},
        {"http://夜:99999999999/朝", "夜:99999999999", "/朝", "夜", 2147483647},
        {"http://host: 8.9x/", "host: 8.9x", "/", "host", 8},
    };
    for (const auto& test : cases) {
        SCOPED_TRACE(test.url);
        const http::UrlParts parts = http::ParseURL(test.url);
        EXPECT_EQ(parts.server.Bytes(), test.server);
        EXPECT_EQ(parts.path.Bytes(), test.path);
        EXPECT_EQ(parts.address.Bytes(), test.address);
        EXPECT_EQ(parts.port, test.port);
    }
}

TEST(Url, FormData) {
    const auto form = std::make_shared<Dictionary>();
    form->SetValue("a b", "1+1=2 & %41");
    form->SetValue("%&=,/\\][{}`~-_()*^$#!+;<>\r\n", "azAZ09.:?@'\"|夜\x80");
    form->SetValue("", 7);
    const TestRuntime runtime;
    EXPECT_EQ(
        Client().EncodeFormData(form).Bytes(),
        "a+b=1%2B1%3D2+%26+%2541&%25%26%3D%2C%2F%5C%5D%5B%7B%7D%60%7E%2D%5F%28%29%2A%5E%24%23%21%2B%3B%3C%3E"
        "%0D%0A=azAZ09.:?@'\"|夜\x80&=7");
    EXPECT_THROW(Client().EncodeFormData(nullptr), NilObjectException);
}

}  // namespace
}  // namespace sorakaze::test
