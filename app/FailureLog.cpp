// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/FailureLog.h"

#include <cstdio>
#include <string>

#include "base/PrintableText.h"

namespace sorakaze {
void FailureLog::OnShowEvent(const ShowEvent& event) {
    if (event.what != "failed") return;
    std::string path, why;
    for (const auto& [name, value] : event.fields) {
        const auto* text = std::get_if<String>(&value);
        if (text && name == "path") path = text->Bytes();
        if (text && name == "why") why = text->Bytes();
    }
    if (!path.empty()) path += ": ";
    std::fprintf(stderr, "Sorakaze: %s\n", Printable(path + why).c_str());
}

}  // namespace sorakaze
