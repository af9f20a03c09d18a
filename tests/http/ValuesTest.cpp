// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// Responses, headers, challenges and URLs as bytes, without a network. The digests and the Base64 come from
// another implementation.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <stdexcept>

#include "http/Credentials.h"
#include "http/HeadParser.h"
#include "http/Url.h"
#include "tests/http/HttpTesting.h"
#include "tests/support/TestRuntime.h"

namespace sorakaze::test {
namespace {

using namespace std::string_literals;

/// Characters, parts of them and stray bytes, so that cuts are made at all kinds of places.
const std::string kNoText =
    "\xF0\x9F\x8E\xB5\xE3\x81\x82\xC3\x80\xBF\x80\xBF\x80\xE3\x81\xF0\x9F\x80\xE3\xE3\xFF\xF4\xC3";

/// The outcome must not depend on the pieces in which a response arrives.
TEST(Response, IsTheSameInOnePieceAndInAnyTwo) {
    const struct {
        std::string bytes, outcome;
        const char* method = "GET";
    } cases[] = {
        {"HTTP/1.1 200 OK\r\nA: 1\r\nContent-Length: 4\r\n\r\nbody", "200/4/[A: 1\r\nContent-Length: 4]body"},
        {"HTTP/1.0 200 OK\r\nA: 1\n\nb", "200/0/[A: 1]b"},
        {"x 7\r\n\r\n\r\n\r\n\n\n", "7/0/[]\r\n\r\n\n\n"},
        {"x 200 y\r\nA: \0\r\n\r\n\0"s + kNoText + "\0"s, "200/0/[A: \0]\0"s + kNoText + "\0"s},
        {"x 200\r\nContent-length: 1\r\n\r\nlong", "200/1/[Content-length: 1]long"},
        {"x -1e99\rContent-length: 9999999999 b\r\r",
         "-2147483648/2147483647/[Content-length: 9999999999 b]"},
        {"x  200 OK\nContent-length: many\n\n", "0/0/[Content-length: many]"},
        {"\r\n\r\nbody", "0/0/[]body"},
        {"x 302 y\r\nLocation: z\r\n\r\nbody", "302/0/[Location: z]", "HEAD"},
        {"\xff\0\x80\xc3 \xe6\x9c nonsense\r\n\r\nbody"s, "0/0/[]body"},
        {"x 200\r\nTransfer-encoding: chunked\r\n\r\n4\r\nbody\r\n0\r\n\r\n",
         "200/0/[Transfer-encoding: chunked]4\r\nbody\r\n0\r\n\r\n"},
        {"x 401 y\r\nWWW-Authenticate: Basic\r\n\r\nno", "401/0/[WWW-Authenticate: Basic]no"},
    };
    const TestRuntime runtime;
    for (const auto& test : cases) {
        for (std::size_t cut = 0; cut <= test.bytes.size(); ++cut) {
            SCOPED_TRACE(test.bytes + " cut at " + std::to_string(cut));
            Client client;
            SocketCore& socket = client;
            client.Open(test.method, true);
            // Bytes that the owner has read are not part of the head, and those that have arrived can be
            // read.
            client.Arrive("owner's");
            socket.Read(7);
            const std::string_view bytes = test.bytes;
            client.Arrive(bytes.substr(0, cut));
            EXPECT_TRUE(client.HasHead() || socket.LookaheadView() == bytes.substr(0, cut));
            EXPECT_EQ(client.PageLength(), Len(client.Page()));
            client.Arrive(bytes.substr(cut));
            EXPECT_EQ(client.PageLength(), Len(client.Page()));
            // Only the connection's end completes it, except for an unanswered challenge.
            EXPECT_EQ(client.IsComplete(), test.bytes.starts_with("x 401"));
            client.End();
            ASSERT_EQ(client.Outcome(), test.outcome);
        }
    }
}

/// Every text of line ends and a letter, in one piece and in any two, compared with a search from its start.
/// Bytes that the owner has read in between are not part of it.
TEST(Response, HeadEndsWhereTheBytesSoFarShowIt) {
    constexpr std::size_t kSize = 8, kTexts = 6561;
    std::string text(kSize, ' ');
    for (std::size_t number = 0; number < kTexts; ++number) {
        for (std::size_t i = 0, rest = number; i < kSize; ++i, rest /= 3) text[i] = "\r\na"[rest % 3];
        for (std::size_t cut = 1; cut <= kSize; ++cut) {
            for (const std::size_t read : {0, 1}) {
                http::HeadSearch search;
                std::size_t end = std::string::npos, size = 0;
                const auto expect = [&](const std::string& part, std::size_t position) {
                    const std::string shown(http::DetermineEOLCharacter(part));
                    // The kind that the text shows, or else the last of the others.
                    for (const std::string& lineEnd : {"\n"s, "\r\n"s, "\r"s, shown}) {
                        const std::size_t at = part.find(lineEnd + lineEnd);
                        if (at < part.size()) end = at, size = lineEnd.size();
                    }
                    const auto found = search.FindEnd(part, position);
                    ASSERT_EQ(found ? found->headSize : std::string::npos, end)
                        << testing::PrintToString(part);
                    ASSERT_EQ(found ? found->lineEndSize : 0, size);
                };
                expect(text.substr(0, cut), 0);
                if (size == 0) expect(text.substr(read), read);
                if (HasFailure()) return;
            }
        }
    }
}

/// If the cost grew with the square of the size, this test wouldn't end.
TEST(Response, MegabytesByteByByte) {
    const TestRuntime runtime;
    std::string bytes = "x 200\r\nA: " + std::string(1'000'000, 'a') + "\r\n\r\n";
    for (int i = 0; i < 400'000; ++i) bytes += "あ";
    Client client;
    client.Open("GET", true);
    for (const char& byte : bytes) client.Arrive({&byte, 1}), client.PageLength();
    EXPECT_EQ(client.PageLength(), 400'000);
}

TEST(Response, FiresItsEventsInOrder) {
    TestRuntime runtime;
    Client client;
    client.RecordEvents();
    const auto talk = [&](const char* method, bool waits) {
        client.Open(method, waits);
        for (const char* piece : {"x 200\r\nContent-length: 4\r\n\r\nab", "cd"}) client.Arrive(piece);
        client.End();
        client.End();
        return std::exchange(client.events, {});
    };
    EXPECT_EQ(talk("GET", false), "connected headers:200 4/4 page:abcd error:0 ");
    EXPECT_EQ(talk("HEAD", false), "connected headers:200 error:0 ");
    EXPECT_EQ(talk("GET", true), "");
    // Data that arrives while other data is handled waits for the next event.
    client.ReceiveProgress = [&](std::int32_t received, std::int32_t, const String&) {
        if (received == 2) client.Arrive("X");
    };
    EXPECT_EQ(talk("GET", false), "connected headers:200 4/4 page:abXcd error:0 ");
}

TEST(Response, AHandlerThatThrowsLosesNoBody) {
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

TEST(Url, PartsAndForms) {
    const std::pair<const char*, const char*> cases[] = {
        {"http://host:8080/a/b?c=d#e", "host:8080|/a/b?c=d#e|host|8080"},
        {"", "|/||0"},
        {"/a", "|/a||0"},
        {"host/?u=http://other", "other|/|other|0"},
        {"http://me@host?q=1/2", "me@host?q=1|/2|me@host?q=1|0"},
        {"://夜:99999999999:7/朝", "夜:99999999999:7|/朝|夜|2147483647"},
    };
    for (const auto& [url, expected] : cases) {
        const auto [server, path, address, port] = http::ParseURL(url);
        EXPECT_EQ((server + "|" + path + "|" + address + "|" + Str(port)).Bytes(), expected) << url;
    }
    const TestRuntime runtime;
    const auto form = std::make_shared<Dictionary>();
    form->SetValue("%&=,/\\][{}`~-_()*^$#!+;<>\r\n", "azAZ09.:?@'\"|夜\x80");
    form->SetValue("", 7);
    EXPECT_EQ(Client().EncodeFormData(form).Bytes(),
              "%25%26%3D%2C%2F%5C%5D%5B%7B%7D%60%7E%2D%5F%28%29%2A%5E%24%23%21%2B%3B%3C%3E%0D%0A="
              "azAZ09.:?@'\"|夜\x80&=7");
}

TEST(Authentication, AsksAndAnswers) {
    const TestRuntime runtime;
    const struct {
        std::string head, asked, keys = "/";
    } cases[] = {
        {"401\r\nwww-authenticate: bASIC Realm=\"夜の家\"", "server:夜の家 ",
         "Basic QWxhZGRpbjpvcGVuIHNlc2FtZQ==/"},
        {"407\r\nProxy-Authenticate: Basic realm=\"\"", "proxy: ", "/Basic QWxhZGRpbjpvcGVuIHNlc2FtZQ=="},
        {"407\r\nWWW-Authenticate: Basic realm=\"p\"", "proxy: "},
        {"401\r\nWWW-Authenticate: Bearer realm=token", "server:oke "},
        {"401\r\nWWW-Authenticate: X realm=\"1\"\r\nWWW-Authenticate: Basic realm=\"2\"", "server:1 "},
        {"401\r\nWWW-Authenticate: X realm=\"a\", b=\"c\"", "server:a\", b=\"c "},
        {"401\r\nWWW-Authenticate: X charset=\"a\", realm=\"c\"", "server: "},
        {"403\r\nWWW-Authenticate: Basic realm=\"a\"", ""},
    };
    for (const auto& test : cases) {
        SCOPED_TRACE(test.head);
        Client client;
        client.Answer(1, "Aladdin", "open sesame");
        client.Open("GET", true);
        client.Arrive("HTTP/1.0 " + test.head + "\r\n\r\n");
        EXPECT_EQ(client.events, test.asked);
        EXPECT_EQ(client.Keys(), test.keys);
    }
}

TEST(Authentication, KeysAndNonces) {
    const TestRuntime runtime;
    Client client;
    EXPECT_EQ(http::BasicCredentials(std::string(40, 'n'), std::string(40, 'p')).Bytes(),
              "Basic bm5ubm5ubm5ubm5ubm5ubm5ubm5ubm5ubm5ubm5ubm5ubm5ubm5ubjpwcHBwcHBwcHBwcHBwcHBw\r\n"
              "cHBwcHBwcHBwcHBwcHBwcHBwcHBwcHBw");
    const auto known = http::ParseAuthenticationParams(
        "realm=\"testrealm@host.com\"\r\nmethod=\"GET\"\r\n"
        "nonce=\"dcd98b7102dd2f0e8b11d0f600bfb0c093\"\r\nuri=\"/dir/index.html\"");
    const std::string expected =
        "Digest username=\"Mufasa\", realm=\"testrealm@host.com\", "
        "nonce=\"dcd98b7102dd2f0e8b11d0f600bfb0c093\", "
        "uri=\"/dir/index.html\", qop=auth, nc=00000001, cnonce=\"0a4f113b\", "
        "response=\"efa6604a607a11c266743c3ec5fae1c3\", ";
    for (const char* opaque : {"", "opaque=\"\""}) {
        EXPECT_EQ(http::DigestCredentials("Mufasa", "Circle Of Life", *known, 1, "0a4f113b").Bytes(),
                  expected + opaque);
        known->SetValue("OPAQUE", "secret");
    }
    EXPECT_THAT(Client::_CreateNonce().Bytes(), testing::MatchesRegex("[0-9A-Za-z]{25}"));
    EXPECT_NE(Client::_CreateNonce().Bytes(), Client::_CreateNonce().Bytes());
    // A challenge without a nonce is answered with the last one seen.
    client.AuthenticationRequired = [](auto&&...) { return true; };
    const std::pair<const char*, const char*> challenges[] = {
        {"nonce=\"n1\"", "realm=\"\", nonce=\"n1\", uri="},
        {"realm=\"r\", nonce=\"n2\"", "realm=\"r\", nonce=\"n2\", nonce=\"n1\", uri="},
        {"opaque=\"o\"", "nonce=\"n1\", uri="},
    };
    for (const auto& [challenge, key] : challenges) {
        client.Open("GET", true);
        client.Arrive("HTTP/1.0 401\r\nWWW-Authenticate: Digest "s + challenge + "\r\n\r\n");
        EXPECT_THAT(client.Keys(), testing::HasSubstr(key));
    }
}

struct Headers : InternetHeaders {
    explicit Headers(const String& text) { _ParseHeaders(text); }

    /// Key=value of all entries.
    std::string Entries() const {
        std::string entries;
        for (std::int32_t i = 0; i < Count(); ++i)
            entries += _Headers->Key(i).Bytes() + "=" + Value(i).Bytes() + "|";
        return entries;
    }
};

TEST(InternetHeaders, Parse) {
    const std::pair<std::string, std::string> cases[] = {
        {"HTTP/1.0 200 a:b\nA: 1\n", "HTTP/1.0 200 a=b|A=1|"},
        {"x\rA: 1\rB:2", "A=1|B=2|"},
        {"A: 1\nB: 2\r\nC: 3", "A=1\nB: 2|C=3|"},
        {"A: 1\r\n  2\r\n\t3\r\nB : \t 4 ", "A=1  2 3|B =4 |"},
        {"Via: a\r\nvia: b\r\nX: 1\r\nVIA: c", "Via=a|via:1=b|X=1|VIA:2=c|"},
        {": a\r\n:b\r\n\xFF\0: \xC3\0"s, "=a|:1=b|\xFF\0=\xC3\0|"s},
    };
    for (const auto& [text, entries] : cases) {
        EXPECT_EQ(Headers(text).Entries(), entries);
        EXPECT_EQ(Headers(text).Source().Bytes(), text);
    }
}

TEST(InternetHeaders, InstancesAreCountedChangedAndRemoved) {
    Headers headers("Received: a\r\nX: 1\r\nreceived: b\r\nRECEIVED: c");
    EXPECT_EQ(headers.NameCount("none"), 0);
    EXPECT_EQ(headers.CommaSeparatedValues("ReceiveD"), "a, b, c");
    EXPECT_EQ(headers.Value("received", -3) + headers.Value("received", 2), "ac");
    EXPECT_EQ(headers.Value("received", 3) + headers.Value(4), "");
    EXPECT_EQ(headers.Name(3), "received");
    EXPECT_THROW(headers.Name(4), OutOfBoundsException);
    const std::pair<std::function<void()>, const char*> changes[] = {
        {[&] { headers.Delete("Received", 3); }, "Received=a|X=1|received:1=b|RECEIVED:2=c|"},
        {[&] { headers.Delete("Received", 0); }, "X=1|Received=b|Received:1=c|"},
        {[&] { headers.SetHeader("Received", "e", 1); }, "X=1|Received=b|Received:1=e|"},
        {[&] { headers.SetHeader("received", "f"); }, "X=1|received=f|"},
        // After a gap nothing is counted or removed; a gap is filled first.
        {[&] { headers.SetHeader("x", "9", 3); }, "X=1|received=f|x:3=9|"},
        {[&] {
             for (const char* value : {"2", "3", "4"}) headers.AppendHeader("X", value);
         },
         "X=1|received=f|x:3=9|X:1=2|X:2=3|X:4=4|"},
        {[&] { headers.Delete("X:2"); }, "X=1|received=f|x:3=9|X:1=2|X:4=4|"},
        {[&] { headers.AppendHeader("X", "5"); }, "X=1|received=f|x:3=9|X:1=2|X:4=4|X:2=5|"},
        {[&] { headers.Delete("X", 3), headers.Delete("X"); }, "received=f|"},
        {[&] { headers.DeleteAllHeaders(); }, ""},
    };
    for (const auto& [change, entries] : changes) {
        change();
        EXPECT_EQ(headers.Entries(), entries);
    }
    EXPECT_EQ(headers.Source(), "Received: a\r\nX: 1\r\nreceived: b\r\nRECEIVED: c") << "as it was parsed";
}

TEST(InternetHeaders, Format) {
    const std::string text =
        "X: 1\r\nCC: c\r\nbcc: secret\r\nTo: a\r\nReceived: 2\r\nfrom: me\r\nto: b\r\n"
        "Received: 1\r\nReturn-Path: <>\r\nX: 2\r\nSubject: \r\nDate: today\r\n: nameless";
    const Headers headers(text);
    EXPECT_EQ(headers._FormatHTTPHeaders().Bytes(), text);
    EXPECT_EQ(headers._FormatEmailHeaders().Bytes(),
              "Return-Path: <>\r\nReceived: 2\r\nReceived: 1\r\nDate: today\r\nSubject: \r\nFrom: me\r\n"
              "To: a, b\r\nCC: c\r\nX: 1\r\nX: 2\r\n: nameless");
}

}  // namespace
}  // namespace sorakaze::test
