// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "player/FolderTree.h"

#include <dirent.h>
#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <deque>
#include <set>

#include "player/PlaylistParsers.h"

namespace sorakaze::player {

namespace {

/// Up to eight lower-case letters in one word, for a fast lookup.
constexpr std::uint64_t Packed(std::string_view ending) {
    std::uint64_t word = 0;
    for (const char c : ending) {
        const char lower = c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
        word = word << 8 | static_cast<unsigned char>(lower);
    }
    return word;
}

/// Endings of what the decoder plays. Left out are those of sound without a header, whose rate nobody knows.
/// The usual ones come first.
constexpr std::uint64_t kSoundEndings[] = {
    Packed("mp3"),
    Packed("m4a"),
    Packed("flac"),
    Packed("ogg"),
    Packed("opus"),
    Packed("oga"),
    Packed("wav"),
    Packed("aiff"),
    Packed("aif"),
    Packed("aac"),
    Packed("wma"),
    Packed("m4b"),
    Packed("mp2"),
    Packed("ape"),
    Packed("wv"),
    Packed("mpc"),
    Packed("tta"),
    Packed("spx"),
    Packed("mka"),
    Packed("aifc"),
    Packed("wave"),
    Packed("caf"),
    Packed("alac"),
    Packed("dsf"),
    Packed("dff"),
    Packed("ac3"),
    Packed("au"),
    Packed("tak"),
    Packed("weba"),
    Packed("shn"),
    // Rarer ones, and films, of which the sound is played.
    Packed("3g2"),
    Packed("3gp"),
    Packed("3gpp"),
    Packed("aa3"),
    Packed("adts"),
    Packed("adx"),
    Packed("afc"),
    Packed("amr"),
    Packed("asf"),
    Packed("ast"),
    Packed("avi"),
    Packed("bwf"),
    Packed("dts"),
    Packed("dtshd"),
    Packed("eac3"),
    Packed("ec3"),
    Packed("f4v"),
    Packed("flv"),
    Packed("g722"),
    Packed("gsm"),
    Packed("ircam"),
    Packed("isma"),
    Packed("latm"),
    Packed("loas"),
    Packed("m2a"),
    Packed("m2t"),
    Packed("m2ts"),
    Packed("m4r"),
    Packed("m4v"),
    Packed("mk3d"),
    Packed("mkv"),
    Packed("mlp"),
    Packed("mmf"),
    Packed("mov"),
    Packed("mp1"),
    Packed("mp4"),
    Packed("mpa"),
    Packed("mpeg"),
    Packed("mpg"),
    Packed("mpga"),
    Packed("mts"),
    Packed("nut"),
    Packed("ogv"),
    Packed("ogx"),
    Packed("oma"),
    Packed("qt"),
    Packed("ra"),
    Packed("rf64"),
    Packed("rm"),
    Packed("rso"),
    Packed("sbc"),
    Packed("sf"),
    Packed("snd"),
    Packed("sox"),
    Packed("thd"),

    Packed("ts"),
    Packed("vob"),
    Packed("voc"),
    Packed("w64"),
    Packed("webm"),
    Packed("wmv"),
    Packed("wtv"),
    // Modules of trackers.
    Packed("669"),
    Packed("it"),
    Packed("med"),
    Packed("mo3"),
    Packed("mod"),
    Packed("mptm"),
    Packed("mtm"),
    Packed("okt"),
    Packed("s3m"),
    Packed("stm"),
    Packed("ult"),
    Packed("umx"),
    Packed("xm"),
};

enum class Kind { Sound, Playlist, CueSheet, Folder, LinkedFolder, Other };

bool IsOfInterest(const char* name) {
    return IsSoundName(name) || IsPlaylistName(name) || HasEnding(name, ".cue");
}

Kind KindOfFile(const char* name) {
    if (IsSoundName(name)) return Kind::Sound;
    if (HasEnding(name, ".cue")) return Kind::CueSheet;
    return IsPlaylistName(name) ? Kind::Playlist : Kind::Other;
}

/// Reads the file's status only where the folder doesn't have the type: links, and file systems without
/// types.
Kind KindOf(int folder, const dirent& entry) {
    if (entry.d_type == DT_REG) return KindOfFile(entry.d_name);
    if (entry.d_type == DT_DIR) return Kind::Folder;
    if (entry.d_type != DT_LNK && entry.d_type != DT_UNKNOWN) return Kind::Other;
    struct stat status {};
    if (::fstatat(folder, entry.d_name, &status, AT_SYMLINK_NOFOLLOW) != 0) return Kind::Other;
    const bool isLink = S_ISLNK(status.st_mode);
    // A dangling link's target may be missing for a while only.
    if (isLink && ::fstatat(folder, entry.d_name, &status, 0) != 0) return Kind::LinkedFolder;
    if (S_ISDIR(status.st_mode)) return isLink ? Kind::LinkedFolder : Kind::Folder;
    return S_ISREG(status.st_mode) && IsOfInterest(entry.d_name) ? KindOfFile(entry.d_name) : Kind::Other;
}

void Sort(FolderTree::Listing& listing) {
    for (auto* names : {&listing.sounds, &listing.playlists, &listing.cueSheets, &listing.folders,
                        &listing.linkedFolders}) {
        std::sort(names->begin(), names->end());
    }
}

/// Null for a folder that can't be read, and when a stop is asked for.
std::shared_ptr<const FolderTree::Listing> ReadFolder(const std::string& path, const std::stop_token& ended) {
    const int descriptor = ::open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC | O_NONBLOCK);
    if (descriptor < 0) return nullptr;
    const std::unique_ptr<DIR, int (*)(DIR*)> directory(::fdopendir(descriptor), ::closedir);
    struct stat status {};
    if (!directory || ::fstat(descriptor, &status) != 0) {
        if (!directory) ::close(descriptor);
        return nullptr;
    }
    auto listing = std::make_shared<FolderTree::Listing>();
    listing->stamp = StampOf(status);
    listing->settled = IsSettled(listing->stamp);
    while (const dirent* entry = ::readdir(directory.get())) {
        if (ended.stop_requested()) return nullptr;
        if (entry->d_name[0] == '.') continue;
        switch (KindOf(descriptor, *entry)) {
            case Kind::Sound:
                listing->sounds.emplace_back(entry->d_name);
                break;
            case Kind::Playlist:
                listing->playlists.emplace_back(entry->d_name);
                break;
            case Kind::CueSheet:
                listing->cueSheets.emplace_back(entry->d_name);
                break;
            case Kind::Folder:
                listing->folders.emplace_back(entry->d_name);
                break;
            case Kind::LinkedFolder:
                listing->linkedFolders.emplace_back(entry->d_name);
                break;
            case Kind::Other:
                break;
        }
    }
    Sort(*listing);
    return listing;
}

std::string Joined(const std::string& folder, const std::string& name) {
    return folder.ends_with('/') ? folder + name : folder + '/' + name;
}

}  // namespace

