// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "decoder/ForkServer.h"

#include <poll.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <map>
#include <optional>
#include <utility>

#include "decoder/Worker.h"
#include "sound/DecoderProtocol.h"

namespace sorakaze::decoder {
namespace {

using sound::JobEnded;
using sound::JobKind;

void Ignore(int) {}

class ForkServer {
  public:
    explicit ForkServer(int channel) : channel_(channel) {}

    int Run() {
        // A worker's end interrupts the wait for the next job, and nothing else.
        sigset_t children, none;
        ::sigemptyset(&none);
        ::sigemptyset(&children);
        ::sigaddset(&children, SIGCHLD);
        ::sigprocmask(SIG_BLOCK, &children, nullptr);
        struct sigaction action {};
        action.sa_handler = Ignore;
        ::sigaction(SIGCHLD, &action, nullptr);
        pollfd channel{channel_, POLLIN, 0};
        for (;;) {
            const int ready = ::ppoll(&channel, 1, nullptr, &none);
            ReapWorkers();
            if (ready > 0 && !TakeRequest()) return 0;
        }
    }

  private:
    /// False when the application has gone.
    bool TakeRequest() {
        Job job;
        const ssize_t got = ReceiveJob(channel_, job);
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
            ReportEnd(number, SIGSYS);  // as if it had ended at once
    }

    void ReapWorkers() {
        int status = 0;
        for (pid_t ended = 0; (ended = ::waitpid(-1, &status, WNOHANG)) > 0;) {
            for (auto worker = workers_.begin(); worker != workers_.end(); ++worker) {
                if (worker->second != ended) continue;
                ReportEnd(worker->first, status);
                workers_.erase(worker);
                break;
            }
        }
    }

    void ReportEnd(std::uint32_t number, int status) const {
        const JobEnded ended{number, status};
        ::send(channel_, &ended, sizeof ended, MSG_NOSIGNAL);
    }

    const int channel_;
    std::map<std::uint32_t, pid_t> workers_;  ///< by the numbers of their jobs
};

}  // namespace

int RunForkServer(int channel) {
    return ForkServer(channel).Run();
}

}  // namespace sorakaze::decoder
