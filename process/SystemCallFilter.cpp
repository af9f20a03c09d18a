// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "process/SystemCallFilter.h"

#include <asm/sockios.h>
#include <fcntl.h>
#include <linux/audit.h>
#include <linux/sched.h>
#include <linux/seccomp.h>
#include <sys/ioctl.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <bit>
#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <optional>

namespace sorakaze::process {
namespace {

#if defined(__x86_64__)
constexpr std::uint32_t kArchitecture = AUDIT_ARCH_X86_64;
#elif defined(__aarch64__)
constexpr std::uint32_t kArchitecture = AUDIT_ARCH_AARCH64;
#else
constexpr std::uint32_t kArchitecture = 0;
#endif

// Newer calls than this one fail with ENOSYS. Programs cope with that, as they do on older kernels.
constexpr std::uint32_t kLastKnownCall = 450;

class Builder {
  public:
    void Start() {
        Load(offsetof(seccomp_data, arch));
        Add(BPF_JMP | BPF_JEQ | BPF_K, kArchitecture, 1, 0);
        Return(SECCOMP_RET_KILL_PROCESS);
        LoadCall();
#if defined(__x86_64__)
        // The x32 numbering of the same calls, which would slip past everything below.
        Add(BPF_JMP | BPF_JGE | BPF_K, 0x40000000, 0, 1);
        Return(SECCOMP_RET_KILL_PROCESS);
#endif
        Add(BPF_JMP | BPF_JGT | BPF_K, kLastKnownCall, 0, 1);
        Return(SECCOMP_RET_ERRNO | ENOSYS);
    }

    void Refuse(int error, std::initializer_list<long> calls) {
        for (const long call : calls) {
            Add(BPF_JMP | BPF_JEQ | BPF_K, static_cast<std::uint32_t>(call), 0, 1);
            Return(SECCOMP_RET_ERRNO | static_cast<std::uint32_t>(error));
        }
    }

    // A call may have several of the rules that follow: what one of them lets pass is checked by the next.

    /// Refuses `call` if the low half of its argument, masked, is one of `values`.
    void RefuseArgument(int error, long call, int argument, std::uint32_t mask,
                        std::initializer_list<std::uint32_t> values) {
        auto left = static_cast<std::uint8_t>(values.size());
        OnlyFor(call, 3 + left);
        LoadArgument(argument);
        Add(BPF_ALU | BPF_AND | BPF_K, mask);
        for (const std::uint32_t value : values) {
            --left;
            Add(BPF_JMP | BPF_JEQ | BPF_K, value, left, left == 0 ? 1 : 0);
        }
        RefuseAndGoOn(error);
    }

    /// Refuses `call` unless the masked low half of its argument is `value`.
    void RefuseUnless(int error, long call, int argument, std::uint32_t mask, std::uint32_t value) {
        OnlyFor(call, 4);
        LoadArgument(argument);
        Add(BPF_ALU | BPF_AND | BPF_K, mask);
        Add(BPF_JMP | BPF_JEQ | BPF_K, value, 1, 0);
        RefuseAndGoOn(error);
    }

    struct Bits {
        int argument;
        std::uint32_t mask;
    };
    /// Refuses `call` where one of the bits is set; with a `guard` only where one of those is set as well,
    /// since otherwise the kernel ignores both and the argument may be anything.
    void RefuseBits(int error, long call, Bits refused, std::optional<Bits> guard = {}) {
        OnlyFor(call, guard ? 5 : 3);
        if (guard) {
            LoadArgument(guard->argument);
            Add(BPF_JMP | BPF_JSET | BPF_K, guard->mask, 0, 3);
        }
        LoadArgument(refused.argument);
        Add(BPF_JMP | BPF_JSET | BPF_K, refused.mask, 0, 1);
        RefuseAndGoOn(error);
    }

    /// Refuses `call` unless the pointer that it is given is null.
    void RefuseUnlessNull(int error, long call, int argument) {
        OnlyFor(call, 5);
        LoadArgument(argument);
        Add(BPF_JMP | BPF_JEQ | BPF_K, 0, 0, 2);
        LoadArgument(argument, kHighHalf);
        Add(BPF_JMP | BPF_JEQ | BPF_K, 0, 1, 0);
        RefuseAndGoOn(error);
    }

    std::vector<sock_filter> Finish() {
        Return(SECCOMP_RET_ALLOW);
        return std::move(program_);
    }

  private:
    enum Half { kLowHalf, kHighHalf };

