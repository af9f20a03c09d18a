// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "decoder/Sandbox.h"

#include <linux/capability.h>
#include <malloc.h>
#include <sched.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <sys/time.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <vector>

#include "decoder/AllowedCalls.h"
#include "process/LandlockRules.h"

namespace sorakaze::decoder {
namespace {

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr bool kSanitized = true;
#else
constexpr bool kSanitized = false;
#endif

/// The longest of tracks decode in minutes.
constexpr rlim_t kMostProcessorSeconds = 3600;

void Limit(__rlimit_resource resource, rlim_t value) {
    rlimit limit{};
    ::getrlimit(resource, &limit);
    limit.rlim_cur = limit.rlim_max = std::min(limit.rlim_max, value);
    ::setrlimit(resource, &limit);
}

void DropCapabilities() {
    __user_cap_header_struct header{_LINUX_CAPABILITY_VERSION_3, 0};
    __user_cap_data_struct none[2]{};
    ::prctl(PR_CAP_AMBIENT, PR_CAP_AMBIENT_CLEAR_ALL, 0, 0, 0);
    ::syscall(SYS_capset, &header, none);
}

void OpenNothing() {
    const int version = process::LandlockVersion();
    if (version == 0) return;
    const auto rules = process::MakeLandlockRules(version, {});
    process::EnforceLandlock(rules.Get());
}

/// Bytes that the process has mapped, and those of them that are private and can be written, as the kernel
/// counts them for RLIMIT_AS and RLIMIT_DATA.
struct Footprint {
    std::uint64_t all, data;
};
Footprint atStart{256u << 20, 64u << 20};  // where the kernel doesn't tell

void MeasureFootprint() {
    std::FILE* const file = std::fopen("/proc/self/statm", "re");
    unsigned long long all = 0, data = 0;
    const auto page = static_cast<std::uint64_t>(::sysconf(_SC_PAGESIZE));
    if (file && std::fscanf(file, "%llu %*u %*u %*u %*u %llu", &all, &data) == 2)
        atStart = {all * page, data * page};
    if (file) std::fclose(file);
}

}  // namespace

void SandboxForkServer() {
    ::prctl(PR_SET_DUMPABLE, 0, 0, 0, 0);
    ::prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0);
    // Memory that is given back to the kernel between two frames is asked for again with the next.
    ::mallopt(M_ARENA_MAX, 2);
    ::mallopt(M_TRIM_THRESHOLD, 64 << 20);
    ::mallopt(M_MMAP_THRESHOLD, 8 << 20);
    MeasureFootprint();
    DropCapabilities();
    OpenNothing();
    AllowCalls(CallSet::ForkServer);
}

void UseIdleTime() {
    const sched_param none{};
    if (::sched_setscheduler(0, SCHED_IDLE, &none) != 0) ::setpriority(PRIO_PROCESS, 0, kLowestPriority);
}

void SandboxWorker(std::uint64_t memory, Threads threads) {
    Limit(RLIMIT_CPU, kMostProcessorSeconds);
    Limit(RLIMIT_CORE, 0);
    // A sanitizer reserves terabytes.
    if (!kSanitized) {
        // Shared memory and stacks aren't data. The room is for the ring and what a heap only reserves.
        constexpr std::uint64_t kRoom = 192u << 20;
        Limit(RLIMIT_DATA, atStart.data + memory);
        Limit(RLIMIT_AS, atStart.all + memory + kRoom);
    }
    AllowCalls(threads == Threads::Some ? CallSet::ThreadedWorker : CallSet::Worker);
}

void LimitProcessorTime(std::chrono::milliseconds processorTime) {
    if (kSanitized) processorTime *= 40;
    const auto microseconds = std::chrono::duration_cast<std::chrono::microseconds>(processorTime).count();
    constexpr std::int64_t kSecond = 1'000'000;
    const itimerval timer{{}, {microseconds / kSecond, microseconds % kSecond}};
    ::setitimer(ITIMER_PROF, &timer, nullptr);
}

}  // namespace sorakaze::decoder
