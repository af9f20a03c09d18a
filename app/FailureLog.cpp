// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/FailureLog.h"

#include <cstdio>
#include <string>

namespace sorakaze {
namespace {

/// Names of files can hold what a terminal obeys.
std::string Printable(const std::string& text) {
    std::string printable;
    for (const char byte : text) {
        const auto code = static_cast<unsigned char>(byte);
        printable += code < 0x20 || code >= 0x7F ? '?' : byte;
    }
    return printable;
}

}  // namespace

void FailureLog::OnShowEvent(const ShowEvent& event) {
    if (event.what != "failed") return;
    std::string path, why;
    for (const auto& [name, value] : event.fields) {
        const auto* text = std::get_if<String>(&value);
        if (text && name == "path") path = text->Bytes();
        if (text && name == "why") why = text->Bytes();
    }
    std::fprintf(stderr, "Sorakaze: %s: %s\n", Printable(path).c_str(), Printable(why).c_str());
}

}  // namespace sorakaze
