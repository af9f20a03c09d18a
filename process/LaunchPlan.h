// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// Everything that the first process of a command needs between the fork and its program, prepared beforehand:
// after the fork of a process with many threads nothing may be allocated or locked.
#pragma once

#include <linux/filter.h>
#include <sys/resource.h>
#include <sys/types.h>

#include <cstdint>
#include <list>
#include <string>
#include <vector>

#include "base/FileDescriptor.h"
#include "process/ConfinedHelper.h"
#include "process/ConfinedProcess.h"
#include "process/LandlockRules.h"
#include "process/Mechanisms.h"

namespace sorakaze::process {

class Workspace;

/// One step of making the command's view of the file system, in order.
struct ViewStep {
    enum Kind {
        MakeFolder,
        MakeFile,
        MakeLink,
        CopyFile,     ///< that can be read and run
        MountFolder,  ///< a file system of the command's own, empty
        MountOutput,  ///< the one file of the application's that can be written
        MountReadOnly,
        MountDevice
    };
    Kind kind;
    const char* path;    ///< in the view, without the leading slash
    const char* source;  ///< what is mounted or copied there, or where the link leads
    int tree = -1;       ///< the detached mount; used by the child only
};

struct Limit {
    int resource;
    rlimit values;
};

struct LaunchPlan {
    Mechanisms mechanisms;

    const char* program = nullptr;       ///< null: confine, then end with status 0, for trying the mechanisms
    std::vector<const char*> arguments;  ///< ends with null
    std::vector<const char*> environment;  ///< ends with null
    const char* workingFolder = nullptr;

    std::vector<ViewStep> view;
    const char* viewMountPoint = nullptr;  ///< any existing folder; it is covered in the new view only
    const char* viewOptions = nullptr;     ///< of the file system that holds the view
    const char* folderOptions = nullptr;   ///< of the command's folder

    std::vector<Limit> limits;  ///< the address space comes last: the copy of the application may be above it
    std::vector<sock_filter> filter;
    FileDescriptor ruleset;

    /// Set: the program's standard input, and the program takes the supervisor's place.
    FileDescriptor channel;
    int niceness = 5;         ///< added to the application's own
    bool keepErrors = false;  ///< standard error is the application's

    bool asRoot = false;  ///< then the command runs as `user`
    uid_t user = 0;
    /// As root: a set of bits, none as a rule. Without a view a station under a closed home folder is read
    /// and run, whoever owns it and in whatever mode, because Landlock narrows what can be reached at all.
    std::uint64_t capabilities = 0;

    std::string userMap;  ///< of the user namespace
    std::string groupMap;

    /// The shell's process begins on this. A multiple of 16 bytes, as stacks are.
    std::vector<char> shellStack = std::vector<char>(64 << 10);

    /// Owns what the pointers above point to.
    std::list<std::string> strings;
    const char* Keep(std::string text) { return strings.emplace_back(std::move(text)).c_str(); }
};

/// Throws std::system_error and std::filesystem::filesystem_error.
LaunchPlan PlanCommand(const std::string& commandLine, const Confinement& confinement,
                       const Workspace& workspace, const Mechanisms& mechanisms);

/// A helper's program, which stays and has a channel. It can write nothing at all. Throws as PlanCommand
/// does.
LaunchPlan PlanHelper(const HelperOptions& options, const Mechanisms& mechanisms);

/// A plan that puts everything in force and starts nothing.
LaunchPlan PlanTrial(const Mechanisms& mechanisms);

}  // namespace sorakaze::process
