// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <memory>
#include <thread>

#include "tests/support/ScriptedServer.h"
#include "tests/support/SkippingClock.h"
#include "tests/support/TestShow.h"

namespace sorakaze {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::StartsWith;

/// A search engine that redirects to an article of the test's; both are one server.
struct LookupTest : testing::Test {
    void LookUp(const std::string& name, const std::string& article,
                const std::string& status = "302 Found") {
        test::ScriptedServer server([&](test::ScriptedServer::Connection& client) {
            if (client.ReadRequest().starts_with("HEAD ")) {
                client.Send("HTTP/1.0 " + status + "\r\nlocation: " + server.Url("/wiki/X") + "\r\n\r\n");
            } else {
                client.Send("HTTP/1.0 404 As it comes\r\n\r\n" + article);
            }
        });
        window.deployment.searchHost = "127.0.0.1:" + std::to_string(server.Port());
        window.artist = name;
        window.getContents(name);
        requests = server.Requests();
    }

    test::TestShow show;
    mainWindow& window = show.window;
    std::vector<std::string> requests;
};

const std::string kMusician = "<a href='/wiki/Music_genre'>Genres</a>";

TEST_F(LookupTest, AsksTheSearchEngineAndFollowsItsRedirect) {
    LookUp("björk & the band", kMusician + "<p><b>Björk</b> sings.</p>");
    ASSERT_EQ(requests.size(), 2u);
    EXPECT_THAT(requests[0], StartsWith("HEAD /search?hl=en&q=björk+&+the+band+en.wikipedia.org&btnI=I'm+"
                                        "feeling+Lucky HTTP/1.0\r\n"));
    EXPECT_NE(requests[0].find("\r\nUser-Agent: MSIE\r\n"), std::string::npos);
    EXPECT_THAT(requests[1], StartsWith("GET /wiki/X HTTP/1.0\r\n"));
    window.isJapaneseOn = true;
    LookUp("椎名 林檎", "", "200 OK");
    EXPECT_EQ(requests.size(), 1u);
    EXPECT_THAT(requests[0], StartsWith("HEAD /search?hl=ja&q=椎名+林檎+ja.wikipedia.org&btnI=I'm+"));
    EXPECT_EQ(window.artist.Bytes(), "椎名 林檎");
    EXPECT_EQ(window.wikiHistory.size(), 2u) << "what fails is remembered as told";
    EXPECT_THAT(show.trace.lines, IsEmpty()) << "an unknown artist is no failure";
    window.isJapaneseOn = false;
    LookUp("a", "", "503 Busy");
    window.deployment.searchHost = "127.0.0.1:1";  // nobody
    for (const char* name : {"a", "c"}) window.getContents(name);
    EXPECT_THAT(show.trace.lines, ElementsAre("failed lookup  the search engine answered with the status 503",
                                              "failed lookup  the search engine could not be reached"));
    window.deployment.searchHost = "";
    const std::int32_t before = Ticks();
    window.getContents("b");
    EXPECT_LE(Ticks() - before, 1) << "without a service there is nothing to wait for";
    EXPECT_EQ(show.trace.lines.size(), 2u) << "and nothing to tell";
    EXPECT_EQ(window.wikiHistory.size(), 2u);
}

TEST_F(LookupTest, TellsTheFirstBoldParagraphOnceAShowWithoutClutter) {
    const std::tuple<std::string, std::string, std::string, std::string> cases[] = {
        {"the beatles",
         "<p>Not this.</p><p><b>The Beatles</b> (/ˈbiːtəlz/) were an \"English\" <a href=\"x\">rock</a> "
         "band[1] （バンド） .</p><p><b>Other</b></p>",
         "The Beatles  were an English rock band  .", "The Beatles"},
        {"THE BEATLES", "<p><b>The Beatles</b> again</p>", "", "The Beatles"},
        {"a", "<P><B><a>A</a></B> is A.</p>", "A is A.", "a"},
        {"b", "<p>B</p>", "", ""},
        {"d", "<p><b></b>(D)</p>", "", ""},
        {"e", "<p><b>E</b> goes on", "E goes on", "E"},
        {"f", "<p><b>F\xE9</b></p>", "Fé", "Fé"},
    };
    for (const auto& [name, page, contents, artist] : cases) {
        LookUp(name, kMusician + page);
        EXPECT_EQ(window.wikiContents.Bytes(), contents) << name;
        EXPECT_EQ(window.artist.Bytes(), artist) << name;
    }
    LookUp("c", "<p><b>C</b> kicks balls.</p>");
    EXPECT_EQ(window.wikiContents, "");
    EXPECT_THAT(window.wikiHistory, ElementsAre("the beatles", "a", "b", "d", "e", "f"));
    show.folder.Write("Programs/Show.txt", "program: x\n");
    window.readProgram("Show");
    LookUp("a", kMusician + "<p><b>A</b></p>");
    EXPECT_EQ(window.wikiContents, "A");
}

TEST_F(LookupTest, JapaneseTextsAreWholeOrNotAtAll) {
    window.isJapaneseOn = true;
    std::string text = "<p><b>林檎</b>（りんご）";
    for (int i = 2; i < 200; ++i) text += " あ";
    LookUp("a", text + "</p>");
    EXPECT_EQ(Len(window.wikiContents), 200);
    EXPECT_EQ(Left(window.wikiContents, 3).Bytes(), "林檎あ");
    EXPECT_EQ(window.artist.Bytes(), "a");
    LookUp("b", text + " あ</p>");
    EXPECT_EQ(window.wikiContents, "");
}

TEST_F(LookupTest, AHostWithoutEndIsLeft) {
    for (const std::string endless : {"X: a\r\n", "<p>and so on</p>"}) {
        const bool isHead = endless.starts_with('X');
        test::ScriptedServer server([&](test::ScriptedServer::Connection& client) {
            const bool asksForHead = client.ReadRequest().starts_with("HEAD ");
            client.Send("HTTP/1.0 302 Found\r\nlocation: " + server.Url("/x") + "\r\n");
            if (!asksForHead || !isHead) client.Send("\r\n");
            std::string piece;
            while (piece.size() < 100'000) piece += endless;
            while ((isHead || !asksForHead) && client.Send(piece)) continue;
        });
        window.deployment.searchHost = "127.0.0.1:" + std::to_string(server.Port());
        window.getContents("endless");
        EXPECT_EQ(window.wikiContents, "") << endless;
    }
}

/// Time passes as fast as the show keeps up with it.
TEST(SlowLookupTest, TheNextButOneTracksLookupIsAllThatAShowWaitsFor) {
    auto made = std::make_unique<test::SkippingClock>();
    test::SkippingClock& clock = *made;
    test::TestShow show("mode: songs 2\nopening: 0, wait 1\nintro: 0, play [[iTunes]]\nending: 0, wait 1\n",
                        1, nullptr, std::move(made));
    test::ScriptedServer silent([](test::ScriptedServer::Connection& client) { client.WaitForClose(); });
    show.window.deployment.searchHost = "127.0.0.1:" + std::to_string(silent.Port());
    {
        const std::jthread hurry([&](const std::stop_token& ends) {
            while (!ends.stop_requested()) {
                clock.Skip(std::chrono::milliseconds(20));
                show.runtime.Threads().Notify();
                const auto seen = std::make_shared<std::atomic<bool>>(false);
                show.runtime.Events().Post([seen] { *seen = true; });
                while (!*seen && !ends.stop_requested())
                    std::this_thread::sleep_for(std::chrono::microseconds(100));
            }
        });
        show.RunShow();
    }
    ASSERT_FALSE(show.OnAir());
    const auto second = [&](const char* event) { return show.trace.TickOf(event) / 60; };
    EXPECT_LE(second("line play [[iTunes]]"), 4) << "the track itself waits for nothing";
    EXPECT_NEAR(second("prepared 1 "), 30, 3);
    EXPECT_THAT(show.trace.All("failed lookup  "), ElementsAre("the search engine did not answer in time"));
    EXPECT_NEAR(second("prepared 2 "), 60, 5);
    EXPECT_NEAR(second("end") - second("prepared 2 "), 1, 4) << "the third track's is not waited for";
    EXPECT_THAT(show.host.Messages(), IsEmpty());
}

}  // namespace
}  // namespace sorakaze
