// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "player/EntryFile.h"

#include <sys/stat.h>

#include <algorithm>
#include <cstddef>

#include "base/PercentCoding.h"
#include "base/Utf8.h"
#include "base/unicode/Normalization.h"
#include "player/ForeignText.h"

namespace sorakaze::player {

namespace {

/// Adds what `change` makes of each spelling so far, if it is new. Limits the list, against hostile names.
template <typename Change>
void AddChanged(std::vector<std::string>& spellings, const Change& change) {
    constexpr std::size_t kMost = 24;
    const std::size_t count = spellings.size();
    for (std::size_t i = 0; i < count && spellings.size() < kMost; ++i) {
        std::string changed = change(spellings[i]);
        if (!changed.empty() && std::find(spellings.begin(), spellings.end(), changed) == spellings.end()) {
            spellings.push_back(std::move(changed));
        }
    }
}

std::string WithSlashes(std::string text) {
    std::replace(text.begin(), text.end(), '\\', '/');
    return text;
}

std::string WithoutBlanksAround(const std::string& text) {
    const auto first = text.find_first_not_of(" \t");
    if (first == std::string::npos) return {};
    return text.substr(first, text.find_last_not_of(" \t") - first + 1);
}

bool BeginsWithDrive(const std::string& path) {
    return path.size() > 2 && path[1] == ':' && path[2] == '/';
}

/// An absolute path's last components looked for below `folder`, the longest tail first. No deeper than
/// anybody's music is kept: each tail costs a disk access.
std::optional<std::filesystem::path> MovedFile(const std::string& path, const std::filesystem::path& folder) {
    if (!path.starts_with('/') && !BeginsWithDrive(path)) return std::nullopt;
    constexpr std::ptrdiff_t kDeepest = 32;
    auto left = std::count(path.begin(), path.end(), '/');
    for (auto slash = path.find('/'); slash != std::string::npos; slash = path.find('/', slash + 1)) {
        if (left-- > kDeepest) continue;
        const std::string tail = path.substr(slash + 1);
        if (tail.empty() || tail.starts_with('/')) continue;
        std::filesystem::path candidate = folder / tail;
        if (IsRegularFile(candidate)) return candidate;
    }
    return std::nullopt;
}

}  // namespace

std::vector<std::string> Spellings(const PlaylistEntry& entry) {
    std::vector<std::string> spellings = {entry.location};
    AddChanged(spellings, PercentDecodedLeniently);
    if (entry.form == PlaylistEntry::Form::Url) std::reverse(spellings.begin(), spellings.end());
    std::erase_if(spellings, [](const std::string& text) { return text.find('\0') != std::string::npos; });
    AddChanged(spellings, DecodeUnlabelled);
    AddChanged(spellings, WithSlashes);
    AddChanged(spellings, WithoutBlanksAround);
    for (const auto form : {unicode::NormalForm::Nfc, unicode::NormalForm::Nfd}) {
        AddChanged(spellings, [&](const std::string& text) {
            return utf8::IsWellFormed(text) ? unicode::Normalized(text, form) : text;
        });
    }
    return spellings;
}

std::optional<std::filesystem::path> FileOf(const PlaylistEntry& entry, const std::filesystem::path& folder) {
    const std::vector<std::string> spellings = Spellings(entry);
    for (const std::string& spelling : spellings) {
        std::filesystem::path candidate = folder / spelling;
        if (IsRegularFile(candidate)) return candidate;
    }
    for (const std::string& spelling : spellings) {
        if (auto moved = MovedFile(spelling, folder)) return moved;
    }
    return std::nullopt;
}

std::filesystem::path GuessOf(const PlaylistEntry& entry, const std::filesystem::path& folder) {
    const std::vector<std::string> spellings = Spellings(entry);
    // For the name that is shown: readable text without the other system's folders.
    const std::string readable = WithSlashes(DecodeUnlabelled(spellings.front()));
    return folder / (entry.location.find('\\') == std::string::npos ? spellings.front() : readable);
}

bool IsRegularFile(const std::filesystem::path& file) {
    struct stat status {};
    return ::stat(file.c_str(), &status) == 0 && S_ISREG(status.st_mode);
}

}  // namespace sorakaze::player
