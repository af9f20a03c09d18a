// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>

#include "gateway/Gateway.h"
#include "gateway/encyclopaedia/Encyclopaedia.h"
#include "tests/gateway/encyclopaedia/ArticleSite.h"
#include "tests/support/ScriptedServer.h"
#include "tests/support/TestShow.h"

namespace sorakaze::gateway {
namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::StartsWith;

struct EncyclopaediaTest : testing::Test {
    static test::ArticleSite Pages(const char* edition) {
        return test::ArticleSite(std::filesystem::path(PAGES_FOLDER) / edition);
    }
    void Ask(const std::string& site) {
        encyclopaedia.emplace(site, "", limits, [this] { return now; });
    }
    bool Finds(const char* name) { return encyclopaedia->Find({Edition::English, name}).article.has_value(); }

    const test::Authority authority;
    const test::Certificate good = authority.Issue("localhost");
    SiteLimits limits{authority.File(), 15'000ms, 1 << 20, 20};
    const test::TlsSite::Answers answers = [pages = Pages("en")](const auto& target) {
        return pages.Ask(target);
    };
    std::chrono::steady_clock::time_point now{};
    std::optional<Encyclopaedia> encyclopaedia;
};

TEST_F(EncyclopaediaTest, EachPageIsAnnouncedAsExpected) {
    for (const bool japanese : {false, true}) {
        const test::ArticleSite pages = Pages(japanese ? "ja" : "en");
        const test::TlsSite site(good, [&](const std::string& target) { return pages.Ask(target); });
        Options options;
        options.certificates = limits.certificates;
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
            if (!said.empty()) {
                const String& address = show.window.wikiSource.address;
                EXPECT_EQ(InStr(address, String(site.Address() + "/wiki/")), 1) << name;
                EXPECT_GT(Len(show.window.wikiSource.title), 1) << name;
                EXPECT_EQ(InStr(address, " "), 0) << name;
            }
            if (!japanese && !said.empty()) {
                EXPECT_THAT(said, StartsWith(show.window.artist.Bytes())) << name;
            }
        }
        EXPECT_GT(pages.Expected().size(), japanese ? 8u : 24u);
    }
}

TEST_F(EncyclopaediaTest, NothingIsFoundOnAnUntrustedOrUnreadableSite) {
    const test::Certificate another = test::Authority().Issue("localhost");
    const test::Certificate expired = authority.Issue("localhost", -1);
    const test::Certificate elsewhere = authority.Issue("elsewhere.test");
    const struct {
        const char* what;
        const test::Certificate& certificate;
        test::TlsSite::Answer answer;
        const char* failure;  ///< after the site's name
    } cases[] = {
        {"another authority", another, {}, " could not be reached"},
        {"expired", expired, {}, " could not be reached"},
        {"another host", elsewhere, {}, " could not be reached"},
        {"a fault", good, {500, ""}, " answered with the status 500"},
        {"elsewhere", good, {302, "", "https://127.0.0.1:9/w"}, " answered with the status 302"},
        {"without TLS", good, {302, "", "http://localhost/w"}, " answered with the status 302"},
        {"round and round", good, {302, "", "/w"}, " redirects without end"},
        {"without end", good, {200, "", "", true}, " sent an answer that could not be read"},
        {"no JSON", good, {200, "<html>"}, ""},
        {"other JSON", good, {200, R"({"query":{"pages":[7,{"ns":0,"title":8}],"redirects":"x"}})"}, ""},
    };
    for (const auto& [what, certificate, answer, failure] : cases) {
        const test::TlsSite site(certificate, [answer = answer](const std::string&) { return answer; });
        Ask(site.Address());
        const auto found = encyclopaedia->Find({Edition::English, "ac/dc"});
        EXPECT_FALSE(found.article) << what;
        EXPECT_EQ(found.failure, *failure ? "localhost" + std::string(failure) : "") << what;
        EXPECT_EQ(site.requests > 0, &certificate == &good) << what;
    }
    const test::TlsSite site(good, [&](const std::string& target) {
        return target.starts_with("/moved") ? answers(target)
                                            : test::TlsSite::Answer{301, "", "/moved" + target};
    });
    for (const auto& address : {site.Address(), site.Address("http"), std::string()}) {
        Ask(address);
        EXPECT_EQ(Finds("ac/dc"), address.starts_with("https:")) << address;
    }
}

TEST_F(EncyclopaediaTest, AsksOnceAndWithinTheLimit) {
    std::atomic<int> status = 200;
    const test::TlsSite site(good, [&](const std::string& target) {
        return status == 200 ? answers(target) : test::TlsSite::Answer{status, ""};
    });
    limits.requestsPerMinute = 6;
    Ask(site.Address());
    EXPECT_TRUE(encyclopaedia->Page(encyclopaedia->Find({Edition::English, "therapy?"}).article.value()));
    EXPECT_TRUE(Finds("therapy?"));
    EXPECT_FALSE(Finds("nobody at all"));
    EXPECT_FALSE(Finds("nobody at all"));
    EXPECT_EQ(site.requests, 4) << "two for an artist, two for nobody, none again";
    EXPECT_TRUE(Finds("jimi hendrix"));
    EXPECT_FALSE(Finds("ac/dc"));
    EXPECT_EQ(site.requests, 6) << "the minute's share";
    now += 60s;
    status = 429;
    EXPECT_FALSE(Finds("ac/dc"));
    status = 200;
    now += 89s;
    EXPECT_FALSE(Finds("ac/dc")) << "the site asked for a pause";
    now += 61s;
    EXPECT_TRUE(Finds("ac/dc")) << "a failure isn't remembered for long";
    EXPECT_FALSE(encyclopaedia->Page({Edition::Japanese, "AC/DC"}));
}

TEST_F(EncyclopaediaTest, AnUnreachableSiteIsNotAskedForAMinute) {
    std::atomic<int> attempts = 0;
    const test::ScriptedServer closes([&](auto&) { ++attempts; });
    const std::string site = "https://127.0.0.1:" + std::to_string(closes.Port());
    {
        // A show without a network: one attempt, then nothing is known of anybody.
        Options options;
        options.englishSite = site;
        const Gateway gateway(options);
        test::TestShow show;
        show.window.deployment.searchHost = gateway.Host();
        for (const char* name : {"ac/dc", "therapy?"}) show.window.getContents(name);
        EXPECT_EQ(show.window.wikiContents, "");
        EXPECT_EQ(attempts.exchange(0), 1);
        EXPECT_THAT(show.trace.All("failed lookup  "), ElementsAre("127.0.0.1 could not be reached"));
    }
    Ask(site);
    for (const auto& [pause, expected] : {std::pair{0s, 1}, {59s, 1}, {1s, 2}}) {
        now += pause;
        EXPECT_FALSE(Finds("ac/dc"));
        EXPECT_EQ(attempts, expected);
    }
}

}  // namespace
}  // namespace sorakaze::gateway
