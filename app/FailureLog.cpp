// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/FailureLog.h"

#include <cstdio>
#include <string>

#include "base/PrintableText.h"

namespace sorakaze {
void FailureLog::OnShowEvent(const ShowEvent& event) {
    if (event.kind != ShowEvent::Kind::Failed) return;
    const auto field = [&event](std::string_view name) {
        const auto* value = event.Find(name);
        return value ? std::get<String>(*value).Bytes() : std::string();
    };
    std::string path = field("path");
    if (!path.empty()) path += ": ";
    std::fprintf(stderr, "Sorakaze: %s\n", Printable(path + field("why")).c_str());
}

}  // namespace sorakaze
