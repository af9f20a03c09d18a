// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// The HTTP client against real servers.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/http/HttpTesting.h"
#include "tests/http/servers/Servers.h"

namespace sorakaze::test {
namespace {

using testing::HasSubstr;

constexpr std::size_t kMegabyte = 1 << 20;

struct RealServers : testing::Test {
    /// The page of a URL, with a waiting form. Answers that many challenges.
    std::string Get(const std::string& url, int challenges = 0, const String& name = "",
                    const String& password = "") {
        client.events.clear();
        client.Answer(challenges, name, password);
        return client.Get(url, kLongSeconds).Bytes();
    }

    TestRuntime world{std::make_unique<WallClock>()};
    const std::filesystem::path file = world.folder.Path() / "download";
    WatchedClient client;
};

TEST_F(RealServers, PagesOfAnyStatusArriveWholeAndBasicOpensThem) {
    const Nginx nginx;
    const std::string page = Noise(kMegabyte);
    nginx.Serve("page", page);
    nginx.Serve("empty", "");
    nginx.Serve("private/page", "the private page");
    const struct {
        const char* path;
        int status;
        std::string part;  ///< of the page
    } cases[] = {{"/page", 200, page},       {"/empty", 200, ""},
                 {"/old", 301, "301 Moved"}, {"/none", 404, "404 Not Found"},
                 {"/broken", 503, "sorry"},  {"/private/page", 401, "401 Authorization Required"}};
    for (const auto& [path, status, part] : cases) {
        SCOPED_TRACE(path);
        const std::string got = Get(nginx.Url(path));
        EXPECT_EQ(client.ErrorCode(), 0);
        EXPECT_EQ(client.HTTPStatusCode(), status);
        EXPECT_TRUE(got.find(part) != std::string::npos && (status != 200 || got == part));

        EXPECT_TRUE(client.Get(nginx.Url(path), std::make_shared<FolderItem>(file), kLongSeconds));
        EXPECT_TRUE(ReadBytes(file) == got) << "the same in a file";
        const auto headers = client.GetHeaders(nginx.Url(path), kLongSeconds);
        EXPECT_EQ(client.HTTPStatusCode(), status);
        ASSERT_TRUE(headers);
        EXPECT_EQ(headers->Value("content-LENGTH"), Str(static_cast<std::int32_t>(got.size())));
    }
    // The caller follows redirects.
    Get(nginx.Url("/old"));
    EXPECT_TRUE(Get(client.PageHeaders()->Value("Location").Bytes()) == page);

    EXPECT_THAT(Get(nginx.Url("/private/page"), 2, "ann", "guess"), HasSubstr("401"));
    EXPECT_EQ(client.events, "server:The Studio server:The Studio server:The Studio ");
    EXPECT_EQ(Get(nginx.Url("/private/page"), 1, "ann", "open sesame"), "the private page");
    Get(nginx.Url("/private/page"));
    EXPECT_EQ(client.HTTPStatusCode(), 401) << "the next request is challenged anew";
}

TEST_F(RealServers, ALargeBodyGoesToItsFileInBoundedMemory) {
    const Nginx nginx;
    constexpr std::streamoff kSize = 200 * kMegabyte;
    nginx.Serve("page", "small");
    const auto big = nginx.Serve("big", "");
    {
        std::ofstream marked(big, std::ios::binary);
        for (std::streamoff at = 0; at < kSize; at += kMegabyte) marked.seekp(at) << at;
    }
    std::filesystem::resize_file(big, kSize);

    const auto peak = [&](const std::string& path) {
        // The sanitizer keeps little freed memory.
        Program fetch(
            {"/usr/bin/env", "ASAN_OPTIONS=quarantine_size_mb=1", SORAKAZE_FETCH, nginx.Url(path), file},
            world.folder.Path() / "output");
        EXPECT_EQ(fetch.Wait(), 0);
        return fetch.PeakBytes();
    };
    const std::size_t small = peak("/page");
    EXPECT_LT(peak("/big"), small + 16 * kMegabyte);
    EXPECT_EQ(Program({"cmp", big, file}, world.folder.Path() / "output").Wait(), 0);
}

// The client reads one parameter of a challenge. Apache's first one is the realm, so no nonce is found: the
// answer has an empty one, and the rest of the challenge is in the realm. Apache refuses it as incomplete.
TEST_F(RealServers, ApacheRefusesTheDigest) {
    const Apache apache;
    apache.Serve("page", "the public page");
    apache.Serve("digest/page", "the private page");
    EXPECT_EQ(Get(apache.Url("/page")), "the public page");
    EXPECT_THAT(Get(apache.Url("/digest/page"), 1, "ann", "open sesame"), HasSubstr("401 Unauthorized"));
    const std::string realm = "server:Studio\", nonce=\"[^ ]*\", algorithm=MD5, qop=\"auth ";
    EXPECT_THAT(client.events, testing::MatchesRegex(realm + realm));
    EXPECT_THAT(apache.Log("state/errors"), HasSubstr("AH01782"));
}

TEST_F(RealServers, ProxiesAreUsed) {
    const Nginx nginx;
    const Tinyproxy open;
    const Tinyproxy guarded("BasicAuth dj vinyl");
    const std::string page = Noise(kMegabyte);
    nginx.Serve("page", page);
    client.HTTPProxyAddress = "127.0.0.1";
    client.HTTPProxyPort = open.Port();
    EXPECT_TRUE(Get(nginx.Url("/page")) == page);
    EXPECT_THAT(open.Log(), HasSubstr("GET " + nginx.Url("/page") + " HTTP/1.0"));

    client.HTTPProxyPort = guarded.Port();
    EXPECT_THAT(Get(nginx.Url("/page")), HasSubstr("407 Proxy Authentication Required"));
    EXPECT_TRUE(Get(nginx.Url("/page"), 1, "dj", "vinyl") == page);
    EXPECT_EQ(client.events, "proxy:Tinyproxy ");
    // To a wrong password this proxy says 401 without a challenge, as only a server should.
    Get(nginx.Url("/page"), 1, "dj", "shellac");
    EXPECT_EQ(client.HTTPStatusCode(), 401);
}

TEST_F(RealServers, TenThousandRequestsLeaveNothingOpen) {
    const Nginx nginx;
    nginx.Serve("page", "small");
    Get(nginx.Url("/page"));
    const auto open = [] { return std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {}); };
    const auto before = open();
    for (int i = 0; i < 5000; ++i) {
        ASSERT_EQ(client.Get(nginx.Url("/page"), kLongSeconds), "small") << i;
        // Another object, destroyed during its request.
        WatchedClient dropped;
        dropped.Get(nginx.Url("/page"));
        for (; i % 2 != 0 && dropped.attempts == 0; dropped.Poll())
            WaitWhile([&] { return !dropped.HasEvents(); });
    }
    // The network's thread closes them later.
    world.runtime.Events().DoEventsWhile([&] { return open() > before; });
}

}  // namespace
}  // namespace sorakaze::test
