// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "host/FailureText.h"

namespace sorakaze {
namespace {

std::string Text(const ShowEvent& event, std::string_view name) {
    const auto* const value = event.Find(name);
    return value ? std::get<String>(*value).Bytes() : std::string();
}

std::string Subject(const ShowEvent& event, const std::filesystem::path& station) {
    if (event.kind == ShowEvent::Kind::Voice)
        return "voice " + Text(event, "asked") + " is spoken by " + Text(event, "used") + ": ";
    const std::filesystem::path path = Text(event, "path");
    if (path.empty()) return Text(event, "what") == "message" ? "" : Text(event, "what") + ": ";
    const auto relative = path.lexically_relative(station);
    const bool isWithin = !relative.empty() && *relative.begin() != "..";
    return (isWithin ? relative : path).string() + ": ";
}

}  // namespace

bool IsFailure(const ShowEvent& event) {
    return event.kind == ShowEvent::Kind::Failed || event.kind == ShowEvent::Kind::Voice;
}

std::string FailureText(const ShowEvent& event, const std::filesystem::path& station) {
    std::string line = Subject(event, station) + Text(event, "why");
    if (const auto* const number = event.Find("line"))
        line += " (" + Text(event, "program") + ".txt, line " + Str(std::get<std::int32_t>(*number)).Bytes() +
                ")";
    const std::string message = Text(event, "message");
    if (!message.empty() && !Text(event, "why").starts_with(message)) line += " [" + message + "]";
    return line;
}

}  // namespace sorakaze
