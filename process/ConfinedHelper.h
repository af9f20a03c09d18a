// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// A program of the application's own that runs confined for as long as the application wants it, and talks
// with it over one socket. It is confined at least as strictly as a command: it reads the system's libraries
// and writes nothing, reaches no network, sees no other process. It ends with the application, and everything
// that it has started ends with it.
#pragma once

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "base/FileDescriptor.h"

namespace sorakaze::process {

struct HelperOptions {
    std::filesystem::path program;
    std::vector<std::string> arguments;
    unsigned processes = 128;  ///< processes and threads at the same time
    bool keepErrors = false;   ///< its standard error is the application's; otherwise it is dropped
};

class ConfinedHelper {
  public:
    /// Starts the program; its end of the channel, a socket of sequenced packets, is its standard input.
    /// Returns before it is known whether the program runs: if it can't be started, the channel ends. The
    /// kernel kills the helper when the calling thread ends. Throws std::system_error.
    explicit ConfinedHelper(const HelperOptions& options);
    /// Kills every process of the helper and waits for their ends.
    ~ConfinedHelper();
    ConfinedHelper(const ConfinedHelper&) = delete;
    ConfinedHelper& operator=(const ConfinedHelper&) = delete;

    /// The application's end of the channel. Never blocks.
    int Channel() const;

    /// After the channel has ended: how the helper ended, as one line for the user.
    std::string TakeEndText();

  private:
    struct Impl;
    std::unique_ptr<Impl> impl_;
};

}  // namespace sorakaze::process
