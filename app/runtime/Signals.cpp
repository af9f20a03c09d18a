// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/runtime/Signals.h"

#include <poll.h>
#include <signal.h>
#include <sys/eventfd.h>
#include <sys/signalfd.h>
#include <unistd.h>

#include <chrono>
#include <cstdint>
#include <optional>
#include <utility>

namespace sorakaze {
namespace {

constexpr auto kSecondThought = std::chrono::milliseconds(300);

}  // namespace

Signals::Signals(SignalHandlers handlers) : handlers_(std::move(handlers)) {
    sigset_t set;
    sigemptyset(&set);
    for (const int number : {SIGINT, SIGTERM, SIGHUP}) sigaddset(&set, number);
    pthread_sigmask(SIG_BLOCK, &set, nullptr);
    signals_ = signalfd(-1, &set, SFD_CLOEXEC);
    end_ = eventfd(0, EFD_CLOEXEC);
    thread_ = std::thread([this] { Wait(); });
}

Signals::~Signals() {
    const std::uint64_t one = 1;
    [[maybe_unused]] const auto written = write(end_, &one, sizeof one);
    thread_.join();
    close(end_);
    close(signals_);
}

void Signals::Wait() {
    std::optional<std::chrono::steady_clock::time_point> last;
    int asked = 0;
    for (;;) {
        pollfd waiting[] = {{signals_, POLLIN, 0}, {end_, POLLIN, 0}};
        if (poll(waiting, 2, -1) < 0) continue;
        if (waiting[1].revents) return;
        signalfd_siginfo info{};
        if (read(signals_, &info, sizeof info) != sizeof info) continue;
        if (info.ssi_signo == SIGHUP && handlers_.onHangUp) {
            handlers_.onHangUp();
            continue;
        }
        const auto now = std::chrono::steady_clock::now();
        // One that comes along with another, to the process group, is no second thought.
        if (last && now - *last <= kSecondThought) continue;
        last = now;
        ++asked;
        if (asked == 1) {
            handlers_.onFirst();
        } else if (asked == 2 && handlers_.onSecond) {
            handlers_.onSecond();
        } else {
            handlers_.beforeEnd();
            _exit(128 + static_cast<int>(info.ssi_signo));
        }
    }
}

}  // namespace sorakaze
