// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "studio/Transcript.h"

#include <string>

namespace sorakaze::studio {
namespace {

struct ToText {
    std::string operator()(const String& text) const { return text.Bytes(); }
    std::string operator()(std::int32_t number) const { return Str(number).Bytes(); }
    std::string operator()(double number) const { return ClockText(number); }
};

std::string Field(const ShowEvent& event, std::string_view name) {
    for (const auto& [key, value] : event.fields) {
        if (key == name) return std::visit(ToText(), value);
    }
    return {};
}

}  // namespace

void Transcript::OnShowEvent(const ShowEvent& event) {
    const std::string text = Describe(event);
    if (text.empty()) return;
    std::string time = ClockText(event.ticks / 60.0);
    if (time.size() < 7) time.insert(0, 7 - time.size(), ' ');
    console_.Line(time + "  " + text);
}

std::string Transcript::Describe(const ShowEvent& event) const {
    const auto field = [&event](std::string_view name) { return Field(event, name); };
    if (event.what == "show") return "=== " + field("program") + ", playing " + field("playlist") + " ===";
    if (event.what == "block") return "--- " + field("name") + " " + field("variant");
    if (event.what == "say") return field("voice") + ": " + field("text");
    if (event.what == "sayj") return field("voice") + ": " + field("text");
    if (event.what == "sound") {
        return "(sound: " + std::filesystem::path(field("path")).lexically_proximate(station_).string() + ")";
    }
    if (event.what == "track") return "> track " + field("number") + ": " + field("title");
    if (event.what == "fade") return "  fading track " + field("number") + " at " + field("position");
    if (event.what == "ended") return "< track " + field("number") + " ended at " + field("position");
    if (event.what == "failed") {
        const std::string path = field("path");
        return "! " + (path.empty() ? field("what") : path) + ": " + field("why");
    }
    if (event.what == "end") return "=== end of the show ===";
    return {};
}

}  // namespace sorakaze::studio
