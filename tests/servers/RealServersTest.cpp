// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// The HTTP client against servers that nobody here wrote.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>
#include <iterator>

#include "app/runtime/Digests.h"
#include "tests/servers/ClientTesting.h"
#include "tests/servers/Servers.h"

namespace sorakaze::test {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

constexpr std::size_t kMegabyte = 1 << 20;

struct RealServers : testing::Test {
    void Serve(const Server& server, const std::string& path, const std::string& bytes) {
        std::filesystem::create_directories((server.Documents() / path).parent_path());
        std::ofstream(server.Documents() / path, std::ios::binary) << bytes;
    }
    static std::string BytesOf(const std::filesystem::path& file) {
        std::ifstream stream(file, std::ios::binary);
        return {std::istreambuf_iterator(stream), {}};
    }
    /// Answers every challenge from its list, then gives up; notes the realms.
    struct Keys {
        std::vector<std::pair<std::string, std::string>> names_and_passwords;
        std::vector<std::string> realms;

        HTTPSocket::Challenge Handler() {
            return [this](const String& realm, const InternetHeadersRef&, String& name, String& password) {
                realms.push_back(realm.Bytes());
                if (realms.size() > names_and_passwords.size()) return false;
                std::tie(name, password) = names_and_passwords[realms.size() - 1];
                return true;
            };
        }
    };

