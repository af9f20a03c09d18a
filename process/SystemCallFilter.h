// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// The filter of system calls that a command and all it starts run under: no sockets, no other processes'
// memory, no namespaces and mounts, none of the kernel's riskier corners. Built before the fork, as a program
// for the kernel.
#pragma once

#include <linux/filter.h>

#include <vector>

namespace sorakaze::process {

/// What the filter must prevent because a stronger mechanism is missing.
struct FilterOptions {
    /// Without a view of its own a command of the user's could change modes, owners and times of the user's
    /// files.
    bool guardMetadata = false;
    /// Landlock before version 3 lets files be cut off that may only be read.
    bool guardTruncation = false;
    /// Without a process namespace it could signal the user's processes, or leave its process group.
    bool guardSignals = false;
};

std::vector<sock_filter> BuildSystemCallFilter(const FilterOptions& duties);

/// Whether the kernel has such filters, for a machine that the filter is written for.
bool SystemCallFilterAvailable();

}  // namespace sorakaze::process
