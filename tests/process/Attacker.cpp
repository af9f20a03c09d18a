// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// What a hostile text could bring a shell to run, where no program of the system's does it: one attack per
// call, named by the first argument. Prints "done" where the attack came through, the reason where it didn't.
// Built without sanitizers, since it runs under tight limits.
#include <fcntl.h>
#include <sys/ioctl.h>
#include <sys/ptrace.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/uio.h>
#include <sys/un.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstddef>
#include <cstdio>
#include <cstring>
#include <functional>
#include <map>
#include <string>

namespace {

/// A name that begins with @ is an abstract one.
bool SendLocal(const std::string& name) {
    sockaddr_un address{AF_UNIX, {}};
    std::memcpy(address.sun_path, name.data(), name.size());
    if (name[0] == '@') address.sun_path[0] = 0;
    // Either end of a pair of datagram sockets could be given another address, too.
    int sockets[] = {-1, -1, ::socket(AF_UNIX, SOCK_DGRAM, 0)};
    ::socketpair(AF_UNIX, SOCK_DGRAM, 0, sockets);
    bool sent = false;
    for (const int socket : sockets)
        sent |= ::sendto(socket, "x", 1, 0, reinterpret_cast<sockaddr*>(&address),
                         static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + name.size())) == 1;
    return sent;
}

bool TypeIntoTerminals() {
    bool typed = ::ioctl(::open("/dev/tty", O_RDWR), TIOCSTI, "x") == 0;
    for (int number = 0; number < 256; ++number) typed |= ::ioctl(number, TIOCSTI, "x") == 0;
    return typed;
}

/// What descriptors of the application lead to.
bool ReadDescriptors() {
    bool found = false;
    for (int number = 3; number < 1024; ++number) found |= ::fcntl(number, F_GETFD) >= 0;
    return found;
}

bool ReadMemory(pid_t process) {
    char here[8], *address = here;
    const iovec mine{here, sizeof here}, theirs{address, sizeof here};
    return ::syscall(SYS_process_vm_readv, process, &mine, 1, &theirs, 1, 0) >= 0 || errno == EFAULT;
}

/// Calls that are refused, each with the error that it ends with.
bool AreRefused() {
    const struct {
        int error;
        long call, arguments[5] = {};
    } calls[] = {{EPERM, SYS_bpf},
                 {EPERM, SYS_keyctl, {0, -3}},
                 {EPERM, SYS_perf_event_open, {0, 0, -1, -1, 0}},
                 {EPERM, SYS_unshare, {0x10000000}},
                 {EPERM, SYS_clone, {0x10000000 | SIGCHLD}},
                 {ENOSYS, SYS_clone3},
                 {EPERM, SYS_mount},
                 {ENOSYS, SYS_io_uring_setup, {1}},
                 {ENOSYS, SYS_userfaultfd},
                 {ENOSYS, SYS_memfd_create, {reinterpret_cast<long>("x")}},
                 {EPERM, SYS_kexec_load},
                 {EPERM, SYS_symlinkat, {reinterpret_cast<long>("x"), AT_FDCWD, reinterpret_cast<long>("y")}},
                 {EPERM, SYS_mknodat, {AT_FDCWD, reinterpret_cast<long>("y"), S_IFIFO | 0600}},
                 {ENOSYS, 467}};
    bool refused = true;
    for (const auto& [error, call, words] : calls) {
        if (::syscall(call, words[0], words[1], words[2], words[3], words[4]) < 0 && errno == error) continue;
        std::printf("%ld: %s\n", call, ::strerrorname_np(errno));
        refused = false;
    }
    return refused;
}

}  // namespace

int main(int, char** values) {
    const char* word = values[2];
    const std::map<std::string, std::function<bool()>> attacks = {
        {"local", [&] { return SendLocal(word); }},
        {"thread-signal",
         [&] { return ::syscall(SYS_tgkill, std::atoi(word), std::atoi(word), SIGTERM) == 0; }},
        {"trace", [&] { return ::ptrace(PTRACE_SEIZE, std::atoi(word), nullptr, nullptr) == 0; }},
        {"memory-of", [&] { return ReadMemory(std::atoi(word)); }},
        {"type", TypeIntoTerminals},
        {"descriptors", ReadDescriptors},
        {"calls", AreRefused},
#if defined(__x86_64__)
        {"ia32",
         [] {
             long result = 20;  // getpid by the numbers of the 32-bit machine
             asm volatile("int $0x80" : "+a"(result) : : "memory");
             return result >= 0;
         }},
#endif
    };
    errno = 0;
    std::puts(attacks.at(values[1])() ? "done" : ::strerrorname_np(errno));
}
