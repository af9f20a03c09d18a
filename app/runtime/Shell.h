// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>

#include "app/runtime/String.h"

namespace sorakaze {

/// Runs command lines through a shell, confined: they can write nothing but the run's temporary folder.
class Shell {
  public:
    /// Returns when the command has ended. Programs in the application's Resources are found first. The other
    /// threads run meanwhile; a kill of the calling thread ends the command.
    void Execute(const String& command);

    /// What the last command printed on its standard output.
    const String& Result() const { return result_; }
    /// Its exit status; 0 for success.
    std::int32_t ErrorCode() const { return errorCode_; }

  private:
    String result_;
    std::int32_t errorCode_ = 0;
};

}  // namespace sorakaze
