// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <stdexcept>
#include <stop_token>
#include <string>
#include <thread>
#include <vector>

#include "gateway/server/LoopbackServer.h"
#include "tests/gateway/server/Loopback.h"

namespace sorakaze::gateway {
namespace {

using namespace std::literals;
using test::Ask;
using test::Connected;
using testing::HasSubstr;
using testing::StartsWith;

TEST(LoopbackServerTest, PassesOnTargetsUnchangedAndFormsDecoded) {
    LoopbackServer server;
    server.Start([](const ServiceRequest& request) { return request.target != "/no"; },
                 [](const ServiceRequest& request) {
                     if (request.target == "/throw") throw std::runtime_error("a fault");
                     ServiceAnswer answer{200, "text/plain", request.method + ' ' + request.target, {}};
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
        // More at a time than are served: later ones are refused until these have closed.
        std::vector<test::PeerEnd> idle;
        for (int i = 0; i < 40; ++i) idle.push_back(Connected(server.Port()));
    }
    while (ask("GET /after").find("GET /after") == std::string::npos) {
    }
}

TEST(LoopbackServerTest, SlowConnectionsKeepNobodyOut) {
    constexpr auto kAdmissionTime = 300ms;
    LoopbackServer server;
    server.Start([](const ServiceRequest& request) { return request.target == "/token"; },
                 [](const ServiceRequest&) {
                     return ServiceAnswer{200, "text/plain", "welcome", {}};
                 },
                 kAdmissionTime);
    std::vector<test::PeerEnd> connections;
    const auto connect = [&](const char* request) {
        connections.push_back(Connected(server.Port()));
        connections.back().Send(request);
    };
    for (int i = 0; i < 100; ++i) {
        connect(i % 2 ? "GET /tok" : "");
        if (i % 10 == 9) {
            EXPECT_THAT(Ask(server.Port(), "GET /token HTTP/1.0\r\n\r\n"), HasSubstr("welcome")) << i;
        }
    }
    // A byte now and then doesn't help.
    connections.clear();
    connect("GET /");
    const std::jthread drips([&](const std::stop_token& ended) {
        for (; !ended.stop_requested(); std::this_thread::sleep_for(kAdmissionTime / 20))
            connections[0].Send("x");
    });
    EXPECT_EQ(connections[0].Receive(1 << 18), "");
}

}  // namespace
}  // namespace sorakaze::gateway
