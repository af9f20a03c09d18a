// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// The client against servers on loopback, from the main thread and from cooperative ones.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/resource.h>

#include <csignal>
#include <future>

#include "app/runtime/Thread.h"
#include "tests/http/HttpTesting.h"
#include "tests/support/ScriptedServer.h"
#include "tests/support/TestRuntime.h"

namespace sorakaze::test {
namespace {

using Connection = ScriptedServer::Connection;

/// Fires the socket's events until the condition is false.
void PollWhile(SocketCore& socket, FunctionRef<bool()> condition) {
    const Scheduler::FollowWallClock followWall(Runtime::Current().Threads());
    while (condition()) {
        WaitWhile([&] { return !socket.HasEvents(); });
        socket.Poll();
    }
}

constexpr const char* kHello = "HTTP/1.0 200 OK\r\nX: 1\r\n\r\nhello";

TEST(Client, SendsTheseBytes) {
    TestRuntime runtime;
    ScriptedServer server(ScriptedServer::Answer(kHello));
    Client client;
    client.SetRequestHeader("User-Agent", "MSIE");
    EXPECT_EQ(client.SendRequest("", server.Url("/夜?a=b#c"), kLongSeconds), "hello");
    client.SetRequestHeader("user-agent", "");
    client.SetPostContent(std::string("a\0\r\n", 4), "text/plain");
    client.Post(server.Url(""), kLongSeconds);
    const auto form = std::make_shared<Dictionary>();
    form->SetValue("a", "b c");
    client.SetFormData(form);
    client.SendRequest("post", server.Url(), kLongSeconds);
    client.HTTPProxyAddress = "127.0.0.1";
    client.HTTPProxyPort = server.Port();
    EXPECT_EQ(client.GetHeaders("http://host.invalid:81/x", kLongSeconds)->Value("x"), "1");
    client.HTTPProxyPort = 0;
    client.DefaultPort = server.Port();
    client.ClearRequestHeaders();
    client.Post("x", kLongSeconds);
    client.requestHeaders = nullptr;
    client.Get("x", kLongSeconds);

    const std::string usual = " HTTP/1.0\r\nAccept: */*\r\nAccept-Language: en\r\nHost: ";
    const std::string host = usual + "127.0.0.1:" + std::to_string(server.Port()) + "\r\n";
    EXPECT_THAT(server.Requests(),
                testing::ElementsAre(
                    "GET /夜?a=b#c HTTP/1.0\r\nAccept: */*\r\nAccept-Language: en\r\nUser-Agent: MSIE\r\n" +
                        host.substr(usual.size() - 6) + "\r\n",
                    "POST /" + host + "Content-type: text/plain\r\nContent-length: 4\r\n\r\na" +
                        std::string("\0\r\n", 3),
                    "post /" + host +
                        "Content-type: application/x-www-form-urlencoded\r\nContent-length: 5\r\n\r\na=b+c",
                    "HEAD http://host.invalid:81/x" + usual + "host.invalid:81\r\n\r\n",
                    "POST x HTTP/1.0\r\nHost: x\r\nContent-type: \r\nContent-length: 0\r\n\r\n",
                    "GET x" + usual + "x\r\n\r\n"));
}

TEST(Client, ReportsWhatFailed) {
    TestRuntime runtime;
    /// Overriding one form changes no other.
    struct : Client {
        using Client::SendRequest;
        String SendRequest(const String&, const String&, std::int32_t) override { return "another"; }
    } client;
    const std::string nobody = ScriptedServer({}).Url();
    EXPECT_EQ(client.GetHeaders(nobody, kLongSeconds), nullptr);
    EXPECT_EQ(client.ErrorCode(), SocketError::kRefused);
    // Of a broken page, what arrived is kept, and stays if the next request gets no connection.
    ScriptedServer closesEarly(ScriptedServer::Answer("HTTP/1.0 200 OK\r\nContent-length: 100\r\n\r\npart"));
    EXPECT_EQ(client.Get(closesEarly.Url(), kLongSeconds), "part");
    EXPECT_EQ(client.ErrorCode(), 0);
    EXPECT_EQ(client.Get("", kLongSeconds), "part");
    EXPECT_EQ(client.ErrorCode(), SocketError::kNameNotFound);

    const auto path = runtime.folder.Write("page.txt", "old content");
    const auto file = std::make_shared<FolderItem>(path);
    EXPECT_TRUE(client.Get(closesEarly.Url(), file, kLongSeconds));
    EXPECT_EQ(ReadBytes(path), "part");
    EXPECT_EQ(client.Page(), "");
    // A file that the disk can't hold must not look like a whole one.
    const auto atMost = [](rlim_t bytes) {
        const rlimit limit{bytes, RLIM_INFINITY};
        setrlimit(RLIMIT_FSIZE, &limit);
    };
    std::signal(SIGXFSZ, SIG_IGN);
    atMost(3);
    EXPECT_FALSE(client.Get(closesEarly.Url(), file, kLongSeconds));
    atMost(RLIM_INFINITY);
    EXPECT_EQ(client.ErrorCode(), 1);
    EXPECT_FALSE(client.Get("", file, kLongSeconds));
    EXPECT_EQ(ReadBytes(path), "");
}

TEST(Client, AnswersChallengesAndHandlesEventsInOneWait) {
    TestRuntime runtime;
    std::promise<void> handled;
    const std::string answers[] = {"x 407\r\nProxy-Authenticate: Basic realm=\"p\"\r\n\r\nproxy",
                                   "x 401\r\nWWW-Authenticate: Basic realm=\"w\"\r\n\r\nserver", kHello};
    ScriptedServer server([&](Connection& client) {
        client.ReadRequest();
        if (client.Number() == 0) handled.get_future().wait();
        client.Send(answers[client.Number() % 3]);
    });
    runtime.runtime.Events().Post([&handled] { handled.set_value(); });
    Client client;
    client.Yield = true;
    client.Answer(3, "n", "p");
    client.SetPostContent("body", "text/plain");
    EXPECT_EQ(client.Post(server.Url(), kLongSeconds), "hello");
    EXPECT_THAT(server.Requests()[1], testing::HasSubstr("\r\nProxy-Authorization: Basic bjpw\r\n"));
    EXPECT_THAT(server.Requests()[2], testing::EndsWith("\r\nAuthorization: Basic bjpw\r\n\r\nbody"));
    // Credentials are sent once; a handler that gives up gets the page.
    EXPECT_EQ(client.Get(server.Url(), kLongSeconds), "server");
    EXPECT_EQ(client.events, "proxy:p server:w proxy:p server:w ");
    EXPECT_EQ(client.HTTPStatusCode(), 401);
    EXPECT_EQ(client.ErrorCode(), 0);
}

TEST(Client, AHandlerMayEndOrReplaceItsRequest) {
    TestRuntime runtime;
    ScriptedServer server([](Connection& connection) {
        const std::string request = connection.ReadRequest();
        const std::string first = request.starts_with("GET /4") ? "x 401" : "x 200";
        connection.Send(request.starts_with("GET / ") ? kHello : first + "\r\n\r\nfirst");
    });
    const auto file = std::make_shared<FolderItem>(runtime.folder.Path() / "page.txt");
    const auto folder = std::make_shared<FolderItem>(runtime.folder.Path());
    std::unique_ptr<Client> client;
    const struct {
        const char* name;
        std::function<void()> act;
        std::string events;  ///< from then on
    } actions[] = {
        {"close", [&] { client->Close(); }, ""},
        {"a page", [&] { client->Get(server.Url()); }, "connected headers:200 5/0 page:hello "},
        {"a file", [&] { client->Get(server.Url(), file); }, "connected headers:200 5/0 file:page.txt "},
        {"a folder", [&] { client->Get(server.Url(), folder); }, "error:1 "},
        {"end", [&] { client.reset(); }, ""},
    };
    for (const char* status : {"/200", "/401"}) {
        for (int event = 0; event < 4; ++event) {
            for (const auto& action : actions) {
                SCOPED_TRACE(action.name + (" in event " + std::to_string(event)) + " of " + status);
                client = std::make_unique<Client>();
                client->RecordEvents();
                client->actsIn = event;
                client->act = action.act;
                client->Get(server.Url(status));
                PollWhile(*client, [&] { return client && client->act; });
                if (!client) continue;
                PollWhile(*client, [&] { return client->events.size() < action.events.size(); });
                while (client->HasEvents()) client->Poll();
                EXPECT_EQ(client->events, action.events);
            }
        }
    }
}

}  // namespace
}  // namespace sorakaze::test