    TestRuntime world{std::make_unique<WallClock>()};
};

TEST_F(RealServers, PagesOfAnyStatusArriveWhole) {
    const Nginx nginx;
    const std::string page = Noise(kMegabyte);
    Serve(nginx, "page", page);
    Serve(nginx, "empty", "");
    const struct {
        const char* path;
        int status;
        std::string part;  ///< of the page
        std::int32_t length;
    } cases[] = {{"/page", 200, page, kMegabyte},
                 {"/empty", 200, "", 0},
                 {"/old", 301, "301 Moved", 0},
                 {"/away", 302, "302 Found", 0},
                 {"/none", 404, "404 Not Found", 0},
                 {"/broken", 503, "sorry", 5},
                 {"/private/page", 401, "401 Authorization Required", 0}};
    Client client;
    for (const auto& [path, status, part, length] : cases) {
        SCOPED_TRACE(path);
        const std::string got = client.Get(nginx.Url(path), kPatience).Bytes();
        EXPECT_EQ(client.ErrorCode(), 0);
        EXPECT_EQ(client.HTTPStatusCode(), status);
        EXPECT_TRUE(got.find(part) != std::string::npos && (status != 200 || got == part));
        EXPECT_EQ(client.PageHeaders()->Value("content-LENGTH"), Str(static_cast<std::int32_t>(got.size())));
        EXPECT_THAT(client.PageHeaders()->Value("Server").Bytes(), HasSubstr("nginx"));

        const auto file = world.folder.Path() / "download";
        EXPECT_TRUE(client.Get(nginx.Url(path), FileAt(file), kPatience));
        EXPECT_EQ(client.HTTPStatusCode(), status);
        EXPECT_TRUE(BytesOf(file) == got) << "the same in a file";

        const auto headers = client.GetHeaders(nginx.Url(path), kPatience);
        EXPECT_EQ(client.HTTPStatusCode(), status);
        ASSERT_TRUE(headers);
        EXPECT_EQ(headers->Value("Content-length"), Str(static_cast<std::int32_t>(got.size())));
    }
    // Following is the caller's business.
    client.Get(nginx.Url("/old"), kPatience);
    EXPECT_TRUE(client.Get(client.PageHeaders()->Value("Location"), kPatience).Bytes() == page);
}

TEST_F(RealServers, EventsComeInTheirOrder) {
    const Nginx nginx;
    const std::string page = Noise(kMegabyte);
    Serve(nginx, "page", page);
    Client client;
    std::vector<std::string> events;
    std::string pieces;
    const auto note = [&](std::string event) {
        if (events.empty() || events.back() != event) events.push_back(std::move(event));
    };
    client.Connected = [&] { note("connected"); };
    client.HeadersReceived = [&](const InternetHeadersRef& headers, std::int32_t status) {
        note("headers " + std::to_string(status) + " " + headers->Value("Content-length").Bytes());
    };
    client.ReceiveProgress = [&](std::int32_t received, std::int32_t total, const String& data) {
        pieces += data.Bytes();
        EXPECT_EQ(received, static_cast<std::int32_t>(pieces.size()));
        note("progress of " + std::to_string(total));
    };
    client.PageReceived = [&](const String& url, std::int32_t status, const InternetHeadersRef&,
                              const String& got) {
        EXPECT_TRUE(got.Bytes() == page);
        note("page " + std::to_string(status) + " " + url.Bytes());
    };
    client.DownloadComplete = [&](const String&, std::int32_t status, const InternetHeadersRef&,
                                  const FolderItemRef& file) {
        note("file " + std::to_string(status) + " " + file->Path().filename().string());
    };
    client.Error = [&](std::int32_t code) { note("error " + std::to_string(code)); };
    const auto ended = [&] {
        return !events.empty() &&
               testing::Matches(testing::ContainsRegex("^(page|file|error) "))(events.back());
    };

    client.Get(nginx.Url("/page"));
    EXPECT_TRUE(events.empty()) << "before the first Poll";
    client.PollUntil(ended);
    EXPECT_THAT(events, ElementsAre("connected", "headers 200 1048576", "progress of 1048576",
                                    "page 200 " + nginx.Url("/page")));
    EXPECT_TRUE(pieces == page);

    events.clear(), pieces.clear();
    const auto file = world.folder.Path() / "download";
    client.Get(nginx.Url("/page"), FileAt(file));
    client.PollUntil(ended);
    EXPECT_THAT(events,
                ElementsAre("connected", "headers 200 1048576", "progress of 1048576", "file 200 download"));
    EXPECT_TRUE(BytesOf(file) == page);

    events.clear(), pieces.clear();
    client.GetHeaders(nginx.Url("/page"));
    client.PollUntil([&] { return !client.IsConnected() && !events.empty(); });
    EXPECT_THAT(events, ElementsAre("connected", "headers 200 1048576"));

    events.clear();
    client.Get("http://127.0.0.1:1/");
    client.PollUntil(ended);
    EXPECT_THAT(events, ElementsAre("error " + std::to_string(SocketError::kRefused)));
}

TEST_F(RealServers, ALargeBodyGoesToItsFileInBoundedMemory) {
    const Nginx nginx;
    constexpr std::streamoff kSize = 200 * kMegabyte;
    const auto big = nginx.Documents() / "big";
    Serve(nginx, "page", "small");
    {
        std::ofstream marked(big, std::ios::binary);
        for (std::streamoff at = 0; at < kSize; at += kMegabyte) {
            marked.seekp(at);
            marked << at;
        }
    }
    std::filesystem::resize_file(big, kSize);

    const auto peak = [&](const std::string& path) {
        // Memory that was freed counts as free.
        Program client({"/usr/bin/env", "ASAN_OPTIONS=quarantine_size_mb=1", SORAKAZE_FETCH, nginx.Url(path),
                        world.folder.Path() / "download"},
                       world.folder.Path() / "output", Program::Errors::WithOutput);
        EXPECT_EQ(client.Wait(), 0) << BytesOf(world.folder.Path() / "output");
        return client.PeakBytes();
    };
    const std::size_t small = peak("/page");
    const std::size_t large = peak("/big");
    EXPECT_LT(large, small + 16 * kMegabyte);

    std::ifstream sent(big, std::ios::binary);
    std::ifstream got(world.folder.Path() / "download", std::ios::binary);
    std::string sentPiece(kMegabyte, '\0');
    std::string gotPiece(kMegabyte, '\0');
    std::streamoff same = 0;
    while (sent.read(sentPiece.data(), kMegabyte) && got.read(gotPiece.data(), kMegabyte) &&
           sentPiece == gotPiece)
        same += kMegabyte;
    EXPECT_EQ(same, kSize);
    EXPECT_EQ(std::filesystem::file_size(world.folder.Path() / "download"), kSize);
}

TEST_F(RealServers, BasicAuthenticationOpensAPage) {
    const Nginx nginx;
    Serve(nginx, "private/page", "the private page");
    Client client;
    Keys keys{{{"ann", "guess"}, {"ann", "open sesame"}}, {}};
    client.AuthenticationRequired = keys.Handler();
    EXPECT_EQ(client.Get(nginx.Url("/private/page"), kPatience), "the private page");
    EXPECT_EQ(client.HTTPStatusCode(), 200);
    EXPECT_THAT(keys.realms, ElementsAre("The Studio", "The Studio"));
    EXPECT_EQ(client.attempts, 3);

    // The next request is challenged anew; a handler that gives up gets the page of the challenge.
    EXPECT_THAT(client.Get(nginx.Url("/private/page"), kPatience).Bytes(),
                HasSubstr("401 Authorization Required"));
    EXPECT_EQ(client.HTTPStatusCode(), 401);
    EXPECT_EQ(client.attempts, 4);

    // The forms that don't wait, and a file.
    Keys again{{{"ann", "open sesame"}}, {}};
    client.AuthenticationRequired = again.Handler();
    std::int32_t status = 0;
    client.DownloadComplete = [&](const String&, std::int32_t code, const InternetHeadersRef&,
                                  const FolderItemRef&) { status = code; };
    const auto file = world.folder.Path() / "download";
    client.Get(nginx.Url("/private/page"), FileAt(file));
    client.PollUntil([&] { return status != 0; });
    EXPECT_EQ(status, 200);
    EXPECT_EQ(BytesOf(file), "the private page");
}

/// The lower-case digits of a text's digest.
std::string Digest(const std::string& text) {
    const String bytes = MD5(text);
    std::string digits;
    for (const char byte : bytes.Bytes())
        digits += Lowercase(Right("00" + Hex(static_cast<unsigned char>(byte)), 2)).Bytes();
    return digits;
}

// The client reads one parameter of a challenge, so that no nonce is found in Apache's, whose first is the
// realm: the answer carries an empty one, and the rest of the challenge within the realm. Apache finds that
// it lacks something.
TEST_F(RealServers, ApacheRefusesTheDigest) {
    const Apache apache;
    Serve(apache, "page", "the public page");
    Serve(apache, "digest/page", "the private page");
    Client client;
    EXPECT_EQ(client.Get(apache.Url("/page"), kPatience), "the public page");
    Keys keys{{{"ann", "open sesame"}, {"ann", "open sesame"}}, {}};
    client.AuthenticationRequired = keys.Handler();
    EXPECT_THAT(client.Get(apache.Url("/digest/page"), kPatience).Bytes(), HasSubstr("401 Unauthorized"));
    EXPECT_EQ(client.HTTPStatusCode(), 401);
    EXPECT_EQ(client.attempts, 1 + 3);
    ASSERT_EQ(keys.realms.size(), 3u);
    EXPECT_THAT(keys.realms[0], testing::MatchesRegex("Studio\", nonce=\".*\", algorithm=MD5, qop=\"auth"));
    EXPECT_THAT(apache.Log(), HasSubstr("AH01782"));

    // The right answer, which a caller may put together, opens the page: it is the client's that Apache
    // refuses.
    const String challenge = client.PageHeaders()->Value("WWW-Authenticate");
    const std::string nonce = NthField(NthField(challenge, "nonce=\"", 2), "\"", 1).Bytes();
    const std::string response = Digest(Digest("ann:Studio:open sesame") + ":" + nonce +
                                        ":00000001:abc:auth:" + Digest("GET:/digest/page"));
    client.AuthenticationRequired = nullptr;
    client.SetRequestHeader(
        "Authorization",
        R"(Digest username="ann", realm="Studio", uri="/digest/page", qop=auth, nc=00000001, cnonce="abc", nonce=")" +
            nonce + R"(", response=")" + response + '"');
    EXPECT_EQ(client.Get(apache.Url("/digest/page"), kPatience), "the private page");
}

