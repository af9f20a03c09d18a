// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/runtime/Runtime.h"

namespace sorakaze::studio {

/// Nobody sits here: a message counts as answered at once, or not at all. The show's events tell of it.
class ConsoleHost : public Host {
  public:
    void ShowMessage(const Message&, std::stop_token) override {}
    std::function<bool()> LeaveMessage(const Message&) override {
        return [] { return false; };
    }
};

}  // namespace sorakaze::studio
