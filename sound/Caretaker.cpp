// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "sound/Caretaker.h"

#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <utility>

namespace sorakaze::sound {
namespace {

/// The mixing thread of a device can't wake anybody, so the caretaker looks by itself while there is sound.
constexpr std::chrono::milliseconds kLookInterval{500};

}  // namespace

Caretaker::Caretaker(Reading reading, std::shared_ptr<Decoders> decoders, std::function<void()> onCeased,
                     std::function<void()> onFailure)
    : reading_(reading),
      decoders_(std::move(decoders)),
      onCeased_(std::move(onCeased)),
      onFailure_(std::move(onFailure)),
      wake_(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {}

Caretaker::~Caretaker() {
    Close();
}

void Caretaker::Add(std::shared_ptr<VoiceCore> voice) {
    {
        const std::lock_guard lock(mutex_);
        if (closed_) return;
        voices_.push_back(std::make_unique<Entry>(Entry{.voice = std::move(voice), .starvingSince = {}}));
        if (!thread_.joinable()) thread_ = std::thread([this] { Work(); });
    }
    Nudge();
}

void Caretaker::Nudge() {
    const std::uint64_t one = 1;
    static_cast<void>(!::write(wake_.Get(), &one, sizeof one));
}

void Caretaker::Close() {
    std::thread thread;
    {
        const std::lock_guard lock(mutex_);
        closed_ = true;
        thread.swap(thread_);
    }
    Nudge();
    if (thread.joinable()) thread.join();

    const std::lock_guard lock(mutex_);
    for (auto& entry : voices_) {
        entry->voice->Stop();
        entry->voice->LeaveMixing();
        Free(*entry->voice);
    }
    voices_.clear();
}

void Caretaker::NoteFailures() {
    const std::lock_guard lock(mutex_);
    for (auto& entry : voices_)
        if (entry->voice->Broke()) Note(*entry);
    failures_ = 0;  // whoever asks takes them
}

void Caretaker::Free(VoiceCore& voice) {
    decoders_->End(voice.Sound());
    voice.FreeResources();
}

void Caretaker::Work() {
    for (;;) {
        std::vector<std::shared_ptr<VoiceCore>> over;
        int ceased = 0, failures = 0;
        {
            const std::lock_guard lock(mutex_);
            if (closed_) return;
            for (auto& entry : voices_) Look(*entry);
            over = TakeOver();
            ceased = std::exchange(ceased_, 0);
            failures = std::exchange(failures_, 0);
        }
        for (; ceased > 0; --ceased) onCeased_();
        if (failures > 0) onFailure_();
        for (auto& voice : over) Free(*voice);
        over.clear();
        Wait();
    }
}

/// Until something happens, or for a look.
void Caretaker::Wait() {
    std::vector<pollfd> events{{wake_.Get(), POLLIN, 0}};
    bool sounding = false;
    {
        const std::lock_guard lock(mutex_);
        for (auto& entry : voices_) {
            // Over: the mixing thread let go of it after the look.
            sounding |= entry->voice->IsMixed() || entry->voice->IsOver();
            if (!entry->hungUp) events.push_back({entry->voice->Sound().Socket(), 0, 0});
        }
    }
    const bool looks = reading_ == Reading::RealTime && sounding;
    ::poll(events.data(), events.size(), looks ? static_cast<int>(kLookInterval.count()) : -1);
    std::uint64_t nudges = 0;
    static_cast<void>(!::read(wake_.Get(), &nudges, sizeof nudges));
}

void Caretaker::Look(Entry& entry) {
    DecodedSound& sound = entry.voice->Sound();
    if (!entry.hungUp) entry.hungUp = sound.HasHungUp();
    // What the decoder left in the ring is still mixed where nothing hurries.
    if (entry.hungUp) sound.GiveUp();
    if (reading_ == Reading::RealTime) LookOnAir(entry);
    if (entry.voice->Broke()) Note(entry);
}

/// On the air a sound that lost its decoder ends at once: the show goes on the sooner.
void Caretaker::LookOnAir(Entry& entry) {
    DecodedSound& sound = entry.voice->Sound();
    const auto now = std::chrono::steady_clock::now();
    if (!entry.voice->IsStarving() || !entry.voice->IsPlaying())
        entry.starvingSince.reset();
    else if (!entry.starvingSince)
        entry.starvingSince = now;
    else if (now - *entry.starvingSince > sound.LongestStandstill() / 2)
        sound.SetStoodStill();
    const bool lost = entry.hungUp && !sound.Ring().IsComplete();
    if (!lost && !sound.StoodStill() && !sound.Ring().IsNonsense()) return;
    Note(entry);
    if (entry.voice->Stop() == VoiceCore::Change::Ceased) ++ceased_;
}

void Caretaker::Note(Entry& entry) {
    if (std::exchange(entry.noted, true)) return;
    decoders_->TakeEnd(entry.voice->Sound());
    ++failures_;
}

/// Removes the voices that are over. Their ends may have come since the look at them.
std::vector<std::shared_ptr<VoiceCore>> Caretaker::TakeOver() {
    std::vector<std::shared_ptr<VoiceCore>> over;
    std::erase_if(voices_, [&](auto& entry) {
        if (!entry->voice->IsOver()) return false;
        if (entry->voice->Broke()) Note(*entry);
        over.push_back(std::move(entry->voice));
        return true;
    });
    return over;
}

}  // namespace sorakaze::sound
