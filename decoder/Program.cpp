// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "decoder/Program.h"

#include <poll.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstring>
#include <map>
#include <optional>
#include <utility>

#include "decoder/Worker.h"
#include "sound/DecoderProtocol.h"

namespace sorakaze::decoder {
namespace {

using sound::JobEnded;
using sound::JobKind;

void Note(int) {}

class Program {
  public:
    explicit Program(int channel) : channel_(channel) {}

    int Run() {
        // A worker's end interrupts the wait for the next job, and nothing else.
        sigset_t children, none;
        ::sigemptyset(&none);
        ::sigemptyset(&children);
        ::sigaddset(&children, SIGCHLD);
        ::sigprocmask(SIG_BLOCK, &children, nullptr);
        struct sigaction note {};
        note.sa_handler = Note;
        ::sigaction(SIGCHLD, &note, nullptr);
        pollfd channel{channel_, POLLIN, 0};
        for (;;) {
            const int ready = ::ppoll(&channel, 1, nullptr, &none);
            TakeEnds();
            if (ready > 0 && !TakeRequest()) return 0;
        }
    }

  private:
    /// False when the application has gone.
    bool TakeRequest() {
        Job job;
        const ssize_t got = Receive(job);
        if (got < 0) return errno == EINTR || errno == EAGAIN;
        if (got != static_cast<ssize_t>(sizeof job.request)) return false;
        job.request.name[sizeof job.request.name - 1] = '\0';
        if (job.request.kind == JobKind::Kill) {
            const auto found = workers_.find(job.request.number);
            if (found != workers_.end()) ::kill(found->second, SIGKILL);
        } else {
            Begin(std::move(job));
        }
        return true;
    }

    ssize_t Receive(Job& job) const {
        iovec part{&job.request, sizeof job.request};
        constexpr std::size_t kMost = 3;
        alignas(cmsghdr) char control[CMSG_SPACE(kMost * sizeof(int))];
        msghdr message{};
        message.msg_iov = &part;
        message.msg_iovlen = 1;
        message.msg_control = control;
        message.msg_controllen = sizeof control;
        const ssize_t got = ::recvmsg(channel_, &message, MSG_CMSG_CLOEXEC);
        const cmsghdr* const header = got > 0 ? CMSG_FIRSTHDR(&message) : nullptr;
        if (!header) return got;
        int numbers[kMost] = {-1, -1, -1};
        std::memcpy(numbers, CMSG_DATA(header), header->cmsg_len - CMSG_LEN(0));
        job.file = FileDescriptor(numbers[0]);
        job.socket = FileDescriptor(numbers[1]);
        job.ring = FileDescriptor(numbers[2]);
        return got;
    }

    void Begin(Job job) {
        const std::uint32_t number = job.request.number;
        const pid_t program = ::getpid();
        const pid_t worker = ::fork();
        if (worker == 0) {
            ::close(channel_);
            ::prctl(PR_SET_PDEATHSIG, SIGKILL, 0, 0, 0);
            if (::getppid() != program) ::_exit(1);
            std::signal(SIGCHLD, SIG_DFL);
            ::_exit(Work(std::move(job)));
        }
        if (worker > 0)
            workers_[number] = worker;
        else
            Tell(number, SIGSYS);  // as if it had ended at once
    }

    void TakeEnds() {
        int status = 0;
        for (pid_t ended = 0; (ended = ::waitpid(-1, &status, WNOHANG)) > 0;) {
            for (auto worker = workers_.begin(); worker != workers_.end(); ++worker) {
                if (worker->second != ended) continue;
                Tell(worker->first, status);
                workers_.erase(worker);
                break;
            }
        }
    }

    void Tell(std::uint32_t number, int status) const {
        const JobEnded ended{number, status};
        ::send(channel_, &ended, sizeof ended, MSG_NOSIGNAL);
    }

    const int channel_;
    std::map<std::uint32_t, pid_t> workers_;  ///< by the numbers of their jobs
};

}  // namespace

int TakeJobs(int channel) {
    return Program(channel).Run();
}

}  // namespace sorakaze::decoder
