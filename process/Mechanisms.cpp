// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "process/Mechanisms.h"

#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <mutex>
#include <system_error>

#include "process/ConfinedProcess.h"
#include "process/LandlockRules.h"
#include "process/Launch.h"
#include "process/SystemCallFilter.h"

namespace sorakaze::process {
namespace {

/// Errors of a system without free resources. They say nothing about the kernel.
bool IsShortage(const std::error_code& code) {
    for (const std::errc shortage : {std::errc::too_many_files_open, std::errc::too_many_files_open_in_system,
                                     std::errc::resource_unavailable_try_again, std::errc::not_enough_memory})
        if (code == shortage) return true;
    return false;
}

/// Whether a process can be started under all of these, found out by trying. Throws std::system_error where
/// the system is too short of something to tell.
bool Works(const Mechanisms& mechanisms) {
    try {
        LaunchPlan plan = PlanTrial(mechanisms);
        Launched launched = Launch(plan);
        const LaunchReport report = AwaitEnd(launched);
        return report.what == LaunchReport::Ended && report.value == 0;
    } catch (const std::system_error& error) {
        if (IsShortage(error.code())) throw;
        return false;
    } catch (const std::exception&) {
        return false;
    }
}

Mechanisms TryAll() {
    Mechanisms found;
    found.landlockVersion = LandlockVersion();
    if (found.landlockVersion > 0 && !Works(found)) found.landlockVersion = 0;
    found.systemCallFilter = SystemCallFilterAvailable();
    if (found.systemCallFilter && !Works(found)) found.systemCallFilter = false;
    // Strongest first. Without a user namespace they take root's privilege.
    for (const auto& [user, view] : {std::pair{true, true}, {false, true}, {true, false}, {false, false}}) {
        Mechanisms tried = found;
        tried.namespaces = true;
        tried.userNamespace = user;
        tried.view = view;
        if ((user || ::geteuid() == 0) && Works(tried)) return tried;
    }
    return found;
}

const Mechanisms& Found() {
    static const Mechanisms found = TryAll();
    return found;
}

std::mutex limitMutex;
std::optional<Mechanisms> limit;  // guarded by limitMutex

}  // namespace

Mechanisms AvailableMechanisms() {
    Mechanisms result = Found();
    const std::lock_guard lock(limitMutex);
    if (!limit) return result;
    result.landlockVersion = std::min(result.landlockVersion, limit->landlockVersion);
    result.namespaces &= limit->namespaces;
    result.userNamespace &= result.namespaces && limit->userNamespace;
    // Without a user namespace the others take root.
    result.namespaces &= result.userNamespace || ::geteuid() == 0;
    result.view &= result.namespaces && limit->view;
    result.systemCallFilter &= limit->systemCallFilter;
    return result;
}

void LimitMechanisms(std::optional<Mechanisms> most) {
    const std::lock_guard lock(limitMutex);
    limit = most;
}

ConfinementSupport QueryConfinementSupport() {
    const Mechanisms mechanisms = AvailableMechanisms();
    ConfinementSupport support;
    const auto state = [&](bool present, const char* name) {
        std::string& list = present ? support.inForce : support.missing;
        list += (list.empty() ? "" : ", ") + std::string(name);
    };
    state(mechanisms.landlockVersion > 0, "landlock");
    state(mechanisms.namespaces, "namespaces");
    state(mechanisms.view, "a file system view of its own");
    state(mechanisms.systemCallFilter, "seccomp");
    state(true, "limits");
    return support;
}

void ReportOnce(const std::string& line) {
    static std::atomic_flag reported;
    if (!reported.test_and_set()) std::fprintf(stderr, "%s\n", line.c_str());
}

}  // namespace sorakaze::process
