// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "player/MusicLibrary.h"

#include <algorithm>
#include <limits>

#include "base/Ascii.h"
#include "player/EntryFile.h"
#include "player/LibraryWatcher.h"
#include "player/UserMusicFolder.h"

namespace sorakaze::player {

namespace {

bool IsLibrary(const std::string& playlist) {
    return playlist == kLibraryName || ascii::Lowered(playlist) == ascii::Lowered(kLibraryName);
}

bool IsWithin(const std::filesystem::path& file, const std::filesystem::path& folder) {
    return !folder.empty() &&
           std::mismatch(folder.begin(), folder.end(), file.begin(), file.end()).first == folder.end();
}

/// The list of a library XML that `playlist` names. Null when the file no longer holds it.
const ParsedPlaylist::List* ListOf(const PlaylistFiles::Contents& contents, const Playlist& playlist) {
    int occurrence = playlist.occurrence;
    for (const ParsedPlaylist::List& list : contents.lists) {
        if (list.name == playlist.ownName && occurrence-- == 0) return &list;
    }
    return nullptr;
}

/// A playlist's entries by index, for both kinds of files.
class Entries {
  public:
    Entries(std::shared_ptr<const PlaylistFiles::Contents> contents, const Playlist& playlist)
        : contents_(std::move(contents)), inLibraryXml_(playlist.inLibraryXml) {
        if (contents_ && inLibraryXml_) list_ = ListOf(*contents_, playlist);
    }

    std::size_t Count() const {
        if (inLibraryXml_) return list_ != nullptr ? list_->tracks.size() : 0;
        return contents_ ? contents_->tracks.size() : 0;
    }

    const PlaylistEntry& At(std::size_t index) const {
        return contents_->tracks[inLibraryXml_ ? list_->tracks[index] : index];
    }

    const std::filesystem::path& Folder() const { return contents_->folder; }

  private:
    std::shared_ptr<const PlaylistFiles::Contents> contents_;
    bool inLibraryXml_;
    const ParsedPlaylist::List* list_ = nullptr;
};

}  // namespace

struct MusicLibrary::Impl {
    std::stop_source end;
    std::stop_callback<std::function<void()>> onEnd;  ///< before what it stops: the end may have come already
    const std::vector<std::filesystem::path> roots;
    PlaylistFiles files;
    LibraryWatcher watcher;

    Impl(std::vector<std::filesystem::path> folders, Watching watching,
         std::function<Clock::time_point()> now, std::stop_token ended)
        : onEnd(std::move(ended), [this] { end.request_stop(); }),
          roots(std::move(folders)),
          files(end.get_token()),
          watcher(roots, files, watching, std::move(now), end.get_token()) {}
    ~Impl() { end.request_stop(); }
    Impl(const Impl&) = delete;
    Impl& operator=(const Impl&) = delete;
};

MusicLibrary::MusicLibrary(std::vector<std::filesystem::path> roots, Watching watching,
                           std::function<Clock::time_point()> now, std::stop_token ended)
    : impl_(std::make_unique<Impl>(std::move(roots), watching, std::move(now), std::move(ended))) {}

MusicLibrary::~MusicLibrary() = default;

std::unique_ptr<MusicLibrary> MusicLibrary::OfApplication(const std::filesystem::path& appFolder,
                                                          std::stop_token ended) {
    std::vector<std::filesystem::path> roots{appFolder / "Music"};
    if (const auto own = UserMusicFolder(); !own.empty()) roots.push_back(own);
    return std::make_unique<MusicLibrary>(std::move(roots), Watching::OnThread, Clock::now, std::move(ended));
}

std::filesystem::path MusicLibrary::RootOf(const std::filesystem::path& file) const {
    const auto root =
        std::find_if(impl_->roots.begin(), impl_->roots.end(),
                     [&](const std::filesystem::path& folder) { return IsWithin(file, folder); });
    return root == impl_->roots.end() ? std::filesystem::path() : *root;
}

bool MusicLibrary::IsFolderMissing(const std::filesystem::path& file) const {
    return std::any_of(impl_->roots.begin(), impl_->roots.end(), [&](const std::filesystem::path& root) {
        const bool within = IsWithin(file, root);
        std::error_code gone;
        // The mount point of an unmounted disk remains, empty.
        return within && (std::filesystem::is_empty(root, gone) || gone);
    });
}

std::vector<std::string> MusicLibrary::Names() {
    const auto catalogue = impl_->watcher.Current();
    std::vector<std::string> names = {kLibraryName};
    for (const Playlist& playlist : catalogue->Playlists()) names.push_back(playlist.name);
    return names;
}

bool MusicLibrary::Has(const std::string& playlist) {
    return IsLibrary(playlist) || impl_->watcher.Current()->Find(playlist) != nullptr;
}

int MusicLibrary::Count(const std::string& playlist) {
    const auto catalogue = impl_->watcher.Current();
    std::size_t count = 0;
    if (IsLibrary(playlist)) {
        count = catalogue->SoundCount();
    } else if (const Playlist* found = catalogue->Find(playlist)) {
        count = Entries(impl_->files.Get(found->file), *found).Count();
    }
    return static_cast<int>(std::min<std::size_t>(count, std::numeric_limits<int>::max()));
}

std::optional<Track> MusicLibrary::Find(const std::string& playlist, int number) {
    if (number < 1) return std::nullopt;
    const auto index = static_cast<std::size_t>(number) - 1;
    const auto catalogue = impl_->watcher.Current();
    if (IsLibrary(playlist)) {
        if (index >= catalogue->SoundCount()) return std::nullopt;
        return Track{catalogue->SoundPath(index), {}};
    }
    const Playlist* found = catalogue->Find(playlist);
    if (found == nullptr) return std::nullopt;
    const Entries entries(impl_->files.Get(found->file), *found);
    if (index >= entries.Count()) return std::nullopt;
    const PlaylistEntry& entry = entries.At(index);
    return Track{FileOf(entry, entries.Folder()), TrackText::Unpacked(entry.words)};
}

}  // namespace sorakaze::player
