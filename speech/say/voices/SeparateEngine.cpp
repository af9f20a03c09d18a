// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "speech/say/voices/SeparateEngine.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <fstream>
#include <optional>
#include <stdexcept>
#include <vector>

#include "base/FileDescriptor.h"
#include "speech/say/SpokenText.h"

namespace sorakaze::speech {
namespace {

using Clock = std::chrono::steady_clock;

/// Goes before each packet in the pipe. The engine's process may be anyone's: nothing in it is trusted.
struct PacketHead {
    enum class Kind : std::int32_t { Samples, Failure, Done };
    Kind kind = Kind::Done;
    std::int32_t rate = 0;
    std::int32_t startsWord = 0;
    std::uint32_t size = 0;  ///< of what follows, in bytes
};
constexpr std::size_t kMostSamples = 16'384;
constexpr std::size_t kMostFailure = 500;

void SendAll(int pipe, const void* bytes, std::size_t size) {
    const auto* next = static_cast<const char*>(bytes);
    while (size > 0) {
        const ssize_t sent = write(pipe, next, size);
        if (sent < 0 && errno == EINTR) continue;
        if (sent <= 0) _exit(1);
        next += sent;
        size -= static_cast<std::size_t>(sent);
    }
}

void Send(int pipe, const PacketHead& head, const void* bytes) {
    SendAll(pipe, &head, sizeof head);
    SendAll(pipe, bytes, head.size);
}

/// The engine's process. Never returns.
[[noreturn]] void SpeakInto(int pipe, const SeparateEngine::Start& start, const std::string& text) {
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    const rlimit none{0, 0};
    setrlimit(RLIMIT_CORE, &none);
    for (const int number : {SIGHUP, SIGINT, SIGTERM, SIGXCPU, SIGABRT, SIGSEGV, SIGBUS, SIGFPE, SIGXFSZ})
        signal(number, SIG_DFL);
    if (const int nowhere = open("/dev/null", O_WRONLY | O_CLOEXEC); nowhere >= 0)
        dup2(nowhere, STDOUT_FILENO);
    std::string failure;
    try {
        start()->Speak(text, [&](int rate, std::span<const std::int16_t> samples, BlockStart begin) {
            do {
                const auto block = samples.first(std::min(samples.size(), kMostSamples));
                Send(pipe,
                     {PacketHead::Kind::Samples, rate, begin == BlockStart::Word,
                      static_cast<std::uint32_t>(block.size_bytes())},
                     block.data());
                samples = samples.subspan(block.size());
                begin = BlockStart::WithinWord;
            } while (!samples.empty());
        });
    } catch (const std::exception& problem) {
        failure = problem.what();
    } catch (...) {
        failure = "the engine failed";
    }
    const auto kind = failure.empty() ? PacketHead::Kind::Done : PacketHead::Kind::Failure;
    failure.resize(std::min(failure.size(), kMostFailure));
    Send(pipe, {kind, 0, 0, static_cast<std::uint32_t>(failure.size())}, failure.data());
    _exit(0);
}

/// A process that ends with its scope.
class Child {
  public:
    explicit Child(pid_t process) : process_(process) {}
    ~Child() { End(); }
    Child(const Child&) = delete;
    Child& operator=(const Child&) = delete;

    /// The status as wait tells it: the process's own if it has ended by itself.
    int End() {
        if (process_ < 0) return status_;
        kill(process_, SIGKILL);
        while (waitpid(process_, &status_, 0) < 0 && errno == EINTR) continue;
        process_ = -1;
        return status_;
    }
    /// Bytes that are its own; nothing where the system doesn't tell.
    std::optional<std::uint64_t> Memory() const {
        std::ifstream file("/proc/" + std::to_string(process_) + "/statm");
        std::uint64_t size = 0, resident = 0, shared = 0;
        if (!(file >> size >> resident >> shared)) return {};
        return (resident - std::min(shared, resident)) * static_cast<std::uint64_t>(sysconf(_SC_PAGESIZE));
    }

  private:
    pid_t process_;
    int status_ = 0;
};

/// The other end of the pipe.
class Receiver {
  public:
    Receiver(int pipe, Child& child, const EngineBounds& bounds)
        : pipe_(pipe), child_(child), bounds_(bounds) {}

    void Pass(const SpeechSink& sink) {
        std::vector<char> bytes;
        for (;;) {
            PacketHead head;
            ReadAll(&head, sizeof head);
            if (head.kind == PacketHead::Kind::Done) return;
            const bool samples = head.kind == PacketHead::Kind::Samples;
            if (head.size > (samples ? kMostSamples * sizeof(std::int16_t) : kMostFailure))
                throw std::runtime_error("the engine failed");
            bytes.resize(head.size);
            ReadAll(bytes.data(), bytes.size());
            if (!samples) throw std::runtime_error(SpokenText({bytes.data(), bytes.size()}));
            std::vector<std::int16_t> block(bytes.size() / sizeof(std::int16_t));
            if (block.empty()) continue;
            std::memcpy(block.data(), bytes.data(), block.size() * sizeof(std::int16_t));
            hasBegun_ = true;
            sink(head.rate, block, head.startsWord ? BlockStart::Word : BlockStart::WithinWord);
        }
    }

  private:
    void ReadAll(void* to, std::size_t size) {
        auto* next = static_cast<char*>(to);
        while (size > 0) {
            WaitForBytes();
            const ssize_t got = read(pipe_, next, size);
            if (got < 0 && errno == EINTR) continue;
            if (got <= 0) ThrowEnd();
            next += got;
            size -= static_cast<std::size_t>(got);
        }
    }

    void WaitForBytes() const {
        constexpr std::chrono::milliseconds kLook{50};
        for (;;) {
            const auto end = begin_ + (hasBegun_ ? bounds_.wholeText : bounds_.firstSound);
            if (Clock::now() >= end) throw std::runtime_error("it took too long");
            const auto memory = bounds_.memory > 0 ? child_.Memory() : std::nullopt;
            if (memory && *memory > bounds_.memory) throw std::runtime_error("it took too much memory");
            pollfd waiting{pipe_, POLLIN, 0};
            if (poll(&waiting, 1, kLook.count()) > 0) return;
        }
    }

    [[noreturn]] void ThrowEnd() {
        const int status = child_.End();
        if (!WIFSIGNALED(status)) throw std::runtime_error("the engine ended without a word");
        throw std::runtime_error(std::string("the engine crashed (") + strsignal(WTERMSIG(status)) + ")");
    }

    const int pipe_;
    Child& child_;
    const EngineBounds& bounds_;
    const Clock::time_point begin_ = Clock::now();
    bool hasBegun_ = false;
};

}  // namespace

void SeparateEngine::Speak(const std::string& text, const SpeechSink& sink) {
    std::array<int, 2> ends{};
    if (pipe2(ends.data(), O_CLOEXEC) != 0) throw std::runtime_error("no pipe could be made");
    const FileDescriptor readEnd(ends[0]);
    FileDescriptor writeEnd(ends[1]);
    const pid_t process = fork();
    if (process < 0) throw std::runtime_error("no process could be started");
    if (process == 0) SpeakInto(writeEnd.Get(), start_, text);
    writeEnd.Close();
    Child child(process);
    Receiver(readEnd.Get(), child, bounds_).Pass(sink);
}

}  // namespace sorakaze::speech
