// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "player/LibraryWatcher.h"

#include <algorithm>

namespace sorakaze::player {

namespace {

using namespace std::chrono_literals;

constexpr auto kShortestPause = 1s;
constexpr int kPausePerScan = 20;
/// How long a caller waits for a scan after a time without calls. Most scans take far less.
constexpr auto kLongestWait = 100ms;

}  // namespace

LibraryWatcher::LibraryWatcher(std::vector<std::filesystem::path> roots, PlaylistFiles& files,
                               MusicLibrary::Watching watching, std::function<Clock::time_point()> now,
                               std::stop_token ended)
    : roots_(std::move(roots)),
      files_(files),
      watching_(watching),
      now_(std::move(now)),
      ended_(std::move(ended)) {
    if (watching_ == MusicLibrary::Watching::OnThread) thread_ = std::jthread([this] { Run(); });
}

LibraryWatcher::~LibraryWatcher() = default;

std::shared_ptr<const Catalogue> LibraryWatcher::Current() {
    if (watching_ == MusicLibrary::Watching::OnThread) return CurrentFromThread();
    const std::lock_guard lock(mutex_);
    const auto now = now_();
    if (!catalogue_ || now - lastScan_ >= kShortestPause) {
        away_.Begin(now);
        catalogue_ = Scanned(catalogue_);
        lastScan_ = now;
    }
    return catalogue_ ? catalogue_ : Empty();
}

std::shared_ptr<const Catalogue> LibraryWatcher::CurrentFromThread() {
    std::unique_lock lock(mutex_);
    if (!done_.wait(lock, ended_, [&] { return catalogue_ != nullptr; })) return Empty();
    const auto age = Clock::now() - lastScan_;
    if (age >= pause_ && !wanted_) {
        wanted_ = true;
        wake_.notify_one();
        const auto before = scans_;
        if (age >= 2 * pause_) done_.wait_for(lock, ended_, kLongestWait, [&] { return scans_ != before; });
    }
    return catalogue_;
}

std::shared_ptr<const Catalogue> LibraryWatcher::Scanned(const std::shared_ptr<const Catalogue>& before) {
    auto tree = FolderTree::Scan(roots_, before ? &before->Tree() : nullptr, away_, ended_);
    if (!tree) return before;
    if (before && tree->HasSameListings(before->Tree()) && before->IsCurrent(files_)) return before;
    auto scanned = std::make_shared<const Catalogue>(std::move(tree), files_);
    // One that was stopped half-way lacks playlists.
    return ended_.stop_requested() ? before : scanned;
}

std::shared_ptr<const Catalogue> LibraryWatcher::Empty() {
    return std::make_shared<const Catalogue>(std::make_shared<const FolderTree>(), files_);
}

void LibraryWatcher::Run() {
    std::unique_lock lock(mutex_);
    while (wake_.wait(lock, ended_, [&] { return wanted_; }) && !ended_.stop_requested()) {
        const auto before = catalogue_;
        lock.unlock();
        const auto start = Clock::now();
        away_.Begin(start);
        auto scanned = Scanned(before);
        const auto end = Clock::now();
        lock.lock();
        catalogue_ = std::move(scanned);
        wanted_ = false;
        ++scans_;
        lastScan_ = end;
        pause_ = std::max<Clock::duration>(kShortestPause, kPausePerScan * (end - start));
        done_.notify_all();
    }
}

}  // namespace sorakaze::player
