// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "studio/Station.h"

#include <algorithm>
#include <utility>
#include <vector>

#include "base/NearestWord.h"
#include "host/StationPaths.h"
#include "studio/StudioError.h"

namespace sorakaze::studio {

namespace fs = std::filesystem;

namespace {

/// The names, the nearest first; of a long list the nearest few.
std::string Nearest(const std::vector<String>& rows, const std::string& name) {
    constexpr std::size_t kMost = 5;
    if (rows.empty()) return " There is none at all.";
    std::vector<std::pair<std::size_t, std::string>> names;
    for (const String& row : rows) {
        // A part of a name says as much as a few slips, if it is no single letter.
        constexpr std::size_t kPart = 2, kShortest = 4;
        const bool isPart = InStr(row, name) > 0 || (row.Bytes().size() >= kShortest && InStr(name, row) > 0);
        const std::size_t slips = CountSlips(row.Bytes(), name);
        names.emplace_back(isPart ? std::min(slips, kPart) : slips, row.Bytes());
    }
    std::stable_sort(names.begin(), names.end(),
                     [](const auto& a, const auto& b) { return a.first < b.first; });
    const std::size_t shown = std::min(kMost, names.size());
    std::string text = shown < names.size() ? " The nearest are: " : " There are: ";
    for (std::size_t i = 0; i < shown; ++i) text += (i == 0 ? "" : ", ") + names[i].second;
    if (shown == names.size()) return text + ".";
    return text + " (of " + std::to_string(names.size()) + "; sorakaze-studio list names all).";
}

}  // namespace

fs::path FindStation(const fs::path& given) {
    std::error_code error;
    fs::path station = given;
    if (station.empty()) station = StationOfThisProgram();
    station = fs::weakly_canonical(station, error);
    if (error || !fs::is_directory(ResourcesOfStation(station), error)) {
        throw StudioError(kFailed,
                          (given.empty() ? station : given).string() +
                              " is not a station: give --station the folder that holds Sorakaze.app.");
    }
    return station;
}

void SelectRow(PopupMenu& menu, const std::string& name, const std::string& what) {
    const auto& rows = menu.Rows();
    auto row =
        std::find_if(rows.begin(), rows.end(), [&](const String& text) { return text.Bytes() == name; });
    if (row == rows.end()) row = std::find(rows.begin(), rows.end(), String(name));
    if (row == rows.end())
        throw StudioError(kFailed, "There is no " + what + " named \"" + name + "\"." + Nearest(rows, name));
    menu.SetListIndex(static_cast<std::int32_t>(row - rows.begin()));
}

}  // namespace sorakaze::studio