bool IsSoundName(std::string_view name) {
    const auto dot = name.rfind('.');
    if (dot == std::string_view::npos || dot == 0 || name.size() - dot > 6) return false;
    const std::uint64_t ending = Packed(name.substr(dot + 1));
    return std::find(std::begin(kSoundEndings), std::end(kSoundEndings), ending) != std::end(kSoundEndings);
}

/// Walks the folders without links first, then follows the links to folders that the walk has not met.
struct FolderTree::Scanner {
    struct Step {
        std::string path;
        std::size_t parent = kNone;
        std::string name;
        bool mayBeAway = false;  ///< a root or a linked folder: its place on the disk isn't its parent's
    };
    static constexpr std::size_t kNone = static_cast<std::size_t>(-1);

    const FolderTree* before;
    FolderTree& tree;
    MissingFolders& away;
    const std::stop_token& ended;
    std::set<std::pair<std::uint64_t, std::uint64_t>> visited;
    std::deque<Step> links;

    const Folder* Former(const std::string& path) const {
        if (before == nullptr) return nullptr;
        const auto found = before->byPath_.find(path);
        return found == before->byPath_.end() ? nullptr : &before->folders_[found->second];
    }

    std::shared_ptr<const Listing> ListingOf(const std::string& path, const FileStamp& stamp) const {
        if (const Folder* former = Former(path); former != nullptr) {
            if (former->listing->settled && former->listing->stamp == stamp) return former->listing;
        }
        return ReadFolder(path, ended);
    }

    /// Where a disk was mounted, an empty folder of the disk below is left.
    static bool IsUnmounted(const Folder& former, const Listing& now) {
        return former.listing->stamp.device != now.stamp.device && IsEmpty(now) && !IsEmpty(*former.listing);
    }

    static bool IsEmpty(const Listing& listing) {
        return listing.sounds.empty() && listing.playlists.empty() && listing.folders.empty() &&
               listing.linkedFolders.empty();
    }

