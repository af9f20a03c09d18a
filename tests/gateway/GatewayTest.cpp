// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include <dlfcn.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <netdb.h>

#include <cstring>
#include <latch>
#include <optional>
#include <string>

#include "gateway/Gateway.h"
#include "tests/gateway/server/Loopback.h"
#include "tests/support/ScriptedServer.h"

namespace {

/// Of a look-up of "hangs.test", which a test releases.
std::latch begun(1), released(1), ended(1);

}  // namespace

/// Replaces the C library's.
extern "C" int getaddrinfo(const char* name, const char* service, const addrinfo* hints, addrinfo** found) {
    if (name && std::strcmp(name, "hangs.test") == 0) {
        begun.count_down();
        released.wait();
        ended.count_down();
        return EAI_NONAME;
    }
    static const auto real = reinterpret_cast<decltype(&getaddrinfo)>(dlsym(RTLD_NEXT, "getaddrinfo"));
    return real(name, service, hints, found);
}

namespace sorakaze::gateway {
namespace {

using namespace std::literals;
using test::Ask;
using test::Connected;

struct Host {
    explicit Host(const Gateway& gateway)
        : address(gateway.Host().substr(0, gateway.Host().find('/'))),
          path(gateway.Host().substr(address.size())),
          port(std::stoi(address.substr(address.find(':') + 1))) {}
    std::string address;
    std::string path;
    int port;
};

const std::string kSearch = "/search?hl=en&q=a+en.wikipedia.org&btnI=I'm+feeling+Lucky";

TEST(GatewayTest, OnlyClientsWithTheTokenAreAnswered) {
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

TEST(GatewayTest, EndsAtOnceDuringASearch) {
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

}  // namespace
}  // namespace sorakaze::gateway
