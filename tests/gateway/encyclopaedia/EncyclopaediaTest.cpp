// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <zlib.h>

#include <atomic>
#include <regex>

#include "gateway/Gateway.h"
#include "gateway/encyclopaedia/Encyclopaedia.h"
#include "tests/gateway/encyclopaedia/ArticleSite.h"
#include "tests/gateway/encyclopaedia/NamesSite.h"
#include "tests/support/ScriptedServer.h"
#include "tests/support/TestShow.h"

namespace sorakaze::gateway {
namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::StartsWith;

std::string Gzipped(const std::string& text) {
    z_stream stream{};
    constexpr int kGzip = 15 + 16;
    deflateInit2(&stream, Z_BEST_SPEED, Z_DEFLATED, kGzip, 8, Z_DEFAULT_STRATEGY);
    std::string out(deflateBound(&stream, text.size()), '\0');
    stream.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(text.data()));
    stream.avail_in = static_cast<uInt>(text.size());
    stream.next_out = reinterpret_cast<Bytef*>(out.data());
    stream.avail_out = static_cast<uInt>(out.size());
    deflate(&stream, Z_FINISH);
    out.resize(stream.total_out);
    deflateEnd(&stream);
    return out;
}

struct EncyclopaediaTest : testing::Test {
    static test::ArticleSite Pages(const char* edition) {
        return test::ArticleSite(std::filesystem::path(PAGES_FOLDER) / edition);
    }
    void Ask(const std::string& site) {
        encyclopaedia.emplace(
            site, "", limits, [this] { return now; },
            [this](std::chrono::nanoseconds time, const std::stop_token&) { now += time; });
    }
    bool Finds(const char* name) { return encyclopaedia->Find({Edition::English, name}).article.has_value(); }

