// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "studio/Console.h"

#include <unistd.h>

#include <algorithm>
#include <cstdio>

#include "base/PrintableText.h"

namespace sorakaze::studio {
namespace {

constexpr auto kBarPeriod = std::chrono::milliseconds(100);
/// Without a known length a plain line comes every so many seconds of the show.
constexpr double kPlainPeriod = 600;

void Put(std::FILE* to, const std::string& text) {
    std::fwrite(text.data(), 1, text.size(), to);
    std::fflush(to);
}

}  // namespace

std::string ClockText(double seconds) {
    const auto whole = static_cast<long>(seconds);
    char text[32];
    if (whole >= 3600) {
        std::snprintf(text, sizeof text, "%ld:%02ld:%02ld", whole / 3600, whole / 60 % 60, whole % 60);
    } else {
        std::snprintf(text, sizeof text, "%ld:%02ld", whole / 60, whole % 60);
    }
    return text;
}

Console::Console()
    : outIsTerminal_(isatty(STDOUT_FILENO) == 1),
      errorIsTerminal_(isatty(STDERR_FILENO) == 1),
      begin_(std::chrono::steady_clock::now()) {}

Console::~Console() {
    EndProgress();
}

void Console::Line(const std::string& text) {
    const std::lock_guard lock(mutex_);
    if (outIsTerminal_) ClearBar();
    Put(stdout, Printable(text) + "\n");
}

void Console::Message(const std::string& text) {
    const std::lock_guard lock(mutex_);
    ClearBar();
    Put(stderr, Printable(text) + "\n");
}

void Console::Progress(std::optional<double> done, double showSeconds) {
    const std::lock_guard lock(mutex_);
    const auto now = std::chrono::steady_clock::now();
    if (errorIsTerminal_) {
        if (barShown_ && now - lastBar_ < kBarPeriod) return;
        lastBar_ = now;
        barShown_ = true;
        Put(stderr, "\r\033[K" + BarText(done, showSeconds));
        return;
    }
    const int tenth = done ? static_cast<int>(std::clamp(*done, 0.0, 1.0) * 10) : 0;
    if (done ? tenth <= lastTenth_ : showSeconds - lastPlain_ < kPlainPeriod) return;
    lastTenth_ = tenth;
    lastPlain_ = showSeconds;
    Put(stderr, (done ? std::to_string(tenth * 10) + " %, " : std::string()) + ClockText(showSeconds) +
                    " of show, " + Speed(showSeconds) + "\n");
}

void Console::EndProgress() {
    const std::lock_guard lock(mutex_);
    ClearBar();
}

void Console::ClearBar() {
    if (barShown_) Put(stderr, "\r\033[K");
    barShown_ = false;
}

std::string Console::Speed(double showSeconds) const {
    const double wall = std::chrono::duration<double>(std::chrono::steady_clock::now() - begin_).count();
    char text[48];
    std::snprintf(text, sizeof text, "%.0f times real time", wall > 0 ? showSeconds / wall : 0);
    return text;
}

std::string Console::BarText(std::optional<double> done, double showSeconds) const {
    std::string bar;
    if (done) {
        constexpr int kWidth = 30;
        const double part = std::clamp(*done, 0.0, 1.0);
        const int filled = static_cast<int>(part * kWidth);
        char percent[16];
        std::snprintf(percent, sizeof percent, "] %3.0f %%  ", part * 100);
        bar = "[" + std::string(static_cast<std::size_t>(filled), '#') +
              std::string(static_cast<std::size_t>(kWidth - filled), '.') + percent;
    }
    return bar + ClockText(showSeconds) + "  " + Speed(showSeconds);
}

}  // namespace sorakaze::studio
