// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>

#include "speech/SayLine.h"
#include "speech/VoicePage.h"
#include "tests/support/TestShow.h"

namespace sorakaze {
namespace {

TEST(SayjTest, WritesThePageAndLoadsItAfterAnEmptyOne) {
    test::TestShow show;
    std::string loads;
    show.window.voiceHTMLViewer.Load = [&](const FolderItemRef& file) {
        loads += file->Path().filename().string() + ":" + test::ReadBytes(file->Path());
    };
    show.folder.Write("Sorakaze.app/Contents/Resources/blank.html", "blank");
    show.window.deployment.voiceHost = "127.0.0.1:8/x";
    show.window.deployment.viewState = "dmlldw==";
    show.window.deployment.eventValidation = "ZXZlbnQ=";
    LoadVoicePage(show.window.voiceHTMLViewer, show.window.resourceFolder,
                  VoicePage(show.window.deployment, "Kyoko", "次の曲は<b> & [[voice]] 'n [[text]]"));
    EXPECT_EQ(loads,
              "blank.html:blanktemp.html:<html>\r<head>"
              "<meta http-equiv='Content-Type' content='text/html; charset=utf-8'></head>\r"
              "<body onload=\"document.forms[0].target = 'sub'; document.forms[0].submit();\">\r\r"
              "<form method=\"post\" action=\"http://127.0.0.1:8/x/voice_neo/vsdemo.aspx\">\r"
              "\t<input type=\"hidden\" name=\"__VIEWSTATE\" id=\"__VIEWSTATE\" value=\"dmlldw==\" />\r"
              "\t<input type=\"hidden\" name=\"__EVENTVALIDATION\" id=\"__EVENTVALIDATION\" "
              "value=\"ZXZlbnQ=\" />\r"
              "\t<input type=\"hidden\" name=\"RadioButton1\" value=\"Kyoko\" />\r"
              "\t<input type=\"hidden\" name=\"WriteText\" rows=\"2\" cols=\"20\" "
              "value=\"次の曲は<b> & [[voice]] 'n [[text]]\" />\r"
              "\t<input type=\"hidden\" name=\"SpeedText\" value=\"1.0\" />\r"
              "\t<input type=\"hidden\" name=\"PlayButton.x\" value=\"400\" />\r"
              "\t<input type=\"hidden\" name=\"PlayButton.y\" value=\"25\" />\r</form>\r\r"
              "<iframe name=\"sub\" height=\"0px\" width=\"0px\"></iframe>\r</body>\r</html>\r");
}

}  // namespace
}  // namespace sorakaze