    const test::Authority authority;
    const test::Certificate good = authority.Issue("localhost");
    SiteLimits limits{authority.File(), 15'000ms, 1 << 20, Options().requestsPerMinute};
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
        {"no JSON", good, {200, "<html>"}, " sent an answer that could not be read"},
        {"a gzip bomb",
         good,
         {200, Gzipped(std::string(4 << 20, ' ')), "", false, {{"Content-Encoding", "gzip"}}},
         " sent an answer that could not be read"},
        {"not gzip",
         good,
         {200, "{}", "", false, {{"Content-Encoding", "gzip"}}},
         " sent an answer that could not be read"},
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

TEST_F(EncyclopaediaTest, AsksOnceForAName) {
    test::TlsSite site(good, [&](const std::string& target) {
        auto answer = answers(target);
        answer.body = Gzipped(answer.body);
        answer.headers = {{"Content-Encoding", "gzip"}};
        return answer;
    });
    for (const auto& [contact, agent] :
         {std::pair{"", "Sorakaze/[0-9.]+"},
          {"ana@example.org", "Sorakaze/[0-9.]+ \\(ana@example\\.org\\) libcurl/[0-9.]+"}}) {
        limits.contact = contact;
        Ask(site.Address());
        site.requests = 0;
        EXPECT_TRUE(encyclopaedia->Page(encyclopaedia->Find({Edition::English, "therapy?"}).article.value()));
        EXPECT_TRUE(Finds("therapy?"));
        EXPECT_FALSE(Finds("nobody at all"));
        EXPECT_FALSE(Finds("nobody at all"));
        EXPECT_EQ(site.requests, 4) << "two for an artist, two for nobody, none again";
        EXPECT_TRUE(std::regex_match(site.agent, std::regex(agent))) << site.agent;
        EXPECT_FALSE(encyclopaedia->Page({Edition::Japanese, "AC/DC"}));
    }
}

TEST_F(EncyclopaediaTest, ABusyOrRefusingSiteIsLeftAloneForAsLongAsItAsks) {
    using Answer = test::TlsSite::Answer;
    const auto error = [](const char* code) {
        return R"({"error":{"code":")" + std::string(code) + R"(","info":"x"},"servedby":"m"})";
    };
    const auto retry = [](const char* value) {
        return std::map<std::string, std::string>{{"Retry-After", value}};
    };
    const struct {
        const char* what;
        Answer answer;
        std::chrono::seconds pause;
        std::string failure;  ///< after the site's name
    } cases[] = {
        {"refused",
         {403, "Please respect our robot policy"},
         3600s,
         " refuses our requests and is not asked for an hour: name a \"contact\" in deployment.json"},
        {"too many", {429, "", "", false, retry("90")}, 90s, " answered with the status 429"},
        {"too many, no time given", {429, ""}, 60s, " answered with the status 429"},
        {"too many, for a year",
         {429, "", "", false, retry("31536000")},
         3600s,
         " answered with the status 429"},
        {"overloaded", {503, "<html>", "", false, retry("120")}, 120s, " answered with the status 503"},
        {"busy with status 200",
         {200, error("ratelimited"), "", false, retry("30")},
         30s,
         " answered with the error ratelimited"},
        {"error with status 200",
         {200, error("internal_api_error_DBQueryError")},
         0s,
         " answered with the error internal_api_error_DBQueryError"},
        {"error in the header",
         {200, "{}", "", false, {{"MediaWiki-API-Error", "nonsense\x1B[1m"}}},
         0s,
         " answered with the error nonsense1m"},
        {"busy for a moment", {503, "", "", false, retry("4")}, 0s, ""},
        {"no such article", {200, error("missingtitle")}, 0s, ""},
    };
    for (const auto& [what, first, pause, failure] : cases) {
        std::atomic<bool> isFirst = true;
        const test::TlsSite site(good, [&, first = first](const std::string& target) {
            return isFirst.exchange(false) ? first : answers(target);
        });
        Ask(site.Address());
        const auto found = encyclopaedia->Find({Edition::English, "ac/dc"});
        EXPECT_EQ(found.failure, failure.empty() ? "" : "localhost" + failure) << what;
        if (failure.empty()) continue;
        const int asked = site.requests;
        if (pause > 12s) {  // a search waits so long for its turn
            now += pause - 13s;
            EXPECT_FALSE(Finds("ac/dc")) << what;
            EXPECT_EQ(site.requests, asked) << what;
            now += 13s;
        }
        EXPECT_TRUE(Finds("ac/dc")) << what;
    }
}

TEST_F(EncyclopaediaTest, NeverTellsOfTheWrongPerson) {
    const std::filesystem::path table = NAMES_TABLE;
    int asked = 0, toFind = 0, found = 0;
    for (const char* edition : {"en", "ja"}) {
        for (const auto parser : {test::Parser::Legacy, test::Parser::Parsoid}) {
            const test::NamesSite names(table, edition, parser);
            const test::TlsSite site(good, [&](const std::string& target) { return names.Ask(target); });
            Ask(site.Address());
            const Edition asksIn = edition == std::string("ja") ? Edition::Japanese : Edition::English;
            encyclopaedia.emplace(
                site.Address(), site.Address(), limits, [this] { return now; },
                [this](std::chrono::nanoseconds time, const std::stop_token&) { now += time; });
            for (const auto& [name, title] : names.asked) {
                const auto finding = encyclopaedia->Find({asksIn, name});
                EXPECT_EQ(finding.failure, "") << name;
                const std::string told = finding.article ? finding.article->title : "";
                EXPECT_TRUE(told.empty() || told == title) << edition << ": " << name << " is not " << told;
                ++asked;
                toFind += title.empty() ? 0 : 1;
                found += !title.empty() && told == title ? 1 : 0;
                if (!title.empty() && told.empty()) std::cout << edition << ": " << name << " isn't found\n";
            }
        }
    }
    std::cout << asked << " names, " << found << " of " << toFind << " that have an article found\n";
    EXPECT_GE(asked, 300);
    EXPECT_GE(10 * found, 9 * toFind);
}

/// In a render the next artist is asked for at once, in a show on the air after some minutes.
TEST_F(EncyclopaediaTest, ARenderWaitsForItsTurnAndFindsTheSame) {
    const test::TlsSite site(good, answers);
    const auto expected = Pages("en").Expected();
    std::map<std::string, bool> live, rendered;
    for (const auto& [found, pause] : {std::pair{&live, 4min}, {&rendered, 0min}}) {
        Ask(site.Address());
        for (const auto& [name, said] : expected) {
            (*found)[name] = Finds(name.c_str());
            now += pause;
        }
    }
    EXPECT_EQ(live, rendered);
    EXPECT_GT(site.requests, 2 * static_cast<int>(limits.requestsPerMinute)) << "too few to wait for";
}

TEST(RequestLimitTest, NoMinuteHasMoreThanItsShare) {
    for (const unsigned perMinute : {1u, 2u, 7u, 60u}) {
        std::chrono::steady_clock::time_point now{};
        RequestLimit limit(
            perMinute, [&] { return now; }, [&](auto time, const std::stop_token&) { now += time; });
        std::vector<std::chrono::steady_clock::time_point> sent;
        for (int i = 0; i < 300; ++i) {
            std::chrono::nanoseconds patience = 1h;
            if (i % 60 == 0) now += 10min;
            ASSERT_TRUE(limit.Take(patience, {}));
            sent.push_back(now);
            const auto before = sent.size() > perMinute ? sent[sent.size() - 1 - perMinute] : now - 1min;
            EXPECT_GE(now - before, 1min) << i;
        }
        std::chrono::nanoseconds patience = 0s;
        EXPECT_FALSE(limit.Take(patience, {})) << "nobody waits longer than they can";
    }
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
