// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// What a page could do if it got hold of the whole viewer: tried by a child of the test that has confined
// itself, as root and as an ordinary user.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <sys/eventfd.h>
#include <sys/prctl.h>
#include <sys/ptrace.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstring>
#include <functional>

#include "app/viewer/program/Confinement.h"
#include "app/viewer/program/DropRoot.h"
#include "app/viewer/program/Environment.h"
#include "app/viewer/program/ProcessIsolation.h"
#include "process/LandlockRules.h"
#include "tests/support/LocalAddress.h"
#include "tests/support/TestRuntime.h"

namespace sorakaze::viewer {
namespace {

constexpr uid_t kNobody = 65534;

using Tries = std::vector<std::pair<std::string, std::function<bool()>>>;

/// The names of those that succeed in a child of this user that `confine` has been called in.
std::string Succeeding(uid_t user, const std::function<void()>& confine, const Tries& tries) {
    int ends[2];
    if (::pipe(ends) != 0) return "pipe";
    const pid_t child = ::fork();
    if (child == 0) {
        std::string done;
        try {
            if (user != ::geteuid() &&
                (::setresgid(user, user, user) != 0 || ::setresuid(user, user, user) != 0))
                ::_exit(1);
            confine();
            for (const auto& [name, attempt] : tries)
                if (attempt()) done += name + '\n';
        } catch (const std::exception& error) {
            done = error.what();
        }
        ::_exit(::write(ends[1], done.data(), done.size()) < 0);
    }
    ::close(ends[1]);
    char text[4096];
    const ssize_t length = ::read(ends[0], text, sizeof text);
    ::close(ends[0]);
    int status = 0;
    ::waitpid(child, &status, 0);
    EXPECT_EQ(status, 0);
    return {text, static_cast<std::size_t>(std::max<ssize_t>(length, 0))};
}

std::vector<uid_t> Users() {
    if (::geteuid() == 0) return {0, kNobody};
    return {::geteuid()};
}

std::function<bool()> Reads(const std::string& path) {
    return [path] {
        char byte = 0;
        const FileDescriptor file(::open(path.c_str(), O_RDONLY));
        return file && ::read(file.Get(), &byte, 1) == 1;
    };
}

bool Connects(int family, int kind, const void* address, socklen_t length) {
    const FileDescriptor socket(::socket(family, kind, 0));
    return socket && ::connect(socket.Get(), static_cast<const sockaddr*>(address), length) == 0;
}

/// A server that listens while it lives.
struct Listener {
    explicit Listener(int family) : socket(::socket(family, SOCK_STREAM, 0)) {}
    void Listen(const void* address, socklen_t length) const {
        ASSERT_EQ(::bind(socket.Get(), static_cast<const sockaddr*>(address), length), 0)
            << std::strerror(errno);
        ASSERT_EQ(::listen(socket.Get(), 8), 0);
    }
    FileDescriptor socket;
};

struct LoopbackListener : Listener {
    LoopbackListener() : Listener(AF_INET) {
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        Listen(&address, sizeof address);
        socklen_t length = sizeof address;
        ::getsockname(socket.Get(), reinterpret_cast<sockaddr*>(&address), &length);
    }
    bool Reached(int kind = SOCK_STREAM) const { return Connects(AF_INET, kind, &address, sizeof address); }
    sockaddr_in address{};
};

void ConfineAll() {
    CleanEnvironment();
    Confine(std::nullopt);
}

TEST(Confinement, ReadsWhatIsPublicAndNothingElse) {
    if (process::LandlockVersion() == 0) GTEST_SKIP() << "no Landlock";
    Tries tries;
    for (const std::string& path :
         {std::string("/etc/ld.so.cache"), std::string("/usr/bin/env"), std::string("/proc/cpuinfo"),
          std::string("/etc/passwd"), std::string("/etc/shadow"), std::string("/etc/fstab"),
          std::string("/etc/ssl/private"), std::string("/etc/debian_version"),
          std::string("/sys/kernel/mm/transparent_hugepage/enabled"),
          "/proc/" + std::to_string(::getpid()) + "/environ"})
        tries.emplace_back(path, Reads(path));
    for (const uid_t user : Users())
        EXPECT_EQ(Succeeding(user, ConfineAll, tries), "/etc/ld.so.cache\n/usr/bin/env\n/proc/cpuinfo\n")
            << user;
}

/// Also of no effect on files that only root may read, where there is no Landlock.
TEST(Confinement, AsRootItIsRootNoMore) {
    if (::geteuid() != 0) GTEST_SKIP() << "this is no root";
    test::TemporaryFolder folder;
    std::filesystem::permissions(folder.Path(), std::filesystem::perms::owner_all);
    const Tries tries = {{"root",
                          [] {
                              return ::geteuid() == 0 || ::getuid() == 0 || ::getegid() == 0 ||
                                     ::getgroups(0, nullptr) > 8;
                          }},
                         {"back to root", [] { return ::setresuid(0, 0, 0) == 0; }},
                         {"a file of root's", Reads(folder.Write("secret", "secret").string())},
                         {"own files of /proc", Reads("/proc/self/environ")},
                         {"dies with the application", [] {
                              int signal = 0;
                              return ::prctl(PR_GET_PDEATHSIG, &signal) == 0 && signal == SIGKILL;
                          }}};
    const auto giveUp = [] {
        if (!DropRoot()) ::_exit(1);
    };
    EXPECT_EQ(Succeeding(0, giveUp, tries), "own files of /proc\ndies with the application\n");
}

Tries AttacksOn(pid_t victim) {
    return {{"kill", [=] { return ::kill(victim, SIGUSR1) == 0; }},
            {"kill everybody", [=] { return ::kill(-1, 0) == 0; }},
            {"kill its group", [=] { return ::kill(-::getpgid(victim), 0) == 0; }},
            {"tgkill", [=] { return ::syscall(SYS_tgkill, victim, victim, SIGUSR1) == 0; }},
            {"tkill", [=] { return ::syscall(SYS_tkill, victim, SIGUSR1) == 0; }},
            {"sigqueue", [=] { return ::sigqueue(victim, SIGUSR1, {}) == 0; }},
            {"ready descriptors",
             [=] { return ::fcntl(FileDescriptor(::eventfd(0, 0)).Get(), F_SETOWN, victim) == 0; }},
            {"ready descriptors, in bits that the kernel passes over",
             [=] {
                 return ::syscall(SYS_fcntl, FileDescriptor(::eventfd(0, 0)).Get(), 0x100000000 | F_SETOWN,
                                  victim) == 0;
             }},
            {"limits",
             [=] {
                 const rlimit none{1, 1};
                 return ::prlimit(victim, RLIMIT_CPU, &none, nullptr) == 0;
             }},
            {"priority", [=] { return ::setpriority(PRIO_PROCESS, static_cast<id_t>(victim), 19) == 0; }},
            {"ptrace", [=] { return ::ptrace(PTRACE_SEIZE, victim, nullptr, nullptr) == 0; }}};
}

/// What the filter alone has to hold: Landlock may be old.
TEST(Confinement, OtherProcessesAreOutOfReach) {
    for (const uid_t user : Users()) {
        const pid_t victim = ::fork();
        if (victim == 0) {
            if (user != ::geteuid() && ::setresuid(user, user, user) != 0) ::_exit(1);
            ::pause();
            ::_exit(0);
        }
        const auto filterAlone = [] {
            ::prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0);
            IsolateFromOtherProcesses(Datagrams::Allowed);
        };
        EXPECT_EQ(Succeeding(user, filterAlone, AttacksOn(victim)), "") << user;
        EXPECT_EQ(Succeeding(user, ConfineAll, AttacksOn(victim)), "") << user;
        EXPECT_EQ(::waitpid(victim, nullptr, WNOHANG), 0) << "a signal has come";
        ::kill(victim, SIGKILL);
        ::waitpid(victim, nullptr, 0);
    }
}

TEST(Confinement, AbstractSocketsAreOutOfReach) {
    if (process::LandlockVersion() < 6) GTEST_SKIP() << "this kernel's Landlock knows no scopes";
    const Listener listener(AF_UNIX);
    const test::LocalAddress address("@sorakaze-test-" + std::to_string(::getpid()));
    listener.Listen(address.Get(), address.size);
    const auto connects = [&] { return Connects(AF_UNIX, SOCK_STREAM, address.Get(), address.size); };
    ASSERT_TRUE(connects());
    const Tries tries = {{"connect", connects}};
    for (const uid_t user : Users()) EXPECT_EQ(Succeeding(user, ConfineAll, tries), "") << user;
}

TEST(Confinement, WithPortsNoOtherIsReached) {
    if (process::LandlockVersion() < 4) GTEST_SKIP() << "this kernel's Landlock knows no ports";
    const LoopbackListener service, other;
    const Tries tries = {{"service", [&] { return service.Reached(); }},
                         {"other", [&] { return other.Reached(); }},
                         {"datagrams", [&] { return other.Reached(SOCK_DGRAM); }},
                         {"packets", [&] { return ::socket(AF_PACKET, SOCK_RAW, 0) >= 0; }}};
    const auto confine = [&] {
        CleanEnvironment();
        Confine(std::vector{ntohs(service.address.sin_port)});
    };
    for (const uid_t user : Users()) EXPECT_EQ(Succeeding(user, confine, tries), "service\n") << user;
}

/// A server of root's own, in a folder that nobody else may enter.
TEST(Confinement, TheSoundServerOfRootIsReachedStill) {
    if (::geteuid() != 0) GTEST_SKIP() << "this is no root";
    test::TemporaryFolder folder;
    folder.Write("home/.config/pulse/cookie", "cookie");
    std::filesystem::create_directories(folder / "runtime/pulse");
    ASSERT_EQ(::chmod(folder.Path().c_str(), 0700), 0);
    ASSERT_EQ(::chmod((folder / "home/.config/pulse/cookie").c_str(), 0600), 0);
    const Listener listener(AF_UNIX);
    const std::string path = folder / "runtime/pulse/native";
    const auto connects = [](const std::string& name) {
        const test::LocalAddress address(name);
        return Connects(AF_UNIX, SOCK_STREAM, address.Get(), address.size);
    };
    const test::LocalAddress address(path);
    listener.Listen(address.Get(), address.size);
    ASSERT_EQ(::chmod(path.c_str(), 0777), 0);

    const auto named = [&] {
        const char* variable = std::getenv("PULSE_SERVER");
        const std::string name = variable ? variable : "";
        return connects(name.substr(name.find("unix:") + 5));
    };
    const Tries tries = {{"the usual path", [&] { return connects(path); }},
                         {"server", named},
                         {"cookie", [] { return Reads(std::getenv("PULSE_COOKIE"))(); }}};
    for (const std::string& server : {std::string(), "unix:" + path, "{machine}unix:" + path, path}) {
        const auto confine = [&] {
            ::setenv("HOME", (folder / "home").c_str(), 1);
            ::setenv("XDG_RUNTIME_DIR", (folder / "runtime").c_str(), 1);
            ::unsetenv("PULSE_SERVER");
            if (!server.empty()) ::setenv("PULSE_SERVER", server.c_str(), 1);
            ConfineAll();
        };
        EXPECT_EQ(Succeeding(0, confine, tries), "server\ncookie\n") << server;
    }
}

}  // namespace
}  // namespace sorakaze::viewer
