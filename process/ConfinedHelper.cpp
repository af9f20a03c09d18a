// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "process/ConfinedHelper.h"

#include <fcntl.h>
#include <sys/socket.h>
#include <sys/wait.h>

#include <cerrno>
#include <cstring>
#include <system_error>

#include "process/Launch.h"
#include "process/LaunchPlan.h"
#include "process/Mechanisms.h"

namespace sorakaze::process {
namespace {

std::string EndText(const LaunchReport& report, int status) {
    if (report.what == LaunchReport::Failed)
        return std::string(report.where ? report.where : "it could not be started") + ": " +
               std::strerror(report.value);
    if (WIFSIGNALED(status)) return std::string("signal ") + std::to_string(WTERMSIG(status));
    return "status " + std::to_string(WEXITSTATUS(status));
}

}  // namespace

struct ConfinedHelper::Impl {
    LaunchPlan plan;  ///< owns the texts that say where a start failed
    Launched launched;
    FileDescriptor channel;
    bool taken = false;
};

ConfinedHelper::ConfinedHelper(const HelperOptions& options) : impl_(std::make_unique<Impl>()) {
    int ends[2];
    if (::socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, ends) != 0)
        throw std::system_error(errno, std::generic_category(), "socketpair");
    impl_->channel = FileDescriptor(ends[0]);
    FileDescriptor theirs(ends[1]);
    ::fcntl(impl_->channel.Get(), F_SETFL, O_NONBLOCK);
    impl_->plan = PlanHelper(options, AvailableMechanisms());
    impl_->plan.channel = std::move(theirs);
    impl_->launched = Launch(impl_->plan);
    impl_->plan.channel.Close();
}

ConfinedHelper::~ConfinedHelper() {
    if (impl_->taken) return;
    EndProgram(impl_->launched);
    AwaitEnd(impl_->launched);
}

int ConfinedHelper::Channel() const {
    return impl_->channel.Get();
}

std::string ConfinedHelper::TakeEndText() {
    EndProgram(impl_->launched);
    int status = 0;
    const LaunchReport report = AwaitEnd(impl_->launched, &status);
    impl_->taken = true;
    return EndText(report, status);
}

}  // namespace sorakaze::process
