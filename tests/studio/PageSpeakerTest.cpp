// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// Pages of spoken lines, sent to a service on loopback and heard on a mixing engine.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "studio/PageSpeaker.h"
#include "studio/VoicePages.h"
#include "tests/sound/SoundTesting.h"
#include "tests/support/ScriptedServer.h"

namespace sorakaze::studio {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

struct PageSpeakerTest : testing::Test {
    PageSpeakerTest() {
        sound::testing::WriteSound(runtime.folder / "tone.wav",
                                   sound::testing::Constant(0.5f, 10 * sound::kSampleRate));
    }

    /// Loads a page with a form for that path of the service.
    void Load(const std::string& path = "/form", const std::string& host = "127.0.0.1") {
        LoadPage("<form method=post action=\"http://" + host + ":" + std::to_string(server.Port()) + path +
                 "\"><input type=hidden name=Text value=\"'夢' &amp; &lt;b>\"></form>");
    }
    void LoadPage(const std::string& page) {
        viewer.LoadPage(GetFolderItem(runtime.folder.Write("temp.html", page).string(), kShellPath));
    }
    /// Peak of so many ticks from now on.
    float Hear(TickCount ticks) {
        peak = 0;
        runtime.Pass(ticks);
        return peak;
    }

    float peak = 0;
    sound::MixingEngine engine{sound::MixingMode::Offline};
    test::TestRuntime runtime{std::make_unique<StudioClock>([this] {
                                  peak =
                                      std::max(peak, sound::testing::Peak(sound::testing::Mix(engine, 800)));
                              }),
                              &engine};
    std::string answer = "<audio src=\"tone.wav\">";  ///< to what is posted
    test::ScriptedServer server{[this](auto& client) {
        const std::string request = client.ReadRequest();
        const bool isForm = request.starts_with("POST /form "),
                   isTone = request.starts_with("GET /tone.wav ");
        client.Send(isForm || isTone ? "HTTP/1.0 200 OK\r\n\r\n" : "HTTP/1.0 404 Not Found\r\n\r\n");
        client.Send(isTone ? test::ReadBytes(runtime.folder / "tone.wav") : answer);
    }};

    HTMLViewer viewer;
    std::vector<std::string> complaints;
    PageSpeaker speaker{viewer, [this](const std::string& line) { complaints.push_back(line); }};
};

TEST_F(PageSpeakerTest, APageIsSpokenFromItsTickOnUntilTheNext) {
    const TickCount begin = runtime.runtime.GetClock().Tick();
    Load();
    EXPECT_EQ(runtime.runtime.GetClock().Tick(), begin);
    EXPECT_EQ(engine.Sounding(), 1);
    EXPECT_GT(Hear(20), 0.1);
    EXPECT_THAT(server.Requests(), ElementsAre(HasSubstr("\r\n\r\nText=%27%E5%A4%A2%27+%26+%3Cb%3E"),
                                               HasSubstr("GET /tone.wav")));
    Load();
    EXPECT_EQ(engine.Sounding(), 1);
    LoadPage("<html></html>");
    EXPECT_EQ(engine.Sounding(), 0);
    Hear(3);
    EXPECT_EQ(Hear(10), 0);
    EXPECT_THAT(complaints, IsEmpty());
    EXPECT_TRUE(std::filesystem::is_empty(runtime.runtime.TemporaryFolder()));
}

TEST_F(PageSpeakerTest, ADistantServiceIsWaitedForBesideTheShow) {
    // Another name of this machine, which isn't known as one.
    for (int page = 0; page < 2; ++page) Load("/form", "[::ffff:127.0.0.1]");
    EXPECT_EQ(engine.Sounding(), 0);
    runtime.runtime.Events().DoEventsWhile([this] { return engine.Sounding() == 0 && complaints.empty(); });
    EXPECT_EQ(engine.Sounding(), 1);
    EXPECT_GT(Hear(20), 0.1);
    EXPECT_THAT(complaints, IsEmpty());
}

TEST_F(PageSpeakerTest, WhatGoesWrongIsOneLineAndSilence) {
    Load("/other");
    LoadPage("<form method=post action=http://127.0.0.1:1/form>");
    LoadPage("<form method=post action=file:///etc/passwd>");
    EXPECT_THAT(complaints, ElementsAre(HasSubstr("404"), HasSubstr("connect"), HasSubstr("plain HTTP")));
    complaints.clear();
    answer = "<p>nothing";
    Load();
    EXPECT_THAT(complaints, IsEmpty());
    for (const auto& strange :
         {std::string("<audio src=file:///etc/passwd>"),
          std::string("<audio src='data:audio/wav;base64,AAAA'>"), std::string("<audio src=none.wav>"),
          std::string("<audio src=/form>"), std::string(2u << 20, ' ')}) {
        complaints.clear();
        answer = strange;
        Load();
        EXPECT_EQ(complaints.size(), 1u) << strange.substr(0, 80);
    }
    EXPECT_EQ(engine.Sounding(), 0);
    EXPECT_TRUE(std::filesystem::is_empty(runtime.runtime.TemporaryFolder()));
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

    EXPECT_EQ(FindSound("<audio><source src=a><source src=b></audio>"), "a");
    EXPECT_EQ(FindSound("<!-- <audio src=x> --><p>"), "");
    EXPECT_EQ(FindSound("<embed src=' /s.mp3 '>"), "/s.mp3");

    constexpr std::pair<const char*, const char*> kReferences[] = {
        {"/x", "http://h:8/x"},
        {"//o/x", "http://o/x"},
        {"../y", "http://h:8/t/y"},
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
