// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "player/PlaylistFiles.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <optional>

namespace sorakaze::player {

namespace {

/// Beyond these sizes a file is no playlist that anyone made, and would only cost memory. A list of tracks is
/// read up to its bound; XML broken off in the middle keeps its tracks too.
constexpr std::size_t kLargestList = std::size_t{64} << 20;
constexpr std::size_t kLargestLibrary = std::size_t{256} << 20;
/// A property list says so within its first lines. Other XML files aren't read any further.
constexpr std::size_t kHead = 4096;
/// Lists kept parsed at a time: a show uses one.
constexpr std::size_t kMostLists = 16;

bool HasEnding(const std::string& path, std::string_view ending) {
    return path.size() >= ending.size() &&
           LowerCased(std::string_view(path).substr(path.size() - ending.size())) == ending;
}

class Descriptor {
  public:
    explicit Descriptor(const std::string& path)
        : descriptor_(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK)) {}
    ~Descriptor() {
        if (descriptor_ >= 0) ::close(descriptor_);
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;

    /// Empty for what is no regular file.
    std::optional<FileStamp> Stamp() const {
        struct stat status {};
        if (descriptor_ < 0 || ::fstat(descriptor_, &status) != 0 || !S_ISREG(status.st_mode))
            return std::nullopt;
        return StampOf(status);
    }

    /// Appends to `bytes` up to `most` bytes in all. False on a read error.
    bool ReadUpTo(std::size_t most, std::string& bytes) const {
        while (bytes.size() < most) {
            const std::size_t had = bytes.size();
            bytes.resize(std::min(most, had + (std::size_t{1} << 20)));
            const ssize_t got = ::read(descriptor_, bytes.data() + had, bytes.size() - had);
            bytes.resize(had + static_cast<std::size_t>(std::max<ssize_t>(got, 0)));
            if (got < 0 && errno != EINTR) return false;
            if (got == 0) return true;
        }
        return true;
    }

  private:
    int descriptor_;
};

std::shared_ptr<PlaylistFiles::Contents> Read(const std::string& path) {
    const Descriptor file(path);
    const auto stamp = file.Stamp();
    if (!stamp) return nullptr;
    const bool settled = IsSettled(*stamp);
    const bool isXml = HasEnding(path, ".xml");
    std::string bytes;
    bytes.reserve(
        std::min<std::size_t>(static_cast<std::size_t>(stamp->size) + 1, isXml ? kHead : kLargestList));
    if (!file.ReadUpTo(isXml ? kHead : kLargestList, bytes)) return nullptr;
    if (isXml) {
        const bool mayBeLibrary = bytes.find("plist") != std::string::npos &&
                                  static_cast<std::size_t>(stamp->size) <= kLargestLibrary;
        if (!mayBeLibrary) bytes.clear();
        if (mayBeLibrary && !file.ReadUpTo(kLargestLibrary, bytes)) return nullptr;
    }
    auto contents = std::make_shared<PlaylistFiles::Contents>(ParsePlaylist(path, bytes));
    contents->stamp = *stamp;
    contents->settled = settled;
    contents->folder = std::filesystem::path(path).parent_path();
    return contents;
}

}  // namespace

PlaylistFiles::Contents ParsePlaylist(const std::string& name, std::string_view bytes) {
    PlaylistFiles::Contents contents;
    if (HasEnding(name, ".xml")) {
        if (auto library = ParseLibraryXml(bytes)) {
            contents.isLibrary = true;
            contents.tracks = std::move(library->tracks);
            contents.lists = std::move(library->lists);
        }
    } else if (HasEnding(name, ".xspf")) {
        contents.tracks = ParseXspf(bytes);
    } else if (HasEnding(name, ".pls")) {
        contents.tracks = ParsePls(bytes);
    } else {
        contents.tracks = ParseM3u(bytes);
    }
    return contents;
}

std::shared_ptr<const PlaylistFiles::Contents> PlaylistFiles::Get(const std::string& path) {
    auto cached = Cached(path);
    const auto stamp = StampOf(path);
    if (!stamp || (cached && cached->settled && cached->stamp == *stamp)) return cached;
    std::shared_ptr<const Contents> fresh = Read(path);
    if (!fresh) return cached;
    Store(path, fresh);
    return fresh;
}

std::shared_ptr<const PlaylistFiles::Contents> PlaylistFiles::Cached(const std::string& path) {
    const std::lock_guard lock(mutex_);
    const auto found = cache_.find(path);
    return found == cache_.end() ? nullptr : found->second;
}

void PlaylistFiles::Store(const std::string& path, std::shared_ptr<const Contents> contents) {
    const std::lock_guard lock(mutex_);
    // Libraries stay, since every scan asks for their names.
    const auto isPlain = [](const auto& item) { return !HasEnding(item.first, ".xml"); };
    if (static_cast<std::size_t>(std::count_if(cache_.begin(), cache_.end(), isPlain)) >= kMostLists) {
        std::erase_if(cache_, isPlain);
    }
    cache_[path] = std::move(contents);
}

void PlaylistFiles::KeepOnly(const std::unordered_set<std::string>& paths) {
    const std::lock_guard lock(mutex_);
    std::erase_if(cache_, [&](const auto& item) { return !paths.contains(item.first); });
}

}  // namespace sorakaze::player
