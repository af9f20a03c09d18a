// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <tuple>
#include <utility>

#include "gateway/encyclopaedia/Article.h"
#include "gateway/encyclopaedia/LeadText.h"
#include "gateway/encyclopaedia/Names.h"
#include "gateway/encyclopaedia/SearchTarget.h"
#include "gateway/server/LoopbackServer.h"
#include "tests/gateway/server/Loopback.h"

namespace sorakaze::gateway {
namespace {

/// Pages whose parsing would take too much memory, time or stack: `piece` is repeated. On the stack of a
/// server's thread.
TEST(ArticleTest, APageThatWouldExhaustTheParserIsNoArticle) {
    const struct {
        std::string before, piece;
        int times;
        std::string after;
    } cases[] = {
        {"", "<div><!--</div>-->", 9'900, ""},
        {"", "<div><style></div></style>", 9'900, ""},
        {"", "<div><table></div></table>", 4'900, ""},
        {"", "<div>", 9'900, "<frameset>"},
        {"", "<p><b>x</b>", 200'000, ""},
        {"<a ", "b='>' ", 90'000, ">"},
        {"<b><PlainText>", "<span>", 150'000, ""},
        {"<p><b>A</b>", "[", 250'000, std::string(250'000, ')') + " was a singer.</p>"},
    };
    for (const auto& [before, piece, times, after] : cases) {
        std::string page = before;
        for (int i = 0; i < times; ++i) page += piece;
        page += after + "<p><b>A</b> was a singer.</p>";
        LoopbackServer server;
        server.Start([](const auto&) { return true; },
                     [&](const auto&) {
                         const auto summary = ReadArticle(page, "A", Edition::English).summary;
                         return ServiceAnswer{200, "text/plain", summary, ""};
                     });
        EXPECT_THAT(test::Ask(server.Port(), "GET / HTTP/1.0\r\n\r\n"),
                    testing::EndsWith(piece == "[" ? "\r\n\r\n was a singer." : "\r\n\r\n"))
            << before << piece;
    }
}

TEST(LeadTextTest, TheVerbBelongsToTheName) {
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
    for (const auto& [title, text, summary] : cases) {
        std::string paragraph = text;
        bool opens = true;
        for (char& c : paragraph) {
            if (c == '*') c = std::exchange(opens, !opens) ? kBoldBegins : kBoldEnds;
        }
        EXPECT_EQ(Summary(paragraph, title, Edition::English), summary) << text;
    }
}

TEST(SearchTargetTest, ANameIsReadBetweenTheKnownEnds) {
    const std::pair<const char*, const char*> cases[] = {
        {"#1+dads", "#1 dads"},
        {"%41&q=b&btnI=c", "%41&q=b&btnI=c"},
        {"ryuichi+sakamoto+", "ryuichi sakamoto"},
        {"+b++c", "b c"},
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
            EXPECT_EQ(ParseArticleAddress(ArticleTarget({search->edition, name})).value().title, name);
        }
    }
    for (const char* target : {"/search", "/search?hl=en&q=a",
                               "/search?hl=de&q=a+h&btnI=", "/Search?hl=en&q=a+h&btnI=", "/wiki/en/",
                               "/wiki/en/%4", "/wiki/en/%FF", "/wiki/de/A", "/wiki"})
        EXPECT_FALSE(ParseSearch(target) || ParseArticleAddress(target)) << target;
}

TEST(NamesTest, SpellingsOfOneNameAreTheSame) {
    for (const auto& [one, other] : {std::pair{"the beatles", "Beatles"},
                                     {"Guns n' Roses", "guns n’ roses"},
                                     {"motorhead", "Motörhead"},
                                     {"MO", "MØ"},
                                     {"beatles, the", "The Beatles"},
                                     {"ＹＭＯ", "ymo"},
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
