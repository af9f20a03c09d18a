// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "speech/say/voices/BoundedChild.h"

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
#include <iterator>

#include "base/FileDescriptor.h"
#include "base/PrintableText.h"

namespace sorakaze::speech {
namespace {

using Clock = std::chrono::steady_clock;

constexpr std::size_t kMostErrors = 4096;
constexpr std::size_t kLongestReason = 120;
constexpr int kNoProgram = 127;

struct Pipe {
    FileDescriptor read, write;
};

Pipe MakePipe() {
    int ends[2];
    if (::pipe2(ends, O_CLOEXEC) != 0) throw ChildFailure(std::strerror(errno));
    return {FileDescriptor(ends[0]), FileDescriptor(ends[1])};
}

/// Lowers a limit, or raises it as far as this process may.
void SetLimit(__rlimit_resource resource, rlim_t value) {
    rlimit limit{};
    ::getrlimit(resource, &limit);
    limit.rlim_cur = std::min(value, limit.rlim_max);
    ::setrlimit(resource, &limit);
}

/// The children of this process, orphans included.
std::vector<pid_t> Children() {
    std::ifstream file("/proc/thread-self/children");
    return {std::istream_iterator<pid_t>(file), {}};
}

/// One run of a child.
class Child {
  public:
    Child(char* const* words, std::string_view input, const ChildBounds& bounds)
        : bounds_(bounds), input_(input), stdin_(MakePipe()), stdout_(MakePipe()), stderr_(MakePipe()) {
        // Else a grandchild whose parent has ended would be out of reach.
        ::prctl(PR_SET_CHILD_SUBREAPER, 1, 0, 0, 0);
        process_ = ::fork();
        if (process_ < 0) throw ChildFailure(std::strerror(errno));
        if (process_ == 0) Become(words);
        stdin_.read.Close();
        stdout_.write.Close();
        stderr_.write.Close();
        for (const int end : {stdin_.write.Get(), stdout_.read.Get(), stderr_.read.Get()})
            ::fcntl(end, F_SETFL, O_NONBLOCK);
    }
    ~Child() { EndAll(); }
    Child(const Child&) = delete;
    Child& operator=(const Child&) = delete;

    /// Until the child has ended.
    void Follow(const ChildOutput& output) {
        // A child that doesn't read its input must not end this process.
        const auto before = ::signal(SIGPIPE, SIG_IGN);
        try {
            while (Pass(output)) {
            }
        } catch (...) {
            ::signal(SIGPIPE, before);
            throw;
        }
        ::signal(SIGPIPE, before);
        CheckEnd();
    }

  private:
    [[noreturn]] void Become(char* const* words) {
        ::setpgid(0, 0);
        ::prctl(PR_SET_PDEATHSIG, SIGKILL, 0, 0, 0);
        // The parent's handlers remove its files.
        for (int number = 1; number < NSIG; ++number) ::signal(number, SIG_DFL);
        sigset_t none;
        ::sigemptyset(&none);
        ::sigprocmask(SIG_SETMASK, &none, nullptr);
        ::dup2(stdin_.read.Get(), STDIN_FILENO);
        ::dup2(stdout_.write.Get(), STDOUT_FILENO);
        ::dup2(stderr_.write.Get(), STDERR_FILENO);
        SetLimit(RLIMIT_CORE, 0);
        SetLimit(RLIMIT_FSIZE, bounds_.file);
#ifndef __SANITIZE_ADDRESS__
        // A neural runtime reserves many times the addresses that it uses.
        SetLimit(RLIMIT_AS, RLIM_INFINITY);
        SetLimit(RLIMIT_DATA, bounds_.memory);
#endif
        rlimit processes{};
        ::getrlimit(RLIMIT_NPROC, &processes);
        // Where a command's processes are counted alone, some are left for this one and its shell.
        constexpr rlim_t kFew = 1000, kOthers = 8;
        if (processes.rlim_cur > 2 * kOthers && processes.rlim_cur < kFew)
            SetLimit(RLIMIT_NPROC, processes.rlim_cur - kOthers);
        ::execv(words[0], words);
        ::_exit(kNoProgram);
    }

