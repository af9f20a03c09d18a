// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// Watches the voices of an engine on a thread of its own, which sleeps most of the time: notices decoders
// that end or stall, stops voices without sound, and frees voices that the mixing thread has dropped. The
// logic's threads command it. It never mixes.
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

class VoiceMonitor {
  public:
    /// `onStopped` is called for each playing voice that is stopped here, `onFailure` when Decoders has a new
    /// failure. Both are called on the monitor's thread.
    VoiceMonitor(MixingMode mode, std::shared_ptr<Decoders> decoders, std::function<void()> onStopped,
                 std::function<void()> onFailure);
    ~VoiceMonitor();
    VoiceMonitor(const VoiceMonitor&) = delete;
    VoiceMonitor& operator=(const VoiceMonitor&) = delete;

    /// Keeps the voice alive until it is over. Starts the thread at the first call.
    void Add(std::shared_ptr<VoiceCore> voice);
    /// A voice was started, stopped or dropped. Any thread but a device's.
    void Wake();
    /// Records the failures of all voices whose decoders have failed so far.
    void RecordFailures();
    /// Ends the thread, stops all voices and frees them.
    void Close();

  private:
    using Time = std::chrono::steady_clock::time_point;
    struct Entry {
        std::shared_ptr<VoiceCore> voice;
        bool hungUp = false;    ///< the decoder has ended
        bool recorded = false;  ///< its failure has been recorded
        std::optional<Time> starvingSince;
    };

    void Work();
    void Wait();
    void Check(Entry& entry);
    void CheckOnAir(Entry& entry);
    void RecordFailure(Entry& entry);
    void Free(VoiceCore& voice);
    std::vector<std::shared_ptr<VoiceCore>> TakeFinished();

    const MixingMode mode_;
    const std::shared_ptr<Decoders> decoders_;
    const std::function<void()> onStopped_;
    const std::function<void()> onFailure_;
    const FileDescriptor wake_;

    std::mutex mutex_;  // guards all below
    std::vector<std::unique_ptr<Entry>> voices_;
    std::thread thread_;
    bool closed_ = false;
    int stopped_ = 0;  ///< calls of onStopped_ to make
    int failures_ = 0;
};

}  // namespace sorakaze::sound
