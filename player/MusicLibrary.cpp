// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "player/MusicLibrary.h"

#include <algorithm>
#include <limits>

#include "base/Ascii.h"
#include "player/LibraryWatcher.h"
#include "player/UserMusicFolder.h"

namespace sorakaze::player {

namespace {

bool IsNamed(const std::string& playlist, const char* name) {
    return playlist == name || ascii::Lowered(playlist) == ascii::Lowered(name);
}

bool IsWithin(const std::filesystem::path& file, const std::filesystem::path& folder) {
    return !folder.empty() &&
           std::mismatch(folder.begin(), folder.end(), file.begin(), file.end()).first == folder.end();
}

}  // namespace

struct MusicLibrary::Impl {
    std::stop_source end;
    std::stop_callback<std::function<void()>> onEnd;  ///< before what it stops: the end may have come already
    const std::vector<std::filesystem::path> roots;
    PlaylistFiles files;
    LibraryWatcher watcher;
    FactsOf factsOf;

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
    std::vector<std::string> names = {kLibraryName, kShuffledName};
    for (const Playlist& playlist : catalogue->Playlists()) names.push_back(playlist.name);
    return names;
}

bool MusicLibrary::Has(const std::string& playlist) {
    return IsNamed(playlist, kLibraryName) || IsNamed(playlist, kShuffledName) ||
           impl_->watcher.Current()->Find(playlist) != nullptr;
}

TrackList MusicLibrary::Open(const std::string& playlist) {
    auto catalogue = impl_->watcher.Current();
    using Order = TrackList::Order;
    if (IsNamed(playlist, kLibraryName)) return {std::move(catalogue), Order::Listed};
    if (IsNamed(playlist, kShuffledName)) return {std::move(catalogue), Order::Shuffled};
    const Playlist* const found = catalogue->Find(playlist);
    if (found == nullptr) return {std::move(catalogue), nullptr, Playlist(), {}};
    auto contents = impl_->files.Get(found->file);
    return {std::move(catalogue), std::move(contents), *found, impl_->factsOf};
}

int MusicLibrary::Count(const std::string& playlist) {
    return static_cast<int>(std::min<std::size_t>(Open(playlist).Count(), std::numeric_limits<int>::max()));
}

std::optional<Track> MusicLibrary::Find(const std::string& playlist, int number) {
    if (number < 1) return std::nullopt;
    const auto index = static_cast<std::size_t>(number) - 1;
    const TrackList tracks = Open(playlist);
    return index < tracks.Count() ? std::optional(tracks.At(index)) : std::nullopt;
}

MusicLibrary::Missing MusicLibrary::FindMissing(const std::string& playlist, std::chrono::milliseconds most) {
    constexpr std::size_t kMostTold = 100;
    constexpr int kBetweenLooks = 64;
    const TrackList tracks = Open(playlist);
    const int count =
        static_cast<int>(std::min<std::size_t>(tracks.Count(), std::numeric_limits<int>::max()));
    Missing missing;
    missing.addresses = tracks.Addresses();
    missing.isCut = tracks.IsCut();
    if (!tracks.MayMissFiles()) return {0, count, {}};
    const auto end = Clock::now() + most;
    for (; missing.checked < count; ++missing.checked) {
        if (missing.checked % kBetweenLooks == 0 && Clock::now() >= end) break;
        Track track = tracks.At(static_cast<std::size_t>(missing.checked));
        if (track.missing.empty()) continue;
        ++missing.count;
        if (missing.entries.size() < kMostTold)
            missing.entries.push_back({missing.checked + 1,
                                       tracks.WrittenAt(static_cast<std::size_t>(missing.checked)),
                                       std::move(track.missing)});
    }
    return missing;
}

void MusicLibrary::UseFacts(FactsOf factsOf) {
    impl_->factsOf = std::move(factsOf);
}

}  // namespace sorakaze::player
