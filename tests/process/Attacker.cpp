// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// What a hostile text could bring a shell to run: one attack per call, named by the first argument. Prints
// "done" where the attack came through, the reason where it didn't. Built without sanitizers, since it runs
// under tight limits.
#include <arpa/inet.h>
#include <fcntl.h>
#include <poll.h>
#include <sys/file.h>
#include <sys/ioctl.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/ptrace.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/uio.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <map>
#include <string>
#include <vector>

namespace {

using Words = std::vector<std::string>;

bool SendInternet(int type, const std::string& port) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(static_cast<std::uint16_t>(std::stoi(port)));
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    const int socket = ::socket(AF_INET, type, 0);
    return socket >= 0 && ::connect(socket, reinterpret_cast<sockaddr*>(&address), sizeof address) == 0 &&
           ::send(socket, "x", 1, 0) == 1;
}

/// A name that begins with @ is an abstract one.
bool SendLocal(const std::string& name) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::memcpy(address.sun_path, name.data(), name.size());
    if (name[0] == '@') address.sun_path[0] = 0;
    const auto length = static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + name.size());
    // Either end of a pair of datagram sockets could be given another address, too.
    int pair[2] = {-1, -1};
    if (::socketpair(AF_UNIX, SOCK_DGRAM, 0, pair) == 0 &&
        ::sendto(pair[0], "x", 1, 0, reinterpret_cast<sockaddr*>(&address), length) == 1)
        return true;
    const int socket = ::socket(AF_UNIX, SOCK_DGRAM, 0);
    return socket >= 0 && ::sendto(socket, "x", 1, 0, reinterpret_cast<sockaddr*>(&address), length) == 1;
}

/// Children that stay, as many as there may be.
int ForkMany(int most) {
    int count = 0;
    for (; count < most; ++count) {
        const pid_t child = ::fork();
        if (child < 0) break;
        if (child == 0) {
            ::prctl(PR_SET_PDEATHSIG, SIGKILL);
            for (;;) ::pause();
        }
    }
    return count;
}

[[noreturn]] void ForkBomb() {
    for (;;) ::fork();
}

std::size_t FillMemory(std::size_t megabytes) {
    std::size_t count = 0;
    for (; count < megabytes; ++count) {
        void* block = ::mmap(nullptr, 1 << 20, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
        if (block == MAP_FAILED) break;
        std::memset(block, 1, 1 << 20);
    }
    return count;
}

/// Fills the working folder, with names or without any.
[[noreturn]] void FillDisk(bool removeNames) {
    static char block[1 << 16];
    for (int number = 0;; ++number) {
        const std::string name = "fill" + std::to_string(number);
        const int file = ::open(name.c_str(), O_WRONLY | O_CREAT, 0600);
        for (int written = 0; file >= 0 && written < 16; ++written)
            if (::write(file, block, sizeof block) < 0) break;
        if (removeNames)
            ::unlink(name.c_str());
        else
            ::close(file);
    }
}

/// Leaves a process behind that holds a lock, in a session of its own where it may.
bool Linger(const std::string& lock) {
    int ready[2];
    if (::pipe(ready) != 0) return false;
    if (::fork() == 0) {
        ::setsid();
        if (::fork() == 0) {
            ::signal(SIGHUP, SIG_IGN);
            ::signal(SIGTERM, SIG_IGN);
            ::flock(::open(lock.c_str(), O_RDWR | O_CREAT, 0600), LOCK_EX);
            if (::write(ready[1], "x", 1) == 1) ::close(STDOUT_FILENO);
            for (;;) ::pause();
        }
        ::_exit(0);
    }
    char byte = 0;
    return ::read(ready[0], &byte, 1) == 1;
}

bool TypeIntoTerminals() {
    bool typed = false;
    std::vector<int> files = {::open("/dev/tty", O_RDWR)};
    for (int number = 0; number < 256; ++number) files.push_back(number);
    for (const int file : files) typed |= ::ioctl(file, TIOCSTI, "x") == 0;
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
    errno = 0;
    return ::syscall(SYS_process_vm_readv, process, &mine, 1, &theirs, 1, 0) >= 0 || errno == EFAULT;
}

/// Each refused call and the error that it ends with.
void PrintCalls() {
    const auto print = [](const char* name, long result) {
        std::printf("%s:%s\n", name, result < 0 ? ::strerrorname_np(errno) : "done");
    };
    print("bpf", ::syscall(SYS_bpf, 0, nullptr, 0));
    print("keyctl", ::syscall(SYS_keyctl, 0, -3, 0));
    print("perf", ::syscall(SYS_perf_event_open, nullptr, 0, -1, -1, 0));
    print("unshare", ::syscall(SYS_unshare, 0x10000000));
    print("clone", ::syscall(SYS_clone, 0x10000000 | SIGCHLD, 0, 0, 0, 0));
    print("clone3", ::syscall(SYS_clone3, nullptr, 0));
    print("mount", ::syscall(SYS_mount, "none", "/", "tmpfs", 0, nullptr));
    print("io_uring", ::syscall(SYS_io_uring_setup, 1, nullptr));
    print("userfaultfd", ::syscall(SYS_userfaultfd, 0));
    print("memfd", ::syscall(SYS_memfd_create, "x", 0));
    print("kexec", ::syscall(SYS_kexec_load, 0, 0, nullptr, 0));
    print("symlink", ::symlink("/etc/passwd", "planted"));
    print("fifo", ::mkfifo("planted", 0600));
    print("young", ::syscall(467, 0));
}

int Other(const std::string& attack) {
#if defined(__x86_64__)
    if (attack == "x32") return static_cast<int>(::syscall(0x40000000 + SYS_getpid));
    if (attack == "ia32") {
        long result = 20;  // getpid by the numbers of the 32-bit machine
        asm volatile("int $0x80" : "+a"(result) : : "memory");
        return static_cast<int>(result);
    }
#endif
    std::fprintf(stderr, "no such attack: %s\n", attack.c_str());
    return -1;
}

}  // namespace

