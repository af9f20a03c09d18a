// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// Starts a plan: the fork, and what the new processes do until the command's program runs.
//
// Two processes begin there. The supervisor is the first of the command's process namespace: it makes the
// view, starts the shell, takes in orphans and hands out the shell's status; with it everything of the
// command ends. The shell's process gives up every privilege and right, the system calls last, and becomes
// the shell. Where there are no namespaces the supervisor ends the command's process group instead.
#pragma once

#include <sys/types.h>

#include <cstdint>

#include "base/FileDescriptor.h"
#include "process/LaunchPlan.h"

namespace sorakaze::process {

/// What the supervisor tells the application, as bytes in a pipe.
struct LaunchReport {
    enum What : std::int32_t { Nothing, Ended, Failed };
    What what = Nothing;
    std::int32_t value = 0;       ///< the shell's status as wait tells it; or the error number
    const char* where = nullptr;  ///< of a failure; the same address in both processes
};

struct Launched {
    pid_t supervisor = -1;
    bool ownNamespace = false;  ///< the end of the supervisor is the end of all
    FileDescriptor process;     ///< readable when the supervisor has ended
    FileDescriptor lifeline;    ///< closed: the supervisor ends everything
    FileDescriptor output;      ///< what the command writes; never blocks
    FileDescriptor errors;      ///< its standard error, unless it has a channel; never blocks
    FileDescriptor reports;     ///< never blocks
};

/// Never leaves a process behind when it throws std::system_error.
Launched Launch(LaunchPlan& plan);

/// Ends every process of the command. The supervisor's end follows.
void EndAll(Launched& launched);

/// Of a plan with a channel: ends the program itself, with which everything of it ends.
void EndProgram(Launched& launched);

/// Blocks until the supervisor's end, and returns what it told. `status` gets its own end as wait tells it.
LaunchReport AwaitEnd(Launched& launched, int* status = nullptr);

}  // namespace sorakaze::process
