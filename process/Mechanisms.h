// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// Which of the kernel's means of confinement a command runs under. Found out once, by trying each of them; a
// test can take some away to prove that the rest still holds. Used inside this folder and by its tests only.
#pragma once

#include <optional>
#include <string>

namespace sorakaze::process {

struct Mechanisms {
    /// The version of Landlock's interface, 0 where the kernel has none.
    int landlockVersion = 0;
    /// Process, network and IPC namespaces of the command's own.
    bool namespaces = false;
    /// They are made inside a user namespace, which needs no privilege and counts the command's processes by
    /// itself.
    bool userNamespace = false;
    /// A mount namespace that holds nothing but what the command may see.
    bool view = false;
    /// The filter of system calls.
    bool systemCallFilter = false;

    bool operator==(const Mechanisms&) const = default;
};

/// What this machine has, or what LimitMechanisms left of it. The first call tries, which costs some
/// milliseconds.
Mechanisms AvailableMechanisms();

/// For tests: from now on commands run under these at most. An empty value takes the limit back.
void LimitMechanisms(std::optional<Mechanisms> most);

/// Prints why a command could not be started, one line on standard error, the first time only.
void ReportOnce(const std::string& line);

}  // namespace sorakaze::process
