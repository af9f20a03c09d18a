// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// The event loop that a test of the desktop runs on.
#pragma once

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QEventLoop>

namespace sorakaze::desktop {

/// Runs the main thread's events until `condition` holds; false if it never does.
template <typename Condition>
bool RunUntil(Condition condition) {
    const QDeadlineTimer lost(20'000);
    while (!condition()) {
        if (lost.hasExpired()) return false;
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents | QEventLoop::AllEvents, 100);
    }
    return true;
}

}  // namespace sorakaze::desktop
