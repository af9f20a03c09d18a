// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/runtime/Runtime.h"
#include "studio/Console.h"

namespace sorakaze::studio {

/// Prints each message as a line, which counts as answered at once.
class ConsoleHost : public Host {
  public:
    explicit ConsoleHost(Console& console) : console_(console) {}
    void ShowMessage(const String& text, std::stop_token) override { console_.Message(text.Bytes()); }

  private:
    Console& console_;
};

}  // namespace sorakaze::studio
