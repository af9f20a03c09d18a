// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/runtime/process/LaunchPlan.h"

#include <linux/capability.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <fstream>
#include <iterator>
#include <limits>
#include <set>
#include <sstream>

#include "app/runtime/process/SystemCallFilter.h"

namespace sorakaze::process {
namespace {

namespace fs = std::filesystem;

// What programs need of the system, and nothing of its users: programs, libraries, the loader's cache, the
// choices between alternatives, the time zone, and the dictionary of the readings.
constexpr const char* kSystemPlaces[] = {"/usr",
                                         "/bin",
                                         "/sbin",
                                         "/lib",
                                         "/lib32",
                                         "/lib64",
                                         "/libx32",
                                         "/etc/ld.so.cache",
                                         "/etc/ld.so.conf",
                                         "/etc/ld.so.conf.d",
                                         "/etc/alternatives",
                                         "/etc/localtime",
                                         "/etc/timezone",
                                         "/etc/mecabrc",
                                         "/var/lib/mecab"};
constexpr const char* kReadableDevices[] = {"/dev/zero", "/dev/random", "/dev/urandom"};
constexpr const char* kProcessLinks[][2] = {{"dev/fd", "/proc/self/fd"},
                                            {"dev/stdin", "/proc/self/fd/0"},
                                            {"dev/stdout", "/proc/self/fd/1"},
                                            {"dev/stderr", "/proc/self/fd/2"}};

struct Link {
    fs::path path;
    fs::path target;
};

struct Places {
    std::vector<Place> places;
    std::vector<Link> links;
};

fs::path Absolute(const fs::path& path) {
    fs::path result = fs::absolute(path).lexically_normal();
    return result.has_filename() || result == "/" ? result : result.parent_path();
}

/// Under the name it was given and, where links lead there, under its real one.
void AddPlace(Places& all, const fs::path& given, Access access) {
    if (given.empty()) return;
    const fs::path path = Absolute(given);
    std::error_code failure;
    const fs::path real = fs::canonical(path, failure);
    if (failure || real == "/") return;
    all.places.push_back({path, access});
    if (real != path) all.places.push_back({real, access});
}

Places PlacesFor(const Confinement* confinement) {
    Places all;
    for (const char* path : kSystemPlaces) {
        std::error_code failure;
        const fs::file_status status = fs::symlink_status(path, failure);
        if (fs::is_symlink(status))
            all.links.push_back({path, fs::read_symlink(path, failure)});
        else if (fs::exists(status))
            all.places.push_back({path, Access::Read});
    }
    for (const char* path : kReadableDevices) all.places.push_back({path, Access::ReadDevice});
    all.places.push_back({"/dev/null", Access::WriteDevice});
    if (confinement) {
        for (const fs::path& path : confinement->readable) AddPlace(all, path, Access::Read);
        for (const fs::path& path : confinement->searchFirst) AddPlace(all, path, Access::Read);
        AddPlace(all, confinement->writableFolder, Access::Write);
    }
    return all;
}

bool Within(const fs::path& path, const fs::path& folder) {
    return std::mismatch(folder.begin(), folder.end(), path.begin(), path.end()).first == folder.end();
}

ViewStep::Kind MountKind(Access access) {
    switch (access) {
        case Access::Read:
            return ViewStep::MountReadOnly;
        case Access::Write:
            return ViewStep::MountWritable;
        default:
            return ViewStep::MountDevice;
    }
}

/// The steps that make the view, outer places before what lies in them.
void PlanView(LaunchPlan& plan, Places all) {
    std::set<fs::path> made;
    const auto makeFolders = [&](const fs::path& folder) {
        fs::path path = "/";
        for (const fs::path& name : folder.relative_path()) {
            path /= name;
            if (made.insert(path).second)
                plan.view.push_back({ViewStep::MakeFolder, plan.Keep(path.relative_path()), nullptr});
        }
    };
    for (const Link& link : all.links) {
        makeFolders(link.path.parent_path());
        plan.view.push_back(
            {ViewStep::MakeLink, plan.Keep(link.path.relative_path()), plan.Keep(link.target)});
    }
    makeFolders("/dev");
    makeFolders("/proc");
    for (const auto& [path, target] : kProcessLinks) plan.view.push_back({ViewStep::MakeLink, path, target});

    std::stable_sort(all.places.begin(), all.places.end(),
                     [](const Place& a, const Place& b) { return a.path < b.path; });
    std::vector<Place> mounted;
    for (const Place& place : all.places) {
        // Behind a link of the system's it stands under its real name.
        if (std::any_of(all.links.begin(), all.links.end(),
                        [&](const Link& link) { return Within(place.path, link.path); }))
            continue;
        const auto outer = std::find_if(mounted.rbegin(), mounted.rend(),
                                        [&](const Place& other) { return Within(place.path, other.path); });
        if (outer == mounted.rend()) {
            if (fs::is_directory(place.path)) {
                makeFolders(place.path);
            } else {
                makeFolders(place.path.parent_path());
                plan.view.push_back({ViewStep::MakeFile, plan.Keep(place.path.relative_path()), nullptr});
            }
        } else if (outer->access == place.access) {
            continue;
        }
        plan.view.push_back(
            {MountKind(place.access), plan.Keep(place.path.relative_path()), plan.Keep(place.path)});
        mounted.push_back(place);
    }
}

/// The tasks that the user has now, since these count where no user namespace counts the command's alone.
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
    // What the application may have is the most that it can give.
    const auto add = [&](int resource, rlim_t soft, rlim_t hard) {
        rlimit own{};
        ::getrlimit(static_cast<__rlimit_resource>(resource), &own);
        plan.limits.push_back({resource, {std::min(soft, own.rlim_max), std::min(hard, own.rlim_max)}});
    };
    // The user goes on starting programs meanwhile; the count of the command's own is watched besides.
    constexpr rlim_t kRoomForTheUser = 128;
    rlim_t processes = confinement.processes;
    if (!plan.asRoot) ++processes;  // the keeper is the same user's
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
    add(RLIMIT_AS, confinement.addressSpace, confinement.addressSpace);
}

struct IdRange {
    std::uint64_t inside, outside, count;
};

/// Of a user namespace, as the kernel tells it.
std::vector<IdRange> ReadMap(const char* path) {
    std::vector<IdRange> ranges;
    std::ifstream lines(path);
    for (IdRange range{}; lines >> range.inside >> range.outside >> range.count;) ranges.push_back(range);
    return ranges;
}

/// The map of a namespace within this one where everybody is who they are here.
std::string EverybodyThemselves(const std::vector<IdRange>& ranges) {
    std::ostringstream map;
    for (const IdRange& range : ranges)
        map << range.inside << ' ' << range.inside << ' ' << range.count << '\n';
    return map.str();
}

bool HasCommandUsers(const std::vector<IdRange>& ranges) {
    return std::any_of(ranges.begin(), ranges.end(), [](const IdRange& range) {
        return range.inside <= kFirstCommandUser &&
               range.inside + range.count >= kFirstCommandUser + kCommandUsers;
    });
}

void PlanUser(LaunchPlan& plan, const Confinement* confinement) {
    plan.asRoot = CommandsHaveTheirOwnUser();
    if (!plan.asRoot) {
        const auto itself = [](auto id) { return std::to_string(id) + ' ' + std::to_string(id) + " 1\n"; };
        plan.userMap = itself(::geteuid());
        plan.groupMap = itself(::getegid());
        return;
    }
    plan.userMap = EverybodyThemselves(ReadMap("/proc/self/uid_map"));
    plan.groupMap = EverybodyThemselves(ReadMap("/proc/self/gid_map"));
    plan.user = kFirstCommandUser;
    struct stat status {};
    if (confinement && ::stat(confinement->writableFolder.c_str(), &status) == 0 &&
        status.st_uid - kFirstCommandUser < kCommandUsers)
        plan.user = status.st_uid;
    const Mechanisms& narrowing = plan.mechanisms;
    if (narrowing.landlockVersion > 0 || narrowing.view) plan.capabilities |= 1ull << CAP_DAC_READ_SEARCH;
    // To run a program that only its owner may run. Nothing but the writable folder can be written with it.
    if (narrowing.view || (narrowing.landlockVersion >= 3 && narrowing.systemCallFilter))
        plan.capabilities |= 1ull << CAP_DAC_OVERRIDE;
}

LaunchPlan PlanConfinement(const Confinement* confinement, const Mechanisms& mechanisms) {
    LaunchPlan plan;
    plan.mechanisms = mechanisms;
    PlanUser(plan, confinement);
    Places all = PlacesFor(confinement);
    if (mechanisms.landlockVersion > 0)
        plan.ruleset = MakeLandlockRules(mechanisms.landlockVersion, all.places);
    if (mechanisms.view) {
        plan.viewMountPoint = confinement && !confinement->writableFolder.empty()
                                  ? plan.Keep(Absolute(confinement->writableFolder))
                                  : "/usr";
        PlanView(plan, std::move(all));
    }
    if (mechanisms.systemCallFilter) {
        FilterDuties duties;
        duties.guardMetadata = !mechanisms.view;
        duties.guardTruncation = !mechanisms.view && mechanisms.landlockVersion < 3;
        duties.guardSignals = !mechanisms.namespaces;
        plan.filter = BuildSystemCallFilter(duties);
    }
    return plan;
}

}  // namespace

