// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// The client against servers on loopback, from the main thread and from cooperative ones.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/resource.h>

#include <atomic>
#include <chrono>
#include <csignal>
#include <future>
#include <memory>
#include <string>

#include "app/runtime/TextStreams.h"
#include "app/runtime/Thread.h"
#include "tests/http/HttpTesting.h"
#include "tests/support/ScriptedServer.h"
#include "tests/support/TestRuntime.h"

namespace sorakaze::test {
namespace {

using Connection = ScriptedServer::Connection;

/// A clock that a test sets by hand.
class HandClock final : public Clock {
  public:
    TickCount Tick() const override { return tick_; }
    std::chrono::nanoseconds Now() const override { return TimeOfTick(tick_); }
    bool IsDriven() const override { return false; }
    void Advance() noexcept override {}
    void Add(TickCount ticks) { tick_ += ticks; }

  private:
    std::atomic<TickCount> tick_{0};
};

/// Events of the socket are fired until the condition is false.
void PollWhile(SocketCore& socket, FunctionRef<bool()> condition) {
    const Scheduler::KeepToWall toTheWall(Runtime::Current().Threads());
    while (condition()) {
        WaitWhile([&] { return !socket.HasEvents(); });
        socket.Poll();
    }
}

constexpr const char* kHello = "HTTP/1.0 200 OK\r\nX: 1\r\n\r\nhello";

TEST(Client, SendsTheseBytes) {
    TestRuntime runtime;
    ScriptedServer server(ScriptedServer::Answer(kHello));
    const std::string host = "127.0.0.1:" + std::to_string(server.Port());
    const std::string usual = "Accept: */*\r\nAccept-Language: en\r\nHost: " + host;
    Client client;
    EXPECT_EQ(client.Get(server.Url("/夜?a=b#c"), kLongSeconds), "hello");
    client.SetRequestHeader("User-Agent", "MSIE");
    EXPECT_EQ(client.GetHeaders(server.Url(""), kLongSeconds)->Value("x"), "1");
    client.SetRequestHeader("user-agent", "");
    client.SetRequestHeader("Accept-Language", "ja");
    client.SetPostContent(std::string("a\0\r\n", 4), "text/plain");
    EXPECT_EQ(client.Post(server.Url(), kLongSeconds), "hello");
    const auto form = std::make_shared<Dictionary>();
    form->SetValue("a", "b c");
    client.SetFormData(form);
    EXPECT_EQ(client.SendRequest("post", server.Url(), kLongSeconds), "hello");
    EXPECT_EQ(client.SendRequest("", server.Url(), kLongSeconds), "hello");
    EXPECT_EQ(client.Post(server.Url(), kLongSeconds), "hello");
    client.ClearRequestHeaders();
    client.HTTPProxyAddress = "127.0.0.1";
    client.HTTPProxyPort = server.Port();
    EXPECT_EQ(client.Get("http://host.invalid:81/x", kLongSeconds), "hello");
    client.HTTPProxyPort = 0;
    client.DefaultPort = server.Port();
    client.requestHeaders = nullptr;
    EXPECT_EQ(client.Get("x", kLongSeconds), "hello");

    const std::string japanese = "Accept: */*\r\nAccept-Language: ja\r\nHost: " + host;
    EXPECT_THAT(
        server.Requests(),
        testing::ElementsAre(
            "GET /夜?a=b#c HTTP/1.0\r\n" + usual + "\r\n\r\n",
            "HEAD / HTTP/1.0\r\n" + usual + "\r\nUser-Agent: MSIE\r\n\r\n",
            "POST / HTTP/1.0\r\n" + japanese + "\r\nContent-type: text/plain\r\nContent-length: 4\r\n\r\n" +
                std::string("a\0\r\n", 4),
            "post / HTTP/1.0\r\n" + japanese +
                "\r\nContent-type: application/x-www-form-urlencoded\r\nContent-length: 5\r\n\r\na=b+c",
            "GET / HTTP/1.0\r\n" + japanese + "\r\n\r\n",
            "POST / HTTP/1.0\r\n" + japanese + "\r\nContent-type: \r\nContent-length: 0\r\n\r\n",
            "GET http://host.invalid:81/x HTTP/1.0\r\nHost: host.invalid:81\r\n\r\n",
            "GET x HTTP/1.0\r\nAccept: */*\r\nAccept-Language: en\r\nHost: x\r\n\r\n"));
}

TEST(Client, FiresEventsOrWritesFiles) {
    TestRuntime runtime;
    ScriptedServer server([](Connection& client) {
        client.ReadRequest();
        client.SendInPieces(kHello, 1);
    });
    const auto file = std::make_shared<FolderItem>(runtime.folder.Path() / "page.txt");
    const auto folder = std::make_shared<FolderItem>(runtime.folder.Path());
    const auto content = [&file] {
        const auto stream = TextInputStream::Open(file);
        return stream ? stream->ReadLine().Bytes() : "missing";
    };
    Client client;
    client.NoteEvents();
    const auto finish = [&client](const char* last) {
        PollWhile(client, [&] { return client.events.find(last) == std::string::npos; });
        return std::exchange(client.events, {});
    };
    client.Get(server.Url());
    EXPECT_EQ(finish("page"), "connected headers:200 5/0 page:hello ");
    client.Post(server.Url(), file);
    EXPECT_EQ(finish("file"), "connected headers:200 5/0 file:page.txt ");
    EXPECT_EQ(content(), "hello");
    client.Get(server.Url(), folder);
    EXPECT_EQ(std::exchange(client.events, {}), "error:1 ");
    client.Get("http://127.0.0.1:-1/");
    EXPECT_EQ(finish("error"), "error:107 ");

    runtime.folder.Write("page.txt", "old content");
    EXPECT_TRUE(client.Get(server.Url(), file, kLongSeconds));
    EXPECT_EQ(content(), "hello");
    EXPECT_EQ(client.Page() + client.events, "");

    // What the disk doesn't take must not pass for a whole file.
    const auto atMost = [](rlim_t bytes) {
        const rlimit limit{bytes, RLIM_INFINITY};
        setrlimit(RLIMIT_FSIZE, &limit);
    };
    std::signal(SIGXFSZ, SIG_IGN);
    atMost(3);
    const bool whole = client.Get(server.Url(), file, kLongSeconds);
    atMost(RLIM_INFINITY);
    EXPECT_FALSE(whole);
    EXPECT_EQ(client.ErrorCode(), 1);
    EXPECT_FALSE(client.Get("", file, kLongSeconds));
    EXPECT_EQ(content(), "");
}

TEST(Client, AnswersChallengesOfServerAndProxyInOneWait) {
    TestRuntime runtime;
    ScriptedServer server([](Connection& client) {
        const std::string request = client.ReadRequest();
        const bool proxy = request.find("\r\nProxy-Authorization: Basic bjpw\r\n") != std::string::npos;
        const bool known = request.find("\r\nAuthorization: Basic bjpw\r\n") != std::string::npos;
        client.Send(!proxy && !known ? "HTTP/1.0 407 P\r\nProxy-Authenticate: Basic realm=\"p\"\r\n\r\nproxy"
                    : !known         ? "HTTP/1.0 401 U\r\nWWW-Authenticate: Basic realm=\"w\"\r\n\r\nserver"
                                     : kHello);
    });
    std::string realms;
    Client client;
    client.AuthenticationRequired = [&](const String& realm, const InternetHeadersRef&, String& name,
                                        String& password) {
        realms += realm.Bytes();
        name = "n";
        password = "p";
        return realms.size() < 4;
    };
    client.ProxyAuthenticationRequired = client.AuthenticationRequired;
    client.SetPostContent("body", "text/plain");
    EXPECT_EQ(client.Post(server.Url(), kLongSeconds), "hello");
    EXPECT_EQ(realms, "pw");
    // A key serves one request; a handler that gives up gets the page.
    EXPECT_EQ(client.Get(server.Url(), kLongSeconds), "server");
    EXPECT_EQ(client.HTTPStatusCode(), 401);
    EXPECT_EQ(client.Get(server.Url(), kLongSeconds), "proxy");
    EXPECT_EQ(client.ErrorCode(), 0);
    const auto requests = server.Requests();
    ASSERT_EQ(requests.size(), 6u);
    EXPECT_THAT(requests[2], testing::EndsWith("\r\n\r\nbody"));
    EXPECT_THAT(requests[3], testing::Not(testing::HasSubstr("uthorization")));
}

TEST(Client, TellsWhatBroke) {
    TestRuntime runtime;
    std::string nobody;
    {
        const ScriptedServer gone([](Connection&) {});
        nobody = gone.Url();
    }
    /// Who changes one form changes no other.
    struct : Client {
        using Client::SendRequest;
        String SendRequest(const String&, const String&, std::int32_t) override { return "another"; }
    } client;
    EXPECT_EQ(client.Get(nobody, kLongSeconds), "");
    EXPECT_EQ(client.ErrorCode(), SocketError::kRefused);
    EXPECT_EQ(client.GetHeaders(nobody, kLongSeconds), nullptr);
    EXPECT_EQ(client.PageHeaders(), nullptr);
    // A page that is torn is what there was of it.
    ScriptedServer tears([](Connection& connection) {
        connection.ReadRequest();
        connection.Send("HTTP/1.0 200 OK\r\nContent-length: 100\r\n\r\npart");
    });
    EXPECT_EQ(client.Get(tears.Url(), kLongSeconds), "part");
    EXPECT_EQ(client.ErrorCode(), 0);
    // It is still there where no connection comes about.
    EXPECT_EQ(client.Get("", kLongSeconds), "part");
    EXPECT_EQ(client.ErrorCode(), SocketError::kNameNotFound);
}

/// 30 seconds without a sign of life, told by a clock that goes as the test wants.
struct TimeLimit : testing::Test {
    /// What waits for the time or the network has had a look at it.
    void Look() {
        for (int turn = 0; turn < 3; ++turn) {
            runtime.runtime.Threads().Notify();
            Yield();
        }
    }
    /// Begins a wait on a thread of its own.
    void Begin(std::function<void()> wait) {
        thread.RunEvent = std::move(wait);
        thread.Run();
    }
    bool Runs() const { return thread.State() == Thread::kRunning; }
    /// True if the wait ends with just the tick behind `ticks`.
    bool EndsBehind(TickCount ticks) {
        clock->Add(ticks);
        Look();
        if (!Runs()) return false;
        clock->Add(1);
        Look();
        return !Runs();
    }

