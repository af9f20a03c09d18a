// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// The worker threads that decode ahead for all voices of an engine and free what the mixing thread has let
// go: a small pool, asleep most of the time. The logic's threads command it. It never mixes and never calls
// back.
#pragma once

#include <condition_variable>
#include <cstdint>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

#include "app/runtime/sound/MixingEngine.h"
#include "app/runtime/sound/VoiceCore.h"

namespace sorakaze::sound {

class ReadAhead {
  public:
    explicit ReadAhead(Reading reading) : reading_(reading) {}
    ~ReadAhead();

    /// The pool keeps the voice alive until it is over. Starts the threads at the first call.
    void Add(std::shared_ptr<VoiceCore> voice);

    /// Something changed: a voice began, ceased, or wants frames. Takes the pool's lock.
    void Nudge();

    /// Ends the threads and lets go of all voices, which cease.
    void Close();

  private:
    struct Entry {
        std::shared_ptr<VoiceCore> voice;
        bool busy = false;  ///< a worker fills its ring
        int helpers = 0;    ///< workers that help it
    };

    void Work();
    Entry* Neediest();
    Entry* InNeedOfHelp();
    std::vector<std::shared_ptr<VoiceCore>> TakeOver();
    void Sleep(std::unique_lock<std::mutex>& lock);

    const Reading reading_;
    std::mutex mutex_;  // guards all below
    std::condition_variable changed_;
    std::vector<std::unique_ptr<Entry>> voices_;
    std::vector<std::thread> threads_;
    bool watched_ = false;  ///< one worker wakes by itself from time to time
    bool closed_ = false;
};

}  // namespace sorakaze::sound
