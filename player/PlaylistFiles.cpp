// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "player/PlaylistFiles.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <optional>
#include <span>
#include <string_view>
#include <utility>

#include "base/FileDescriptor.h"

namespace sorakaze::player {

namespace {

/// Larger files aren't real playlists. A list of tracks is read up to its limit, a larger library not at all.
constexpr std::int64_t kLargestList = std::int64_t{64} << 20;
/// Of one list: each is looked for on the disk.
constexpr std::size_t kMostCueEntries = 1000;
constexpr std::int64_t kLargestCueSheet = std::int64_t{1} << 20;
constexpr std::int64_t kLargestLibrary = std::int64_t{256} << 20;
/// A property list says so within its first lines. Other XML files aren't read any further.
constexpr std::size_t kHead = 4096;
constexpr std::size_t kPiece = std::size_t{64} << 10;
/// Lists kept parsed at a time: a show uses one.
constexpr std::size_t kMostCached = 16;
constexpr std::size_t kMostCachedBytes = std::size_t{128} << 20;
/// How long a caller waits for a changed file before it gets the former contents.
constexpr std::chrono::seconds kLongestWait{2};

class PlaylistFile {
  public:
    explicit PlaylistFile(const std::string& path)
        : descriptor_(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK)) {}

    /// Empty for what is no regular file.
    std::optional<FileStamp> Stamp() const {
        struct stat status {};
        if (!descriptor_ || ::fstat(descriptor_.Get(), &status) != 0 || !S_ISREG(status.st_mode))
            return std::nullopt;
        return StampOf(status);
    }

    /// The next bytes in `piece`, none at the end. Empty on a read error.
    std::optional<std::size_t> Read(std::span<char> piece) const {
        for (;;) {
            const ssize_t got = ::read(descriptor_.Get(), piece.data(), piece.size());
            if (got >= 0) return static_cast<std::size_t>(got);
            if (errno != EINTR) return std::nullopt;
        }
    }

  private:
    FileDescriptor descriptor_;
};

/// Empty on a read error, and when it is time to stop.
std::optional<ParsedPlaylist> Parse(const PlaylistFile& file, const std::string& path, std::int64_t size,
                                    const std::stop_token& ended) {
    const auto parser = ParserFor(path);
    const bool isXml = HasEnding(path, ".xml");
    if (isXml && size > kLargestLibrary) return ParsedPlaylist{};
    std::vector<char> buffer(kPiece);
    const std::int64_t most = HasEnding(path, ".cue") ? kLargestCueSheet : kLargestList;
    for (std::int64_t all = 0; isXml || all < most;) {
        if (ended.stop_requested()) return std::nullopt;
        const auto got = file.Read(buffer);
        if (!got) return std::nullopt;
        const std::string_view piece(buffer.data(), *got);
        if (isXml && all == 0 && piece.substr(0, kHead).find("plist") == std::string_view::npos) break;
        all += static_cast<std::int64_t>(*got);
        if (*got == 0 || !parser->Read(piece)) break;
    }
    return parser->Finish();
}

std::size_t BytesOf(const ParsedPlaylist& playlist) {
    std::size_t bytes = 0;
    for (const PlaylistEntry& entry : playlist.tracks)
        bytes += sizeof entry + entry.location.capacity() + entry.words.capacity();
    for (const auto& list : playlist.lists)
        bytes += sizeof list + list.name.capacity() + list.tracks.capacity() * sizeof(std::uint32_t);
    return bytes;
}

std::shared_ptr<PlaylistFiles::Contents> Read(const std::string& path, const std::stop_token& ended) {
    const PlaylistFile file(path);
    const auto stamp = file.Stamp();
    if (!stamp) return nullptr;
    const bool settled = IsSettled(*stamp);
    auto parsed = Parse(file, path, stamp->size, ended);
    if (!parsed) return nullptr;
    auto contents = std::make_shared<PlaylistFiles::Contents>();
    contents->bytes = BytesOf(*parsed);
    static_cast<ParsedPlaylist&>(*contents) = std::move(*parsed);
    for (std::uint32_t i = 0; i < contents->tracks.size() && contents->cueEntries.size() < kMostCueEntries;
         ++i)
        if (HasEnding(contents->tracks[i].location, ".cue")) contents->cueEntries.push_back(i);
    contents->stamp = *stamp;
    contents->settled = settled;
    contents->folder = std::filesystem::path(path).parent_path();
    return contents;
}

bool IsUpToDate(const PlaylistFiles::Contents* contents, const std::optional<FileStamp>& stamp) {
    return !stamp || (contents != nullptr && contents->settled && contents->stamp == *stamp);
}

}  // namespace

