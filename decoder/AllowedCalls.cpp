// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "decoder/AllowedCalls.h"

#include <fcntl.h>
#include <sched.h>
#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/syscall.h>

#include "process/SeccompFilter.h"

namespace sorakaze::decoder {
namespace {

using process::SeccompFilter;

constexpr int kCommonCalls[] = {
    // What is open already.
    SYS_read,
    SYS_readv,
    SYS_pread64,
    SYS_write,
    SYS_writev,
    SYS_lseek,
    SYS_close,
    SYS_fstat,
    SYS_recvmsg,
    SYS_recvfrom,
    SYS_sendmsg,
    SYS_sendto,
    SYS_ppoll,
    // Memory.
    SYS_munmap,
    SYS_mremap,
    SYS_mprotect,
    SYS_madvise,
    SYS_brk,
    // Threads among themselves, time and chance.
    SYS_futex,
    SYS_set_robust_list,
    SYS_set_tid_address,
    SYS_rseq,
    SYS_sched_yield,
    SYS_sched_getaffinity,
    SYS_clock_gettime,
    SYS_clock_nanosleep,
    SYS_nanosleep,
    SYS_gettimeofday,
    SYS_getrandom,
    SYS_setitimer,
    // The process itself.
    SYS_getpid,
    SYS_gettid,
    SYS_getuid,
    SYS_geteuid,
    SYS_getgid,
    SYS_getegid,
    SYS_uname,
    SYS_sysinfo,
    SYS_rt_sigaction,
    SYS_rt_sigprocmask,
    SYS_rt_sigreturn,
    SYS_sigaltstack,
    SYS_restart_syscall,
    SYS_exit,
    SYS_exit_group,
#if defined(__x86_64__)
    SYS_poll,
    SYS_time,
    SYS_arch_prctl,
#endif
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    // A sanitizer checks memory with a pipe, and reads the program's own file.
    SYS_pipe2,
    SYS_openat,
    SYS_readlinkat,
    SYS_newfstatat,
#if defined(__x86_64__)
    SYS_pipe,
    SYS_open,
    SYS_readlink,
#endif
#endif
};

constexpr int kForkServerCalls[] = {SYS_wait4,   SYS_kill,  SYS_prctl, SYS_seccomp,
                                    SYS_getppid, SYS_clone, SYS_mmap};

}  // namespace

void AllowCalls(CallSet set) {
    SeccompFilter filter(SeccompFilter::Default::NoSuchCall);
    for (const int call : kCommonCalls) filter.Allow(call);
    // Only to ask for a descriptor's flags: other commands have signals sent.
    filter.Allow(SYS_fcntl, {SeccompFilter::Is(1, F_GETFL)});
    if (set == CallSet::ForkServer) {
        for (const int call : kForkServerCalls) filter.Allow(call);
        filter.Allow(SYS_prlimit64, {SeccompFilter::Is(0, 0)});  // its own limits
        // Of itself, and to nothing but the lowest: see UseIdleTime.
        filter.Allow(SYS_sched_setscheduler, {SeccompFilter::Is(0, 0), SeccompFilter::Is(1, SCHED_IDLE)});
        filter.Allow(SYS_setpriority, {SeccompFilter::Is(0, PRIO_PROCESS), SeccompFilter::Is(1, 0),
                                       SeccompFilter::Is(2, kLowestPriority)});
    } else {
        // None that is shared or grows by itself: that wouldn't count as the process's data.
        filter.Allow(SYS_mmap, {SeccompFilter::BitsAre(3, MAP_SHARED | MAP_GROWSDOWN | MAP_HUGETLB, 0)});
    }
    if (set == CallSet::ThreadedWorker)
        filter.Allow(SYS_clone, {SeccompFilter::BitsAre(0, CLONE_THREAD, CLONE_THREAD)});
    filter.Load();
}

}  // namespace sorakaze::decoder
