// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// Challenges and what is answered. The digests and the Base64 come from another implementation.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <set>
#include <string>
#include <vector>

#include "tests/http/HttpTesting.h"
#include "tests/support/TestRuntime.h"

namespace sorakaze::test {
namespace {

TEST(Authentication, AsksAndAnswers) {
    const TestRuntime runtime;
    const struct {
        const char* name;
        std::string head;
        std::string asked;  ///< realms, of the server's challenge and of the proxy's
        std::string keys;
    } cases[] = {
        {"basic", "401\r\nWWW-Authenticate: Basic realm=\"house\"", "house/-",
         "Basic QWxhZGRpbjpvcGVuIHNlc2FtZQ==/"},
        {"letter case", "401\r\nwww-authenticate: bASIC Realm=\"x\"", "x/-",
         "Basic QWxhZGRpbjpvcGVuIHNlc2FtZQ==/"},
        {"proxy", "407\r\nProxy-Authenticate: Basic realm=\"p\"", "-/p",
         "/Basic QWxhZGRpbjpvcGVuIHNlc2FtZQ=="},
        {"the other's challenge", "407\r\nWWW-Authenticate: Basic realm=\"p\"", "-/", "/"},
        {"no challenge", "401", "/-", "/"},
        {"no blank", "401\r\nWWW-Authenticate: Basic", "/-", "/"},
        {"unknown scheme", "401\r\nWWW-Authenticate: Bearer realm=\"t\"", "t/-", "/"},
        {"no quotes", "401\r\nWWW-Authenticate: Bearer realm=token", "oke/-", "/"},
        {"first instance", "401\r\nWWW-Authenticate: X realm=\"1\"\r\nWWW-Authenticate: Basic realm=\"2\"",
         "1/-", "/"},
        {"first parameter takes all", "401\r\nWWW-Authenticate: X realm=\"a\", b=\"c\"", "a\", b=\"c/-", "/"},
        {"realm is second", "401\r\nWWW-Authenticate: X charset=\"a\", realm=\"c\"", "/-", "/"},
        {"empty and short values", "401\r\nWWW-Authenticate: X realm=", "/-", "/"},
        {"Japanese", "401\r\nWWW-Authenticate: X realm=\"夜の家\"", "夜の家/-", "/"},
        {"another status", "403\r\nWWW-Authenticate: Basic realm=\"a\"", "-/-", "/"},
    };
    for (const auto& test : cases) {
        SCOPED_TRACE(test.name);
        Client client;
        std::string asked[] = {"-", "-"};
        const auto answer = [&](std::string& realm) {
            return
                [&](const String& named, const InternetHeadersRef& headers, String& name, String& password) {
                    EXPECT_TRUE(headers && name.IsEmpty() && password.IsEmpty());
                    realm = named.Bytes();
                    name = "Aladdin";
                    password = "open sesame";
                    return true;
                };
        };
        client.AuthenticationRequired = answer(asked[0]);
        client.ProxyAuthenticationRequired = answer(asked[1]);
        client.Open("GET", true);
        client.Arrive("HTTP/1.0 " + test.head + "\r\n\r\npage");
        EXPECT_EQ(asked[0] + "/" + asked[1], test.asked);
        EXPECT_EQ(client.Keys(), test.keys);
        EXPECT_EQ(client.Page(), test.keys == "/" ? "page" : "");
    }
}

TEST(Authentication, Values) {
    const TestRuntime runtime;
    Client client;
    const auto parameters = [](std::vector<std::pair<const char*, const char*>> list) {
        auto made = std::make_shared<Dictionary>();
        for (const auto& [key, value] : list) made->SetValue(key, value);
        return made;
    };
    EXPECT_EQ(client._CreateAuthenticationData("basic", std::string(40, 'n'), std::string(40, 'p'), nullptr),
              "Basic bm5ubm5ubm5ubm5ubm5ubm5ubm5ubm5ubm5ubm5ubm5ubm5ubm5ubjpwcHBwcHBwcHBwcHBwcHBw\r\n"
              "cHBwcHBwcHBwcHBwcHBwcHBwcHBwcHBw");
    EXPECT_EQ(client._CreateAuthenticationData("NTLM", "n", "p", parameters({})), "");

    const auto known = parameters({{"realm", "testrealm@host.com"},
                                   {"nonce", "dcd98b7102dd2f0e8b11d0f600bfb0c093"},
                                   {"method", "GET"},
                                   {"uri", "/dir/index.html"}});
    const std::string expected =
        "Digest username=\"Mufasa\", realm=\"testrealm@host.com\", "
        "nonce=\"dcd98b7102dd2f0e8b11d0f600bfb0c093\", "
        "uri=\"/dir/index.html\", qop=auth, nc=00000001, cnonce=\"0a4f113b\", "
        "response=\"efa6604a607a11c266743c3ec5fae1c3\", ";
    for (int attempt = 0; attempt < 2; ++attempt) {
        EXPECT_EQ(client.DigestAuthentication("Mufasa", "Circle Of Life", known, "0a4f113b").Bytes(),
                  expected);
    }
    known->SetValue("OPAQUE", "secret");
    EXPECT_EQ(client.DigestAuthentication("Mufasa", "Circle Of Life", known, "0a4f113b").Bytes(),
              expected + "opaque=\"\"");
    EXPECT_EQ(
        client.DigestAuthentication("夜", "ラジオ", parameters({}), "c").Bytes(),
        "Digest username=\"夜\", realm=\"\", nonce=\"\", uri=\"\", qop=auth, nc=00000001, cnonce=\"c\", "
        "response=\"3a9c7082571583c8a75a57044390e022\", ");
    EXPECT_EQ(Client::_EncodeHex(std::string("\0\x0F\xFF", 3)).Bytes(), "000fff");
}

/// The last nonce that was seen serves where a challenge has none.
TEST(Authentication, RemembersTheNonce) {
    const TestRuntime runtime;
    Client client;
    client.AuthenticationRequired = [](const String&, const InternetHeadersRef&, String& name, String&) {
        name = "n";
        return true;
    };
    const auto key = [&client](const std::string& parameter) {
        client.Open("GET", true);
        client.Arrive("HTTP/1.0 401\r\nWWW-Authenticate: Digest " + parameter + "\r\n\r\n");
        return client.Keys();
    };
    EXPECT_THAT(key("nonce=\"n1\""), testing::HasSubstr("realm=\"\", nonce=\"n1\", uri="));
    EXPECT_THAT(key("realm=\"r\", nonce=\"n2\""),
                testing::HasSubstr("realm=\"r\", nonce=\"n2\", nonce=\"n1\", uri="));
    EXPECT_THAT(key("opaque=\"o\""), testing::HasSubstr("nonce=\"n1\", uri="));
    EXPECT_THAT(client.Keys(), testing::EndsWith("\", opaque=\"\"/"));
    std::set<std::string> nonces;
    for (int i = 0; i < 100; ++i) {
        nonces.insert(Client::_CreateNonce().Bytes());
        EXPECT_THAT(*nonces.rbegin(), testing::MatchesRegex("[0-9A-Za-z]{25}"));
    }
    EXPECT_EQ(nonces.size(), 100u);
}

}  // namespace
}  // namespace sorakaze::test
