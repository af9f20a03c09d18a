// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include <dlfcn.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <netdb.h>

#include <cstring>
#include <latch>
#include <optional>
#include <stdexcept>
#include <stop_token>
#include <string>
#include <thread>
#include <tuple>
#include <utility>
#include <vector>

#include "gateway/Article.h"
#include "gateway/Gateway.h"
#include "gateway/LeadText.h"
#include "gateway/LoopbackServer.h"
#include "gateway/Names.h"
#include "gateway/SearchTarget.h"
#include "tests/app/runtime/sockets/Peer.h"
#include "tests/gateway/TlsSite.h"
#include "tests/support/ScriptedServer.h"

namespace {

/// Of a look-up of "hangs.test", which is released by a test.
std::latch begun(1), released(1), ended(1);

}  // namespace

/// In front of the library's own.
extern "C" int getaddrinfo(const char* name, const char* service, const addrinfo* hints, addrinfo** found) {
    if (name && std::strcmp(name, "hangs.test") == 0) {
        begun.count_down();
        released.wait();
        ended.count_down();
        return EAI_NONAME;
    }
    static const auto real = reinterpret_cast<decltype(&getaddrinfo)>(dlsym(RTLD_NEXT, "getaddrinfo"));
    if (name && std::strcmp(name, "name.invalid") == 0) {
        ++sorakaze::test::lookUps;
        if (!sorakaze::test::isFound) return EAI_NONAME;
        name = "localhost";
    }
    return real(name, service, hints, found);
}

