// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "player/TrackCheck.h"

#include <utility>

#include "sound/MixingEngine.h"

namespace sorakaze::player {
namespace {

/// The newest are the ones that play next.
constexpr std::size_t kMostWanted = 4;

}  // namespace

void TrackCheck::Want(const std::filesystem::path& file) {
    const std::lock_guard lock(mutex_);
    files_.push_front(file);
    if (files_.size() > kMostWanted) files_.pop_back();
    if (!thread_.joinable()) thread_ = std::jthread([this](const std::stop_token& stop) { Work(stop); });
    wanted_.notify_one();
}

std::vector<TrackCheck::Unplayable> TrackCheck::Take() {
    const std::lock_guard lock(mutex_);
    return std::exchange(found_, {});
}

void TrackCheck::OnFound(std::function<void()> tell) {
    const std::lock_guard lock(tellMutex_);
    tell_ = std::move(tell);
}

void TrackCheck::Work(const std::stop_token& stop) {
    std::unique_lock lock(mutex_);
    while (wanted_.wait(lock, stop, [this] { return !files_.empty(); })) {
        const auto file = std::move(files_.front());
        files_.pop_front();
        lock.unlock();
        std::string why;
        const bool plays = engine_.Open(file, sound::Bus::Music, {}, &why) != nullptr;
        lock.lock();
        if (plays || stop.stop_requested()) continue;
        found_.push_back({file, why});
        lock.unlock();
        {
            const std::lock_guard telling(tellMutex_);
            if (tell_) tell_();
        }
        lock.lock();
    }
}

}  // namespace sorakaze::player
