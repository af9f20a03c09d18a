// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// A decoder's process that a file has taken over, under the bounds of the real one: tries to reach whatever
// there is and names what it could on its channel. Built without sanitizers, which the bounds make room for.
//
// intruder unbound|program|worker|threads APPLICATION FILE ABSTRACT_SOCKET
#include <arpa/inet.h>
#include <fcntl.h>
#include <linux/capability.h>
#include <sched.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/ptrace.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/uio.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "decoder/Sandbox.h"
#include "tests/support/LocalAddress.h"

namespace {

constexpr int kChannel = STDIN_FILENO;
constexpr std::uint64_t kMemory = 40u << 20;

void Say(const std::string& what) {
    ::send(kChannel, what.data(), what.size(), MSG_NOSIGNAL);
}

long Word(const void* pointer) {
    return reinterpret_cast<long>(pointer);
}

/// Takes the call as come through where it didn't fail. True then.
bool Try(const std::string& name, long call, std::vector<long> words = {}) {
    words.resize(6);
    const long result = ::syscall(call, words[0], words[1], words[2], words[3], words[4], words[5]);
    if (result >= 0) Say(name);
    return result >= 0;
}

void ReachFiles(const char* file, pid_t application) {
    const std::string process = "/proc/" + std::to_string(application);
    const unsigned long how[] = {O_RDONLY, 0, 0};
    for (const std::string& path :
         {std::string(file), process + "/mem", process + "/environ", process + "/root/etc/passwd",
          std::string("/etc/passwd"), std::string("/"), std::string("/usr/bin/env"), std::string("/tmp"),
          std::string("/usr/lib"), std::string("/proc/self/mem"), std::string("/proc/self/fd"),
          std::string("/dev/null"), std::string("/root"), std::string("/home")}) {
        const long name = Word(path.c_str());
        struct stat status {};
        Try("openat " + path, SYS_openat, {AT_FDCWD, name, O_RDONLY});
        Try("openat2 " + path, SYS_openat2, {AT_FDCWD, name, Word(how), sizeof how});
        Try("O_PATH " + path, SYS_openat, {AT_FDCWD, name, O_PATH});
        Try("stat " + path, SYS_newfstatat, {AT_FDCWD, name, Word(&status)});
        Try("access " + path, SYS_faccessat, {AT_FDCWD, name, F_OK});
        Try("chdir " + path, SYS_chdir, {name});
        Try("watch " + path, SYS_inotify_init1);
#if defined(__x86_64__)
        Try("open " + path, SYS_open, {name, O_RDONLY});
#endif
    }
    const long fresh = Word("/tmp/intruder");
    Try("create", SYS_openat, {AT_FDCWD, fresh, O_CREAT | O_WRONLY, 0666});
    Try("mkdir", SYS_mkdirat, {AT_FDCWD, fresh, 0777});
    Try("unlink", SYS_unlinkat, {AT_FDCWD, Word(file)});
    Try("memfd", SYS_memfd_create, {Word("x")});
    Try("mount", SYS_mount, {Word("none"), Word("/tmp"), Word("tmpfs")});
    Try("chroot", SYS_chroot, {Word("/")});
}

void ReachSockets(const std::string& abstractName) {
    for (const int family : {AF_UNIX, AF_INET, AF_INET6, AF_NETLINK, AF_PACKET, AF_VSOCK})
        for (const int type : {SOCK_STREAM, SOCK_DGRAM, SOCK_RAW})
            Try("socket " + std::to_string(family), SYS_socket, {family, type});
    int pair[2];
    Try("socketpair", SYS_socketpair, {AF_UNIX, SOCK_DGRAM, 0, Word(pair)});
    const sorakaze::test::LocalAddress address(abstractName);
    Try("connect", SYS_connect, {kChannel, Word(address.Get()), address.size});
    Try("bind", SYS_bind, {kChannel, Word(address.Get()), address.size});
    // Whether that succeeds is seen at the other end.
    ::sendto(kChannel, "reached", 7, MSG_NOSIGNAL, address.Get(), address.size);
}

void ReachProcess(const std::string& name, pid_t process) {
    char here[8];
    const iovec mine{here, sizeof here}, theirs{here, sizeof here};
    siginfo_t information{};
    information.si_code = SI_QUEUE;
    Try("kill " + name, SYS_kill, {process, 0});
    Try("tkill " + name, SYS_tkill, {process, 0});
    Try("tgkill " + name, SYS_tgkill, {process, process, 0});
    Try("sigqueue " + name, SYS_rt_sigqueueinfo, {process, 0, Word(&information)});
    Try("pidfd " + name, SYS_pidfd_open, {process, 0});
    Try("trace " + name, SYS_ptrace, {PTRACE_SEIZE, process});
    Try("read " + name, SYS_process_vm_readv, {process, Word(&mine), 1, Word(&theirs), 1});
    Try("write " + name, SYS_process_vm_writev, {process, Word(&mine), 1, Word(&theirs), 1});
    Try("limit " + name, SYS_prlimit64, {process, RLIMIT_CPU, 0, Word(here)});
    Try("schedule " + name, SYS_setpriority, {PRIO_PROCESS, process, 10});
    // Signals by way of a descriptor's owner.
    Try("own " + name, SYS_fcntl, {kChannel, F_SETOWN, process});
}

int Nothing(void*) {
    ::syscall(SYS_exit, 0);
    return 0;
}

void ReachPrivileges() {
    __user_cap_header_struct header{_LINUX_CAPABILITY_VERSION_3, 0};
    __user_cap_data_struct all[2] = {{~0u, ~0u, ~0u}, {~0u, ~0u, ~0u}};
    rlimit more{RLIM_INFINITY, RLIM_INFINITY};
    Try("dumpable", SYS_prctl, {PR_SET_DUMPABLE, 1});
    Try("capset", SYS_capset, {Word(&header), Word(all)});
    Try("setrlimit", SYS_setrlimit, {RLIMIT_DATA, Word(&more)});
    Try("prlimit", SYS_prlimit64, {0, RLIMIT_DATA, Word(&more)});
    Try("setuid", SYS_setresuid, {0, 0, 0});
    Try("user namespace", SYS_unshare, {CLONE_NEWUSER});
    Try("mount namespace", SYS_unshare, {CLONE_NEWNS});
    Try("personality", SYS_personality, {0});
    Try("bpf", SYS_bpf, {5});
    Try("perf", SYS_perf_event_open, {0, 0, -1, -1});
    Try("keys", SYS_keyctl, {0, -3});
    Try("io_uring", SYS_io_uring_setup, {1, Word(&more)});
    Try("userfaultfd", SYS_userfaultfd, {1});
    Try("shared memory", SYS_shmget, {0, 4096, 0600});
    const std::uint32_t action = 0;
    Try("filter", SYS_seccomp, {2, 0, Word(&action)});
}

void ReachMemory() {
    constexpr long kMuch = 512 << 20;
    constexpr long kReadWrite = PROT_READ | PROT_WRITE;
    for (const auto& [name, flags] :
         {std::pair{"private", MAP_PRIVATE}, {"shared", MAP_SHARED}, {"stack", MAP_PRIVATE | MAP_GROWSDOWN}})
        Try(std::string("memory: ") + name, SYS_mmap, {0, kMuch, kReadWrite, flags | MAP_ANONYMOUS, -1, 0});
    // A page of the stack far from the part in use.
    char pages[256 << 10];
    const long unused = Word(pages + 8192) & -4096;
    *reinterpret_cast<volatile char*>(unused) = 1;
    Try("memory: more stack", SYS_mremap, {unused, 4096, kMuch, MREMAP_MAYMOVE});
    // Read only, which no limit counts, and made writable afterwards.
    const long begin = ::syscall(SYS_mmap, nullptr, kMuch, PROT_READ, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    Try("memory: made writable", SYS_mprotect, {begin, kMuch, kReadWrite});
}

void ReachPrograms(const char* self) {
    const char* const words[] = {self, "executed", nullptr};
    Try("exec", SYS_execve, {Word(self), Word(words), Word(words + 2)});
    Try("execveat", SYS_execveat, {AT_FDCWD, Word(self), Word(words), Word(words + 2), 0});
}

void ReachNewProcesses(bool threads) {
    static char stack[64 << 10];
    const auto start = [&](const char* name, int flags) {
        if (::clone(Nothing, stack + sizeof stack, flags, nullptr) >= 0) Say(name);
    };
    start("fork", SIGCHLD);
    start("vfork", CLONE_VM | CLONE_VFORK | SIGCHLD);
    start("fork in a user namespace", CLONE_NEWUSER | SIGCHLD);
    if (!threads) start("thread", CLONE_THREAD | CLONE_SIGHAND | CLONE_VM);
    const unsigned long how[8] = {0, 0, 0, 0, SIGCHLD};
    const long child = ::syscall(SYS_clone3, how, sizeof how);
    if (child == 0) ::_exit(0);
    if (child > 0) Say("clone3");
}

void Attack(char** words, pid_t sibling, bool worker, bool threads) {
    const pid_t application = std::atoi(words[2]);
    ReachFiles(words[3], application);
    ReachSockets(words[4]);
    ReachProcess("the application", application);
    if (worker) {
        ReachProcess("its parent", ::getppid());
        ReachProcess("a sibling", sibling);
        ReachPrivileges();
        ReachMemory();
        ReachNewProcesses(threads);
    }
    ReachPrograms(words[0]);
    Say("done");
}

}  // namespace

int main(int, char** words) {
    using namespace sorakaze::decoder;
    const std::string role = words[1];
    if (role == "executed") Say("executed"), Say("done"), ::_exit(0);
    const bool bound = role != "unbound", worker = role != "program", threads = role == "threads";
    if (bound) SandboxForkServer();
    if (!worker) {
        Attack(words, 0, worker, threads);
        ::_exit(0);
    }
    const pid_t sibling = ::fork();
    if (sibling == 0) ::sleep(60);
    if (const pid_t self = ::fork(); self == 0) {
        if (bound) SandboxWorker(kMemory, threads ? Threads::Some : Threads::None);
        Attack(words, sibling, worker, threads);
        ::_exit(0);
    }
    ::syscall(SYS_wait4, -1, nullptr, 0, nullptr);
    ::_exit(0);
}
