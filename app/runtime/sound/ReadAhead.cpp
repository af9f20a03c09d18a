// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/runtime/sound/ReadAhead.h"

#include <algorithm>
#include <chrono>

namespace sorakaze::sound {
namespace {

/// The mixing thread of a device can't wake a worker, so one looks after the rings by itself. A ring holds
/// five seconds and is filled up when half of it is free: two looks a second are plenty.
constexpr std::chrono::milliseconds kLookInterval{500};
constexpr unsigned kMaxThreads = 4;

}  // namespace

ReadAhead::~ReadAhead() {
    Close();
}

void ReadAhead::Add(std::shared_ptr<VoiceCore> voice) {
    const std::lock_guard lock(mutex_);
    if (closed_) return;
    voices_.push_back(std::make_unique<Entry>(Entry{std::move(voice)}));
    if (threads_.empty()) {
        const unsigned count = std::clamp(std::thread::hardware_concurrency(), 2u, kMaxThreads);
        for (unsigned i = 0; i < count; ++i) threads_.emplace_back([this] { Work(); });
    }
    changed_.notify_one();
}

void ReadAhead::Nudge() {
    const std::lock_guard lock(mutex_);
    changed_.notify_one();
}

void ReadAhead::Close() {
    std::vector<std::thread> threads;
    {
        const std::lock_guard lock(mutex_);
        closed_ = true;
        threads.swap(threads_);
    }
    changed_.notify_all();
    for (auto& thread : threads) thread.join();

    const std::lock_guard lock(mutex_);
    for (auto& entry : voices_) {
        entry->voice->Stop();
        entry->voice->LeaveMixing();
        entry->voice->FreeResources();
    }
    voices_.clear();
}

void ReadAhead::Work() {
    std::unique_lock lock(mutex_);
    while (!closed_) {
        if (auto over = TakeOver(); !over.empty()) {
            lock.unlock();
            for (auto& voice : over) voice->FreeResources();
            over.clear();
            lock.lock();
        } else if (Entry* entry = Neediest()) {
            entry->busy = true;
            if (entry->voice->WantsHelp()) changed_.notify_one();
            lock.unlock();
            entry->voice->Fill();
            lock.lock();
            entry->busy = false;
        } else if (Entry* helped = InNeedOfHelp()) {
            ++helped->helpers;
            lock.unlock();
            helped->voice->Help();
            lock.lock();
            --helped->helpers;
        } else {
            Sleep(lock);
        }
    }
}

/// Removes the voices that are over from the pool. Only those that no worker decodes for.
std::vector<std::shared_ptr<VoiceCore>> ReadAhead::TakeOver() {
    std::vector<std::shared_ptr<VoiceCore>> over;
    std::erase_if(voices_, [&](auto& entry) {
        if (entry->busy || entry->helpers > 0 || !entry->voice->IsOver()) return false;
        over.push_back(std::move(entry->voice));
        return true;
    });
    return over;
}

/// Sounding voices come before silent ones, then the emptiest ring.
ReadAhead::Entry* ReadAhead::Neediest() {
    Entry* best = nullptr;
    for (auto& entry : voices_) {
        if (entry->busy || !entry->voice->WantsFrames()) continue;
        const auto rank = [](const Entry& e) {
            return std::pair(!e.voice->IsMixed(), e.voice->FramesAhead());
        };
        if (!best || rank(*entry) < rank(*best)) best = entry.get();
    }
    return best;
}

ReadAhead::Entry* ReadAhead::InNeedOfHelp() {
    const auto found = std::find_if(voices_.begin(), voices_.end(),
                                    [](auto& entry) { return entry->busy && entry->voice->WantsHelp(); });
    return found == voices_.end() ? nullptr : found->get();
}

void ReadAhead::Sleep(std::unique_lock<std::mutex>& lock) {
    const bool sounding =
        std::any_of(voices_.begin(), voices_.end(), [](auto& entry) { return entry->voice->IsMixed(); });
    if (reading_ == Reading::RealTime && sounding && !watched_) {
        watched_ = true;
        changed_.wait_for(lock, kLookInterval);
        watched_ = false;
    } else {
        changed_.wait(lock);
    }
}

}  // namespace sorakaze::sound
