// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "sound/VoiceMonitor.h"

#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <utility>

namespace sorakaze::sound {
namespace {

/// A device's mixing thread must not wake anybody, so the monitor checks at this interval while there is
/// sound.
constexpr std::chrono::milliseconds kCheckInterval{500};

}  // namespace

VoiceMonitor::VoiceMonitor(MixingMode mode, std::shared_ptr<Decoders> decoders,
                           std::function<void()> onStopped, std::function<void()> onFailure)
    : mode_(mode),
      decoders_(std::move(decoders)),
      onStopped_(std::move(onStopped)),
      onFailure_(std::move(onFailure)),
      wake_(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {}

VoiceMonitor::~VoiceMonitor() {
    Close();
}

void VoiceMonitor::Add(std::shared_ptr<VoiceCore> voice) {
    {
        const std::lock_guard lock(mutex_);
        if (closed_) return;
        voices_.push_back(std::make_unique<Entry>(Entry{.voice = std::move(voice), .starvingSince = {}}));
        if (!thread_.joinable()) thread_ = std::thread([this] { Work(); });
    }
    Wake();
}

void VoiceMonitor::Wake() {
    const std::uint64_t one = 1;
    static_cast<void>(!::write(wake_.Get(), &one, sizeof one));
}

void VoiceMonitor::Close() {
    std::thread thread;
    {
        const std::lock_guard lock(mutex_);
        closed_ = true;
        thread.swap(thread_);
    }
    Wake();
    if (thread.joinable()) thread.join();

    const std::lock_guard lock(mutex_);
    for (auto& entry : voices_) {
        entry->voice->Stop();
        entry->voice->LeaveMixing();
        Free(*entry->voice);
    }
    voices_.clear();
}

void VoiceMonitor::RecordFailures() {
    const std::lock_guard lock(mutex_);
    for (auto& entry : voices_)
        if (entry->voice->DecoderFailed()) RecordFailure(*entry);
    failures_ = 0;  // whoever asks takes them
}

void VoiceMonitor::Free(VoiceCore& voice) {
    decoders_->End(voice.Sound());
    voice.FreeResources();
}

void VoiceMonitor::Work() {
    for (;;) {
        std::vector<std::shared_ptr<VoiceCore>> over;
        int stopped = 0, failures = 0;
        {
            const std::lock_guard lock(mutex_);
            if (closed_) return;
            for (auto& entry : voices_) Check(*entry);
            over = TakeFinished();
            stopped = std::exchange(stopped_, 0);
            failures = std::exchange(failures_, 0);
        }
        for (; stopped > 0; --stopped) onStopped_();
        if (failures > 0) onFailure_();
        for (auto& voice : over) Free(*voice);
        over.clear();
        Wait();
    }
}

/// Until something happens or the next check is due.
void VoiceMonitor::Wait() {
    std::vector<pollfd> events{{wake_.Get(), POLLIN, 0}};
    bool sounding = false;
    {
        const std::lock_guard lock(mutex_);
        for (auto& entry : voices_) {
            // IsOver: the mixing thread dropped it after the check.
            sounding |= entry->voice->IsInMixerList() || entry->voice->IsOver();
            if (!entry->hungUp) events.push_back({entry->voice->Sound().Socket(), 0, 0});
        }
    }
    const bool looks = mode_ == MixingMode::RealTime && sounding;
    ::poll(events.data(), events.size(), looks ? static_cast<int>(kCheckInterval.count()) : -1);
    std::uint64_t wakeUps = 0;
    static_cast<void>(!::read(wake_.Get(), &wakeUps, sizeof wakeUps));
}

void VoiceMonitor::Check(Entry& entry) {
    DecodedSound& sound = entry.voice->Sound();
    if (!entry.hungUp) entry.hungUp = sound.HasHungUp();
    // In a render the frames in the ring are still mixed.
    if (entry.hungUp) sound.GiveUp();
    if (mode_ == MixingMode::RealTime) CheckOnAir(entry);
    if (entry.voice->DecoderFailed()) RecordFailure(entry);
}

/// On the air a voice whose decoder has failed is stopped at once, so that the show goes on.
void VoiceMonitor::CheckOnAir(Entry& entry) {
    DecodedSound& sound = entry.voice->Sound();
    const auto now = std::chrono::steady_clock::now();
    if (!entry.voice->IsStarving() || !entry.voice->IsPlaying())
        entry.starvingSince.reset();
    else if (!entry.starvingSince)
        entry.starvingSince = now;
    else if (now - *entry.starvingSince > sound.StallTimeout() / 2)
        sound.SetStalled();
    const bool lost = entry.hungUp && !sound.Ring().IsComplete();
    if (!lost && !sound.HasStalled() && !sound.Ring().IsCorrupt()) return;
    RecordFailure(entry);
    if (entry.voice->Stop() == VoiceCore::Change::Stopped) ++stopped_;
}

void VoiceMonitor::RecordFailure(Entry& entry) {
    if (std::exchange(entry.recorded, true)) return;
    decoders_->RecordEnd(entry.voice->Sound());
    ++failures_;
}

/// Removes the voices that are over, also those that ended after Check.
std::vector<std::shared_ptr<VoiceCore>> VoiceMonitor::TakeFinished() {
    std::vector<std::shared_ptr<VoiceCore>> over;
    std::erase_if(voices_, [&](auto& entry) {
        if (!entry->voice->IsOver()) return false;
        if (entry->voice->DecoderFailed()) RecordFailure(*entry);
        over.push_back(std::move(entry->voice));
        return true;
    });
    return over;
}

}  // namespace sorakaze::sound