    void Add(int code, std::uint32_t k, std::uint8_t whenTrue = 0, std::uint8_t whenFalse = 0) {
        program_.push_back({static_cast<std::uint16_t>(code), whenTrue, whenFalse, k});
    }
    void Load(std::size_t offset) {
        Add(BPF_LD | BPF_W | BPF_ABS, static_cast<std::uint32_t>(offset));
    }
    void LoadCall() {
        Load(offsetof(seccomp_data, nr));
    }
    /// Skips the instructions of a rule, so many and the last one, for all other calls.
    void OnlyFor(long call, int instructions) {
        Add(BPF_JMP | BPF_JEQ | BPF_K, static_cast<std::uint32_t>(call), 0,
            static_cast<std::uint8_t>(instructions + 1));
    }
    void RefuseAndGoOn(int error) {
        Return(SECCOMP_RET_ERRNO | static_cast<std::uint32_t>(error));
        LoadCall();
    }
    void Return(std::uint32_t action) {
        Add(BPF_RET | BPF_K, action);
    }
    void LoadArgument(int argument, Half half = kLowHalf) {
        const bool second = (half == kHighHalf) == (std::endian::native == std::endian::little);
        Load(offsetof(seccomp_data, args) + static_cast<std::size_t>(argument) * 8 + (second ? 4 : 0));
    }

