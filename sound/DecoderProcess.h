// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// The running program sorakaze-decoder and the jobs that it is given: each a process of its own, with a
// socket of its own. A thread of this object starts the program, restarts it whenever it has ended, and
// receives how jobs ended. Used by Decoders alone.
#pragma once

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <filesystem>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <variant>

#include "base/FileDescriptor.h"
#include "process/ConfinedHelper.h"
#include "sound/DecoderProtocol.h"

namespace sorakaze::sound {

/// How long a decoder may take for an answer or for its next frames before it counts as stalled.
extern const std::chrono::milliseconds kStallTimeout;

class DecoderProcess {
  public:
    struct JobId {
        std::uint32_t number = 0;
        std::uint64_t generation = 0;  ///< of the program: counted up with each start
    };
    struct Job {
        JobId name;
        FileDescriptor socket;  ///< hangs up when the job's process has ended
    };
    /// Why a job was not done.
    struct Failure {
        enum Kind {
            Died,        ///< because of the file
            Slow,        ///< it exceeded a time limit
            Ended,       ///< killed from outside, or together with the program
            NotStarted,  ///< there is no program
        };
        Kind kind;
        std::string why;  ///< one line for the user
    };

    DecoderProcess(std::filesystem::path program, std::chrono::milliseconds stallTimeout);
    ~DecoderProcess();
    DecoderProcess(const DecoderProcess&) = delete;
    DecoderProcess& operator=(const DecoderProcess&) = delete;

    // All from any thread; they block for seconds at most.

    struct Ring {
        int descriptor = -1;  ///< of its memory
        std::uint32_t capacity = 0;
    };
    /// `fileName` helps to tell formats apart; `ring` is for Play.
    std::variant<Job, Failure> Begin(JobKind kind, int file, const std::string& fileName,
                                     std::uint64_t memory, const Ring& ring);
    /// The job's answer, any bytes.
    std::variant<std::string, Failure> Await(const Job& job);
    /// Of a job whose socket has hung up before it was done.
    Failure WhyEnded(const JobId& job);
    void Kill(const JobId& job);
    /// For the application's end: from here on every call returns at once. May be called repeatedly; takes no
    /// lock.
    void Cancel();

  private:
    void Watch();
    bool StartProgram();
    void Follow(int channel);
    bool TakeStatuses(int channel);
    bool Send(const JobRequest& request, const int* descriptors, std::size_t count);

    const std::filesystem::path program_;
    const std::chrono::milliseconds stallTimeout_;
    const FileDescriptor wake_;    ///< readable when the thread is to end
    const FileDescriptor cancel_;  ///< readable when nobody is to wait
    std::atomic<bool> cancelled_{false};

    std::mutex mutex_;                 ///< guards all below
    std::condition_variable changed_;  ///< the program started or ended, or a job's status came
    std::unique_ptr<process::ConfinedHelper> helper_;  ///< empty while the program doesn't run
    std::uint64_t generation_ = 0;
    bool useful_ = false;               ///< the program has done a job
    std::string lastEnd_;               ///< how the program ended last
    std::uint64_t toldGeneration_ = 0;  ///< the last one whose end is in lastEnd_
    int uselessStarts_ = 0;             ///< in a row
    bool closed_ = false;
    std::uint32_t lastJob_ = 0;
    std::map<std::uint32_t, int> statuses_;  ///< of the jobs that ended last

    std::thread thread_;  ///< last, so that it starts after all else is initialised
};

}  // namespace sorakaze::sound