    std::size_t Put(const Step& step, const std::shared_ptr<const Listing>& listing) {
        const std::size_t index = tree.folders_.size();
        if (step.parent == kNone) {
            tree.roots_.push_back(index);
        } else {
            tree.folders_[step.parent].children.emplace_back(step.name, index);
        }
        tree.byPath_.emplace(step.path, index);
        tree.folders_.push_back({step.path, listing, {}});
        return index;
    }

    /// As it was, with all that was below it.
    void Keep(Step first) {
        std::vector<Step> steps;
        steps.push_back(std::move(first));
        while (!steps.empty()) {
            const Step step = std::move(steps.back());
            steps.pop_back();
            const Folder* former = Former(step.path);
            const auto& stamp = former->listing->stamp;
            if (!visited.emplace(stamp.device, stamp.inode).second) continue;
            const std::size_t index = Put(step, former->listing);
            for (auto child = former->children.rbegin(); child != former->children.rend(); ++child)
                steps.push_back({before->folders_[child->second].path, index, child->first});
        }
    }

    bool KeepWhileAway(const Step& step) {
        const Folder* former = Former(step.path);
        // Another root may have brought it along.
        if (former == nullptr || tree.byPath_.contains(step.path) || !away.IsExpectedBack(step.path))
            return false;
        Keep(step);
        return true;
    }

    void Walk(Step first) {
        std::vector<Step> steps;
        steps.push_back(std::move(first));
        while (!steps.empty() && !ended.stop_requested()) {
            const Step step = std::move(steps.back());
            steps.pop_back();
            const auto stamp = StampOf(step.path);
            if (stamp && visited.contains({stamp->device, stamp->inode})) continue;
            const auto listing = stamp ? ListingOf(step.path, *stamp) : nullptr;
            if (!listing) {
                if (step.mayBeAway) KeepWhileAway(step);
                continue;
            }
            const Folder* former = Former(step.path);
            if (former != nullptr && IsUnmounted(*former, *listing) && KeepWhileAway(step)) continue;
            away.SetPresent(step.path);
            visited.emplace(stamp->device, stamp->inode);
            Descend(step, listing, steps);
        }
    }

    void Descend(const Step& step, const std::shared_ptr<const Listing>& listing, std::vector<Step>& steps) {
        const std::size_t index = Put(step, listing);
        for (const std::string& name : listing->linkedFolders)
            links.push_back({Joined(step.path, name), index, name, true});
        for (auto name = listing->folders.rbegin(); name != listing->folders.rend(); ++name)
            steps.push_back({Joined(step.path, *name), index, *name});
    }
};

std::shared_ptr<const FolderTree> FolderTree::Scan(const std::vector<std::filesystem::path>& roots,
                                                   const FolderTree* before, MissingFolders& away,
                                                   const std::stop_token& ended) {
    auto tree = std::make_shared<FolderTree>();
    Scanner scanner{before, *tree, away, ended, {}, {}};
    std::vector<std::string> starts;
    for (const auto& root : roots) {
        if (!root.empty()) starts.push_back(root.lexically_normal().string());
    }
    std::sort(starts.begin(), starts.end());
    for (const std::string& start : starts) scanner.Walk({start, Scanner::kNone, {}, true});
    while (!scanner.links.empty() && !ended.stop_requested()) {
        Scanner::Step step = std::move(scanner.links.front());
        scanner.links.pop_front();
        scanner.Walk(std::move(step));
    }
    if (ended.stop_requested()) return nullptr;
    for (Folder& folder : tree->folders_) std::sort(folder.children.begin(), folder.children.end());
    return tree;
}

bool FolderTree::HasSameListings(const FolderTree& other) const {
    return std::equal(folders_.begin(), folders_.end(), other.folders_.begin(), other.folders_.end(),
                      [](const Folder& a, const Folder& b) { return a.listing == b.listing; });
}

void FolderTree::ForEachSound(
    const std::function<void(const Folder&, const std::string& name)>& visit) const {
    for (const std::size_t root : roots_) VisitSounds(root, visit);
}

// Recursion as deep as folders nest, which the length of a path limits.
void FolderTree::VisitSounds(std::size_t folder,
                             const std::function<void(const Folder&, const std::string& name)>& visit) const {
    const Folder& here = folders_[folder];
    auto child = here.children.begin();
    for (const std::string& name : here.listing->sounds) {
        for (; child != here.children.end() && child->first < name; ++child)
            VisitSounds(child->second, visit);
        visit(here, name);
    }
    for (; child != here.children.end(); ++child) VisitSounds(child->second, visit);
}

}  // namespace sorakaze::player
