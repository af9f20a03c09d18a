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
#include "sound/Frames.h"

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
        JobKind kind;
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

    explicit DecoderProcess(std::filesystem::path program);
    ~DecoderProcess();
    DecoderProcess(const DecoderProcess&) = delete;
    DecoderProcess& operator=(const DecoderProcess&) = delete;

    // All from any thread; but for Await with Measure they block for seconds at most.

    struct Ring {
        int descriptor = -1;  ///< of its memory
        std::uint32_t capacity = 0;
    };
    struct Order {
        JobKind kind;
        std::uint64_t memory = 0;  ///< bytes that the worker may allocate
        Ring ring{};               ///< for Play
        DecodeOptions options{};   ///< for Play and Measure
        Frames limit{};            ///< for Play and Measure
    };
    /// `fileName` helps to tell formats apart.
    std::variant<Job, Failure> Begin(const Order& order, int file, const std::string& fileName);

    /// How long a job is waited for.
    struct Patience {
        std::chrono::milliseconds stretch;       ///< for the answer, or with Measure for each stretch
        std::chrono::milliseconds measuring{0};  ///< for the answer to Measure
        int stop = -1;                           ///< a descriptor: nobody waits any more when it is readable
    };
    /// The job's answer, any bytes. Without one the job is ended.
    std::variant<std::string, Failure> Await(const Job& job, const Patience& patience);
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
    std::optional<Failure> AwaitPacket(const Job& job, int stop,
                                       std::chrono::steady_clock::time_point deadline) const;

    const std::filesystem::path program_;
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