    std::vector<sock_filter> program_;
};

/// No set-user-ID program may be created, by any call that takes a mode.
void RefuseSetIds(Builder& filter) {
    constexpr std::uint32_t kSetIds = S_ISUID | S_ISGID;
    constexpr std::uint32_t kMakes = O_CREAT | (O_TMPFILE & ~O_DIRECTORY);
    // Its arguments are in memory, which a filter can't read. Programs work without it.
    filter.Refuse(ENOSYS, {SYS_openat2});
    filter.RefuseBits(EPERM, SYS_fchmod, {1, kSetIds});
    filter.RefuseBits(EPERM, SYS_fchmodat, {2, kSetIds});
    filter.RefuseBits(EPERM, SYS_mkdirat, {2, kSetIds});
    filter.RefuseBits(EPERM, SYS_openat, {3, kSetIds}, {{2, kMakes}});
#if defined(__x86_64__)
    filter.RefuseBits(EPERM, SYS_chmod, {1, kSetIds});
    filter.RefuseBits(EPERM, SYS_mkdir, {1, kSetIds});
    filter.RefuseBits(EPERM, SYS_creat, {1, kSetIds});
    filter.RefuseBits(EPERM, SYS_open, {2, kSetIds}, {{1, kMakes}});
#endif
}

void RefuseAlways(Builder& filter) {
    // Programs that try these work without them.
    filter.Refuse(ENOSYS, {SYS_clone3, SYS_io_uring_setup, SYS_io_uring_enter, SYS_io_uring_register,
                           SYS_userfaultfd, SYS_memfd_create, SYS_memfd_secret});
    // No sockets at all. Even a pair of connected sockets could be connected to another address.
    filter.Refuse(EACCES,
                  {SYS_socket, SYS_socketpair, SYS_connect, SYS_bind, SYS_listen, SYS_accept, SYS_accept4});
    // Memory that outlives its process, or is counted for none.
    filter.Refuse(EACCES, {SYS_shmget, SYS_msgget, SYS_semget, SYS_mq_open});
    // Other processes.
    filter.Refuse(EPERM,
                  {SYS_ptrace, SYS_process_vm_readv, SYS_process_vm_writev, SYS_process_madvise,
                   SYS_process_mrelease, SYS_pidfd_getfd, SYS_kcmp, SYS_move_pages, SYS_migrate_pages});
    // Namespaces and mounts.
    filter.Refuse(EPERM,
                  {SYS_unshare, SYS_setns, SYS_chroot, SYS_pivot_root, SYS_mount, SYS_umount2, SYS_open_tree,
                   SYS_move_mount, SYS_fsopen, SYS_fsconfig, SYS_fsmount, SYS_fspick, SYS_mount_setattr,
                   SYS_name_to_handle_at, SYS_open_by_handle_at, SYS_fanotify_init});
    // Links out of the folder, pipes and devices would be traps for whoever reads the folder.
    filter.Refuse(EPERM, {SYS_symlinkat, SYS_mknodat, SYS_linkat});
    filter.Refuse(EPERM, {SYS_setxattr, SYS_lsetxattr, SYS_fsetxattr, SYS_removexattr, SYS_lremovexattr,
                          SYS_fremovexattr});
    // A process that can't be read could hide its use of memory.
    filter.RefuseArgument(EPERM, SYS_prctl, 0, 0xffffffff, {PR_SET_DUMPABLE});
    RefuseSetIds(filter);
    // The kernel itself.
    filter.Refuse(
        EPERM, {SYS_bpf,        SYS_perf_event_open, SYS_add_key,       SYS_request_key,   SYS_keyctl,
                SYS_kexec_load, SYS_init_module,     SYS_finit_module,  SYS_delete_module, SYS_reboot,
                SYS_swapon,     SYS_swapoff,         SYS_acct,          SYS_quotactl,      SYS_quotactl_fd,
                SYS_syslog,     SYS_vhangup,         SYS_settimeofday,  SYS_clock_settime, SYS_clock_adjtime,
                SYS_adjtimex,   SYS_sethostname,     SYS_setdomainname, SYS_lookup_dcookie});
#if defined(__x86_64__)
    filter.Refuse(EPERM, {SYS_symlink, SYS_mknod, SYS_link, SYS_kexec_file_load, SYS_iopl, SYS_ioperm,
                          SYS_modify_ldt, SYS_uselib, SYS_ustat, SYS_sysfs, SYS__sysctl});
#endif
    constexpr std::uint32_t kNamespaces = CLONE_NEWNS | CLONE_NEWCGROUP | CLONE_NEWUTS | CLONE_NEWIPC |
                                          CLONE_NEWUSER | CLONE_NEWPID | CLONE_NEWNET;
    filter.RefuseUnless(EPERM, SYS_clone, 0, kNamespaces, 0);
    // Typing into a terminal that somebody else reads.
    filter.RefuseArgument(EPERM, SYS_ioctl, 1, 0xffffffff, {TIOCSTI, TIOCLINUX, TIOCSCTTY, TIOCCONS});
    // Queries are allowed; turning off memory protections is not.
    filter.RefuseUnless(EPERM, SYS_personality, 0, 0xffffffff, 0xffffffff);
}

void GuardMetadata(Builder& filter) {
    filter.Refuse(EPERM, {SYS_fchmod, SYS_fchmodat, SYS_fchown, SYS_fchownat});
    filter.RefuseUnlessNull(EPERM, SYS_utimensat, 1);
#if defined(__x86_64__)
    filter.Refuse(EPERM, {SYS_chmod, SYS_chown, SYS_lchown, SYS_utime, SYS_utimes});
    filter.RefuseUnlessNull(EPERM, SYS_futimesat, 1);
#endif
}

void GuardTruncation(Builder& filter) {
    filter.Refuse(EPERM, {SYS_truncate});
    constexpr std::uint32_t kMask = O_TRUNC | O_ACCMODE;
    filter.RefuseArgument(EACCES, SYS_openat, 2, kMask, {O_TRUNC | O_RDONLY, O_TRUNC | O_ACCMODE});
#if defined(__x86_64__)
    filter.RefuseArgument(EACCES, SYS_open, 1, kMask, {O_TRUNC | O_RDONLY, O_TRUNC | O_ACCMODE});
#endif
}

void GuardSignals(Builder& filter) {
    // A command can signal only its own process group, which it can't leave.
    filter.Refuse(EPERM,
                  {SYS_setsid, SYS_setpgid, SYS_tkill, SYS_tgkill, SYS_rt_sigqueueinfo, SYS_rt_tgsigqueueinfo,
                   SYS_pidfd_send_signal, SYS_setpriority, SYS_ioprio_set, SYS_sched_setscheduler,
                   SYS_sched_setparam, SYS_sched_setattr, SYS_sched_setaffinity});
    filter.RefuseUnless(EPERM, SYS_kill, 0, 0xffffffff, 0);
    filter.RefuseUnless(EPERM, SYS_prlimit64, 0, 0xffffffff, 0);
    filter.RefuseArgument(EPERM, SYS_fcntl, 1, 0xffffffff, {F_SETOWN, F_SETOWN_EX, F_SETSIG});
    filter.RefuseArgument(EPERM, SYS_ioctl, 1, 0xffffffff, {FIOSETOWN, SIOCSPGRP});
}

}  // namespace

std::vector<sock_filter> BuildSystemCallFilter(const FilterOptions& duties) {
    Builder filter;
    filter.Start();
    RefuseAlways(filter);
    if (duties.guardMetadata) GuardMetadata(filter);
    if (duties.guardTruncation) GuardTruncation(filter);
    if (duties.guardSignals) GuardSignals(filter);
    return filter.Finish();
}

bool SystemCallFilterAvailable() {
    const std::uint32_t action = SECCOMP_RET_KILL_PROCESS;
    return kArchitecture != 0 && ::syscall(SYS_seccomp, SECCOMP_GET_ACTION_AVAIL, 0, &action) == 0;
}

}  // namespace sorakaze::process
