// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// Pages of spoken lines, sent to a service on loopback and heard on a mixing engine.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <mutex>

#include "app/runtime/process/ConfinedProcess.h"
#include "gateway/LoopbackServer.h"
#include "gateway/VoiceService.h"
#include "studio/PageSpeaker.h"
#include "studio/VoicePages.h"
#include "tests/support/TestRuntime.h"

namespace sorakaze::studio {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
namespace fs = std::filesystem;

std::string Page(const std::string& action, const std::string& text) {
    return "<html>\r<body onload=\"x\">\r<form method=\"post\" action=\"" + action +
           "\">\r\t<input type=\"hidden\" name=\"__VIEWSTATE\" id=\"v\" value=\"a+/=\" />\r"
           "\t<input type=\"hidden\" name=\"RadioButton1\" value=\"Kyoko\" />\r"
           "\t<input type=\"hidden\" name=\"WriteText\" rows=\"2\" cols=\"20\" value=\"" +
           text +
           "\" />\r\t<input type=\"hidden\" name=\"SpeedText\" value=\"1.0\" />\r"
           "\t<input type=\"hidden\" name=\"__EVENTVALIDATION\" value=\"b\" />\r"
           "\t<input type=\"hidden\" name=\"PlayButton.x\" value=\"400\" />\r"
           "\t<input type=\"hidden\" name=\"PlayButton.y\" value=\"25\" />\r</form>\r</html>\r";
}

struct PageSpeakerTest : testing::Test {
    PageSpeakerTest() {
        process::PrepareWritableFolder(sounds.Path());
        server.Start([](const auto&) { return true; },
                     [this](const gateway::ServerRequest& request) {
                         if (request.target == "/strange") return strange;
                         const auto answer = service.Answer({request.method, request.target, request.fields});
                         const std::lock_guard lock(mutex);
                         requests.push_back(request);
                         return gateway::ServerAnswer{answer.status, answer.contentType, answer.body, ""};
                     });
    }
    ~PageSpeakerTest() override {
        service.Stop();
        server.Stop();
    }

    std::string Address(const std::string& path = "/voice_neo/vsdemo.aspx",
                        const std::string& host = "127.0.0.1") {
        return "http://" + host + ":" + std::to_string(server.Port()) + path;
    }
    void Load(const std::string& page) {
        const auto file = runtime.folder.Write("temp.html", page);
        viewer.LoadPage(GetFolderItem(file.string(), kShellPath));
    }
    /// Peak of so many ticks from now on.
    float Hear(TickCount ticks) {
        peak = 0;
        runtime.Pass(ticks);
        return peak;
    }

    float peak = 0;
    sound::MixingEngine engine{sound::Reading::Offline};
    test::TestRuntime runtime{std::make_unique<StudioClock>([this] {
                                  std::vector<float> tick(1600);
                                  engine.Mix(tick);
                                  for (const float sample : tick) peak = std::max(peak, std::abs(sample));
                              }),
                              &engine};
    test::TemporaryFolder sounds;
    gateway::VoiceService service{fs::path(SAY_PROGRAM).parent_path(), [this] { return sounds.Path(); }};
    std::mutex mutex;  ///< guards `requests`
    std::vector<gateway::ServerRequest> requests;
    gateway::ServerAnswer strange{200, "text/html", "<p>nothing", ""};
    gateway::LoopbackServer server;

