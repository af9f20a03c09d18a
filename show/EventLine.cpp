// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "show/EventLine.h"

#include <nlohmann/json.hpp>

namespace sorakaze {
namespace {

using Json = nlohmann::ordered_json;

struct ToJson {
    Json operator()(const String& text) const { return text.Bytes(); }
    Json operator()(std::int32_t number) const { return number; }
    Json operator()(double number) const { return number; }
};

std::string Complete(Json line, const ShowEvent::Fields& fields) {
    for (const auto& [name, value] : fields) {
        // `failed` has a `what` of its own, beside the one that names the event.
        const std::string member = line.contains(name) ? "which" : std::string(name);
        line[member] = std::visit(ToJson(), value);
    }
    return line.dump(-1, ' ', false, Json::error_handler_t::replace);
}

}  // namespace

std::string EventLine(const ShowEvent& event, std::string_view at) {
    Json line;
    if (!at.empty()) line["at"] = std::string(at);
    line["ticks"] = event.ticks;
    line["what"] = std::string(NameOf(event.kind));
    return Complete(std::move(line), event.fields);
}

std::string NoteLine(std::string_view at, std::string_view what, const ShowEvent::Fields& fields) {
    Json line;
    line["at"] = std::string(at);
    line["what"] = std::string(what);
    return Complete(std::move(line), fields);
}

}  // namespace sorakaze
