// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "process/LaunchChild.h"

#include <fcntl.h>
#include <linux/capability.h>
#include <linux/close_range.h>
#include <linux/mount.h>
#include <linux/seccomp.h>
#include <poll.h>
#include <sched.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdint>

#include "process/LandlockRules.h"
#include "process/Launch.h"

// The C library's clone by a name that no sanitizer intercepts.
// NOLINTNEXTLINE(bugprone-reserved-identifier)
extern "C" int __clone(int (*run)(void*), void* stack, int flags, void* argument, ...);

namespace sorakaze::process {
namespace {

constexpr int kReports = 3;
constexpr int kLifeline = 4;
constexpr int kRuleset = 5;
constexpr int kFirstOther = 6;

// From <sys/mount.h>, which conflicts with <linux/mount.h>.
constexpr unsigned long kNoSetUser = 2;
constexpr unsigned long kNoDevices = 4;
constexpr unsigned long kReadOnly = 1;
constexpr unsigned long kNoPrograms = 8;
constexpr unsigned long kRecursive = 16384;
constexpr unsigned long kPrivate = 1 << 18;
constexpr int kDetach = 2;

template <typename... Arguments>
long Call(long number, Arguments... arguments) {
    return ::syscall(number, arguments...);
}

[[noreturn]] void Leave(int status) {
    for (;;) Call(SYS_exit_group, status);
}

[[noreturn]] void Report(LaunchReport::What what, int value, const char* where) {
    const LaunchReport report{what, value, where};
    Call(SYS_write, kReports, &report, sizeof report);
    Leave(what == LaunchReport::Ended ? 0 : 127);
}

void Must(bool succeeded, const char* where) {
    if (!succeeded) Report(LaunchReport::Failed, errno, where);
}

void KeepDescriptors(const LaunchPlan& plan, const ChildDescriptors& own) {
    const int input = own.channel >= 0 ? own.channel : own.null;
    const int copies[][2] = {
        {input, 0}, {own.output, 1}, {own.errors, 2}, {own.reports, kReports}, {own.lifeline, kLifeline}};
    for (const auto& [from, to] : copies)
        if (to != 2 || !plan.keepErrors)
            Must(Call(SYS_dup3, from, to, to > 2 ? O_CLOEXEC : 0) == to, "descriptors");
    if (plan.ruleset)
        Must(Call(SYS_dup3, plan.ruleset.Get(), kRuleset, O_CLOEXEC) == kRuleset, "descriptors");
    else
        Call(SYS_close, kRuleset);
    if (Call(SYS_close_range, kFirstOther, ~0U, 0) == 0) return;
    rlimit most{};
    Call(SYS_prlimit64, 0, RLIMIT_NOFILE, nullptr, &most);
    for (rlim_t number = kFirstOther; number < most.rlim_cur; ++number)
        Call(SYS_close, static_cast<int>(number));
}

/// Every signal is blocked since before the fork, so that no handler of the application ever runs here.
void ForgetHandlers() {
    struct {
        std::uintptr_t handler = 0;
        unsigned long flags = 0;
        void* restorer = nullptr;
        std::uint64_t mask = 0;
    } standard;
    for (int number = 1; number <= 64; ++number)
        Call(SYS_rt_sigaction, number, &standard, nullptr, sizeof standard.mask);
}

bool ApplicationLives() {
    pollfd lifeline{kLifeline, 0, 0};
    timespec now{};
    return Call(SYS_ppoll, &lifeline, 1, &now, nullptr, 0) == 0;
}

/// When memory runs out, the kernel shall kill the command, not the application.
void PreferForOomKill() {
    const long file = Call(SYS_openat, AT_FDCWD, "/proc/self/oom_score_adj", O_WRONLY | O_CLOEXEC, 0);
    if (file < 0) return;
    Call(SYS_write, file, "1000", 4);
    Call(SYS_close, file);
}

bool Restrict(int tree, const char* path, int flags, std::uint64_t attributes) {
    mount_attr change{};
    change.attr_set = attributes;
    return Call(SYS_mount_setattr, tree, path, flags, &change, sizeof change) == 0;
}

void OpenMountTree(ViewStep& step) {
    std::uint64_t attributes = MOUNT_ATTR_NOSUID;
    if (step.kind == ViewStep::MountReadOnly) attributes |= MOUNT_ATTR_RDONLY | MOUNT_ATTR_NODEV;
    if (step.kind == ViewStep::MountOutput) attributes |= MOUNT_ATTR_NOEXEC | MOUNT_ATTR_NODEV;
    if (step.kind == ViewStep::MountDevice) attributes |= MOUNT_ATTR_NOEXEC;
    step.tree = static_cast<int>(
        Call(SYS_open_tree, AT_FDCWD, step.source, OPEN_TREE_CLONE | OPEN_TREE_CLOEXEC | AT_RECURSIVE));
    Must(step.tree >= 0, step.source);
    Must(Restrict(step.tree, "", AT_EMPTY_PATH | AT_RECURSIVE, attributes), step.source);
}

void AllowInView(const LaunchPlan& plan, const char* path, Access access) {
    if (!plan.ruleset) return;
    const long file = Call(SYS_openat, AT_FDCWD, path, O_PATH | O_CLOEXEC, 0);
    Must(AllowPath(kRuleset, plan.mechanisms.landlockVersion, static_cast<int>(file), access), path);
    Call(SYS_close, file);
}

long CopyFile(const ViewStep& step) {
    const long from = Call(SYS_openat, AT_FDCWD, step.source, O_RDONLY | O_CLOEXEC, 0);
    Must(from >= 0, step.source);
    const long to = Call(SYS_openat, AT_FDCWD, step.path, O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0755);
    Must(to >= 0, step.path);
    constexpr std::size_t kPiece = 1 << 30;
    long copied = 0;
    do copied = Call(SYS_sendfile, to, from, nullptr, kPiece);
    while (copied > 0);
    Call(SYS_close, from);
    Call(SYS_close, to);
    return copied;
}

void PerformStep(const LaunchPlan& plan, const ViewStep& step) {
    long result = 0;
    switch (step.kind) {
        case ViewStep::MakeFolder:
            result = Call(SYS_mkdirat, AT_FDCWD, step.path, 0755);
            break;
        case ViewStep::MakeFile:
            result = Call(SYS_mknodat, AT_FDCWD, step.path, S_IFREG | 0444, 0);
            break;
        case ViewStep::MakeLink:
            result = Call(SYS_symlinkat, step.source, AT_FDCWD, step.path);
            break;
        case ViewStep::CopyFile:
            result = CopyFile(step);
            if (result == 0) AllowInView(plan, step.path, Access::Read);
            break;
        case ViewStep::MountFolder:
            result = Call(SYS_mount, "tmpfs", step.path, "tmpfs", kNoSetUser | kNoDevices | kNoPrograms,
                          plan.folderOptions);
            if (result == 0) AllowInView(plan, step.path, Access::Write);
            break;
        default:
            result = Call(SYS_move_mount, step.tree, "", AT_FDCWD, step.path, MOVE_MOUNT_F_EMPTY_PATH);
            Call(SYS_close, step.tree);
    }
    Must(result == 0, step.path);
}

bool MountsOver(const ViewStep& step) {
    return step.kind == ViewStep::MountReadOnly || step.kind == ViewStep::MountDevice ||
           step.kind == ViewStep::MountOutput;
}

/// Programs look themselves up in /proc. It is mounted if the kernel can show the command's own processes
/// alone.
void ShowOwnProcesses(const LaunchPlan& plan) {
    if (Call(SYS_mount, "proc", "proc", "proc", kReadOnly | kNoSetUser | kNoDevices | kNoPrograms,
             "subset=pid,hidepid=invisible") != 0)
        return;
    AllowInView(plan, "proc", Access::Read);
}

void MakeView(LaunchPlan& plan) {
    Must(Call(SYS_mount, nullptr, "/", nullptr, kRecursive | kPrivate, nullptr) == 0, "private mounts");
    for (ViewStep& step : plan.view)
        if (MountsOver(step)) OpenMountTree(step);
    Must(Call(SYS_mount, "tmpfs", plan.viewMountPoint, "tmpfs", kNoSetUser | kNoDevices, plan.viewOptions) ==
             0,
         "the view");
    Must(Call(SYS_chdir, plan.viewMountPoint) == 0, "the view's folder");
    for (const ViewStep& step : plan.view) PerformStep(plan, step);
    ShowOwnProcesses(plan);
    Must(Call(SYS_pivot_root, ".", ".") == 0, "pivot_root");
    Must(Call(SYS_umount2, ".", kDetach) == 0, "the old view");
    Must(Call(SYS_chdir, "/") == 0, "the root");
    Must(Restrict(AT_FDCWD, "/", 0, MOUNT_ATTR_RDONLY), "the root");
}

void SetCapabilities(std::uint64_t kept) {
    __user_cap_header_struct header{_LINUX_CAPABILITY_VERSION_3, 0};
    __user_cap_data_struct data[2]{};
    for (int half = 0; half < 2; ++half) {
        const auto bits = static_cast<std::uint32_t>(kept >> (32 * half));
        data[half] = {bits, bits, bits};
    }
    Must(Call(SYS_capset, &header, data) == 0, "capabilities");
}

bool Kept(const LaunchPlan& plan, int capability) {
    return (plan.capabilities >> capability & 1) != 0;
}

void GiveUpPrivileges(const LaunchPlan& plan) {
    for (int capability = 0; Call(SYS_prctl, PR_CAPBSET_READ, capability, 0, 0, 0) >= 0; ++capability)
        if (!Kept(plan, capability) && Call(SYS_prctl, PR_CAPBSET_DROP, capability, 0, 0, 0) != 0) break;
    if (!plan.asRoot) return SetCapabilities(0);
    Must(Call(SYS_prctl, PR_SET_KEEPCAPS, 1, 0, 0, 0) == 0, "capabilities");
    Must(Call(SYS_setgroups, 0, nullptr) == 0, "groups");
    Must(Call(SYS_setresgid, plan.user, plan.user, plan.user) == 0, "group");
    Must(Call(SYS_setresuid, plan.user, plan.user, plan.user) == 0, "user");
    SetCapabilities(plan.capabilities);
    for (int capability = 0; plan.capabilities >> capability != 0; ++capability)
        if (Kept(plan, capability))
            Must(Call(SYS_prctl, PR_CAP_AMBIENT, PR_CAP_AMBIENT_RAISE, capability, 0, 0) == 0,
                 "the right to read");
}

void InstallFilter(const LaunchPlan& plan) {
    const sock_fprog program{static_cast<unsigned short>(plan.filter.size()),
                             const_cast<sock_filter*>(plan.filter.data())};
    Must(Call(SYS_seccomp, SECCOMP_SET_MODE_FILTER, 0, &program) == 0, "the filter");
}

int BecomeShell(void* given) {
    const LaunchPlan& plan = *static_cast<const LaunchPlan*>(given);
    if (!plan.mechanisms.namespaces && !plan.channel) Must(Call(SYS_setpgid, 0, 0) == 0, "process group");
    Must(Call(SYS_chdir, plan.workingFolder) == 0, plan.workingFolder);
    Call(SYS_umask, 077);
    // With less priority than the show's sound, whichever thread started this.
    const sched_param ordinary{};
    Call(SYS_sched_setscheduler, 0, SCHED_OTHER, &ordinary);
    if (plan.niceness != 0) Call(SYS_setpriority, PRIO_PROCESS, 0, plan.niceness);
    GiveUpPrivileges(plan);
    Must(Call(SYS_prctl, PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) == 0, "no new privileges");
    Must(Call(SYS_prctl, PR_SET_PDEATHSIG, SIGKILL, 0, 0, 0) == 0, "end with the supervisor");
    if (plan.ruleset) Must(EnforceLandlock(kRuleset), "landlock");
    const std::uint64_t noSignals = 0;
    Call(SYS_rt_sigprocmask, SIG_SETMASK, &noSignals, nullptr, sizeof noSignals);
    for (const Limit& limit : plan.limits)
        Must(Call(SYS_prlimit64, 0, limit.resource, &limit.values, nullptr) == 0, "limits");
    if (!plan.filter.empty()) InstallFilter(plan);
    if (!plan.program) Leave(0);
    Call(SYS_execve, plan.program, plan.arguments.data(), plan.environment.data());
    Report(LaunchReport::Failed, errno, plan.program);
}

/// Without a process namespace: kills the orphans that were reparented to the supervisor.
void EndOrphans() {
    char text[4096];
    const long file = Call(SYS_openat, AT_FDCWD, "/proc/thread-self/children", O_RDONLY | O_CLOEXEC, 0);
    if (file < 0) return;
    const long length = Call(SYS_read, file, text, sizeof text);
    Call(SYS_close, file);
    pid_t process = 0;
    for (long at = 0; at < length; ++at) {
        if (text[at] >= '0' && text[at] <= '9') {
            process = process * 10 + (text[at] - '0');
        } else {
            if (process > 1) Call(SYS_kill, process, SIGKILL);
            process = 0;
        }
    }
}

/// Waits for the shell or for the end of the application, then kills the group and the processes that left
/// it.
[[noreturn]] void KeepGroup(pid_t shell) {
    pollfd events[] = {{kLifeline, 0, 0}, {static_cast<int>(Call(SYS_pidfd_open, shell, 0)), POLLIN, 0}};
    Must(events[1].fd >= 0, "pidfd_open");
    while (Call(SYS_ppoll, events, 2, nullptr, nullptr, 0) < 0 && errno == EINTR) {
    }
    // The shell has not been reaped yet, so its number is still its group's.
    Call(SYS_kill, -shell, SIGKILL);
    Call(SYS_kill, shell, SIGKILL);
    int shellStatus = SIGKILL;
    for (;;) {
        int status = 0;
        const long ended = Call(SYS_wait4, -1, &status, __WALL | WNOHANG, nullptr);
        if (ended == shell) shellStatus = status;
        if (ended < 0 && errno == ECHILD) break;
        if (ended > 0) continue;
        EndOrphans();
        const timespec moment{0, 1'000'000};
        Call(SYS_nanosleep, &moment, nullptr);
    }
    Report(LaunchReport::Ended, shellStatus, nullptr);
}

/// The first of a process namespace: the kernel ends the others when it ends.
[[noreturn]] void KeepNamespace(pid_t shell) {
    for (;;) {
        int status = 0;
        const long ended = Call(SYS_wait4, -1, &status, __WALL, nullptr);
        if (ended == shell) Report(LaunchReport::Ended, status, nullptr);
        if (ended < 0 && errno != EINTR) Report(LaunchReport::Failed, errno, "wait");
    }
}

}  // namespace

void RunSupervisor(LaunchPlan& plan, const ChildDescriptors& descriptors) {
    KeepDescriptors(plan, descriptors);
    ForgetHandlers();
    char begin = 0;
    if (Call(SYS_read, kLifeline, &begin, 1) != 1) Leave(127);
    Call(SYS_setsid);
    Call(SYS_umask, 022);
    PreferForOomKill();
    if (plan.mechanisms.view) MakeView(plan);
    // Its memory is a copy of the application's.
    Must(Call(SYS_prctl, PR_SET_DUMPABLE, 0, 0, 0, 0) == 0, "memory");
    if (plan.mechanisms.namespaces)
        Must(Call(SYS_prctl, PR_SET_PDEATHSIG, SIGKILL, 0, 0, 0) == 0, "end with the application");
    else
        Must(Call(SYS_prctl, PR_SET_CHILD_SUBREAPER, 1, 0, 0, 0) == 0, "orphans");
    if (!ApplicationLives()) Leave(127);
    if (plan.channel) {
        BecomeShell(&plan);
        Leave(127);
    }
    // Borrows the supervisor's memory until the program starts: a second copy of the application's would cost
    // as much again.
    const pid_t shell = __clone(BecomeShell, plan.shellStack.data() + plan.shellStack.size(),
                                CLONE_VM | CLONE_VFORK | SIGCHLD, &plan);
    Must(shell >= 0, "fork");
    if (plan.ruleset) Call(SYS_close, kRuleset);
    Call(SYS_close, 1);
    if (plan.mechanisms.namespaces) KeepNamespace(shell);
    KeepGroup(shell);
}

}  // namespace sorakaze::process
