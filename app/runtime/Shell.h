// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "app/runtime/FolderItem.h"
#include "app/runtime/String.h"

namespace sorakaze {

/// Runs command lines through a shell, confined: each has an empty folder of its own, and can write nothing
/// else but the one file that it is to make.
class Shell {
  public:
    /// Sets a variable of the environment of the commands to come.
    void SetVariable(const String& name, const String& value);

    /// Returns when the command has ended. The application's own programs are found first. The other threads
    /// run meanwhile; a kill of the calling thread ends the command. `output` lies in the run's temporary
    /// folder; it exists afterwards if the command wrote it, and ended by itself.
    void Execute(const String& command, const FolderItemRef& output = nullptr);

    /// What the last command printed on its standard output.
    const String& Result() const { return result_; }
    /// For onlookers: what it complained of, as one line without paths of this run; empty if of nothing.
    const String& Complaint() const { return complaint_; }
    /// Its exit status; 0 for success.
    std::int32_t ErrorCode() const { return errorCode_; }

  private:
    std::string KeyOf(const String& command) const;
    void Run(const String& command, const FolderItemRef& output);

    std::vector<std::string> variables_;  ///< as "NAME=VALUE"
    String result_;
    String complaint_;
    std::int32_t errorCode_ = 0;
};

}  // namespace sorakaze
