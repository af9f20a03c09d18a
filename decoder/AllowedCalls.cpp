// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "decoder/AllowedCalls.h"

#include <fcntl.h>
#include <linux/audit.h>
#include <linux/filter.h>
#include <linux/sched.h>
#include <linux/seccomp.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace sorakaze::decoder {
namespace {

#if defined(__x86_64__)
constexpr std::uint32_t kArchitecture = AUDIT_ARCH_X86_64;
#elif defined(__aarch64__)
constexpr std::uint32_t kArchitecture = AUDIT_ARCH_AARCH64;
#else
constexpr std::uint32_t kArchitecture = 0;
#endif

constexpr long kOfAll[] = {
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
    // A sanitizer looks at memory through a pipe, and at the program's own file.
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

constexpr long kOfProgram[] = {SYS_wait4, SYS_kill, SYS_prctl, SYS_seccomp, SYS_getppid};

class Builder {
  public:
    Builder() {
        Load(offsetof(seccomp_data, arch));
        Add(BPF_JMP | BPF_JEQ | BPF_K, kArchitecture, 1, 0);
        Add(BPF_RET | BPF_K, SECCOMP_RET_KILL_PROCESS);
        Load(offsetof(seccomp_data, nr));
    }
    void Allow(long call) {
        Add(BPF_JMP | BPF_JEQ | BPF_K, static_cast<std::uint32_t>(call), 0, 1);
        Add(BPF_RET | BPF_K, SECCOMP_RET_ALLOW);
    }
    /// Only to ask for a descriptor's flags: other commands have signals sent.
    void AllowFlags() {
        Add(BPF_JMP | BPF_JEQ | BPF_K, SYS_fcntl, 0, 4);
        Load(offsetof(seccomp_data, args) + 8);
        Add(BPF_JMP | BPF_JEQ | BPF_K, F_GETFL, 0, 1);
        Add(BPF_RET | BPF_K, SECCOMP_RET_ALLOW);
        Add(BPF_RET | BPF_K, SECCOMP_RET_ERRNO | EPERM);
    }
    /// None that is shared or grows by itself: that wouldn't count as the process's data.
    void AllowPrivateMemory() {
        Add(BPF_JMP | BPF_JEQ | BPF_K, SYS_mmap, 0, 4);
        Load(offsetof(seccomp_data, args) + 24);
        Add(BPF_JMP | BPF_JSET | BPF_K, MAP_SHARED | MAP_GROWSDOWN | MAP_HUGETLB, 1, 0);
        Add(BPF_RET | BPF_K, SECCOMP_RET_ALLOW);
        Add(BPF_RET | BPF_K, SECCOMP_RET_ERRNO | EPERM);
    }
    /// Only of the process itself.
    void AllowLimits() {
        Add(BPF_JMP | BPF_JEQ | BPF_K, SYS_prlimit64, 0, 4);
        Load(offsetof(seccomp_data, args));
        Add(BPF_JMP | BPF_JEQ | BPF_K, 0, 0, 1);
        Add(BPF_RET | BPF_K, SECCOMP_RET_ALLOW);
        Add(BPF_RET | BPF_K, SECCOMP_RET_ERRNO | EPERM);
    }
    /// Only new threads of the same process.
    void AllowThreads() {
        Add(BPF_JMP | BPF_JEQ | BPF_K, SYS_clone, 0, 4);
        Load(offsetof(seccomp_data, args));  // the low half, on both architectures
        Add(BPF_JMP | BPF_JSET | BPF_K, CLONE_THREAD, 0, 1);
        Add(BPF_RET | BPF_K, SECCOMP_RET_ALLOW);
        Add(BPF_RET | BPF_K, SECCOMP_RET_ERRNO | EPERM);
    }
    std::vector<sock_filter> Finish() {
        // As on an older kernel: the C library has another way where there is one.
        Add(BPF_RET | BPF_K, SECCOMP_RET_ERRNO | ENOSYS);
        return std::move(program_);
    }

  private:
    void Add(int code, std::uint32_t k, std::uint8_t whenTrue = 0, std::uint8_t whenFalse = 0) {
        program_.push_back({static_cast<std::uint16_t>(code), whenTrue, whenFalse, k});
    }
    void Load(std::size_t offset) { Add(BPF_LD | BPF_W | BPF_ABS, static_cast<std::uint32_t>(offset)); }

    std::vector<sock_filter> program_;
};

std::vector<sock_filter> FilterFor(Calls calls) {
    Builder filter;
    for (const long call : kOfAll) filter.Allow(call);
    filter.AllowFlags();
    if (calls == Calls::OfProgram) {
        for (const long call : kOfProgram) filter.Allow(call);
        filter.Allow(SYS_clone);
        filter.Allow(SYS_mmap);
        filter.AllowLimits();
    } else {
        filter.AllowPrivateMemory();
    }
    if (calls == Calls::OfWorkerWithThreads) filter.AllowThreads();
    return filter.Finish();
}

}  // namespace

void AllowCalls(Calls calls) {
    if (kArchitecture == 0) return;
    auto filter = FilterFor(calls);
    const sock_fprog program{static_cast<unsigned short>(filter.size()), filter.data()};
    ::prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0);
    ::prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &program);
}

}  // namespace sorakaze::decoder