namespace sorakaze::gateway {
namespace {

using namespace std::literals;
using testing::HasSubstr;
using testing::StartsWith;

test::PeerEnd Connected(int port, const char* address = "127.0.0.1") {
    return test::PeerEnd(test::Place(address, port));
}

/// All that comes until the server closes.
std::string Ask(int port, const std::string& request) {
    const test::PeerEnd client = Connected(port);
    client.Send(request);
    return client.Receive(1 << 18);
}

struct Host {
    explicit Host(const Gateway& gateway)
        : address(gateway.Host().substr(0, gateway.Host().find('/'))),
          path(gateway.Host().substr(address.size())),
          port(std::stoi(address.substr(address.find(':') + 1))) {}
    std::string address;
    std::string path;
    int port;
};

/// A user's proxy isn't asked for what is on this machine.
[[maybe_unused]] const int kNoProxy = ::setenv("no_proxy", "*", 1);

const std::string kSearch = "/search?hl=en&q=a+en.wikipedia.org&btnI=I'm+feeling+Lucky";

TEST(GatewayTest, OnlyWhoKnowsTheTokenIsAnswered) {
    Options options;
    options.englishSite = options.japaneseSite = "";
    const Gateway gateway(options);
    const Host host(gateway);
    EXPECT_THAT(host.path, testing::MatchesRegex("/[0-9a-f]{32}"));
    EXPECT_NE(host.path, Host(Gateway(options)).path);
    const std::string voice = "/voice_neo/vsdemo.aspx", right = "Host: " + host.address;
    const auto isRefused = [&](const std::string& target, const std::string& header,
                               const std::string& method = "GET") {
        return Ask(host.port, method + ' ' + target + " HTTP/1.0\r\n" + header + "\r\n\r\n")
            .starts_with("HTTP/1.1 404 Not Found\r\n");
    };
    EXPECT_FALSE(isRefused(host.path + voice, right));
    EXPECT_TRUE(isRefused("/" + std::string(32, '0') + voice, right));
    EXPECT_TRUE(isRefused(host.path.substr(0, 32) + voice, right));
    EXPECT_TRUE(isRefused(voice, right));
    EXPECT_TRUE(isRefused("/x/.." + host.path + voice, right));
    for (const auto& header : {"Host: localhost:" + std::to_string(host.port), "Host: 127.0.0.1"s, "A: b"s})
        EXPECT_TRUE(isRefused(host.path + voice, header)) << header;
    EXPECT_TRUE(isRefused(host.path + voice, right, "PUT"));
    EXPECT_TRUE(isRefused(host.path + kSearch, right, "POST"));
    EXPECT_TRUE(isRefused(host.path + kSearch, right, "HEAD")) << "nothing is found without a site";
    EXPECT_LT(Connected(host.port, "127.0.0.2").descriptor, 0) << "bound to one address alone";
}

TEST(GatewayTest, EndsAtOnceWhateverIsUnderWay) {
    std::latch asked(1);
    test::ScriptedServer silent([&](test::ScriptedServer::Connection& connection) {
        if (connection.Number() == 0) asked.count_down();
        connection.ReadRequest();
    });
    const std::string silentSite = "https://127.0.0.1:" + std::to_string(silent.Port());
    const struct {
        std::string site;
        std::latch* isUnderWay;  ///< nullptr: the search ends by itself
    } cases[] = {{"https://hangs.test", &begun}, {silentSite, &asked}, {silentSite, nullptr}};
    for (const auto& [site, isUnderWay] : cases) {
        Options options;
        options.englishSite = site;
        options.totalTime = isUnderWay ? std::chrono::milliseconds(std::chrono::hours(1)) : 50ms;
        std::optional<Gateway> gateway(std::in_place, options);
        const Host host(*gateway);
        const auto idle = Connected(host.port), half = Connected(host.port), client = Connected(host.port);
        half.Send("GET /");
        client.Send("HEAD " + host.path + kSearch + " HTTP/1.0\r\nHost: " + host.address + "\r\n\r\n");
        if (isUnderWay) {
            isUnderWay->wait();
            gateway.reset();
            EXPECT_LT(Connected(host.port).descriptor, 0);
        }
        const std::string answer = client.Receive(1 << 18);
        EXPECT_TRUE(answer.starts_with("HTTP/1.1 404") || (isUnderWay && answer.empty())) << answer;
    }
    released.count_down();
    ended.wait();
}

TEST(LoopbackServerTest, HandsOnTargetsAsTheyCameAndFormsDecoded) {
    LoopbackServer server;
    server.Start([](const ServerRequest& request) { return request.target != "/no"; },
                 [](const ServerRequest& request) {
                     if (request.target == "/throw") throw std::runtime_error("a fault");
                     ServerAnswer answer{200, "text/plain", request.method + ' ' + request.target, {}};
                     for (const auto& [name, value] : request.fields) answer.body += '|' + name + '=' + value;
                     return answer;
                 });
    const auto ask = [&](const std::string& start, const std::string& body = "") {
        return Ask(server.Port(),
                   start +
                       " HTTP/1.0\r\nContent-type: application/x-www-form-urlencoded\r\nContent-Length: " +
                       std::to_string(body.size()) + "\r\n\r\n" + body);
    };
    for (const std::string target : {"/#1?a?b#c", "/Bj\xC3\xB6rk/100%&%zz", "/\xFF\xFE", "//..//%00"}) {
        EXPECT_THAT(ask("GET " + target), HasSubstr("\r\n\r\nGET " + target)) << target;
    }
    EXPECT_THAT(ask("POST /f", "text=%E3%81%82+%2B%26&empty=&last=x%3D1&last=2"),
                HasSubstr("POST /f|empty=|last=x=1|last=2|text=あ +&"));
    EXPECT_THAT(ask("GET /no"), StartsWith("HTTP/1.1 404 "));
    EXPECT_THAT(ask("GET /throw"), StartsWith("HTTP/1.1 500 "));
    EXPECT_THAT(ask("GET /" + std::string(60'000, 'x')), StartsWith("HTTP/1.1 414 "));
    {
        // More at a time than are served: those above are sent away, until the others have gone.
        std::vector<test::PeerEnd> idle;
        for (int i = 0; i < 40; ++i) idle.push_back(Connected(server.Port()));
    }
    while (ask("GET /after").find("GET /after") == std::string::npos) {
    }
}

TEST(LoopbackServerTest, SlowStrangersKeepNobodyOut) {
    constexpr auto kPatience = 300ms;
    LoopbackServer server;
    server.Start([](const ServerRequest& request) { return request.target == "/token"; },
                 [](const ServerRequest&) {
                     return ServerAnswer{200, "text/plain", "welcome", {}};
                 },
                 kPatience);
    std::vector<test::PeerEnd> strangers;
    const auto begins = [&](const char* request) {
        strangers.push_back(Connected(server.Port()));
        strangers.back().Send(request);
    };
    for (int i = 0; i < 100; ++i) {
        begins(i % 2 ? "GET /tok" : "");
        if (i % 10 == 9) {
            EXPECT_THAT(Ask(server.Port(), "GET /token HTTP/1.0\r\n\r\n"), HasSubstr("welcome")) << i;
        }
    }
    // Each byte is a sign of life, and none helps.
    strangers.clear();
    begins("GET /");
    const std::jthread drips([&](const std::stop_token& ended) {
        for (; !ended.stop_requested(); std::this_thread::sleep_for(kPatience / 20)) strangers[0].Send("x");
    });
    EXPECT_EQ(strangers[0].Receive(1 << 18), "");
}

/// Text and elements that hold one another up: `piece` so many times, on the stack of a server's thread.
TEST(ArticleTest, WhatIsMadeToExhaustTheParserIsNoArticle) {
    const struct {
        std::string before, piece;
        int times;
        std::string behind;
    } cases[] = {
        {"", "<div><!--</div>-->", 9'900, ""},
        {"", "<div><style></div></style>", 9'900, ""},
        {"", "<div><table></div></table>", 4'900, ""},
        {"", "<div>", 9'900, "<frameset>"},
        {"", "<p><b>x</b>", 200'000, ""},
        {"<a ", "b='>' ", 90'000, ">"},
        {"<b><PlainText>", "<span>", 150'000, ""},
        {"<p><b>A</b>", "[", 250'000, std::string(250'000, ')') + " was a singer.</p>"},
    };
    for (const auto& [before, piece, times, behind] : cases) {
        std::string page = before;
        for (int i = 0; i < times; ++i) page += piece;
        page += behind + "<p><b>A</b> was a singer.</p>";
        LoopbackServer server;
        server.Start([](const auto&) { return true; },
                     [&](const auto&) {
                         const auto told = ReadArticle(page, "A", Edition::English).told;
                         return ServerAnswer{200, "text/plain", told, ""};
                     });
        EXPECT_THAT(Ask(server.Port(), "GET / HTTP/1.0\r\n\r\n"),
                    testing::EndsWith(piece == "[" ? "\r\n\r\n was a singer." : "\r\n\r\n"))
            << before << piece;
    }
}

TEST(LeadTextTest, TheVerbIsTheNamesOwn) {
    const std::tuple<const char*, const char*, const char*> cases[] = {
        {"Emma Bunton", "*Emma Lee Bunton* rose to fame with the Spice Girls. Their debut album was a hit.",
         " rose to fame with the Spice Girls. Their debut album was a hit."},
        {"Ladytron", "*Ladytron* formed in 1999. The song was a hit.",
         " formed in 1999. The song was a hit."},
        {"Jimi", "*James* \"*Jimi*\" Hendrix played. He was a guitarist.", ""},
        {"Foo", "*Foo* have been a band since 1990. One of them is a drummer.",
         " have been a band since 1990. One of them is a drummer."},
        {"Ana", "*Ana Silva*, whose father was a footballer, is known for samba.", " is known for samba."},
        {"Ana", "*Ana Silva*, whose father, a footballer, was famous, is a singer.", " is a singer."},
        {"Ana", "*Ana Silva* Lopes, whose songs sold well, is a singer.", ""},
        {"Ana", "*Ana* Maria *Silva*, who sang in Foo, Bar, and Baz, was a singer. She died.",
         " was a singer. She died."},
        {"Ana", "*Ana Silva*, OBE, known as *A.*, has sold records.", " has sold records."},
        {"Foo", "*Foo*, from Leeds, toured, and their album, *Bar*, was a hit.",
         ", from Leeds, toured, and their album, Bar, was a hit."},
        {"Foo", "*Foo* toured with Bar, and its album, *Baz*, was a hit.",
         " toured with Bar, and its album, Baz, was a hit."},
        {"Foo", "*Foo* – a band after Bar was dissolved – are two singers.", " are two singers."},
        {"Ana", "The mother of *Ana Silva* was a footballer.", ""},
    };
    for (const auto& [title, text, told] : cases) {
        std::string paragraph = text;
        bool opens = true;
        for (char& c : paragraph) {
            if (c == '*') c = std::exchange(opens, !opens) ? kBoldBegins : kBoldEnds;
        }
        EXPECT_EQ(Told(paragraph, title, Edition::English), told) << text;
    }
}

TEST(SearchTargetTest, ANameIsReadBetweenItsKnownEnds) {
    const std::pair<const char*, const char*> cases[] = {
        {"#1+dads", "#1 dads"},
        {"%41&q=b&btnI=c", "%41&q=b&btnI=c"},
        {"ryuichi+sakamoto+", "ryuichi sakamoto"},
        {"+b++c", "b c"},
        {"\xFF", nullptr},
        {"", nullptr},
        {"++", nullptr},
    };
    for (const auto& [sent, name] : cases) {
        for (const std::string edition : {"en", "ja"}) {
            const auto search = ParseSearch("/search?hl=" + edition + "&q=" + sent + "+" + edition +
                                            ".wikipedia.org&btnI=I'm+feeling+Lucky");
            ASSERT_EQ(search.has_value(), name != nullptr) << sent;
            if (!search) continue;
            EXPECT_EQ(search->name, name);
            EXPECT_EQ(search->edition, edition == "ja" ? Edition::Japanese : Edition::English);
            EXPECT_EQ(ParseArticleAddress(ArticleTarget({search->edition, name})).value().title, name);
        }
    }
    for (const char* target : {"/search", "/search?hl=en&q=a",
                               "/search?hl=de&q=a+h&btnI=", "/Search?hl=en&q=a+h&btnI=", "/wiki/en/",
                               "/wiki/en/%4", "/wiki/en/%FF", "/wiki/de/A", "/wiki"})
        EXPECT_FALSE(ParseSearch(target) || ParseArticleAddress(target)) << target;
}

TEST(NamesTest, SpellingsOfOneNameAreTheSame) {
    for (const auto& [one, other] : {std::pair{"the beatles", "Beatles"},
                                     {"Guns n' Roses", "guns n’ roses"},
                                     {"motorhead", "Motörhead"},
                                     {"MO", "MØ"},
                                     {"beatles, the", "The Beatles"},
                                     {"ＹＭＯ", "ymo"},
                                     {"!!!", "!!!"}}) {
        EXPECT_TRUE(SameName(one, other)) << one;
    }
    for (const auto& [one, other] :
         {std::pair{"!!!", "???"}, {"かき", "がき"}, {"Prince", "Princess"}, {"", "a"}}) {
        EXPECT_FALSE(SameName(one, other)) << one;
    }
}

}  // namespace
}  // namespace sorakaze::gateway
