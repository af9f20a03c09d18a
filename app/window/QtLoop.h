// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>
#include <QTimer>
#include <atomic>

#include "app/runtime/Runtime.h"

namespace sorakaze::window {

/// Runs the logic's main thread in Qt's event loop. Used on the main thread, but for CallAt.
class QtLoop : public QObject, public NativeLoop {
  public:
    explicit QtLoop(Runtime& runtime);

    void CallAt(std::chrono::nanoseconds due) override;
    void Serve() override;

    /// Runs the application until it quits. Called with the baton.
    void Run();

  private:
    /// Sets the timer to the earliest time asked for.
    void Arm(std::chrono::nanoseconds due);

    Runtime& runtime_;
    QTimer due_;    ///< for the logic's timers and posted calls
    QTimer round_;  ///< ends a round of Serve
    std::chrono::nanoseconds armedFor_{std::chrono::nanoseconds::max()};
};

}  // namespace sorakaze::window
