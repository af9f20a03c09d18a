// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// The event loop that tests of the desktop and of the viewer run on.
#pragma once

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QThread>

namespace sorakaze::desktop {

/// Runs the main thread's events until `condition` holds; false if it never does.
template <typename Condition>
bool RunUntil(Condition condition) {
    const QDeadlineTimer lost(20'000);
    while (!condition()) {
        if (lost.hasExpired()) return false;
        // Not until an event comes: there may be none, and the condition may be another process's doing.
        QCoreApplication::processEvents();
        QThread::msleep(1);
    }
    return true;
}

}  // namespace sorakaze::desktop