int main(int count, char** values) {
    const Words words(values + 1, values + count);
    const auto word = [&](std::size_t index) {
        return index < words.size() ? words[index] : std::string("0");
    };
    const auto process = [&] { return static_cast<pid_t>(std::stoi(word(1))); };
    const std::map<std::string, std::function<bool()>> attacks = {
        {"tcp", [&] { return SendInternet(SOCK_STREAM, word(1)); }},
        {"udp", [&] { return SendInternet(SOCK_DGRAM, word(1)); }},
        {"local", [&] { return SendLocal(word(1)); }},
        {"signal", [&] { return ::kill(process(), SIGTERM) == 0; }},
        {"thread-signal", [&] { return ::syscall(SYS_tgkill, process(), process(), SIGTERM) == 0; }},
        {"trace", [&] { return ::ptrace(PTRACE_SEIZE, process(), nullptr, nullptr) == 0; }},
        {"memory-of", [&] { return ReadMemory(process()); }},
        {"type", TypeIntoTerminals},
        {"descriptors", ReadDescriptors},
        {"linger", [&] { return Linger(word(1)); }},
        {"cut", [&] { return ::open(word(1).c_str(), O_RDONLY | O_TRUNC) >= 0; }},
        {"cut-path", [&] { return ::truncate(word(1).c_str(), 0) == 0; }},
        {"mode", [&] { return ::chmod(word(1).c_str(), 0) == 0; }},
        {"open-mode", [&] { return ::fchmod(::open(word(1).c_str(), O_RDONLY), 0) == 0; }},
        {"attribute", [&] { return ::syscall(SYS_setxattr, word(1).c_str(), "user.x", "1", 1, 0) == 0; }},
        {"hard-link", [&] { return ::link(word(1).c_str(), "linked") == 0; }},
    };
    if (const auto attack = attacks.find(word(0)); attack != attacks.end()) {
        const bool done = attack->second();
        std::puts(done ? "done" : ::strerrorname_np(errno));
        return done ? 0 : 1;
    }
    if (word(0) == "fork") return std::printf("%d\n", ForkMany(std::stoi(word(1)))) < 0;
    if (word(0) == "bomb") ForkBomb();
    if (word(0) == "memory") return std::printf("%zu\n", FillMemory(std::stoul(word(1)))) < 0;
    if (word(0) == "hold-memory") {
        FillMemory(std::stoul(word(1)));
        for (;;) ::pause();
    }
    if (word(0) == "fill") FillDisk(false);
    if (word(0) == "fill-removed") FillDisk(true);
    if (word(0) == "calls") return PrintCalls(), 0;
    return Other(word(0)) < 0;
}