    /// False when the child has ended and all is read.
    bool Pass(const ChildOutput& output) {
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(bounds_.deadline - Clock::now());
        if (left.count() <= 0) throw ChildFailure("it took too long");
        std::array<pollfd, 3> events{pollfd{stdin_.write ? stdin_.write.Get() : -1, POLLOUT, 0},
                                     pollfd{stdout_.read ? stdout_.read.Get() : -1, POLLIN, 0},
                                     pollfd{stderr_.read ? stderr_.read.Get() : -1, POLLIN, 0}};
        // Its pipes may be held open by what it has started: so it is looked at now and then.
        constexpr int kLookEvery = 50;  // milliseconds
        ::poll(events.data(), events.size(),
               static_cast<int>(std::min<std::int64_t>(left.count(), kLookEvery)));
        if (events[0].revents != 0) WriteInput();
        if (events[1].revents != 0)
            Read(stdout_.read, [&](std::string_view bytes) {
                passed_ += bytes.size();
                if (passed_ > bounds_.output) throw ChildFailure("it wrote too much");
                output(bytes);
            });
        if (events[2].revents != 0)
            Read(stderr_.read, [&](std::string_view bytes) {
                errors_ += bytes;
                if (errors_.size() > kMostErrors) errors_.erase(0, errors_.size() - kMostErrors);
            });
        if (!ended_) ended_ = ::waitpid(process_, &status_, WNOHANG) == process_;
        const bool nothingToRead = events[1].revents == 0 && events[2].revents == 0;
        return !ended_ || !nothingToRead;
    }

    void WriteInput() {
        const ssize_t length = input_.empty() ? 0 : ::write(stdin_.write.Get(), input_.data(), input_.size());
        if (length > 0) input_.remove_prefix(static_cast<std::size_t>(length));
        const bool later = length < 0 && (errno == EAGAIN || errno == EINTR);
        if (input_.empty() || (length < 0 && !later)) stdin_.write.Close();
    }

    template <typename Take>
    static void Read(FileDescriptor& end, Take take) {
        std::array<char, 64 << 10> buffer;
        const ssize_t length = ::read(end.Get(), buffer.data(), buffer.size());
        if (length > 0) take(std::string_view(buffer.data(), static_cast<std::size_t>(length)));
        if (length == 0 || (length < 0 && errno != EAGAIN && errno != EINTR)) end.Close();
    }

    void CheckEnd() const {
        if (WIFSIGNALED(status_)) {
            const int number = WTERMSIG(status_);
            throw ChildFailure(number == SIGXCPU   ? "it computed for too long"
                               : number == SIGXFSZ ? "it wrote too much"
                                                   : std::string("it ended by ") + ::strsignal(number));
        }
        if (WEXITSTATUS(status_) == 0) return;
        if (WEXITSTATUS(status_) == kNoProgram) throw ChildFailure("it can't be started");
        throw ChildFailure("it ended with status " + std::to_string(WEXITSTATUS(status_)) + LastError());
    }

    /// " (the last line of its standard error)".
    std::string LastError() const {
        const auto end = errors_.find_last_not_of(" \t\r\n");
        if (end == std::string::npos) return {};
        const auto begin = errors_.rfind('\n', end) + 1;
        return " (" + Printable(errors_.substr(begin, std::min(end + 1 - begin, kLongestReason))) + ")";
    }

    /// The child, its group, and what has left its group. Where a confinement lets nothing be killed, it ends
    /// them itself after this program.
    void EndAll() {
        ::kill(-process_, SIGKILL);
        const bool mayKill = ended_ || ::kill(process_, SIGKILL) == 0;
        while (!ended_ && mayKill && ::waitpid(process_, &status_, 0) < 0 && errno == EINTR) {
        }
        constexpr int kMostRounds = 200;
        for (int round = 0; mayKill && round < kMostRounds && ::waitpid(-1, nullptr, WNOHANG) >= 0; ++round) {
            const std::vector<pid_t> orphans = Children();
            if (orphans.empty()) break;
            for (const pid_t orphan : orphans) ::kill(orphan, SIGKILL);
            const timespec moment{0, 1'000'000};
            ::nanosleep(&moment, nullptr);
        }
        ::prctl(PR_SET_CHILD_SUBREAPER, 0, 0, 0, 0);
    }

    const ChildBounds& bounds_;
    std::string_view input_;
    Pipe stdin_, stdout_, stderr_;
    pid_t process_ = -1;
    bool ended_ = false;
    int status_ = 0;
    std::uint64_t passed_ = 0;
    std::string errors_;
};

}  // namespace

void RunChild(const std::vector<std::string>& program, std::string_view input, const ChildBounds& bounds,
              const ChildOutput& output) {
    std::vector<std::string> words = program;
    std::vector<char*> arguments;
    for (std::string& word : words) arguments.push_back(word.data());
    arguments.push_back(nullptr);
    Child(arguments.data(), input, bounds).Follow(output);
}

}  // namespace sorakaze::speech
