// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <functional>
#include <thread>

namespace sorakaze::studio {

/// Turns SIGINT, SIGTERM and SIGHUP into a call on a thread of its own. A second one ends the process at
/// once. Made before any other thread, so that all of them leave these signals to it.
class Signals {
  public:
    explicit Signals(std::function<void()> onFirst);
    ~Signals();
    Signals(const Signals&) = delete;
    Signals& operator=(const Signals&) = delete;

  private:
    void Wait();

    std::function<void()> onFirst_;
    int end_ = -1;  ///< an eventfd that ends the wait
    int signals_ = -1;
    std::thread thread_;
};

}  // namespace sorakaze::studio
