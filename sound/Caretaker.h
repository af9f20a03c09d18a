// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// Looks after the voices of an engine on a thread of its own, asleep most of the time: notices decoders that
// end or stand still, stops the voices that they leave without sound, and frees what the mixing thread has
// let go. The logic's threads command it. It never mixes.
#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <thread>
#include <vector>

#include "base/FileDescriptor.h"
#include "sound/Decoders.h"
#include "sound/MixingEngine.h"
#include "sound/VoiceCore.h"

namespace sorakaze::sound {

class Caretaker {
  public:
    /// `onCeased` is told of each voice that was playing and is stopped here, `onFailure` that Decoders has a
    /// failure more. Both are called on the caretaker's thread.
    Caretaker(Reading reading, std::shared_ptr<Decoders> decoders, std::function<void()> onCeased,
              std::function<void()> onFailure);
    ~Caretaker();
    Caretaker(const Caretaker&) = delete;
    Caretaker& operator=(const Caretaker&) = delete;

    /// Keeps the voice alive until it is over. Starts the thread at the first call.
    void Add(std::shared_ptr<VoiceCore> voice);
    /// Something changed: a voice began, ceased or is over. Any thread but a device's.
    void Nudge();
    /// Notes the failures of all voices that have come to a broken end up to now.
    void NoteFailures();
    /// Ends the thread and lets go of all voices, which cease.
    void Close();

  private:
    using Time = std::chrono::steady_clock::time_point;
    struct Entry {
        std::shared_ptr<VoiceCore> voice;
        bool hungUp = false;  ///< the decoder has ended
        bool noted = false;   ///< its failure is
        std::optional<Time> starvingSince;
    };

    void Work();
    void Wait();
    void Look(Entry& entry);
    void LookOnAir(Entry& entry);
    void Note(Entry& entry);
    void Free(VoiceCore& voice);
    std::vector<std::shared_ptr<VoiceCore>> TakeOver();

    const Reading reading_;
    const std::shared_ptr<Decoders> decoders_;
    const std::function<void()> onCeased_;
    const std::function<void()> onFailure_;
    const FileDescriptor wake_;

    std::mutex mutex_;  // guards all below
    std::vector<std::unique_ptr<Entry>> voices_;
    std::thread thread_;
    bool closed_ = false;
    int ceased_ = 0;  ///< voices that onCeased_ is to be told of
    int failures_ = 0;
};

}  // namespace sorakaze::sound
