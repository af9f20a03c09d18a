// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "sound/DecoderProcess.h"

#include <poll.h>
#include <sys/eventfd.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstring>
#include <system_error>
#include <utility>

namespace sorakaze::sound {

const std::chrono::milliseconds kStallTimeout =
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    std::chrono::seconds(60);
#else
    std::chrono::seconds(10);
#endif

namespace {

using Clock = std::chrono::steady_clock;
using namespace std::chrono_literals;

/// For the program to be there, and for the word of how a job ended.
constexpr auto kLongestStart = 5s;
constexpr auto kLongestWord = 1s;
/// A program that ends as soon as it has begun, without having done anything, is not started again and again
/// without a pause.
constexpr auto kShortLife = 1s;
/// After so many starts in vain nobody waits for the next one any more, though there are further ones.
constexpr int kMostUselessStarts = 4;
constexpr auto kFirstPause = 20ms, kLongestPause = 1000ms;

bool SendPacket(int channel, const JobRequest& request, const int* descriptors, std::size_t count) {
    iovec part{const_cast<JobRequest*>(&request), sizeof request};
    alignas(cmsghdr) char control[CMSG_SPACE(3 * sizeof(int))]{};
    msghdr message{};
    message.msg_iov = &part;
    message.msg_iovlen = 1;
    if (count > 0) {
        message.msg_control = control;
        message.msg_controllen = CMSG_SPACE(count * sizeof(int));
        cmsghdr* const header = CMSG_FIRSTHDR(&message);
        header->cmsg_level = SOL_SOCKET;
        header->cmsg_type = SCM_RIGHTS;
        header->cmsg_len = CMSG_LEN(count * sizeof(int));
        std::memcpy(CMSG_DATA(header), descriptors, count * sizeof(int));
    }
    return ::sendmsg(channel, &message, MSG_NOSIGNAL) == static_cast<ssize_t>(sizeof request);
}

DecoderProcess::Failure OfStatus(int status) {
    using Failure = DecoderProcess::Failure;
    if (!WIFSIGNALED(status))
        return {Failure::Died, "its decoder gave up with status " + std::to_string(WEXITSTATUS(status))};
    const int signal = WTERMSIG(status);
    if (signal == SIGPROF || signal == SIGXCPU) return {Failure::Slow, "it takes too long to decode"};
    if (signal == SIGKILL || signal == SIGTERM) return {Failure::Ended, "its decoder was ended from outside"};
    return {Failure::Died, "its decoder crashed with signal " + std::to_string(signal)};
}

}  // namespace

DecoderProcess::DecoderProcess(std::filesystem::path program)
    : program_(std::move(program)),
      wake_(::eventfd(0, EFD_CLOEXEC)),
      cancel_(::eventfd(0, EFD_CLOEXEC)),
      thread_([this] { Watch(); }) {}

DecoderProcess::~DecoderProcess() {
    {
        const std::lock_guard lock(mutex_);
        closed_ = true;
    }
    changed_.notify_all();
    const std::uint64_t one = 1;
    static_cast<void>(!::write(wake_.Get(), &one, sizeof one));
    thread_.join();
}

/// The thread: the kernel ends the program with the thread that started it.
void DecoderProcess::Watch() {
    auto pause = kFirstPause;
    for (;;) {
        const auto began = Clock::now();
        if (StartProgram()) Follow(helper_->Channel());
        std::unique_ptr<process::ConfinedHelper> ended;
        {
            const std::lock_guard lock(mutex_);
            ended = std::move(helper_);
        }
        std::string end = ended ? ended->TakeEndText() : std::string();
        ended.reset();
        std::unique_lock lock(mutex_);
        if (!end.empty()) lastEnd_ = std::move(end);
        toldGeneration_ = generation_;
        const bool useful = std::exchange(useful_, false) || Clock::now() - began >= kShortLife;
        uselessStarts_ = useful ? 0 : uselessStarts_ + 1;
        changed_.notify_all();
        pause = !useful ? std::min(pause * 2, kLongestPause) : kFirstPause;
        if (changed_.wait_for(lock, pause, [this] { return closed_; })) return;
    }
}

bool DecoderProcess::StartProgram() {
    try {
        process::HelperOptions options;
        options.program = program_;
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
        options.keepErrors = true;  // what a sanitizer has to say
#endif
        auto helper = std::make_unique<process::ConfinedHelper>(options);
        const std::lock_guard lock(mutex_);
        helper_ = std::move(helper);
        ++generation_;
        changed_.notify_all();
        return true;
    } catch (const std::system_error& error) {
        const std::lock_guard lock(mutex_);
        lastEnd_ = error.what();
        return false;
    }
}

/// Hears how jobs end, until the program ends or is to end. Only this thread changes helper_.
void DecoderProcess::Follow(int channel) {
    pollfd events[] = {{wake_.Get(), POLLIN, 0}, {channel, POLLIN, 0}};
    for (;;) {
        if (::poll(events, 2, -1) < 0) continue;
        if (events[0].revents != 0) return;
        if (events[1].revents != 0 && !TakeStatuses(channel)) return;
    }
}

/// False when the program has ended. Some at a time: whoever sends on and on doesn't keep the thread.
bool DecoderProcess::TakeStatuses(int channel) {
    constexpr std::size_t kMostKept = 256;
    JobEnded ended;
    for (std::size_t count = 0; count < kMostKept; ++count) {
        const ssize_t got = ::recv(channel, &ended, sizeof ended, MSG_DONTWAIT);
        if (got < 0 && (errno == EAGAIN || errno == EINTR)) return true;
        if (got <= 0) return false;
        if (got != sizeof ended) continue;
        const std::lock_guard lock(mutex_);
        useful_ = true;
        statuses_[ended.number] = ended.status;
        if (statuses_.size() > kMostKept) statuses_.erase(statuses_.begin());
        changed_.notify_all();
    }
    return true;
}

bool DecoderProcess::Send(const JobRequest& request, const int* descriptors, std::size_t count) {
    return helper_ && SendPacket(helper_->Channel(), request, descriptors, count);
}

std::variant<DecoderProcess::Job, DecoderProcess::Failure> DecoderProcess::Begin(
    const Order& order, int file, const std::string& fileName) {
    int ends[2];
    if (::socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, ends) != 0)
        return Failure{Failure::NotStarted, std::strerror(errno)};
    Job job{{}, order.kind, FileDescriptor(ends[0])};
    const FileDescriptor theirs(ends[1]);
    const Ring& ring = order.ring;
    JobRequest request{order.kind, 0, order.memory, ring.capacity, order.options, order.limit.count, {}};
    // Formats are told by endings: of a long name the end counts.
    const std::size_t skipped = fileName.size() - std::min(fileName.size(), sizeof request.name - 1);
    fileName.copy(request.name, sizeof request.name - 1, skipped);
    const int descriptors[] = {file, theirs.Get(), ring.descriptor};

