// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
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
    LookUp("椎名 林檎", "");
    EXPECT_THAT(requests[0], StartsWith("HEAD /search?hl=ja&q=椎名+林檎+ja.wikipedia.org&btnI=I'm+"));
}

TEST_F(LookupTest, TellsTheFirstBoldParagraphWithoutClutter) {
    struct Case {
        const char* what;
        std::string name;
        std::string page;
        std::string contents;
        std::string artist;
    };
    const Case cases[] = {
        {"clutter goes, blanks stay", "the beatles",
         kMusician +
             "<p>Not this.</p><p><b>The Beatles</b> (/ˈbiːtəlz/) were an \"English\" <a href=\"x\">rock</a> "
             "band[1] （バンド） .</p><p><b>Other</b></p>",
         "The Beatles  were an English rock band  .", "The Beatles"},
        {"a tag within the bold name", "a", kMusician + "<P><B><a>A</a></B> is A.</p>", "A is A.", "a"},
        {"no bold paragraph", "b", kMusician + "<p>B</p>", "", ""},
        {"no musician", "c", "<p><b>C</b> kicks balls.</p>", "", "c"},
        {"nothing survives", "d", kMusician + "<p><b></b>(D)</p>", "", ""},
        {"no end", "e", kMusician + "<p><b>E</b> goes on", "E goes on", "E"},
        {"bytes that are no UTF-8", "f", kMusician + "<p><b>F\xE9</b></p>", "Fé", "Fé"},
    };
    for (const Case& c : cases) {
        LookUp(c.name, c.page);
        EXPECT_EQ(window.wikiContents.Bytes(), c.contents) << c.what;
        EXPECT_EQ(window.artist.Bytes(), c.artist) << c.what;
    }
    EXPECT_THAT(window.wikiHistory, ElementsAre("the beatles", "a", "b", "d", "e", "f"));
}

TEST_F(LookupTest, TellsOfAnArtistOnceAShow) {
    const std::string page = kMusician + "<p><b>Abba</b> is a group.</p>";
    LookUp("abba", page);
    LookUp("ABBA", page);
    EXPECT_EQ(requests.size(), 2u);
    EXPECT_EQ(window.wikiContents, "");
    EXPECT_EQ(window.artist.Bytes(), "Abba") << "the capitals come all the same";
    show.folder.Write("Programs/Show.txt", "program: x\n");
    window.readProgram("Show");
    LookUp("abba", page);
    EXPECT_EQ(window.wikiContents, "Abba is a group.");
}

TEST_F(LookupTest, JapaneseTextsAreWholeOrNotAtAll) {
    window.isJapaneseOn = true;
    const auto paragraph = [](int characters) {
        std::string text = "<p><b>林檎</b>（りんご）";
        for (int i = 2; i < characters; ++i) text += " あ";
        return text + "</p>";
    };
    LookUp("a", paragraph(200));
    EXPECT_EQ(Len(window.wikiContents), 200);
    EXPECT_EQ(Left(window.wikiContents, 3).Bytes(), "林檎あ");
    EXPECT_EQ(window.artist.Bytes(), "a");
    LookUp("b", paragraph(201));
    EXPECT_EQ(window.wikiContents, "");
    LookUp("c", paragraph(5), "200 OK");
    EXPECT_EQ(window.wikiContents, "");
    EXPECT_THAT(window.wikiHistory, ElementsAre("a", "b", "c")) << "what fails is remembered as told";
}

TEST_F(LookupTest, FailuresAreSilentAndLeaveTheArtistAlone) {
    LookUp("a", kMusician + "<p><b>A</b></p>", "200 OK");
    EXPECT_EQ(requests.size(), 1u);
    window.deployment.searchHost = "127.0.0.1:1";  // nobody
    window.getContents("a");
    window.deployment.searchHost = "";
    const std::int32_t before = Ticks();
    window.getContents("a");
    EXPECT_LE(Ticks() - before, 1) << "without a service there is nothing to wait for";
    EXPECT_EQ(window.artist, "a");
    EXPECT_THAT(window.wikiHistory, IsEmpty());
    EXPECT_THAT(show.host.Messages(), IsEmpty());
}

/// A show that waits for a search engine whatever it does: time passes a hundred times as fast as it should.
struct SlowLookupTest : testing::Test {
    explicit SlowLookupTest(
        std::unique_ptr<test::SkippingClock> made = std::make_unique<test::SkippingClock>())
        : clock(*made),
          show("mode: songs 2\nopening: 0, wait 1\nintro: 0, play [[iTunes]]\nending: 0, wait 1\n", 1,
               nullptr, std::move(made)) {}

    void RunShow() {
        const std::jthread hurry([this](const std::stop_token& ends) {
            while (!ends.stop_requested()) {
                clock.Skip(std::chrono::milliseconds(20));
                show.runtime.Threads().Notify();
                std::this_thread::sleep_for(std::chrono::microseconds(200));
            }
        });
        show.RunShow();
    }
    std::int32_t SecondOf(const std::string& event) const { return show.trace.TickOf(event) / 60; }

    test::SkippingClock& clock;
    test::TestShow show;
};

TEST_F(SlowLookupTest, TheNextButOneTracksLookupIsAllThatAShowWaitsFor) {
    test::ScriptedServer silent([](test::ScriptedServer::Connection& client) { client.WaitForClose(); });
    show.window.deployment.searchHost = "127.0.0.1:" + std::to_string(silent.Port());
    RunShow();
    ASSERT_FALSE(show.OnAir());
    EXPECT_LE(SecondOf("line play [[iTunes]]"), 4) << "the track itself waits for nothing";
    EXPECT_NEAR(SecondOf("prepared 1 "), 30, 3);
    EXPECT_NEAR(SecondOf("prepared 2 "), 60, 5);
    EXPECT_NEAR(SecondOf("end") - SecondOf("prepared 2 "), 1, 4) << "the third track's is not waited for";
    EXPECT_EQ(show.player.log[0], "play Library 1");
    EXPECT_EQ(show.player.log[1], "play Library 2");
    EXPECT_EQ(show.trace.All("prepared 1 ").at(0), "song 1 artist 1 album 1 ");
    EXPECT_THAT(show.host.Messages(), IsEmpty());
}

TEST_F(SlowLookupTest, NobodyThereCostsTheShowNothing) {
    show.window.deployment.searchHost = "127.0.0.1:1";
    RunShow();
    ASSERT_FALSE(show.OnAir());
    EXPECT_LE(SecondOf("prepared 2 "), 8);
    EXPECT_LE(SecondOf("end"), 30);
}

}  // namespace
}  // namespace sorakaze
