// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// What a hostile text could bring a shell to run, where no program of the system's does it: one attack per
// call, named by the first argument. Prints "done" where the attack came through, the reason where it didn't.
// Built without sanitizers, since it runs under tight limits.
#include <fcntl.h>
#include <linux/capability.h>
#include <sys/ioctl.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/ptrace.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/uio.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstddef>
#include <cstdio>
#include <cstring>
#include <functional>
#include <map>
#include <string>

#include "tests/support/LocalAddress.h"

namespace {

bool SendLocal(const std::string& name) {
    const sorakaze::test::LocalAddress address(name);
    // Either end of a pair of datagram sockets could be given another address, too.
    int sockets[] = {-1, -1, ::socket(AF_UNIX, SOCK_DGRAM, 0)};
    ::socketpair(AF_UNIX, SOCK_DGRAM, 0, sockets);
    bool sent = false;
    for (const int socket : sockets) sent |= ::sendto(socket, "x", 1, 0, address.Get(), address.size) == 1;
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

/// Fills memory that is shared, keeps it and has none of its pages.
bool FillSharedMemory(std::size_t size) {
    void* const memory = ::mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    if (memory == MAP_FAILED) return false;
    std::memset(memory, 1, size);
    ::madvise(memory, size, MADV_DONTNEED);
    return ::sleep(5) == 0;
}

/// Fills files that are nowhere but in memory's view of them. True where all of them were.
bool MapRemovedFiles(int count, std::size_t size) {
    for (int number = 0; number < count; ++number) {
        const int file = ::open("mapped", O_RDWR | O_CREAT | O_EXCL, 0600);
        const std::string bytes(size, 'x');
        if (::write(file, bytes.data(), size) != static_cast<ssize_t>(size)) return false;
        if (::mmap(nullptr, size, PROT_READ, MAP_SHARED, file, 0) == MAP_FAILED) return false;
        ::unlink("mapped");
        ::close(file);
    }
    return ::sleep(3) == 0;
}

bool HasCapabilities() {
    __user_cap_header_struct header{_LINUX_CAPABILITY_VERSION_3, 0};
    __user_cap_data_struct data[2]{};
    ::syscall(SYS_capget, &header, data);
    return (data[0].permitted | data[1].permitted | data[0].inheritable | data[1].inheritable) != 0;
}

/// Tries each call that takes a mode or gives a file another name or attribute. Says which came through.
bool MakesSetIds() {
    const int file = ::open("own", O_RDWR | O_CREAT, 0700);
    ::mkdir("folder", 0700);
    const long own = reinterpret_cast<long>("own"), folder = reinterpret_cast<long>("folder"),
               fresh = reinterpret_cast<long>("new"), attribute = reinterpret_cast<long>("user.x");
    const unsigned long how[] = {O_CREAT | O_WRONLY, 04755, 0};
    const struct {
        const char* name;
        long call, arguments[5];
    } calls[] = {
        {"fchmod", SYS_fchmod, {file, 04755}},
        {"fchmod of a group", SYS_fchmod, {file, 02755}},
        {"fchmodat", SYS_fchmodat, {AT_FDCWD, own, 06755}},
        {"fchmodat2", 452, {AT_FDCWD, own, 04755, 0}},
        {"openat", SYS_openat, {AT_FDCWD, fresh, O_CREAT | O_WRONLY, 04755}},
        {"a file without a name", SYS_openat, {AT_FDCWD, folder, O_TMPFILE | O_WRONLY, 04755}},
        {"openat2", SYS_openat2, {AT_FDCWD, fresh, reinterpret_cast<long>(how), sizeof how}},
        {"mkdirat", SYS_mkdirat, {AT_FDCWD, fresh, 02755}},
        {"mknodat", SYS_mknodat, {AT_FDCWD, fresh, S_IFREG | 04755}},
        {"a device", SYS_mknodat, {AT_FDCWD, fresh, S_IFCHR | 0666, 0x103}},
        {"linkat", SYS_linkat, {AT_FDCWD, own, AT_FDCWD, fresh, 0}},
        {"setxattr", SYS_setxattr, {own, attribute, attribute, 1, 0}},
        {"lsetxattr", SYS_lsetxattr, {folder, attribute, attribute, 1, 0}},
        {"fsetxattr", SYS_fsetxattr, {file, attribute, attribute, 1, 0}},
        {"removexattr", SYS_removexattr, {own, attribute}},
#if defined(__x86_64__)
        {"chmod", SYS_chmod, {own, 04755}},
        {"open", SYS_open, {fresh, O_CREAT | O_WRONLY, 04755}},
        {"creat", SYS_creat, {fresh, 04755}},
        {"mkdir", SYS_mkdir, {fresh, 04755}},
        {"mknod", SYS_mknod, {fresh, S_IFREG | 04755}},
        {"link", SYS_link, {own, fresh}},
#endif
        {"to hide", SYS_prctl, {PR_SET_DUMPABLE, 0}}
    };
    bool came = false;
    for (const auto& [name, call, words] : calls) {
        const long result = ::syscall(call, words[0], words[1], words[2], words[3], words[4]);
        if (result < 0 && (errno == EPERM || errno == ENOSYS)) continue;
        std::printf("%s: %s\n", name, result < 0 ? ::strerrorname_np(errno) : "done");
        came = true;
    }
    // What programs do all the time, with a mode that isn't one.
    came |= ::syscall(SYS_openat, AT_FDCWD, own, O_RDONLY, 0xfffff) < 0;
    errno = EPERM;
    return came;
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
        {"share", [&] { return FillSharedMemory(std::strtoul(word, nullptr, 10)); }},
        {"removed", [&] { return MapRemovedFiles(std::atoi(word), std::strtoul(values[3], nullptr, 10)); }},
        {"capabilities", HasCapabilities},
        {"set-ids", MakesSetIds},
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
    const bool done = attacks.at(values[1])();
    std::puts(done ? "done" : ::strerrorname_np(errno));
    return done ? 0 : 1;
}
