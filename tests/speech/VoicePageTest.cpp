// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>

#include <iterator>

#include "speech/SayLine.h"
#include "tests/support/TestShow.h"

namespace sorakaze {
namespace {

std::string Bytes(const std::filesystem::path& file) {
    std::ifstream stream(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

TEST(SayjTest, WritesThePageAndLoadsItBehindAnEmptyOne) {
    test::TestShow show("j_personality:Kyoko\nopening:\n");
    std::vector<std::pair<std::string, std::string>> loads;
    show.window.voiceHTMLViewer.Load = [&](const FolderItemRef& file) {
        loads.emplace_back(file->Path().filename().string(), Bytes(file->Path()));
    };
    show.folder.Write("Sorakaze.app/Contents/Resources/blank.html", "blank");
    show.window.deployment.voiceHost = "127.0.0.1:8/x";
    show.window.deployment.viewState = "dmlldw==";
    show.window.deployment.eventValidation = "ZXZlbnQ=";
    show.window.j_personality = "Kyoko";

    SayjLine(show.window, "次の曲は<b> & [[voice]] 'n [[text]]");
    show.window.j_personality = String();
    SayjLine(show.window, "");

    const auto page = [](const std::string& voice, const std::string& text) {
        return "<html>\r"
               "<head><meta http-equiv='Content-Type' content='text/html; charset=utf-8'></head>\r"
               "<body onload=\"document.forms[0].target = 'sub'; document.forms[0].submit();\">\r"
               "\r"
               "<form method=\"post\" action=\"http://127.0.0.1:8/x/voice_neo/vsdemo.aspx\">\r"
               "\t<input type=\"hidden\" name=\"__VIEWSTATE\" id=\"__VIEWSTATE\" value=\"dmlldw==\" />\r"
               "\t<input type=\"hidden\" name=\"__EVENTVALIDATION\" id=\"__EVENTVALIDATION\" "
               "value=\"ZXZlbnQ=\" />\r"
               "\t<input type=\"hidden\" name=\"RadioButton1\" value=\"" +
               voice +
               "\" />\r"
               "\t<input type=\"hidden\" name=\"WriteText\" rows=\"2\" cols=\"20\" value=\"" +
               text +
               "\" />\r"
               "\t<input type=\"hidden\" name=\"SpeedText\" value=\"1.0\" />\r"
               "\t<input type=\"hidden\" name=\"PlayButton.x\" value=\"400\" />\r"
               "\t<input type=\"hidden\" name=\"PlayButton.y\" value=\"25\" />\r"
               "</form>\r"
               "\r"
               "<iframe name=\"sub\" height=\"0px\" width=\"0px\"></iframe>\r"
               "</body>\r"
               "</html>\r";
    };
    ASSERT_EQ(loads.size(), 4u);
    EXPECT_EQ(loads[0], std::pair(std::string("blank.html"), std::string("blank")));
    EXPECT_EQ(loads[1],
              std::pair(std::string("temp.html"), page("Kyoko", "次の曲は<b> & [[voice]] 'n [[text]]")));
    EXPECT_EQ(loads[3], std::pair(std::string("temp.html"), page("", "")));
    EXPECT_EQ(show.trace.All("sayj ").size(), 2u);
}

TEST(DeploymentTest, TheFileReplacesWhatItNamesAndSaysWhatIsWrongWithIt) {
    const Deployment plain = ParseDeployment("{}");
    EXPECT_EQ(plain.viewState.size(), 336u);
    EXPECT_EQ(plain.eventValidation.size(), 96u);
    EXPECT_EQ(ParseDeployment(R"({"voice": "[::1]:80/a", "player": "files"})").voiceHost, "[::1]:80/a");
    EXPECT_TRUE(ReadDeployment("/nowhere/deployment.json").searchHost.empty());

    const std::pair<const char*, const char*> faults[] = {
        {"", "parse error"},
        {"[1]", "one JSON object"},
        {R"({"voise": "a"})", "no member \"voise\""},
        {R"({"voice": 1})", "\"voice\" must be a text"},
        {R"({"voice": "a b"})", "\"voice\" has a character that can't stand there, at place 2"},
        {R"({"viewState": "a\"b"})", "at place 2"},
        {R"({"player": "tape"})", "no player \"tape\""},
    };
    for (const auto& [json, what] : faults) {
        try {
            ParseDeployment(json);
            ADD_FAILURE() << json;
        } catch (const DeploymentError& error) {
            EXPECT_NE(std::string(error.what()).find(what), std::string::npos) << error.what();
        }
    }
    EXPECT_THROW(ReadDeployment(std::filesystem::temp_directory_path()), DeploymentError);
}

}  // namespace
}  // namespace sorakaze
