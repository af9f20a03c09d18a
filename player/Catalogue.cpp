// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "player/Catalogue.h"

#include <algorithm>
#include <tuple>

#include "base/Ascii.h"
#include "base/unicode/Characters.h"
#include "player/PlaylistNames.h"

namespace sorakaze::player {

namespace {

/// The most memory for library XML files, which all stay in memory. Nobody has more than a few.
constexpr std::size_t kMostLibraryBytes = std::size_t{192} << 20;

void SortByName(std::vector<Playlist>& playlists) {
    std::vector<std::pair<std::string, Playlist>> byKey;
    byKey.reserve(playlists.size());
    for (Playlist& playlist : playlists)
        byKey.emplace_back(unicode::FoldedCase(playlist.name), std::move(playlist));
    std::sort(byKey.begin(), byKey.end(), [](const auto& a, const auto& b) {
        return std::tie(a.first, a.second.name, a.second.file, a.second.occurrence) <
               std::tie(b.first, b.second.name, b.second.file, b.second.occurrence);
    });
    playlists.clear();
    for (auto& [key, playlist] : byKey) playlists.push_back(std::move(playlist));
}

}  // namespace

Catalogue::Catalogue(std::shared_ptr<const FolderTree> tree, PlaylistFiles& files) : tree_(std::move(tree)) {
    tree_->ForEachSound([&](const FolderTree::Folder& folder, const std::string& name) {
        sounds_.push_back({&folder.path, &name});
    });
    std::unordered_set<std::string> paths;
    for (const FolderTree::Folder& folder : tree_->Folders()) {
        for (const std::string& name : folder.listing->playlists) {
            AddPlaylistFile(folder.path, name, files);
            paths.insert(folder.path + '/' + name);
        }
    }
    files.KeepOnly(paths);
    NamePlaylists();
}

std::string Catalogue::SoundPath(std::size_t index) const {
    return *sounds_[index].folder + '/' + *sounds_[index].name;
}

const FileIndex& Catalogue::Index() const {
    std::call_once(indexed_, [this] {
        index_ = std::make_unique<FileIndex>(sounds_.size(), [this](std::size_t i) { return SoundPath(i); });
    });
    return *index_;
}

const Playlist* Catalogue::Find(const std::string& name) const {
    if (const auto exact = byName_.find(name); exact != byName_.end()) return &playlists_[exact->second];
    const auto folded = byFoldedName_.find(unicode::FoldedCase(name));
    return folded == byFoldedName_.end() ? nullptr : &playlists_[folded->second];
}

bool Catalogue::IsCurrent(PlaylistFiles& files) const {
    return std::all_of(libraries_.begin(), libraries_.end(), [&](const LibraryFile& library) {
        if (!library.isRead) return true;
        const auto now = files.GetHere(library.path);
        return now == library.contents ||
               (now && now->settled && library.contents && now->stamp == library.contents->stamp);
    });
}

void Catalogue::AddPlaylistFile(const std::string& folder, const std::string& name, PlaylistFiles& files) {
    const std::string path = folder + '/' + name;
    const auto ending = name.rfind('.');
    if (ascii::Lowered(std::string_view(name).substr(ending)) != ".xml") {
        playlists_.push_back({JoinableName(std::string_view(name).substr(0, ending)), path, false, {}, 0});
        return;
    }
    const bool isRead = libraryBytes_ < kMostLibraryBytes;
    const auto contents = isRead ? files.GetHere(path) : nullptr;
    if (contents) libraryBytes_ += contents->bytes;
    libraries_.push_back({path, contents, isRead});
    if (!contents || !contents->isLibrary) return;
    std::unordered_map<std::string, int> occurrences;
    for (const ParsedPlaylist::List& list : contents->lists) {
        playlists_.push_back({JoinableName(list.name), path, true, list.name, occurrences[list.name]++});
    }
}

void Catalogue::NamePlaylists() {
    std::erase_if(playlists_, [](const Playlist& playlist) { return playlist.name.empty(); });
    // By their original names, so that the order of the scan doesn't decide which of equal ones keeps its
    // name.
    SortByName(playlists_);
    std::vector<std::string> names = {kLibraryName, kShuffledName};
    for (const Playlist& playlist : playlists_) names.push_back(playlist.name);
    MakeDistinct(names);
    for (std::size_t i = 0; i < playlists_.size(); ++i) playlists_[i].name = names[i + 2];
    SortByName(playlists_);
    for (std::size_t i = 0; i < playlists_.size(); ++i) {
        byName_.emplace(playlists_[i].name, i);
        byFoldedName_.emplace(unicode::FoldedCase(playlists_[i].name), i);
    }
}

}  // namespace sorakaze::player