    HandClock* clock = new HandClock();
    TestRuntime runtime{std::unique_ptr<Clock>(clock)};
    Client client;
    Thread thread;
    static constexpr std::int32_t kSeconds = 30;
    static constexpr TickCount kTicks = 30 * kTicksPerSecond;
};

TEST_F(TimeLimit, CountsFromTheLastSignOfLife) {
    std::promise<void> sendMore;
    ScriptedServer server([&sendMore](Connection& connection) {
        connection.ReadRequest();
        connection.Send("HTTP/1.0 200 OK\r\n\r\na");
        sendMore.get_future().wait();
        connection.Send("b");
        connection.WaitForClose();
    });
    String page;
    Begin([&] { page = client.Get(server.Url(), kSeconds); });
    WaitWhile([this] { return client.PageLength() < 1; });
    clock->Add(kTicks - 1);
    Look();
    EXPECT_TRUE(Runs());
    sendMore.set_value();
    WaitWhile([this] { return client.PageLength() < 2; });
    EXPECT_TRUE(EndsBehind(kTicks));
    EXPECT_EQ(page, "ab");
    EXPECT_EQ(client.ErrorCode(), -1);
    EXPECT_FALSE(client.IsConnected());
}

/// A folder can't be written to; the wait forgets that it knew, and waits for a page that can't come.
TEST_F(TimeLimit, EndsWhatCannotComeToAnEnd) {
    const auto folder = std::make_shared<FolderItem>(runtime.folder.Path());
    bool result = true;
    Begin([&] { result = client.Get("", folder, kSeconds); });
    Look();
    EXPECT_EQ(client.ErrorCode(), 0);
    EXPECT_TRUE(EndsBehind(kTicks));
    EXPECT_EQ(client.ErrorCode(), -1);
    EXPECT_FALSE(result);
    Begin([&] { client.Get("", folder, 0); });
    EXPECT_FALSE(EndsBehind(1'000'000'000));
    EXPECT_TRUE(Runs());
    thread.Kill();
    Look();
}

TEST(Client, HandlesEventsWhileItWaitsOnTheMainThread) {
    TestRuntime runtime;
    std::promise<void> timerFired;
    ScriptedServer server([&](Connection& connection) {
        timerFired.get_future().wait();
        connection.Send(kHello);
    });
    Timer timer;
    timer.SetPeriod(20);
    timer.SetMode(Timer::kSingle);
    timer.Action = [&] {
        timer.SetMode(Timer::kOff);
        timerFired.set_value();
    };
    Client client;
    client.Yield = true;
    EXPECT_EQ(client.Get(server.Url(), kLongSeconds), "hello");
}

TEST(Client, AHandlerMayEndOrReplaceItsRequest) {
    TestRuntime runtime;
    ScriptedServer server([](Connection& connection) {
        const std::string request = connection.ReadRequest();
        const auto first = request.find("/4") != std::string::npos ? "401" : "200";
        connection.Send(request.find("GET / ") == 0 ? kHello : std::string("x ") + first + "\r\n\r\nfirst");
    });
    const auto file = std::make_shared<FolderItem>(runtime.folder.Path() / "page.txt");
    const auto folder = std::make_shared<FolderItem>(runtime.folder.Path());
    const std::string page = "connected headers:200 5/0 page:hello ";
    const std::string download = "connected headers:200 5/0 file:page.txt ";
    std::unique_ptr<Client> client;
    const struct {
        const char* name;
        std::function<void()> act;
        std::string events;  ///< from then on
    } actions[] = {
        {"close", [&] { client->Close(); }, ""},
        {"another request", [&] { client->Get(server.Url()); }, page},
        {"a download", [&] { client->Get(server.Url(), file); }, download},
        {"one that can't be", [&] { client->Get(server.Url(), folder); }, "error:1 "},
        {"end", [&] { client.reset(); }, ""},
    };
    for (const std::string status : {"200", "401"}) {
        for (int event = 0; event < 4; ++event) {
            for (const auto& action : actions) {
                SCOPED_TRACE(action.name + (" in event " + std::to_string(event)) + " of " + status);
                client = std::make_unique<Client>();
                client->NoteEvents();
                bool acted = false;
                const auto actIn = [&](int which, auto& handler) {
                    if (which != event) return;
                    handler = [&, noted = handler](const auto&... arguments) {
                        if (acted) return noted(arguments...);
                        acted = true;
                        client->events.clear();
                        action.act();
                    };
                };
                actIn(0, client->Connected);
                actIn(1, client->HeadersReceived);
                actIn(2, client->ReceiveProgress);
                actIn(3, client->PageReceived);
                client->Get(server.Url("/" + status));
                PollWhile(*client, [&] { return !acted; });
                if (!client) continue;
                const auto goesOn = [&] { return client->events.size() < action.events.size(); };
                PollWhile(*client, goesOn);
                while (client->HasEvents()) client->Poll();
                EXPECT_EQ(client->events, action.events);
            }
        }
    }
}

}  // namespace
}  // namespace sorakaze::test
