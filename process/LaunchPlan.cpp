// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "process/LaunchPlan.h"

#include <linux/capability.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <limits>

#include "process/CommandUser.h"
#include "process/SystemCallFilter.h"
#include "process/ViewPlan.h"
#include "process/Workspace.h"

namespace sorakaze::process {
namespace {

namespace fs = std::filesystem;

/// The user's present tasks: without a user namespace the limit counts them too.
rlim_t TasksOfUser() {
    rlim_t count = 0;
    std::error_code failure;
    for (const fs::directory_entry& entry : fs::directory_iterator("/proc", failure)) {
        struct stat status {};
        if (::stat(entry.path().c_str(), &status) != 0 || status.st_uid != ::getuid()) continue;
        for (fs::directory_iterator task(entry.path() / "task", failure), end; !failure && task != end;
             task.increment(failure))
            ++count;
    }
    return count;
}

void PlanLimits(LaunchPlan& plan, const Confinement& confinement) {
    // The application's own limit is the most that it can grant.
    const auto add = [&](int resource, rlim_t soft, rlim_t hard) {
        rlimit own{};
        ::getrlimit(static_cast<__rlimit_resource>(resource), &own);
        plan.limits.push_back({resource, {std::min(soft, own.rlim_max), std::min(hard, own.rlim_max)}});
    };
    // The user can start programs meanwhile; the command's own are counted in ConfinedProcess besides.
    constexpr rlim_t kRoomForTheUser = 128;
    rlim_t processes = confinement.processes;
    if (!plan.asRoot) ++processes;  // the supervisor is the same user's
    if (!plan.asRoot && !plan.mechanisms.userNamespace) processes += TasksOfUser() + kRoomForTheUser;
    const auto seconds = static_cast<rlim_t>(std::max<std::int64_t>(confinement.processorTime.count(), 1));
    add(RLIMIT_NPROC, processes, processes);
    add(RLIMIT_CPU, seconds, seconds + 1);
    add(RLIMIT_FSIZE, confinement.fileSize, confinement.fileSize);
    add(RLIMIT_CORE, 0, 0);
    add(RLIMIT_NOFILE, 256, 256);
    add(RLIMIT_MEMLOCK, 64 << 10, 64 << 10);
    add(RLIMIT_MSGQUEUE, 0, 0);
    add(RLIMIT_STACK, 8 << 20, 64 << 20);
    // A process may reserve more than it may use. Without a bound on addresses, a sanitizer has what it
    // needs.
    if (confinement.memory < confinement.addressSpace &&
        confinement.addressSpace != std::numeric_limits<std::uint64_t>::max())
        add(RLIMIT_DATA, confinement.memory, confinement.memory);
    add(RLIMIT_AS, confinement.addressSpace, confinement.addressSpace);
}

void PlanUser(LaunchPlan& plan, const Confinement* confinement, const Workspace* workspace) {
    const auto user = CommandUser();
    plan.asRoot = user.has_value();
    if (!user) {
        const auto itself = [](auto id) { return std::to_string(id) + ' ' + std::to_string(id) + " 1\n"; };
        plan.userMap = itself(::geteuid());
        plan.groupMap = itself(::getegid());
        return;
    }
    plan.userMap = IdentityIdMap("/proc/self/uid_map");
    plan.groupMap = IdentityIdMap("/proc/self/gid_map");
    plan.user = *user;
    const Mechanisms& narrowing = plan.mechanisms;
    // A view shows what the command may use under modes of its own.
    if (narrowing.view || narrowing.landlockVersion == 0 || !confinement ||
        OthersCanUse(*confinement, workspace))
        return;
    plan.capabilities |= 1ull << CAP_DAC_READ_SEARCH;
    // To run a program that only its owner may run. Nothing but its folder and its file can be written with
    // it.
    if (narrowing.landlockVersion >= 3 && narrowing.systemCallFilter)
        plan.capabilities |= 1ull << CAP_DAC_OVERRIDE;
}

LaunchPlan PlanConfinement(const Confinement* confinement, const Workspace* workspace,
                           const Mechanisms& mechanisms) {
    LaunchPlan plan;
    plan.mechanisms = mechanisms;
    PlanUser(plan, confinement, workspace);
    VisiblePaths all = VisiblePathsFor(confinement, workspace);
    if (mechanisms.landlockVersion > 0)
        plan.ruleset = MakeLandlockRules(mechanisms.landlockVersion, all.paths);
    if (mechanisms.view) {
        plan.viewMountPoint = workspace ? plan.Keep(workspace->Folder()) : "/usr";
        PlanView(plan, std::move(all), confinement, workspace);
    }
    if (mechanisms.systemCallFilter) {
        FilterOptions duties;
        duties.guardMetadata = !mechanisms.view;
        duties.guardTruncation = !mechanisms.view && mechanisms.landlockVersion < 3;
        duties.guardSignals = !mechanisms.namespaces;
        plan.filter = BuildSystemCallFilter(duties);
    }
    return plan;
}

}  // namespace

LaunchPlan PlanCommand(const std::string& commandLine, const Confinement& confinement,
                       const Workspace& workspace, const Mechanisms& mechanisms) {
    LaunchPlan plan = PlanConfinement(&confinement, &workspace, mechanisms);
    PlanLimits(plan, confinement);
    plan.workingFolder = plan.Keep(workspace.Folder());
    plan.program = "/bin/sh";
    // After the two dashes a line that begins with a dash isn't read as options.
    plan.arguments = {"sh", "-c", "--", plan.Keep(commandLine), nullptr};
    std::string searched;
    for (const fs::path& folder : confinement.searchFirst) searched += Absolute(folder).string() + ':';
    const std::string folder = plan.workingFolder;
    plan.environment = {plan.Keep("PATH=" + searched + "/usr/bin:/bin"), plan.Keep("HOME=" + folder),
                        plan.Keep("TMPDIR=" + folder), "LANG=C.UTF-8"};
    for (const std::string& variable : confinement.variables) plan.environment.push_back(plan.Keep(variable));
    plan.environment.push_back(nullptr);
    return plan;
}

LaunchPlan PlanHelper(const HelperOptions& options, const Mechanisms& mechanisms) {
    Confinement confinement;
    confinement.readable = {options.program};
    confinement.processes = options.processes;
    // Its processes set their own limits, each for its task.
    confinement.addressSpace = std::numeric_limits<std::uint64_t>::max();
    confinement.processorTime = std::chrono::hours(24 * 365);
    confinement.fileSize = 0;
    LaunchPlan plan = PlanConfinement(&confinement, nullptr, mechanisms);
    PlanLimits(plan, confinement);
    // It kills its own processes, and confines further what it starts.
    if (mechanisms.systemCallFilter)
        plan.filter = BuildSystemCallFilter({.guardMetadata = true, .guardTruncation = true});
    plan.workingFolder = "/";
    plan.niceness = 0;
    plan.keepErrors = options.keepErrors;
    plan.program = plan.Keep(Absolute(options.program));
    plan.arguments = {plan.program};
    for (const std::string& argument : options.arguments) plan.arguments.push_back(plan.Keep(argument));
    plan.arguments.push_back(nullptr);
    plan.environment = {"PATH=/usr/bin:/bin", "LANG=C.UTF-8", nullptr};
    return plan;
}

LaunchPlan PlanTrial(const Mechanisms& mechanisms) {
    LaunchPlan plan = PlanConfinement(nullptr, nullptr, mechanisms);
    plan.workingFolder = "/";
    return plan;
}

}  // namespace sorakaze::process