    std::unique_lock lock(mutex_);
    const auto knows = [this] {
        return helper_ || closed_ || cancelled_ || uselessStarts_ >= kMostUselessStarts;
    };
    if (!changed_.wait_for(lock, kLongestStart, knows) || closed_ || cancelled_ ||
        uselessStarts_ >= kMostUselessStarts)
        return Failure{Failure::NotStarted, "the decoder can't be started: " + lastEnd_};
    request.number = ++lastJob_;
    job.name = {request.number, generation_};
    if (!Send(request, descriptors, ring.descriptor < 0 ? 2 : 3))
        return Failure{Failure::Ended, "the decoder has just ended"};
    return job;
}

std::variant<std::string, DecoderProcess::Failure> DecoderProcess::Await(const Job& job,
                                                                         const Patience& patience) {
    const bool measures = job.kind == JobKind::Measure || job.kind == JobKind::MeasureBackground;
    const auto end = Clock::now() + (measures ? patience.measuring : patience.stretch);
    std::string answer(kLongestAnswer, '\0');
    for (;;) {
        if (auto failure = AwaitPacket(job, patience.stop, std::min(Clock::now() + patience.stretch, end))) {
            Kill(job.name);
            return *std::move(failure);
        }
        const ssize_t got = ::recv(job.socket.Get(), answer.data(), answer.size(), MSG_DONTWAIT);
        if (got <= 0) return WhyEnded(job.name);
        if (measures && got == 1 && Clock::now() < end) continue;
        answer.resize(static_cast<std::size_t>(got));
        return answer;
    }
}

/// Empty when there is a packet, or the socket has hung up.
std::optional<DecoderProcess::Failure> DecoderProcess::AwaitPacket(const Job& job, int stop,
                                                                   Clock::time_point deadline) const {
    pollfd events[] = {{job.socket.Get(), POLLIN, 0}, {cancel_.Get(), POLLIN, 0}, {stop, POLLIN, 0}};
    for (;;) {
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - Clock::now());
        const int ready = ::poll(events, 3, static_cast<int>(std::max<std::int64_t>(left.count(), 0)));
        if (ready < 0 && errno == EINTR) continue;
        // First: a job that sends on and on can still be stopped.
        if (ready > 0 && events[2].revents != 0) return Failure{Failure::NotStarted, "nobody waits for it"};
        if (ready > 0 && events[1].revents != 0) return Failure{Failure::NotStarted, "the application ends"};
        if (ready > 0) return std::nullopt;
        return Failure{Failure::Slow, "it takes too long to open"};
    }
}

DecoderProcess::Failure DecoderProcess::WhyEnded(const JobId& job) {
    std::unique_lock lock(mutex_);
    const auto known = [&] { return statuses_.contains(job.number) || toldGeneration_ >= job.generation; };
    changed_.wait_for(lock, kLongestWord, known);
    const auto status = statuses_.find(job.number);
    if (status != statuses_.end()) return OfStatus(status->second);
    if (toldGeneration_ < job.generation) return {Failure::Died, "its decoder let go of it"};
    return {Failure::Ended, "the decoder was ended: " + lastEnd_};
}

void DecoderProcess::Cancel() {
    cancelled_ = true;
    const std::uint64_t one = 1;
    static_cast<void>(!::write(cancel_.Get(), &one, sizeof one));
    changed_.notify_all();
}

void DecoderProcess::Kill(const JobId& job) {
    const std::lock_guard lock(mutex_);
    if (generation_ == job.generation) Send({JobKind::Kill, job.number, 0, 0, {}, 0, {}}, nullptr, 0);
}

}  // namespace sorakaze::sound
