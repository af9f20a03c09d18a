// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/viewer/program/OtherProcesses.h"

#include <asm/sockios.h>
#include <fcntl.h>
#include <seccomp.h>
#include <sys/ioctl.h>
#include <sys/prctl.h>
#include <sys/socket.h>

#include <algorithm>
#include <cerrno>
#include <initializer_list>
#include <memory>
#include <stdexcept>

namespace sorakaze::viewer {
namespace {

constexpr int kSocketKind = 0xf;
constexpr int kFamiliesKnown = 64;

class Filter {
  public:
    Filter() : context_(seccomp_init(SCMP_ACT_ALLOW), seccomp_release) {
        if (!context_) throw std::runtime_error("seccomp_init");
    }

    template <typename... Conditions>
    void Refuse(int call, Conditions... conditions) {
        const int result = seccomp_rule_add(context_.get(), SCMP_ACT_ERRNO(EPERM), call,
                                            static_cast<unsigned>(sizeof...(conditions)), conditions...);
        if (result < 0) throw std::runtime_error("seccomp_rule_add");
    }
    void RefuseAll(std::initializer_list<int> calls) {
        for (const int call : calls) Refuse(call);
    }
    /// Fails where the kernel has no filters.
    bool Load() { return seccomp_load(context_.get()) == 0; }

  private:
    const std::unique_ptr<void, decltype(&seccomp_release)> context_;
};

void RefuseOthers(Filter& filter) {
    // Its own process group is left: the engine ends by it.
    filter.Refuse(SCMP_SYS(kill), SCMP_A0_32(SCMP_CMP_NE, 0));
    filter.RefuseAll({SCMP_SYS(tkill), SCMP_SYS(tgkill), SCMP_SYS(rt_sigqueueinfo),
                      SCMP_SYS(rt_tgsigqueueinfo), SCMP_SYS(pidfd_send_signal), SCMP_SYS(setpgid),
                      SCMP_SYS(ptrace), SCMP_SYS(process_vm_readv), SCMP_SYS(process_vm_writev),
                      SCMP_SYS(process_madvise), SCMP_SYS(pidfd_getfd), SCMP_SYS(kcmp), SCMP_SYS(move_pages),
                      SCMP_SYS(migrate_pages), SCMP_SYS(ioprio_set), SCMP_SYS(process_mrelease)});
    // Zero is the caller.
    for (const int call : {SCMP_SYS(prlimit64), SCMP_SYS(sched_setscheduler), SCMP_SYS(sched_setparam),
                           SCMP_SYS(sched_setattr), SCMP_SYS(sched_setaffinity)}) {
        filter.Refuse(call, SCMP_A0_32(SCMP_CMP_NE, 0));
    }
    filter.Refuse(SCMP_SYS(setpriority), SCMP_A1_32(SCMP_CMP_NE, 0));
    // A descriptor that is ready signals its owner.
    for (const unsigned command : {F_SETOWN, F_SETOWN_EX, F_SETSIG})
        filter.Refuse(SCMP_SYS(fcntl), SCMP_A1_32(SCMP_CMP_EQ, command));
    for (const unsigned request : {FIOSETOWN, SIOCSPGRP})
        filter.Refuse(SCMP_SYS(ioctl), SCMP_A1_32(SCMP_CMP_EQ, request));
}

void RefuseSockets(Filter& filter, Datagrams datagrams) {
    for (unsigned family = 0; family < kFamiliesKnown; ++family) {
        const auto needed = {AF_UNIX, AF_INET, AF_INET6, AF_NETLINK};
        if (std::find(needed.begin(), needed.end(), family) == needed.end())
            filter.Refuse(SCMP_SYS(socket), SCMP_A0_32(SCMP_CMP_EQ, family));
    }
    filter.Refuse(SCMP_SYS(socket), SCMP_A0_32(SCMP_CMP_GE, kFamiliesKnown));
    for (const unsigned family : {AF_INET, AF_INET6}) {
        for (const unsigned kind : {SOCK_DGRAM, SOCK_RAW}) {
            if (kind == SOCK_RAW || datagrams == Datagrams::Refused) {
                filter.Refuse(SCMP_SYS(socket), SCMP_A0_32(SCMP_CMP_EQ, family),
                              SCMP_A1_32(SCMP_CMP_MASKED_EQ, kSocketKind, kind));
            }
        }
    }
}

}  // namespace

void LeaveOtherProcessesAlone(Datagrams datagrams) {
    Filter filter;
    RefuseOthers(filter);
    RefuseSockets(filter, datagrams);
    filter.Load();
}

}  // namespace sorakaze::viewer
