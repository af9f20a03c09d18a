// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/viewer/program/ProcessIsolation.h"

#include <asm/sockios.h>
#include <fcntl.h>
#include <sys/ioctl.h>
#include <sys/socket.h>

#include <algorithm>
#include <initializer_list>

#include "process/SeccompFilter.h"

namespace sorakaze::viewer {
namespace {

using process::SeccompFilter;

constexpr int kSocketKind = 0xf;
constexpr int kFamiliesKnown = 64;

void RefuseOthers(SeccompFilter& filter) {
    // Its own process group is left: the engine ends by it.
    filter.Refuse(SCMP_SYS(kill), {SeccompFilter::IsNot(0, 0)});
    for (const int call :
         {SCMP_SYS(tkill), SCMP_SYS(tgkill), SCMP_SYS(rt_sigqueueinfo), SCMP_SYS(rt_tgsigqueueinfo),
          SCMP_SYS(pidfd_send_signal), SCMP_SYS(setpgid), SCMP_SYS(ptrace), SCMP_SYS(process_vm_readv),
          SCMP_SYS(process_vm_writev), SCMP_SYS(process_madvise), SCMP_SYS(pidfd_getfd), SCMP_SYS(kcmp),
          SCMP_SYS(move_pages), SCMP_SYS(migrate_pages), SCMP_SYS(ioprio_set), SCMP_SYS(process_mrelease)}) {
        filter.Refuse(call);
    }
    // Zero is the caller.
    for (const int call : {SCMP_SYS(prlimit64), SCMP_SYS(sched_setscheduler), SCMP_SYS(sched_setparam),
                           SCMP_SYS(sched_setattr), SCMP_SYS(sched_setaffinity)}) {
        filter.Refuse(call, {SeccompFilter::IsNot(0, 0)});
    }
    filter.Refuse(SCMP_SYS(setpriority), {SeccompFilter::IsNot(1, 0)});
    // A descriptor that is ready signals its owner.
    for (const unsigned command : {F_SETOWN, F_SETOWN_EX, F_SETSIG})
        filter.Refuse(SCMP_SYS(fcntl), {SeccompFilter::Is(1, command)});
    for (const unsigned request : {FIOSETOWN, SIOCSPGRP})
        filter.Refuse(SCMP_SYS(ioctl), {SeccompFilter::Is(1, request)});
}

void RefuseSockets(SeccompFilter& filter, Datagrams datagrams) {
    for (unsigned family = 0; family < kFamiliesKnown; ++family) {
        const auto needed = {AF_UNIX, AF_INET, AF_INET6, AF_NETLINK};
        if (std::find(needed.begin(), needed.end(), family) == needed.end())
            filter.Refuse(SCMP_SYS(socket), {SeccompFilter::Is(0, family)});
    }
    filter.Refuse(SCMP_SYS(socket), {SeccompFilter::IsAtLeast(0, kFamiliesKnown)});
    for (const unsigned family : {AF_INET, AF_INET6}) {
        for (const unsigned kind : {SOCK_DGRAM, SOCK_RAW}) {
            if (kind == SOCK_RAW || datagrams == Datagrams::Refused) {
                filter.Refuse(SCMP_SYS(socket),
                              {SeccompFilter::Is(0, family), SeccompFilter::BitsAre(1, kSocketKind, kind)});
            }
        }
    }
}

}  // namespace

void IsolateFromOtherProcesses(Datagrams datagrams) {
    SeccompFilter filter(SeccompFilter::Default::Allowed);
    RefuseOthers(filter);
    RefuseSockets(filter, datagrams);
    filter.Load();
}

}  // namespace sorakaze::viewer