ParsedPlaylist ParsePlaylist(const std::string& name, std::string_view bytes) {
    const auto parser = ParserFor(name);
    while (!bytes.empty() && parser->Read(bytes.substr(0, kPiece)))
        bytes.remove_prefix(std::min(kPiece, bytes.size()));
    return parser->Finish();
}

PlaylistFiles::PlaylistFiles(std::stop_token ended) : ended_(std::move(ended)), thread_([this] { Run(); }) {}

std::shared_ptr<const PlaylistFiles::Contents> PlaylistFiles::Get(const std::string& path) {
    const auto stamp = StampOf(path);
    auto cached = Cached(path);
    if (IsUpToDate(cached.get(), stamp) || ended_.stop_requested()) return cached;
    std::unique_lock lock(mutex_);
    const auto isRead = [&] { return !wanted_.contains(path); };
    const bool isFirst = wanted_.insert(path).second;
    changed_.notify_all();
    if (!cached) {
        changed_.wait(lock, ended_, isRead);
    } else if (isFirst) {
        changed_.wait_for(lock, ended_, kLongestWait, isRead);
    }
    lock.unlock();
    return Cached(path);
}

std::shared_ptr<const PlaylistFiles::Contents> PlaylistFiles::GetHere(const std::string& path) {
    const auto stamp = StampOf(path);
    auto cached = Cached(path);
    if (IsUpToDate(cached.get(), stamp)) return cached;
    std::shared_ptr<const Contents> fresh = Read(path, ended_);
    if (!fresh) return cached;
    Store(path, fresh);
    return fresh;
}

void PlaylistFiles::Run() {
    std::unique_lock lock(mutex_);
    while (changed_.wait(lock, ended_, [&] { return !wanted_.empty(); }) && !ended_.stop_requested()) {
        const std::string path = *wanted_.begin();
        lock.unlock();
        GetHere(path);
        lock.lock();
        wanted_.erase(path);
        changed_.notify_all();
    }
}

std::shared_ptr<const PlaylistFiles::Contents> PlaylistFiles::Cached(const std::string& path) {
    const std::lock_guard lock(mutex_);
    const auto found = cache_.find(path);
    return found == cache_.end() ? nullptr : found->second;
}

void PlaylistFiles::Store(const std::string& path, std::shared_ptr<const Contents> contents) {
    const std::lock_guard lock(mutex_);
    cache_.erase(path);
    MakeRoom(contents->bytes);
    cache_[path] = std::move(contents);
}

/// Libraries and cue sheets stay, since every scan asks for what they hold.
void PlaylistFiles::MakeRoom(std::size_t bytes) {
    const auto isPlain = [](const auto& item) {
        return !HasEnding(item.first, ".xml") && !HasEnding(item.first, ".cue");
    };
    std::size_t count = 0;
    for (const auto& item : cache_) {
        if (!isPlain(item)) continue;
        ++count;
        bytes += item.second->bytes;
    }
    if (count >= kMostCached || bytes > kMostCachedBytes) std::erase_if(cache_, isPlain);
}

void PlaylistFiles::KeepOnly(const std::unordered_set<std::string>& paths) {
    const std::lock_guard lock(mutex_);
    std::erase_if(cache_, [&](const auto& item) { return !paths.contains(item.first); });
}

}  // namespace sorakaze::player
