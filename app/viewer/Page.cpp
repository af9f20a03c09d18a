// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/viewer/Page.h"

namespace sorakaze::viewer {
namespace {

constexpr std::string_view kOwn = "own";
constexpr std::string_view kOther = "other";

std::optional<std::string_view> TakeLine(std::string_view& bytes) {
    const auto end = bytes.find('\n');
    if (end == std::string_view::npos) return std::nullopt;
    const std::string_view line = bytes.substr(0, end);
    bytes.remove_prefix(end + 1);
    return line;
}

}  // namespace

std::string Pack(const Page& page) {
    const Service& service = page.service;
    return service.address + '\n' + service.script + '\n' + std::string(service.own ? kOwn : kOther) + '\n' +
           page.html;
}

std::optional<Page> Unpack(std::string_view bytes) {
    const auto address = TakeLine(bytes);
    const auto script = TakeLine(bytes);
    const auto whose = TakeLine(bytes);
    if (!address || !script || !whose || (*whose != kOwn && *whose != kOther)) return std::nullopt;
    return Page{std::string(bytes), {std::string(*address), std::string(*script), *whose == kOwn}};
}

}  // namespace sorakaze::viewer
