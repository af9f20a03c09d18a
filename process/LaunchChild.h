// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// The child's side of the fork. Async-signal-safe throughout: system calls only, made without the C library's
// wrappers where these do more than the call (its setuid speaks to all threads of a process that isn't there
// any more).
#pragma once

#include "process/LaunchPlan.h"

namespace sorakaze::process {

/// The child's ends, every number 10 or above.
struct ChildDescriptors {
    int null;
    int output;
    int errors;
    int reports;
    int lifeline;
    int channel;  ///< negative: there is none
};

/// What the supervisor is from the fork on. Waits for a byte in the lifeline before it begins.
[[noreturn]] void RunSupervisor(LaunchPlan& plan, const ChildDescriptors& descriptors);

}  // namespace sorakaze::process
