// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "studio/check/StationSounds.h"

#include <unistd.h>

#include <algorithm>
#include <utility>

#include "app/runtime/FolderItem.h"
#include "base/NearestWord.h"

namespace sorakaze::studio {
namespace {

namespace fs = std::filesystem;
using check::Complaint;
using check::Quoted;
using check::Severity;

/// Of a larger folder only so many entries are opened.
constexpr std::size_t kMostOpened = 200;

std::vector<std::string> EntriesOf(const fs::path& folder) {
    std::vector<std::string> names;
    std::error_code error;
    for (fs::directory_iterator entry(folder, error), end; !error && entry != end; entry.increment(error))
        names.push_back(entry->path().filename().string());
    std::ranges::sort(names);
    return names;
}

/// The entry that `name`, which isn't there, may mean; empty if none is near.
struct MeantEntry {
    std::string name;
    bool byCase = false;  ///< only the case of letters differs
};

MeantEntry FindEntry(const fs::path& folder, const std::string& name) {
    const auto names = EntriesOf(folder);
    for (const std::string& entry : names) {
        if (String(entry) == String(name)) return {entry, true};
    }
    for (const std::string& entry : names) {
        if (String(fs::path(entry).stem().string()) == String(fs::path(name).stem().string()) ||
            String(fs::path(entry).stem().string()) == String(name))
            return {entry, false};
    }
    const std::vector<std::string_view> views(names.begin(), names.end());
    const auto nearest = FindNearestWord(name, views, name.size() > 6 ? 2 : 1);
    return nearest ? MeantEntry{std::string(nearest->word), false} : MeantEntry{};
}

/// The path that exists and that `argument` may mean.
MeantEntry FindMeantPath(const fs::path& station, const fs::path& argument) {
    MeantEntry meant{"", true};
    fs::path found;
    for (const fs::path& part : argument.relative_path()) {
        std::error_code error;
        if (!part.empty() && !fs::exists(station / found / part, error)) {
            const MeantEntry entry = FindEntry(station / found, part.string());
            if (entry.name.empty()) return {};
            meant.byCase = meant.byCase && entry.byCase;
            found /= entry.name;
        } else {
            found /= part;
        }
    }
    meant.name = found.string();
    return meant;
}

}  // namespace

std::optional<double> StationSounds::LengthOf(const fs::path& file) {
    std::error_code error;
    if (!fs::is_regular_file(file, error)) return {};
    if (!engine_) engine_ = std::make_unique<sound::MixingEngine>(sound::MixingMode::Offline);
    const auto voice = engine_->Open(file);
    engine_->TakeFailures();
    engine_->ForgetBadFiles();
    if (!voice) return {};
    const auto length = voice->Length();
    return length ? length->Seconds() : 0;
}

Complaint StationSounds::TellOfMissing(const std::string& argument) const {
    std::error_code error;
    std::string slashes = argument;
    std::ranges::replace(slashes, '\\', '/');
    if (slashes != argument && fs::exists(station_ / fs::path(slashes).relative_path(), error))
        return {Severity::Error, "missing-sound", "a path has slashes and no backslashes", slashes};
    if (fs::path(argument).is_absolute() && fs::exists(argument, error)) {
        const fs::path inside = fs::path(argument).lexically_relative(station_);
        const bool within = !inside.empty() && *inside.begin() != "..";
        return {Severity::Error, "missing-sound",
                "a path is looked for below the station's folder, whatever it begins with",
                within ? inside.string() : ""};
    }
    if (fs::exists(station_ / "Sounds" / argument, error))
        return {Severity::Error, "missing-sound",
                "there is no " + Quoted(argument) + " in the station's folder", "Sounds/" + argument};
    const MeantEntry meant = FindMeantPath(station_, argument);
    if (!meant.name.empty() && meant.byCase)
        return {Severity::Error, "letter-case",
                "there is no " + Quoted(argument) + ": capital and small letters differ", meant.name};
    return {Severity::Error, "missing-sound", "there is no " + Quoted(argument) + " in the station's folder",
            meant.name};
}

std::vector<Complaint> StationSounds::CheckFolder(const fs::path& folder, const std::string& argument) {
    if (access(folder.c_str(), R_OK | X_OK) != 0)
        return {
            {Severity::Error, "unreadable-sound", "the folder " + Quoted(argument) + " can't be read", ""}};
    const auto names = EntriesOf(folder);
    if (names.empty())
        return {{Severity::Error, "empty-folder",
                 "the folder " + Quoted(argument) + " is empty: the block would break off at this line", ""}};
    std::vector<std::string> wrong;
    const std::size_t most = std::min(names.size(), kMostOpened);
    for (std::size_t i = 0; i < most; ++i) {
        if (!LengthOf(folder / names[i])) wrong.push_back(names[i]);
    }
    if (wrong.empty()) return {};
    if (wrong.size() == most)
        return {{Severity::Error, "folder-entry", "nothing in the folder " + Quoted(argument) + " is a sound",
                 ""}};
    std::string message = Quoted(wrong.front());
    if (wrong.size() > 1) message += " and " + std::to_string(wrong.size() - 1) + " more";
    return {{Severity::Warning, "folder-entry",
             message + (wrong.size() > 1 ? " in the folder are" : " in the folder is") +
                 " no sound and can be drawn all the same",
             ""}};
}

std::vector<Complaint> StationSounds::Find(const std::string& argument) {
    // As the show reads the path.
    const fs::path path = station_.string() + "/" + UnescapeFromShell(argument);
    std::error_code error;
    if (!fs::exists(path, error)) return {TellOfMissing(argument)};
    if (fs::is_directory(path, error)) return CheckFolder(path, argument);
    if (access(path.c_str(), R_OK) != 0)
        return {{Severity::Error, "unreadable-sound", Quoted(argument) + " can't be read", ""}};
    if (!LengthOf(path))
        return {{Severity::Error, "not-a-sound", Quoted(argument) + " is no sound that can be played", ""}};
    return {};
}

std::vector<Complaint> StationSounds::Check(const std::string& argument) {
    const auto known = known_.find(argument);
    if (known != known_.end()) return known->second;
    return known_.emplace(argument, Find(argument)).first->second;
}

}  // namespace sorakaze::studio
