// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "player/Catalogue.h"

#include <algorithm>
#include <tuple>

#include "base/Ascii.h"
#include "base/unicode/Characters.h"
#include "player/ForeignText.h"
#include "player/PlaylistNames.h"

namespace sorakaze::player {

namespace {

/// The most memory for library XML files, which all stay in memory. Nobody has more than a few.
constexpr std::size_t kMostLibraryBytes = std::size_t{192} << 20;

constexpr std::size_t kMostCueBytes = std::size_t{64} << 20;

std::string FoldedStem(std::string_view name) {
    return unicode::FoldedCase(CleanLine(name.substr(0, name.rfind('.'))));
}

/// The sound that a track of a cue sheet is in, by its name. Sheets are made of WAV files that are compressed
/// later, so another ending will do; so does the sheet's own name. Null for none or several.
const std::string* SoundOf(const PlaylistEntry& entry, const std::string& sheet,
                           const FolderTree::Listing& listing) {
    const std::string_view location = entry.location;
    const std::string_view name = location.substr(location.find_last_of("/\\") + 1);
    const auto exact = std::lower_bound(listing.sounds.begin(), listing.sounds.end(), name);
    if (exact != listing.sounds.end() && *exact == name) return &*exact;
    for (const std::string& stem : {FoldedStem(name), FoldedStem(sheet)}) {
        const std::string* found = nullptr;
        std::size_t count = 0;
        for (const std::string& sound : listing.sounds) {
            if (FoldedStem(sound) != stem) continue;
            found = &sound;
            ++count;
        }
        if (count == 1) return found;
    }
    return nullptr;
}

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
    CueTracks cueTracks;
    for (const FolderTree::Folder& folder : tree_->Folders()) {
        for (const std::string& name : folder.listing->cueSheets) {
            ReadCueSheet(folder, name, files, cueTracks);
            paths.insert(folder.path + '/' + name);
        }
        for (const std::string& name : folder.listing->playlists) {
            AddPlaylistFile(folder.path, name, files);
            paths.insert(folder.path + '/' + name);
        }
    }
    files.KeepOnly(paths);
    if (!cueTracks.empty()) PlaceTracks(cueTracks);
    NamePlaylists();
}

std::string Catalogue::SoundPath(std::size_t index) const {
    return *sounds_[index].folder + '/' + *sounds_[index].name;
}

Catalogue::LibraryTrack Catalogue::TrackAt(std::size_t index) const {
    if (tracks_.empty()) return {SoundPath(index), nullptr};
    return {SoundPath(tracks_[index].sound), tracks_[index].ofCueSheet};
}

const std::vector<Catalogue::LibraryTrack>* Catalogue::TracksOfSheet(const std::string& path) const {
    const auto found = tracksOfSheets_.find(path);
    return found == tracksOfSheets_.end() ? nullptr : &found->second;
}

/// A file in one part is a track already.
void Catalogue::ReadCueSheet(const FolderTree::Folder& folder, const std::string& name, PlaylistFiles& files,
                             CueTracks& tracks) {
    if (cueBytes_ >= kMostCueBytes) return;
    const std::string path = folder.path + '/' + name;
    auto contents = files.GetHere(path);
    libraries_.push_back({path, contents, true});
    if (!contents) return;
    cueBytes_ += contents->bytes;
    CueTracks found;
    for (const PlaylistEntry& entry : contents->tracks) {
        const std::string* const sound = SoundOf(entry, name, *folder.listing);
        if (!sound) continue;
        const std::string file = folder.path + '/' + *sound;
        found[file].push_back(&entry);
        tracksOfSheets_[path].push_back({file, &entry});
    }
    for (auto& [file, parts] : found)
        if (parts.size() > 1) tracks.try_emplace(file, std::move(parts));
    cueSheets_.push_back(std::move(contents));
}

void Catalogue::PlaceTracks(const CueTracks& tracks) {
    for (std::uint32_t sound = 0; sound < sounds_.size(); ++sound) {
        const auto parts = tracks.find(SoundPath(sound));
        if (parts == tracks.end()) {
            tracks_.push_back({sound, nullptr});
            continue;
        }
        for (const PlaylistEntry* part : parts->second) tracks_.push_back({sound, part});
    }
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
