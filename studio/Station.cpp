// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "studio/Station.h"

#include <algorithm>

#include "host/StationPaths.h"
#include "studio/StudioError.h"

namespace sorakaze::studio {

namespace fs = std::filesystem;

fs::path FindStation(const fs::path& given) {
    std::error_code error;
    fs::path station = given;
    if (station.empty()) station = StationOfThisProgram();
    station = fs::weakly_canonical(station, error);
    if (error || !fs::is_directory(ResourcesOfStation(station), error)) {
        throw StudioError(kFailed, (given.empty() ? station : given).string() +
                                       " is no station: give --station the folder that holds Sorakaze.app.");
    }
    return station;
}

void SelectRow(PopupMenu& menu, const std::string& name, const std::string& what) {
    const auto& rows = menu.Rows();
    auto row =
        std::find_if(rows.begin(), rows.end(), [&](const String& text) { return text.Bytes() == name; });
    if (row == rows.end()) row = std::find(rows.begin(), rows.end(), String(name));
    if (row == rows.end()) {
        std::string names;
        for (const String& text : rows) names += (names.empty() ? "" : ", ") + text.Bytes();
        throw StudioError(kFailed,
                          "There is no " + what + " named \"" + name + "\"." +
                              (names.empty() ? " There is none at all." : " There are: " + names + "."));
    }
    menu.SetListIndex(static_cast<std::int32_t>(row - rows.begin()));
}

}  // namespace sorakaze::studio