bool CommandsHaveTheirOwnUser() {
    if (::geteuid() != 0) return false;
    __user_cap_header_struct header{_LINUX_CAPABILITY_VERSION_3, 0};
    __user_cap_data_struct data[2]{};
    constexpr std::uint32_t kNeeded = 1u << CAP_SETUID | 1u << CAP_SETGID | 1u << CAP_CHOWN;
    // Root of a container may be no more than its name.
    return ::syscall(SYS_capget, &header, data) == 0 && (data[0].effective & kNeeded) == kNeeded &&
           HasCommandUsers(ReadMap("/proc/self/uid_map")) && HasCommandUsers(ReadMap("/proc/self/gid_map"));
}

LaunchPlan PlanCommand(const std::string& commandLine, const Confinement& confinement,
                       const Mechanisms& mechanisms) {
    if (!fs::is_directory(confinement.writableFolder))
        throw fs::filesystem_error("no folder to write", confinement.writableFolder,
                                   std::make_error_code(std::errc::not_a_directory));
    LaunchPlan plan = PlanConfinement(&confinement, mechanisms);
    PlanLimits(plan, confinement);
    plan.workingFolder = plan.Keep(Absolute(confinement.writableFolder));
    plan.program = "/bin/sh";
    // The two dashes keep a line that begins with one from being taken for options.
    plan.arguments = {"sh", "-c", "--", plan.Keep(commandLine), nullptr};
    std::string searched;
    for (const fs::path& folder : confinement.searchFirst) searched += Absolute(folder).string() + ':';
    const std::string folder = plan.workingFolder;
    plan.environment = {plan.Keep("PATH=" + searched + "/usr/bin:/bin"), plan.Keep("HOME=" + folder),
                        plan.Keep("TMPDIR=" + folder), "LANG=C.UTF-8", nullptr};
    return plan;
}

LaunchPlan PlanHelper(const HelperOptions& options, const Mechanisms& mechanisms) {
    Confinement confinement;
    confinement.readable = {options.program};
    confinement.processes = options.processes;
    // Its processes bound themselves, each by what it is about to do.
    confinement.addressSpace = std::numeric_limits<std::uint64_t>::max();
    confinement.processorTime = std::chrono::hours(24 * 365);
    confinement.fileSize = 0;
    LaunchPlan plan = PlanConfinement(&confinement, mechanisms);
    PlanLimits(plan, confinement);
    // It ends processes of its own; what it starts it confines further.
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
    LaunchPlan plan = PlanConfinement(nullptr, mechanisms);
    plan.workingFolder = "/";
    return plan;
}

}  // namespace sorakaze::process
