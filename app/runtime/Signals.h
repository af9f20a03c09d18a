// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <functional>
#include <thread>
#include <utility>

namespace sorakaze {

struct SignalHandlers {
    /// SIGINT, SIGTERM, or SIGHUP without an onHangUp.
    std::function<void()> onFirst;
    /// A second one, a while later. Empty: it ends the process at once, as a third one does.
    std::function<void()> onSecond{};
    /// Called for every SIGHUP. Empty: it counts as the others do.
    std::function<void()> onHangUp{};
    /// Before the process is ended at once, to clean up.
    std::function<void()> beforeEnd;
};

/// Turns SIGINT, SIGTERM and SIGHUP into calls on a thread of its own. Made before any other thread, so that
/// all of them leave these signals to it.
class Signals {
  public:
    explicit Signals(SignalHandlers handlers);
    Signals(std::function<void()> onFirst, std::function<void()> beforeEnd)
        : Signals(SignalHandlers{std::move(onFirst), {}, {}, std::move(beforeEnd)}) {}
    ~Signals();
    Signals(const Signals&) = delete;
    Signals& operator=(const Signals&) = delete;

  private:
    void Wait();

    const SignalHandlers handlers_;
    int end_ = -1;  ///< an eventfd that ends the wait
    int signals_ = -1;
    std::thread thread_;
};

}  // namespace sorakaze
