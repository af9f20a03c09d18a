// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>

#include "gateway/Encyclopaedia.h"
#include "gateway/Gateway.h"
#include "tests/gateway/ArticleShelf.h"
#include "tests/support/TestShow.h"

namespace sorakaze::test {
extern std::atomic<int> lookUps;
extern std::atomic<bool> isFound;
}  // namespace sorakaze::test

namespace sorakaze::gateway {
namespace {

using namespace std::chrono_literals;
using testing::SizeIs;
using testing::StartsWith;

const std::filesystem::path kPages = std::filesystem::path(GATEWAY_PAGES);

class EncyclopaediaTest : public testing::Test {
  public:
    EncyclopaediaTest() { folder.Write("authority.pem", authority.Pem()); }

    SiteLimits Limits() const { return {folder.Path() / "authority.pem", 15'000ms, 1 << 20, 20}; }
    test::TemporaryFolder folder;
    test::CertificateAuthority authority;
    test::ArticleShelf shelf{kPages / "en"};
};

TEST_F(EncyclopaediaTest, TheLookupTellsEachPageAsItMustBeSaid) {
    for (const bool japanese : {false, true}) {
        const test::ArticleShelf pages(kPages / (japanese ? "ja" : "en"));
        const test::TlsSite site(authority.Certify("localhost"),
                                 [&](const std::string& target) { return pages.Ask(target); });
        Options options;
        options.certificates = folder.Path() / "authority.pem";
        options.requestsPerMinute = 1000;
        options.englishSite = options.japaneseSite = site.Address();
        const Gateway gateway(options);
        test::TestShow show;
        show.window.deployment.searchHost = gateway.Host();
        show.window.isJapaneseOn = japanese;
        for (const auto& [name, said] : pages.Expected()) {
            show.window.artist = "unknown";
            show.window.getContents(name);
            EXPECT_EQ(show.window.wikiContents.Bytes(), said) << name;
            if (!japanese && !said.empty()) {
                EXPECT_THAT(said, StartsWith(show.window.artist.Bytes())) << name;
            }
        }
        EXPECT_GT(pages.Expected().size(), japanese ? 8u : 24u);
        EXPECT_THAT(site.LastUserAgent(), StartsWith("Sorakaze/"));
    }
}

TEST_F(EncyclopaediaTest, ASiteThatIsNotToBeTrustedOrUnderstoodIsNoFind) {
    const test::CertificateAuthority another;
    const auto good = authority.Certify("localhost");
    struct Case {
        const char* what;
        test::Certificate certificate;
        test::TlsSite::Answer answer;
        bool isAsked;
    };
    const Case cases[] = {
        {"another authority", another.Certify("localhost"), {}, false},
        {"expired", authority.Certify("localhost", -1), {}, false},
        {"another host", authority.Certify("elsewhere.test"), {}, false},
        {"a fault", good, {500, "", ""}, true},
        {"elsewhere", good, {302, "", "Location: https://127.0.0.1:9/w"}, true},
        {"without TLS", good, {302, "", "Location: http://localhost/w"}, true},
        {"round and round", good, {302, "", "Location: /w"}, true},
        {"without end", good, {200, "", "", true}, true},
        {"no JSON", good, {200, "<html>", ""}, true},
        {"other JSON",
         good,
         {200, R"({"query":{"pages":[7,{"ns":0,"title":8}],"redirects":"x"}})", ""},
         true},
    };
    for (const Case& c : cases) {
        const test::TlsSite site(c.certificate, [&](const std::string&) { return c.answer; });
        Encyclopaedia encyclopaedia(site.Address(), "", Limits());
        EXPECT_FALSE(encyclopaedia.Find({Edition::English, "ac/dc"})) << c.what;
        EXPECT_EQ(!site.Requests().empty(), c.isAsked) << c.what;
    }
    const test::TlsSite site(good, [&](const std::string& target) {
        if (!target.starts_with("/moved")) return test::TlsSite::Answer{301, "", "Location: /moved" + target};
        return shelf.Ask(target);
    });
    EXPECT_TRUE(Encyclopaedia(site.Address(), "", Limits()).Find({Edition::English, "ac/dc"})) << "moved";
    const std::string plain = "http" + site.Address().substr(5);
    EXPECT_FALSE(Encyclopaedia(plain, "", Limits()).Find({Edition::English, "ac/dc"}));
    EXPECT_FALSE(Encyclopaedia("", "", Limits()).Find({Edition::English, "ac/dc"}));
}

TEST_F(EncyclopaediaTest, AsksOnceAndNoMoreThanIsAllowed) {
    std::chrono::steady_clock::time_point now{};
    std::atomic<int> status = 200;
    const test::TlsSite site(authority.Certify("localhost"), [&](const std::string& target) {
        return status == 200 ? shelf.Ask(target) : test::TlsSite::Answer{status, "", "Retry-After: 90"};
    });
    SiteLimits limits = Limits();
    limits.requestsPerMinute = 5;
    Encyclopaedia encyclopaedia(site.Address(), "", limits, [&] { return now; });
    const auto found = encyclopaedia.Find({Edition::English, "therapy?"});
    ASSERT_TRUE(found);
    EXPECT_TRUE(encyclopaedia.Page(*found));
    EXPECT_TRUE(encyclopaedia.Find({Edition::English, "therapy?"}));
    EXPECT_FALSE(encyclopaedia.Find({Edition::English, "nobody at all"}));
    EXPECT_FALSE(encyclopaedia.Find({Edition::English, "nobody at all"}));
    EXPECT_THAT(site.Requests(), SizeIs(3)) << "two for an artist, one for nobody, none again";
    EXPECT_TRUE(encyclopaedia.Find({Edition::English, "jimi hendrix"}));
    EXPECT_FALSE(encyclopaedia.Find({Edition::English, "ac/dc"}));
    EXPECT_THAT(site.Requests(), SizeIs(5)) << "the minute's share";
    now += 60s;
    status = 429;
    EXPECT_FALSE(encyclopaedia.Find({Edition::English, "ac/dc"}));
    status = 200;
    now += 89s;
    EXPECT_FALSE(encyclopaedia.Find({Edition::English, "ac/dc"})) << "the site asked for a pause";
    now += 61s;
    EXPECT_TRUE(encyclopaedia.Find({Edition::English, "ac/dc"})) << "a failure isn't remembered for long";
    EXPECT_FALSE(encyclopaedia.Page({Edition::Japanese, "AC/DC"}));
}

TEST_F(EncyclopaediaTest, ASiteOutOfReachIsLeftAloneForAMinute) {
    const test::TlsSite site(authority.Certify("name.invalid"),
                             [&](const std::string& target) { return shelf.Ask(target); });
    const std::string address = "https://name.invalid" + site.Address().substr(17);
    test::isFound = false;
    {
        Options options;
        options.englishSite = address;
        const Gateway gateway(options);
        test::TestShow show;
        show.window.deployment.searchHost = gateway.Host();
        for (const char* name : {"ac/dc", "therapy?"}) show.window.getContents(name);
        EXPECT_EQ(show.window.wikiContents.Bytes(), "");
    }
    EXPECT_EQ(test::lookUps, 1);
    std::chrono::steady_clock::time_point now{};
    Encyclopaedia encyclopaedia(address, "", Limits(), [&] { return now; });
    EXPECT_FALSE(encyclopaedia.Find({Edition::English, "ac/dc"}));
    EXPECT_EQ(test::lookUps, 2);
    test::isFound = true;
    now += 59s;
    EXPECT_FALSE(encyclopaedia.Find({Edition::English, "therapy?"}));
    EXPECT_EQ(test::lookUps, 2);
    now += 1s;
    EXPECT_TRUE(encyclopaedia.Find({Edition::English, "ac/dc"}));
    EXPECT_TRUE(encyclopaedia.Find({Edition::English, "therapy?"}));
}

}  // namespace
}  // namespace sorakaze::gateway
