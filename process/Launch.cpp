// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "process/Launch.h"

#include <fcntl.h>
#include <linux/sched.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <string>
#include <system_error>

#include "base/BlockedSignals.h"
#include "process/LaunchChild.h"

namespace sorakaze::process {
namespace {

constexpr auto kByDescriptor = static_cast<idtype_t>(3);  // P_PIDFD

[[noreturn]] void Throw(const std::string& what) {
    throw std::system_error(errno, std::generic_category(), what);
}

/// The same descriptor with a number of 10 or above: the child assigns the lower ones.
FileDescriptor Raised(int number, const char* what) {
    FileDescriptor raised(number < 0 ? -1 : ::fcntl(number, F_DUPFD_CLOEXEC, 10));
    if (!raised) Throw(what);
    return raised;
}

struct Pipe {
    FileDescriptor read;
    FileDescriptor write;
};

Pipe MakePipe() {
    int ends[2];
    if (::pipe2(ends, O_CLOEXEC) != 0) Throw("pipe");
    const FileDescriptor read(ends[0]);
    const FileDescriptor write(ends[1]);
    return {Raised(read.Get(), "pipe"), Raised(write.Get(), "pipe")};
}

void NeverBlock(const FileDescriptor& descriptor) {
    ::fcntl(descriptor.Get(), F_SETFL, O_NONBLOCK);
}

void WriteMap(pid_t process, const char* name, const std::string& text) {
    const std::string path = "/proc/" + std::to_string(process) + '/' + name;
    const FileDescriptor file(::open(path.c_str(), O_WRONLY | O_CLOEXEC));
    if (!file || ::write(file.Get(), text.data(), text.size()) != static_cast<ssize_t>(text.size()))
        Throw(name);
}

void WriteMaps(pid_t process, const LaunchPlan& plan) {
    if (!plan.asRoot) WriteMap(process, "setgroups", "deny");
    WriteMap(process, "gid_map", plan.groupMap);
    WriteMap(process, "uid_map", plan.userMap);
}

unsigned long NamespaceFlags(const Mechanisms& mechanisms) {
    unsigned long flags = 0;
    if (mechanisms.namespaces) flags |= CLONE_NEWPID | CLONE_NEWNET | CLONE_NEWIPC;
    if (mechanisms.userNamespace) flags |= CLONE_NEWUSER;
    if (mechanisms.view) flags |= CLONE_NEWNS;
    return flags;
}

}  // namespace

Launched Launch(LaunchPlan& plan) {
    Pipe output = MakePipe();
    Pipe errors = MakePipe();
    Pipe reports = MakePipe();
    Pipe lifeline = MakePipe();
    const FileDescriptor null(::open("/dev/null", O_RDWR | O_CLOEXEC));
    const FileDescriptor raisedNull = Raised(null.Get(), "/dev/null");
    if (plan.ruleset) plan.ruleset = Raised(plan.ruleset.Get(), "ruleset");
    if (plan.channel) plan.channel = Raised(plan.channel.Get(), "channel");
    // Nobody reads what a helper says.
    const int saidTo = plan.channel ? raisedNull.Get() : errors.write.Get();
    const ChildDescriptors child{
        raisedNull.Get(),    output.write.Get(),  saidTo,
        reports.write.Get(), lifeline.read.Get(), plan.channel ? plan.channel.Get() : -1};

    Launched launched;
    launched.ownNamespace = plan.mechanisms.namespaces;
    {
        // No signal is handled between the fork and the child's program.
        const BlockedSignals held;
        int process = -1;
        // No signal at its end, so that no handler of the application is called and no wait for any child
        // reaps it.
        const long supervisor = ::syscall(SYS_clone, CLONE_PIDFD | NamespaceFlags(plan.mechanisms), nullptr,
                                          &process, nullptr, nullptr);
        if (supervisor == 0) RunSupervisor(plan, child);
        if (supervisor < 0) Throw("clone");
        if (process < 0) {  // Linux before 5.2
            ::kill(static_cast<pid_t>(supervisor), SIGKILL);
            ::waitpid(static_cast<pid_t>(supervisor), nullptr, __WALL);
            errno = ENOSYS;
            Throw("pidfd");
        }
        launched.supervisor = static_cast<pid_t>(supervisor);
        launched.process = FileDescriptor(process);
    }
    launched.output = std::move(output.read);
    launched.errors = std::move(errors.read);
    launched.reports = std::move(reports.read);
    launched.lifeline = std::move(lifeline.write);
    NeverBlock(launched.output);
    NeverBlock(launched.errors);
    NeverBlock(launched.reports);
    try {
        if (plan.mechanisms.userNamespace) WriteMaps(launched.supervisor, plan);
        if (::write(launched.lifeline.Get(), "b", 1) != 1) Throw("lifeline");
    } catch (...) {
        launched.lifeline.Close();
        AwaitEnd(launched);
        throw;
    }
    return launched;
}

void EndAll(Launched& launched) {
    if (launched.ownNamespace)
        ::syscall(SYS_pidfd_send_signal, launched.process.Get(), SIGKILL, nullptr, 0);
    else
        launched.lifeline.Close();
}

void EndProgram(Launched& launched) {
    ::syscall(SYS_pidfd_send_signal, launched.process.Get(), SIGKILL, nullptr, 0);
}

LaunchReport AwaitEnd(Launched& launched, int* status) {
    siginfo_t end{};
    while (::waitid(kByDescriptor, static_cast<id_t>(launched.process.Get()), &end, WEXITED | __WALL) != 0 &&
           errno == EINTR) {
    }
    if (status) *status = end.si_code == CLD_EXITED ? W_EXITCODE(end.si_status, 0) : end.si_status & 0x7f;
    LaunchReport report;
    if (::read(launched.reports.Get(), &report, sizeof report) != sizeof report) report = {};
    return report;
}

}  // namespace sorakaze::process