    HTMLViewer viewer;
    std::vector<std::string> complaints;
    PageSpeaker speaker{viewer, [this](const std::string& line) { complaints.push_back(line); }};
};

TEST_F(PageSpeakerTest, APageIsSpokenFromItsTickOnUntilTheNext) {
    const TickCount begin = runtime.runtime.GetClock().Tick();
    Load(Page(Address(), "こんばんは &amp; 'ようこそ' <b>"));
    EXPECT_EQ(runtime.runtime.GetClock().Tick(), begin);
    EXPECT_EQ(engine.Sounding(), 1);
    EXPECT_GT(Hear(20), 0.1);
    ASSERT_EQ(requests.size(), 2u);
    EXPECT_EQ(requests[0].fields.size(), 7u);
    EXPECT_EQ(requests[0].fields.find("WriteText")->second, "こんばんは & 'ようこそ' <b>");
    EXPECT_EQ(requests[0].fields.find("__VIEWSTATE")->second, "a+/=");
    EXPECT_EQ(requests[1].method, "GET");

    Load(Page(Address(), "次です"));
    EXPECT_EQ(engine.Sounding(), 1);
    Load("<html></html>");
    EXPECT_EQ(engine.Sounding(), 0);
    Hear(3);
    EXPECT_EQ(Hear(10), 0);
    EXPECT_THAT(complaints, IsEmpty());
    EXPECT_TRUE(fs::is_empty(runtime.runtime.TemporaryFolder()));
}

TEST_F(PageSpeakerTest, ADistantServiceIsWaitedForBesideTheShow) {
    // Another name of this machine, which isn't known as one.
    const std::string host = "[::ffff:127.0.0.1]";
    Load(Page(Address("/voice_neo/vsdemo.aspx", host), "はじめ"));
    Load(Page(Address("/voice_neo/vsdemo.aspx", host), "こんばんは"));
    EXPECT_EQ(engine.Sounding(), 0);
    runtime.runtime.Events().DoEventsWhile([this] { return engine.Sounding() == 0 && complaints.empty(); });
    EXPECT_EQ(engine.Sounding(), 1);
    EXPECT_GT(Hear(20), 0.1);
    EXPECT_THAT(complaints, IsEmpty());
}

TEST_F(PageSpeakerTest, WhatGoesWrongIsOneLineAndSilence) {
    struct Case {
        std::string page;
        testing::Matcher<const std::vector<std::string>&> complaints;
    };
    const Case cases[] = {
        {Page(Address("/other"), "x"), ElementsAre(HasSubstr("404"))},
        {Page("http://127.0.0.1:1/voice_neo/vsdemo.aspx", "x"), ElementsAre(HasSubstr("connect"))},
        {Page("file:///etc/passwd", "x"), ElementsAre(HasSubstr("plain HTTP"))},
        {Page(Address(), ""), IsEmpty()},
        {Page(Address("/strange"), "x"), IsEmpty()},
    };
    for (const Case& one : cases) {
        complaints.clear();
        Load(one.page);
        EXPECT_EQ(engine.Sounding(), 0);
        EXPECT_THAT(complaints, one.complaints) << one.page;
    }
    for (const char* answer : {"<audio src=file:///etc/passwd>", "<audio src='data:audio/wav;base64,AAAA'>",
                               "<audio src=voice_neo/none.wav>", "<audio src=/strange>"}) {
        complaints.clear();
        strange.body = answer;
        Load(Page(Address("/strange"), "x"));
        EXPECT_EQ(engine.Sounding(), 0);
        EXPECT_EQ(complaints.size(), 1u) << answer;
    }
    strange.body.assign(2u << 20, ' ');
    Load(Page(Address("/strange"), "x"));
    EXPECT_EQ(complaints.size(), 2u);
    EXPECT_TRUE(fs::is_empty(runtime.runtime.TemporaryFolder()));
}

TEST(VoicePagesTest, AreReadAsABrowserReadsThem) {
    const auto form = FindForm(
        "<FORM METHOD=Post ACTION=' http://h/a?b '><input type=HIDDEN name=b value=2><div><input type=hidden "
        "name=a value='x&lt;&#12354;'></div><input type=text name=t><input type=hidden value=3></FORM>"
        "<form method=post action=other><input type=hidden name=z></form>");
    ASSERT_TRUE(form);
    EXPECT_EQ(form->action, "http://h/a?b");
    EXPECT_EQ(EncodeForm(*form), "b=2&a=x%3C%E3%81%82");
    EXPECT_EQ(EncodeForm({"", {{"k y", "a b\r\n*-._~"}}}), "k+y=a+b%0D%0A*-._%7E");
    for (const char* page : {"", "<form>", "<form method=get action=x>", "<form method=post>", "\xFF<form"})
        EXPECT_FALSE(FindForm(page)) << page;

    constexpr std::pair<const char*, const char*> kSounds[] = {
        {"<audio autoplay src=\"speech/1.wav\">", "speech/1.wav"},
        {"<audio><source src=a><source src=b></audio>", "a"},
        {"<!-- <audio src=x> --><p>", ""},
        {"<embed src=' /s.mp3 '>", "/s.mp3"},
    };
    for (const auto& [page, sound] : kSounds) EXPECT_EQ(FindSound(page), sound) << page;

    constexpr std::pair<const char*, const char*> kReferences[] = {
        {"speech/1.wav", "http://h:8/t/v/speech/1.wav"},
        {"/x", "http://h:8/x"},
        {"//o/x", "http://o/x"},
        {"../y", "http://h:8/t/y"},
        {"file:///x", ""},
        {"", ""},
    };
    for (const auto& [reference, address] : kReferences)
        EXPECT_EQ(Resolve("http://h:8/t/v/form.aspx?q", reference), address) << reference;
    EXPECT_EQ(Resolve("", "form.aspx"), "");
    for (const char* address : {"http://127.0.0.1:8/x", "http://localhost/", "http://[::1]:9/"})
        EXPECT_TRUE(IsLoopback(address)) << address;
    for (const char* address : {"http://127.example.org/", "http://o/127.0.0.1", "http://localhost.o/", ""})
        EXPECT_FALSE(IsLoopback(address)) << address;
}

}  // namespace
}  // namespace sorakaze::studio
