// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "studio/check/ProgramFiles.h"

#include <algorithm>

#include "app/runtime/FolderItem.h"
#include "base/NearestWord.h"
#include "host/StationPaths.h"
#include "studio/StudioError.h"

namespace sorakaze::studio {
namespace {

namespace fs = std::filesystem;
using check::Quoted;

constexpr const char* kEnding = ".txt";

/// From the working folder where the file is below it.
std::string PrintedName(const fs::path& file) {
    std::error_code error;
    const fs::path shorter = file.lexically_relative(fs::current_path(error));
    return (error || shorter.empty() || *shorter.begin() == ".." ? file : shorter).string();
}

/// The row of the menu that an entry of Programs gets.
std::string RowOf(const std::string& entry) {
    return NthField(entry, kEnding, 1).Bytes();
}

ProgramFile EntryFile(const fs::path& folder, const std::string& entry) {
    ProgramFile file{folder / entry, PrintedName(folder / entry), {}};
    const std::string row = RowOf(entry);
    if (entry == row + kEnding) return file;
    std::error_code error;
    const bool twice = fs::exists(folder / (row + kEnding), error);
    file.findings.push_back(
        {0,
         {},
         check::Severity::Warning,
         "not-a-program",
         "the menu lists this as " + Quoted(row) +
             (twice ? ", a second time" : ", but no show finds it: its name must end in .txt"),
         {}});
    return file;
}

}  // namespace

std::vector<ProgramFile> AllPrograms(const fs::path& station) {
    const FolderItem folder(station / "Programs");
    std::vector<ProgramFile> files;
    for (std::int32_t i = 1; i <= folder.Count(); ++i) {
        const auto item = folder.Item(i);
        const std::string entry = item ? item->Name().Bytes() : "";
        if (!entry.empty() && !entry.starts_with('.')) files.push_back(EntryFile(folder.Path(), entry));
    }
    if (files.empty()) throw StudioError(kFailed, "There are no programs in " + folder.Path().string() + ".");
    return files;
}

bool IsPath(const std::string& word) {
    return word.find('/') != std::string::npos ||
           String(fs::path(word).extension().string()) == String(kEnding);
}

ProgramFile FindProgram(const fs::path& station, const std::string& word) {
    if (IsPath(word)) {
        std::error_code error;
        // As it is printed by a check from another folder.
        const fs::path own = station / "Programs" / fs::path(word).filename();
        const bool isOwn = fs::path(word).filename() == word || fs::path("Programs") / own.filename() == word;
        if (!fs::exists(fs::symlink_status(word, error)) && isOwn && !station.empty() &&
            fs::exists(own, error))
            return {own, PrintedName(own), {}};
        if (!fs::exists(fs::symlink_status(word, error)))
            throw StudioError(kWrongCall, "There is no file " + Quoted(word) + ".");
        return {word, word, {}};
    }
    std::vector<std::string> rows;
    const auto programs = AllPrograms(station);
    for (const ProgramFile& program : programs) rows.push_back(RowOf(program.path.filename().string()));
    auto row = std::ranges::find(rows, word);
    if (row == rows.end())
        row =
            std::ranges::find_if(rows, [&](const std::string& each) { return String(each) == String(word); });
    if (row != rows.end()) return programs[static_cast<std::size_t>(row - rows.begin())];
    const std::vector<std::string_view> views(rows.begin(), rows.end());
    const auto nearest = FindNearestWord(word, views, 3);
    const auto holder =
        std::ranges::find_if(rows, [&](const std::string& each) { return InStr(String(each), word) > 0; });
    std::string hint = ".";
    if (nearest)
        hint = check::DidYouMean(nearest->word);
    else if (holder != rows.end())
        hint = check::DidYouMean(*holder);
    throw StudioError(kWrongCall, "There is no program named " + Quoted(word) + hint);
}

fs::path StationOf(const fs::path& file) {
    std::error_code error;
    const fs::path station = fs::weakly_canonical(file, error).parent_path().parent_path();
    return fs::is_directory(ResourcesOfStation(station), error) ? station : fs::path();
}

}  // namespace sorakaze::studio
