// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>

#include "show/Deployment.h"

namespace sorakaze {
namespace {

TEST(DeploymentTest, TheFileReplacesWhatItNamesAndFaultsAreRefused) {
    EXPECT_EQ(ParseDeployment(R"({"voice": "[::1]:80/a", "player": "files"})").voiceHost, "[::1]:80/a");
    EXPECT_EQ(ParseDeployment(R"({"loudness": -23})").loudness, -23.0);
    EXPECT_FALSE(ParseDeployment(R"({"loudness": "off"})").loudness);
    EXPECT_EQ(ReadDeployment("/nowhere/deployment.json").loudness, -16.0);
    EXPECT_TRUE(ReadDeployment("/nowhere/deployment.json").searchHost.empty());
    EXPECT_FALSE(ReadDeployment("/nowhere/deployment.json").answerMessagesAfter);
    EXPECT_EQ(ParseDeployment(R"({"answerMessagesAfter": 20})").answerMessagesAfter, 20.0);
    EXPECT_NE(ContactAdvice(ParseDeployment("{}")), "");
    for (const char* json : {R"({"contact": "ana@example.org"})", R"({"search": "a"})",
                             R"({"encyclopaediaEnglish": "", "encyclopaediaJapanese": ""})"})
        EXPECT_EQ(ContactAdvice(ParseDeployment(json)), "") << json;
    for (const char* json :
         {"", "[1]", R"({"contact": "a\r\nCookie: b"})", R"({"voise": "a"})", R"({"voice": 1})",
          R"({"voice": "a b"})", R"({"viewState": "a\"b"})", R"({"player": "tape"})",
          R"({"loudness": "loud"})", R"({"loudness": 0})", R"({"loudness": -1e9})", R"({"loudness": null})",
          R"({"answerMessagesAfter": 0})", R"({"answerMessagesAfter": "20"})",
          R"({"answerMessagesAfter": 1e9})"})
        EXPECT_THROW(ParseDeployment(json), DeploymentError) << json;
    EXPECT_THROW(ReadDeployment(std::filesystem::temp_directory_path()), DeploymentError);
}

}  // namespace
}  // namespace sorakaze