TEST_F(RealServers, AProxyIsSpokenTo) {
    const Nginx nginx;
    const Tinyproxy open(Tinyproxy::Guard::None);
    const Tinyproxy guarded(Tinyproxy::Guard::Basic);
    const std::string page = Noise(kMegabyte);
    Serve(nginx, "page", page);
    Serve(nginx, "private/page", "the private page");
    Client client;
    client.HTTPProxyAddress = "127.0.0.1";
    client.HTTPProxyPort = open.Port();
    EXPECT_TRUE(client.Get(nginx.Url("/page"), kPatience).Bytes() == page);
    EXPECT_THAT(client.PageHeaders()->Value("Via").Bytes(), HasSubstr("tinyproxy"));
    EXPECT_THAT(open.Log(), HasSubstr("GET " + nginx.Url("/page") + " HTTP/1.0"));

    client.HTTPProxyPort = guarded.Port();
    EXPECT_THAT(client.Get(nginx.Url("/page"), kPatience).Bytes(),
                HasSubstr("407 Proxy Authentication Required"));
    EXPECT_EQ(client.HTTPStatusCode(), 407);

    Keys keys{{{"dj", "vinyl"}, {"dj", "shellac"}}, {}};
    client.ProxyAuthenticationRequired = keys.Handler();
    EXPECT_TRUE(client.Get(nginx.Url("/page"), kPatience).Bytes() == page);
    // To a wrong password this proxy says 401 without a challenge, as only a server should.
    client.Get(nginx.Url("/page"), kPatience);
    EXPECT_EQ(client.HTTPStatusCode(), 401);
    EXPECT_THAT(keys.realms, ElementsAre("Tinyproxy", "Tinyproxy"));

    // A key serves one request: where both ask, each attempt lacks the other's key, until a handler gives up.
    Keys proxy{{{"dj", "vinyl"}, {"dj", "vinyl"}, {"dj", "vinyl"}}, {}};
    Keys server{{{"ann", "open sesame"}, {"ann", "open sesame"}}, {}};
    client.ProxyAuthenticationRequired = proxy.Handler();
    client.AuthenticationRequired = server.Handler();
    client.Get(nginx.Url("/private/page"), kPatience);
    EXPECT_EQ(client.HTTPStatusCode(), 401);
    EXPECT_EQ(proxy.realms.size(), 3u);
    EXPECT_EQ(server.realms.size(), 3u);
    // A header of the caller's own stays.
    Keys last{{{"ann", "open sesame"}}, {}};
    client.AuthenticationRequired = last.Handler();
    client.SetRequestHeader("Proxy-Authorization", "Basic " + EncodeBase64("dj:vinyl"));
    EXPECT_EQ(client.Get(nginx.Url("/private/page"), kPatience), "the private page");
}

