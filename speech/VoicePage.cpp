// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "speech/VoicePage.h"

#include <string>

namespace sorakaze {
namespace {

/// A hidden field; `more` is inserted between its name and its value.
std::string Field(const std::string& name, const std::string& value, const std::string& more = "") {
    return "\t<input type=\"hidden\" name=\"" + name + "\"" + more + " value=\"" + value + "\" />\r";
}

/// Kept behaviour 46.
String Template(const Deployment& deployment) {
    return "<html>\r"
           "<head><meta http-equiv='Content-Type' content='text/html; charset=utf-8'></head>\r"
           "<body onload=\"" +
           std::string(kVoicePageScript) +
           "\">\r"
           "\r"
           "<form method=\"post\" action=\"" +
           VoiceAddress(deployment) + "\">\r" +
           Field("__VIEWSTATE", deployment.viewState, " id=\"__VIEWSTATE\"") +
           Field("__EVENTVALIDATION", deployment.eventValidation, " id=\"__EVENTVALIDATION\"") +
           Field("RadioButton1", "[[voice]]") + Field("WriteText", "[[text]]", " rows=\"2\" cols=\"20\"") +
           Field("SpeedText", "1.0") + Field("PlayButton.x", "400") + Field("PlayButton.y", "25") +
           "</form>\r"
           "\r"
           "<iframe name=\"sub\" height=\"0px\" width=\"0px\"></iframe>\r"
           "</body>\r"
           "</html>\r";
}

}  // namespace

std::string VoiceAddress(const Deployment& deployment) {
    return "http://" + deployment.voiceHost + "/voice_neo/vsdemo.aspx";
}

/// The text is inserted first: should it contain the mark for the voice, the page's own mark is ahead of it.
String VoicePage(const Deployment& deployment, const String& voice, const String& text) {
    const String page = Replace(Template(deployment), "[[text]]", text);
    return Replace(page, "[[voice]]", voice);
}

}  // namespace sorakaze
