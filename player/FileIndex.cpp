// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "player/FileIndex.h"

#include <algorithm>

#include "base/Ascii.h"
#include "base/unicode/Characters.h"
#include "player/ForeignText.h"
#include "player/NameText.h"

namespace sorakaze::player {

namespace {

/// Names that thousands of files have lead to none of them.
constexpr std::size_t kMostOfOneName = 10'000;
constexpr std::size_t kMostMatches = 8;
constexpr std::size_t kMostTitles = 32;

bool IsAscii(std::string_view text) {
    return std::all_of(text.begin(), text.end(), [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

/// A name as it is compared.
std::string Folded(std::string_view name) {
    return IsAscii(name) ? ascii::Lowered(name) : unicode::FoldedCase(CleanLine(name));
}

/// Takes the last component off `path`. Empty components don't count.
std::string_view TakeLast(std::string_view& path) {
    while (path.ends_with('/') || path.ends_with('\\')) path.remove_suffix(1);
    const auto slash = path.find_last_of("/\\");
    const std::string_view last = slash == std::string_view::npos ? path : path.substr(slash + 1);
    path.remove_suffix(last.size());
    return last;
}

/// How many of the last components are the same.
std::size_t CommonEnd(std::string_view a, std::string_view b) {
    std::size_t count = 0;
    for (;; ++count) {
        const std::string_view one = TakeLast(a), other = TakeLast(b);
        if (one.empty() || other.empty() || (one != other && Folded(one) != Folded(other))) return count;
    }
}

std::uint64_t Hash(std::string_view key) {
    return std::hash<std::string_view>()(key);
}

}  // namespace

FileIndex::FileIndex(std::size_t count, PathOf pathOf) : pathOf_(std::move(pathOf)) {
    byName_.reserve(count);
    for (std::size_t i = 0; i < count; ++i) {
        const std::string path = pathOf_(i);
        std::string_view rest = path;
        const std::string_view name = TakeLast(rest);
        byName_.emplace_back(Hash(Folded(name)), static_cast<std::uint32_t>(i));
    }
    std::sort(byName_.begin(), byName_.end());
}

void FileIndex::TakeTitles() const {
    for (const auto& [hash, file] : byName_) {
        const TrackText text = TextFromPath(pathOf_(file), {}, {});
        byTitle_.emplace_back(Hash(ComparableText(text.title)), file);
        if (!text.artist.empty()) byTitle_.emplace_back(Hash(ComparableText(text.artist + text.title)), file);
    }
    std::sort(byTitle_.begin(), byTitle_.end());
}

std::vector<std::size_t> FileIndex::Find(const Table& table, std::string_view key) {
    std::vector<std::size_t> found;
    const std::uint64_t hash = Hash(key);
    for (auto entry = std::lower_bound(table.begin(), table.end(), std::pair(hash, std::uint32_t{0}));
         entry != table.end() && entry->first == hash && found.size() <= kMostOfOneName; ++entry)
        found.push_back(entry->second);
    if (found.size() > kMostOfOneName) found.clear();
    return found;
}

FileIndex::Match FileIndex::ByPath(const std::vector<std::string>& spellings) const {
    Match best;
    for (const std::string& spelling : spellings) {
        std::string_view rest = spelling;
        const std::string name = Folded(TakeLast(rest));
        if (name.empty()) continue;
        for (const std::size_t file : Find(byName_, name)) {
            const std::size_t common = CommonEnd(pathOf_(file), spelling);
            if (common == 0 || common < best.components) continue;
            if (common > best.components) best = {{}, common};
            const bool isNew = std::find(best.files.begin(), best.files.end(), file) == best.files.end();
            if (isNew && best.files.size() < kMostMatches) best.files.push_back(file);
        }
    }
    return best;
}

std::vector<std::size_t> FileIndex::ByTitle(std::string_view title, std::string_view artist) const {
    std::call_once(titlesTaken_, [this] { TakeTitles(); });
    std::vector<std::size_t> files;
    for (const std::string& text : {std::string(title), std::string(artist) + std::string(title)}) {
        const std::string key = ComparableText(text);
        if (key.empty()) continue;
        for (const std::size_t file : Find(byTitle_, key)) {
            if (std::find(files.begin(), files.end(), file) == files.end()) files.push_back(file);
            if (files.size() > kMostTitles) return {};
        }
    }
    return files;
}

}  // namespace sorakaze::player