TEST_F(RealServers, AnHttp10ServerGetsAndGives) {
    const PythonServer python;
    Client client;
    EXPECT_TRUE(client.Get(python.Url("/unmeasured"), kPatience).Bytes() == Noise(300000));
    EXPECT_EQ(client.PageHeaders()->NameCount("Content-length"), 0);

    const auto form = std::make_shared<Dictionary>();
    form->SetValue("title", String("100% 朝 & night"));
    form->SetValue("line\r\n", String("a=b"));
    client.SetFormData(form);
    client.SetRequestHeader("User-Agent", "test");
    const std::string host = "127.0.0.1:" + std::to_string(python.Port());
    const std::string body = "title=100%25+朝+%26+night&line%0D%0A=a%3Db";
    EXPECT_EQ(client.Post(python.Url("/form?a=b#c"), kPatience).Bytes(),
              "POST /form?a=b#c HTTP/1.0\nAccept: */*\nAccept-Language: en\nHost: " + host +
                  "\nUser-Agent: test\nContent-type: application/x-www-form-urlencoded\nContent-length: " +
                  std::to_string(body.size()) + "\n\n" + body);
    EXPECT_EQ(client.PageHeaders()->CommaSeparatedValues("Set-Cookie"), "one=1, two=2");

    EXPECT_EQ(client.SendRequest("PUT", python.Url("/"), kPatience).Bytes(),
              "PUT / HTTP/1.0\nAccept: */*\nAccept-Language: en\nHost: " + host + "\nUser-Agent: test\n\n");
    const auto headers = client.GetHeaders(python.Url("/"), kPatience);
    ASSERT_TRUE(headers);
    EXPECT_EQ(headers->Value("Content-type"), "text/plain");
    const std::string large = Noise(4 * kMegabyte);
    client.SetPostContent(large, "application/octet-stream");
    const std::string echo = client.Post(python.Url("/"), kPatience).Bytes();
    EXPECT_TRUE(echo.size() > large.size() &&
                echo.compare(echo.size() - large.size(), large.size(), large) == 0);
}

TEST_F(RealServers, TenThousandRequestsLeaveNothingOpen) {
    const Nginx nginx;
    Serve(nginx, "page", "small");
    Client client;
    client.Get(nginx.Url("/page"), kPatience);
    const auto before = OpenDescriptors();
    int failures = 0;
    for (int i = 0; i < 5000; ++i) {
        if (client.Get(nginx.Url("/page"), kPatience) != "small") ++failures;
        // An object of its own, dropped in the middle.
        Client dropped;
        dropped.Get(nginx.Url("/page"));
        if (i % 2) dropped.PollUntil([&] { return dropped.attempts > 0; });
    }
    EXPECT_EQ(failures, 0);
    // The network's thread closes them in its own time.
    const TickCount end = Ticks() + kPatience * kTicksPerSecond;
    world.runtime.Events().DoEventsWhile([&] { return OpenDescriptors() > before && Ticks() < end; });
    EXPECT_LE(OpenDescriptors(), before);
}

}  // namespace
}  // namespace sorakaze::test
