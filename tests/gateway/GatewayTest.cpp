// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include <arpa/inet.h>
#include <dlfcn.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <netdb.h>
#include <pthread.h>

#include <atomic>
#include <cstring>
#include <latch>
#include <optional>
#include <stdexcept>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "gateway/Article.h"
#include "gateway/Gateway.h"
#include "gateway/LeadText.h"
#include "gateway/LoopbackServer.h"
#include "gateway/Names.h"
#include "gateway/SearchTarget.h"
#include "tests/support/ScriptedServer.h"

namespace {

/// A look-up of "hangs.test" that ends when a test says so.
struct HangingLookUp {
    std::latch begun{1};
    std::latch release{1};
    std::latch ended{1};
};
HangingLookUp* hanging = nullptr;

}  // namespace

namespace sorakaze::test {
/// Of "name.invalid", which is this machine if a test says so and else isn't found.
std::atomic<int> lookUps = 0;
std::atomic<bool> isFound = false;
}  // namespace sorakaze::test

/// In front of the library's own.
extern "C" int getaddrinfo(const char* name, const char* service, const addrinfo* hints, addrinfo** found) {
    if (name && std::strcmp(name, "hangs.test") == 0) {
        HangingLookUp& lookUp = *hanging;
        lookUp.begun.count_down();
        lookUp.release.wait();
        lookUp.ended.count_down();
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

using testing::HasSubstr;
using testing::StartsWith;

class Client {
  public:
    explicit Client(int port, const char* address = "127.0.0.1") {
        sockaddr_in to{};
        to.sin_family = AF_INET;
        to.sin_port = htons(static_cast<std::uint16_t>(port));
        inet_pton(AF_INET, address, &to.sin_addr);
        connected = ::connect(socket_, reinterpret_cast<sockaddr*>(&to), sizeof to) == 0;
    }
    ~Client() { ::close(socket_); }
    Client(const Client&) = delete;
    Client& operator=(const Client&) = delete;

    void Send(const std::string& bytes) {
        EXPECT_EQ(::send(socket_, bytes.data(), bytes.size(), MSG_NOSIGNAL),
                  static_cast<ssize_t>(bytes.size()));
    }
    /// Until the server closes.
    std::string Receive() {
        std::string all;
        char piece[4096];
        for (ssize_t size; (size = ::recv(socket_, piece, sizeof piece, 0)) > 0;) {
            all.append(piece, static_cast<std::size_t>(size));
        }
        return all;
    }

    bool connected = false;

  private:
    const int socket_ = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
};

struct Host {
    explicit Host(const Gateway& gateway)
        : address(gateway.Host().substr(0, gateway.Host().find('/'))),
          path(gateway.Host().substr(address.size())),
          port(std::stoi(address.substr(address.find(':') + 1))) {}
    std::string address;
    std::string path;
    int port;

    std::string Request(const std::string& target, const std::string& method = "GET") const {
        return method + ' ' + path + target + " HTTP/1.0\r\nAccept: */*\r\nHost: " + address + "\r\n\r\n";
    }
};

Options Without() {
    Options options;
    options.englishSite = options.japaneseSite = "";
    return options;
}

/// A user's proxy isn't asked for what is on this machine.
[[maybe_unused]] const int kNoProxy = ::setenv("no_proxy", "*", 1);

const std::string kSearch = "/search?hl=en&q=a+en.wikipedia.org&btnI=I'm+feeling+Lucky";

TEST(GatewayTest, OnlyWhoKnowsTheTokenIsAnswered) {
    const Gateway gateway(Without());
    const Host host(gateway);
    EXPECT_THAT(host.path, testing::MatchesRegex("/[0-9a-f]{32}"));
    EXPECT_NE(host.path, Host(Gateway(Without())).path);
    const std::string voice = "/voice_neo/vsdemo.aspx";
    const auto ask = [&](const std::string& target, const std::string& header, const std::string& method) {
        Client client(host.port);
        client.Send(method + ' ' + target + " HTTP/1.0\r\n" + header + "\r\n\r\n");
        const std::string answer = client.Receive();
        return answer.substr(0, answer.find("\r\n"));
    };
    const std::string right = "Host: " + host.address;
    const std::string refused = "HTTP/1.1 404 Not Found";
    EXPECT_NE(ask(host.path + voice, right, "GET"), refused);
    EXPECT_EQ(ask("/" + std::string(32, '0') + voice, right, "GET"), refused);
    EXPECT_EQ(ask(host.path.substr(0, 32) + voice, right, "GET"), refused);
    EXPECT_EQ(ask(voice, right, "GET"), refused);
    EXPECT_EQ(ask("/", right, "GET"), refused);
    EXPECT_EQ(ask("/x/.." + host.path + voice, right, "GET"), refused);
    EXPECT_EQ(ask(host.path + voice, "Host: localhost:" + std::to_string(host.port), "GET"), refused);
    EXPECT_EQ(ask(host.path + voice, "Host: 127.0.0.1", "GET"), refused);
    EXPECT_EQ(ask(host.path + voice, "Accept: */*", "GET"), refused);
    EXPECT_EQ(ask(host.path + voice, right, "PUT"), refused);
    EXPECT_EQ(ask(host.path + kSearch, right, "POST"), refused);
    EXPECT_EQ(ask(host.path + kSearch, right, "HEAD"), refused) << "nothing is found without a site";
    EXPECT_EQ(ask(host.path + "/wiki/en/A", right, "GET"), refused);
    EXPECT_FALSE(Client(host.port, "127.0.0.2").connected) << "bound to one address alone";
}

TEST(GatewayTest, EndsAtOnceWhateverIsUnderWay) {
    std::latch asked(1);
    test::ScriptedServer silent([&](test::ScriptedServer::Connection& connection) {
        asked.count_down();
        connection.ReadRequest();
    });
    HangingLookUp lookUp;
    hanging = &lookUp;
    for (const bool inLookUp : {true, false}) {
        Options options;
        options.englishSite =
            inLookUp ? "https://hangs.test" : "https://127.0.0.1:" + std::to_string(silent.Port());
        options.totalTime = std::chrono::hours(1);
        std::optional<Gateway> gateway(std::in_place, options);
        const Host host(*gateway);
        Client idle(host.port);
        Client half(host.port);
        half.Send("GET /");
        Client client(host.port);
        client.Send(host.Request(kSearch, "HEAD"));
        (inLookUp ? lookUp.begun : asked).wait();
        gateway.reset();
        EXPECT_FALSE(Client(host.port).connected);
        EXPECT_THAT(client.Receive(), testing::AnyOf("", StartsWith("HTTP/1.1 404")));
    }
    lookUp.release.count_down();
    lookUp.ended.wait();
}

TEST(GatewayTest, ASearchHasATimeLimitOverAll) {
    test::ScriptedServer silent(
        [](test::ScriptedServer::Connection& connection) { connection.ReadRequest(); });
    Options options;
    options.englishSite = "https://127.0.0.1:" + std::to_string(silent.Port());
    options.totalTime = std::chrono::milliseconds(50);
    const Gateway gateway(options);
    const Host host(gateway);
    Client client(host.port);
    client.Send(host.Request(kSearch, "HEAD"));
    EXPECT_THAT(client.Receive(), StartsWith("HTTP/1.1 404"));
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
    const auto ask = [&](const std::string& start, const std::string& body = "", std::size_t length = 0) {
        Client client(server.Port());
        client.Send(start +
                    " HTTP/1.0\r\nContent-type: application/x-www-form-urlencoded\r\nContent-Length: " +
                    std::to_string(length ? length : body.size()) + "\r\n\r\n" + body);
        return client.Receive();
    };
    for (const std::string target : {"/#1?a?b#c", "/Bj\xC3\xB6rk/100%&%zz", "/\xFF\xFE", "//..//%00"}) {
        EXPECT_THAT(ask("GET " + target), HasSubstr("\r\n\r\nGET " + target)) << target;
    }
    EXPECT_THAT(ask("POST /f", "text=%E3%81%82+%2B%26&empty=&last=x%3D1&last=2"),
                HasSubstr("POST /f|empty=|last=x=1|last=2|text=あ +&"));
    EXPECT_THAT(ask("GET /no"), StartsWith("HTTP/1.1 404 "));
    EXPECT_THAT(ask("GET /throw"), StartsWith("HTTP/1.1 500 "));
    EXPECT_THAT(ask("GET /" + std::string(60'000, 'x')), StartsWith("HTTP/1.1 414 "));
    EXPECT_THAT(ask("HEAD /h"), testing::EndsWith("\r\n\r\n"));
    {
        // More at a time than are served: those above are sent away, until the others have gone.
        std::vector<std::unique_ptr<Client>> idle;
        for (int i = 0; i < 40; ++i) idle.push_back(std::make_unique<Client>(server.Port()));
    }
    while (ask("GET /after").find("GET /after") == std::string::npos) {
    }
}

/// Text and elements that hold one another up: `piece` so many times, on a stack as small as the server's.
TEST(ArticleTest, WhatIsMadeToExhaustTheParserIsNoArticle) {
    struct Case {
        std::string before, piece;
        int times;
        std::string behind;
    };
    const Case cases[] = {
        {"", "<div><!--</div>-->", 9'900, ""},
        {"", "<div><style></div></style>", 9'900, ""},
        {"", "<div><table></div></table>", 4'900, ""},
        {"", "<div>", 9'900, "<frameset>"},
        {"", "<p><b>x</b>", 200'000, ""},
        {"<a ", "b='>' ", 90'000, ">"},
        {"<b><PlainText>", "<span>", 150'000, ""},
        {"<p><b>A</b>", "[", 250'000, std::string(250'000, ')') + " was a singer.</p>"},
    };
    for (const Case& c : cases) {
        std::string page = c.before;
        for (int i = 0; i < c.times; ++i) page += c.piece;
        page += c.behind + "<p><b>A</b> was a singer.</p>";
        Article article;
        std::pair job{&page, &article};
        const auto read = [](void* closure) -> void* {
            const auto& [from, to] = *static_cast<decltype(job)*>(closure);
            *to = ReadArticle(*from, "A", Edition::English);
            return nullptr;
        };
        pthread_attr_t small;
        pthread_attr_init(&small);
        pthread_attr_setstacksize(&small, 1 << 20);
        pthread_t thread{};
        ASSERT_EQ(pthread_create(&thread, &small, read, &job), 0);
        pthread_join(thread, nullptr);
        pthread_attr_destroy(&small);
        EXPECT_EQ(article.told, c.piece == "[" ? " was a singer." : "") << c.before << c.piece;
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
        {"the+beatles", "the beatles"},
        {"simon+&+garfunkel", "simon & garfunkel"},
        {"ac/dc", "ac/dc"},
        {"therapy?", "therapy?"},
        {"#1+dads", "#1 dads"},
        {"100%", "100%"},
        {"%41&q=b&btnI=c", "%41&q=b&btnI=c"},
        {"Bj\xC3\xB6rk", "Bj\xC3\xB6rk"},
        {"florence+++the+machine", "florence + the machine"},
        {"ryuichi+sakamoto+", "ryuichi sakamoto"},
        {"+b++c", "b c"},
        {"椎名+林檎", "椎名 林檎"},
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
            const auto address = ParseArticleAddress(ArticleTarget({search->edition, search->name}));
            ASSERT_TRUE(address) << sent;
            EXPECT_EQ(address->title, name);
        }
    }
    for (const char* target :
         {"/search", "/search?hl=en&q=a", "/search?hl=de&q=a+h&btnI=", "/Search?hl=en&q=a+h&btnI="}) {
        EXPECT_FALSE(ParseSearch(target)) << target;
    }
    for (const char* target : {"/wiki/en/", "/wiki/en/%4", "/wiki/en/%FF", "/wiki/de/A", "/wiki"}) {
        EXPECT_FALSE(ParseArticleAddress(target)) << target;
    }
}

TEST(NamesTest, SpellingsOfOneNameAreTheSame) {
    for (const auto& [one, other] : {std::pair{"the beatles", "Beatles"},
                                     {"Guns n' Roses", "guns n’ roses"},
                                     {"Simon and Garfunkel", "Simon & Garfunkel"},
                                     {"motorhead", "Motörhead"},
                                     {"MO", "MØ"},
                                     {"beatles, the", "The Beatles"},
                                     {"ＹＭＯ", "ymo"},
                                     {"宇多田 ヒカル", "宇多田ヒカル"},
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
