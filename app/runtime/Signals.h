// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <functional>
#include <thread>

namespace sorakaze {

/// Turns SIGINT, SIGTERM and SIGHUP into a call on a thread of its own. A second one, a while
/// later, ends the process at once. Made before any other thread, so that all of them leave these signals to
/// it.
class Signals {
  public:
    /// `beforeEnd` is called before a second signal ends the process, to clean up.
    Signals(std::function<void()> onFirst, std::function<void()> beforeEnd);
    ~Signals();
    Signals(const Signals&) = delete;
    Signals& operator=(const Signals&) = delete;

  private:
    void Wait();

    std::function<void()> onFirst_;
    std::function<void()> beforeEnd_;
    int end_ = -1;  ///< an eventfd that ends the wait
    int signals_ = -1;
    std::thread thread_;
};

}  // namespace sorakaze
