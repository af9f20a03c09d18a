// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "studio/Transcript.h"

#include <string>

#include "host/FailureText.h"

namespace sorakaze::studio {
namespace {

struct ToText {
    std::string operator()(const String& text) const { return text.Bytes(); }
    std::string operator()(std::int32_t number) const { return Str(number).Bytes(); }
    std::string operator()(double number) const { return ClockText(number); }
};

std::string TextOf(const ShowEvent& event, std::string_view name) {
    const auto* value = event.Find(name);
    return value ? std::visit(ToText(), *value) : std::string();
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
    using Kind = ShowEvent::Kind;
    const auto field = [&event](std::string_view name) { return TextOf(event, name); };
    switch (event.kind) {
        case Kind::Show:
            return "=== " + field("program") + ", playing " + field("playlist") + " ===";
        case Kind::Block:
            return "--- " + field("name") + " " + field("variant");
        case Kind::Say:
        case Kind::Sayj:
            return field("voice") + ": " + field("text");
        case Kind::Sound:
            return "(sound: " + std::filesystem::path(field("path")).lexically_proximate(station_).string() +
                   ")";
        case Kind::Track:
            return "> track " + field("number") + ": " + field("title");
        case Kind::Fade:
            return "  fading track " + field("number") + " at " + field("position");
        case Kind::Ended:
            return "< track " + field("number") + " ended at " + field("position");
        case Kind::Failed:
        case Kind::Voice:
            return "! " + FailureText(event, station_);
        case Kind::End:
            return "=== end of the show ===";
        case Kind::Level:
        case Kind::Credit:
        case Kind::Duck:
        case Kind::Line:
        case Kind::Prepared:
        case Kind::Message:
            break;
    }
    return {};
}

}  // namespace sorakaze::studio
