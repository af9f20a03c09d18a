// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/window/QtLoop.h"

#include <QCoreApplication>
#include <QThread>
#include <algorithm>

namespace sorakaze::window {
namespace {

/// A round of a wait of the main thread: a tick, as for every wait.
constexpr int kRoundMilliseconds = 16;

}  // namespace

QtLoop::QtLoop(Runtime& runtime) : runtime_(runtime) {
    due_.setSingleShot(true);
    due_.setTimerType(Qt::PreciseTimer);
    connect(&due_, &QTimer::timeout, this, [this] {
        armedFor_ = std::chrono::nanoseconds::max();
        runtime_.Events().HandleFromNative();
    });
    round_.setTimerType(Qt::PreciseTimer);
    round_.setInterval(kRoundMilliseconds);
}

void QtLoop::CallAt(std::chrono::nanoseconds due) {
    if (QThread::currentThread() == thread()) {
        Arm(due);
    } else {
        QMetaObject::invokeMethod(
            this, [this, due] { Arm(due); }, Qt::QueuedConnection);
    }
}

void QtLoop::Arm(std::chrono::nanoseconds due) {
    if (due >= armedFor_) return;
    armedFor_ = due;
    const auto left = due - runtime_.GetClock().Now();
    // Up to the next whole millisecond: a timer that fires early finds nothing due.
    const auto milliseconds = std::chrono::ceil<std::chrono::milliseconds>(left).count();
    due_.start(static_cast<int>(std::clamp<long long>(milliseconds, 0, 3'600'000)));
}

void QtLoop::Serve() {
    round_.start();
    QCoreApplication::processEvents(QEventLoop::AllEvents | QEventLoop::WaitForMoreEvents);
    round_.stop();
}

void QtLoop::Run() {
    runtime_.Events().RunNative(*this, [] { QCoreApplication::exec(); });
}

}  // namespace sorakaze::window
