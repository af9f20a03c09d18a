// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// Attacks on the user's files, the network and other processes, each under every combination of mechanisms
// that claims to stop it, and each first without confinement, to see that it would do harm.
#include <arpa/inet.h>
#include <fcntl.h>
#include <gmock/gmock.h>
#include <poll.h>
#include <sys/socket.h>
#include <termios.h>

#include <csignal>

#include "tests/process/Scratch.h"
#include "tests/support/LocalAddress.h"
#include "tests/support/Program.h"

namespace sorakaze::process {
namespace {

using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

std::string Unconfined(const fs::path& folder, const std::string& line) {
    const test::TemporaryFolder beside;
    const std::string whole = "cd '" + folder.string() + "'; PATH=" ATTACKS_FOLDER ":$PATH; " + line;
    test::Program({"/bin/sh", "-c", whole}, beside / "output").Wait();
    return test::ReadBytes(beside / "output");
}

/// A user's home $H, a station $S that commands may read, the application's process $P and a descriptor $D
/// that it left open.
struct Household {
    Household() {
        scratch.Write("home/.profile", "mine");
        scratch.Write("home/Music/song.flac", "la la la");
        scratch.Write("home/.ssh/id", "SECRET");
        scratch.Write("station/program", "station");
        fs::permissions(scratch / "home/.ssh", fs::perms::owner_all);
        fs::create_directory_symlink(scratch / "home/.ssh", scratch.Folder() / "planted");
        leak = FileDescriptor(::open((scratch / "home/.ssh/id").c_str(), O_RDONLY));
        bounds = scratch.Bounds();
        bounds.readable = {scratch / "station"};
        prelude = "IFS=; F='" + scratch.Folder().string() + "' H='" + (scratch / "home").string() + "' S='" +
                  (scratch / "station").string() + "' P=" + std::to_string(::getpid()) +
                  " D=" + std::to_string(leak.Get()) +
                  "; each() { for file in $H/.profile $S/program; do \"$@\" $file; done; }; ";
    }

    /// Names, modes, times and contents of all that a command must leave alone.
    std::string State() const {
        return Unconfined(scratch.Folder(),
                          "find ../home ../station -printf '%p %m %n %T@\\n' -type f -exec cat {} +");
    }

    const Scratch scratch;
    FileDescriptor leak;
    Confinement bounds;
    std::string prelude;
};

TEST(Attack, NothingOfTheUserIsReadOrChanged) {
    for (const std::string attack :
         {"echo x > $H/new", "each sh -c 'echo x >> $0'", "rm -rf $H/Music", "mv $H/Music .",
          "cat $H/.ssh/id", "cat $F/../home/.ssh/id", "cat $F/planted/id",
          "rm $F/planted/id; echo x > $F/planted/new", "cat /proc/$P/root$H/.ssh/id",
          "cat /proc/$P/fd/$D <&$D", "attack descriptors | sed s/done/SECRET/",
          "ln -s $H/.ssh s; cat s/id; echo x > s/x", "link $H/.ssh/id linked; cat linked", "each rm",
          "each perl -e 'sysopen F, shift, 512'", "each perl -e 'truncate shift, 0'",
          "each perl -e 'open F, shift; chmod 0, *F'", "each chmod 0", "each touch -d 2001-01-01"}) {
        const Household control;
        const std::string untouched = control.State();
        EXPECT_TRUE(Unconfined(control.scratch.Folder(), control.prelude + attack).find("SECRET") !=
                        std::string::npos ||
                    control.State() != untouched)
            << "harmless: " << attack;
        for (const auto& [name, most] : kForces) {
            const Under under(most);
            const Household house;
            const std::string before = house.State();
            EXPECT_THAT(ConfinedProcess(house.prelude + attack, house.bounds).Run().output,
                        Not(HasSubstr("SECRET")))
                << name << ": " << attack;
            EXPECT_EQ(house.State(), before) << name << ": " << attack;
        }
    }
}

TEST(Attack, TheRealHomeIsOutOfReach) {
    const std::string home = std::getenv("HOME") ? std::getenv("HOME") : "/root";
    const Scratch scratch;
    for (const auto& [name, most] : kForces) {
        const Under under(most);
        EXPECT_EQ(scratch.Run("mktemp '" + home + "/XXXXXX'; ls -A ~root '" + home + "'").output, "") << name;
    }
}

/// A socket of the user's own.
pollfd Listen(int type, const sockaddr* address, socklen_t length) {
    const int socket = ::socket(address->sa_family, type | SOCK_CLOEXEC, 0);
    EXPECT_EQ(::bind(socket, address, length), 0);
    EXPECT_TRUE(type != SOCK_STREAM || ::listen(socket, 8) == 0);
    return {socket, POLLIN, 0};
}

TEST(Attack, NoSocketIsReached) {
    const Scratch scratch;
    std::vector<pollfd> sockets;
    // Only the filter knows a socket in the folder that the command may write, the last.
    std::string line, lastLine;
    for (const std::string& name : {(scratch / "socket").string(), "@test " + std::to_string(::getpid()),
                                    (scratch.Folder() / "socket").string()}) {
        const test::LocalAddress address(name);
        sockets.push_back(Listen(SOCK_DGRAM, address.Get(), address.size));
        if (name[0] != '@') fs::permissions(name, fs::perms::all);
        line += std::exchange(lastLine, "attack local '" + name + "'; ");
    }
    for (const int type : {SOCK_STREAM, SOCK_DGRAM}) {
        sockaddr_in address{AF_INET, 0, {htonl(INADDR_LOOPBACK)}, {}};
        socklen_t length = sizeof address;
        sockets.push_back(Listen(type, reinterpret_cast<sockaddr*>(&address), length));
        ::getsockname(sockets.back().fd, reinterpret_cast<sockaddr*>(&address), &length);
        line += std::string("bash -c 'echo x > /dev/") + (type == SOCK_STREAM ? "tcp" : "udp") +
                "/127.0.0.1/" + std::to_string(ntohs(address.sin_port)) + "' && echo done; ";
    }
    const auto reached = [&] { return ::poll(sockets.data(), sockets.size(), 0); };
    for (const auto& [name, most] : kForces) {
        const Under under(most);
        const std::string output = scratch.Run(line + (most.systemCallFilter ? lastLine : "")).output;
        EXPECT_THAT(output, testing::AllOf(StartsWith("E"), Not(HasSubstr("done")))) << name;
        EXPECT_EQ(reached(), 0) << name;
    }
    Unconfined(scratch.Folder(), line + lastLine);
    EXPECT_EQ(reached(), 5);
    for (const pollfd& socket : sockets) ::close(socket.fd);
}

TEST(Attack, NoOtherProcessIsTouched) {
    const std::vector<std::string> sleeper{"sleep", "1000"};
    const auto line = [](const char* attack, const test::Program& on) {
        return attack + std::to_string(on.Id());
    };
    for (const char* attack : {"attack thread-signal ", "kill -TERM "}) {
        test::Program control(sleeper, "/dev/null");
        Unconfined("/", line(attack, control));
        EXPECT_EQ(control.Wait(), 128 + SIGTERM);
    }
    test::Program victim(sleeper, "/dev/null");
    const Scratch scratch;
    for (const auto& [name, most] : kForces) {
        const Under under(most);
        for (const char* attack : {"attack thread-signal ", "attack trace ", "attack memory-of "})
            EXPECT_THAT(scratch.Run(line(attack, victim)).output, StartsWith("E")) << name << attack;
        EXPECT_NE(scratch.Run(line("kill -TERM ", victim)).status, 0) << name;
        EXPECT_FALSE(victim.Ended()) << name;
    }
}

TEST(Attack, NothingIsTypedIntoATerminal) {
    const FileDescriptor master(::posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC));
    ASSERT_TRUE(master && ::grantpt(master.Get()) == 0 && ::unlockpt(master.Get()) == 0);
    // Left open for every program that starts, by mistake.
    const FileDescriptor terminal(::open(::ptsname(master.Get()), O_RDWR | O_NOCTTY));
    termios raw{};
    ::cfmakeraw(&raw);
    ::tcsetattr(terminal.Get(), TCSANOW, &raw);
    pollfd typed{terminal.Get(), POLLIN, 0};
    const Scratch scratch;
    for (const auto& [name, most] : kForces) {
        const Under under(most);
        EXPECT_THAT(scratch.Run("attack type").output, StartsWith("E")) << name;
        EXPECT_EQ(::poll(&typed, 1, 0), 0) << name;
    }
    // Root may, where the kernel has that call at all.
    const bool could = ::geteuid() == 0 && Unconfined("/", "attack type") == "done\n";
    EXPECT_EQ(::poll(&typed, 1, 0), could ? 1 : 0);
}

TEST(Attack, NothingIsLeftForTheNextCommandOrTaken) {
    // The second of two commands looks round while the first one is at it.
    const std::string litter =
        "for place in ~ . $TMPDIR $F $F/..; do mkdir $place/espeak-ng-data; echo x > $place/.mecabrc; "
        "echo x > $place/temp.html; mkdir $place/temp.html; echo x > $place/temp99.aiff; done; "
        "cat $F/page; mv $F/page $F/other; rm -rf $F/* $F/.*; echo x > $F/page; echo x > $O; ";
    for (const auto& [name, most] : kForces) {
        const Under under(most);
        const Scratch scratch;
        std::ofstream(scratch.Folder() / "page") << "SECRET";
        ConfinedProcess first(scratch.Line(litter + "sleep 1000"), scratch.Bounds());
        std::thread runner([&] { EXPECT_THAT(first.Run().output, Not(HasSubstr("SECRET"))); });
        scratch.AwaitOutput();
        Confinement bounds = scratch.Bounds();
        bounds.output.clear();
        const std::string look = "find ~ . $TMPDIR $F -mindepth 1 ! -name .command-*; cat $F/*; ls -A .";
        EXPECT_EQ(ConfinedProcess(scratch.Line(look), bounds).Run().output, "") << name;
        first.Kill();
        runner.join();
        EXPECT_EQ(ConfinedProcess(scratch.Line(look), bounds).Run().output, "") << name;
        EXPECT_EQ(test::ReadBytes(scratch.Folder() / "page"), "SECRET") << name;
        EXPECT_EQ(std::distance(fs::directory_iterator(scratch.Folder()), {}), 1) << name;
    }
}

TEST(Attack, NoRightsAreHadOrGranted) {
    constexpr uid_t kStation = 60'001;
    for (const uid_t user : {uid_t{0}, kStation})
        for (const auto& [name, most] : kForces)
            EXPECT_TRUE(AsUser(user,
                               [most = most] {
                                   const Under under(most);
                                   const Scratch scratch;
                                   EXPECT_EQ(scratch.Run("attack capabilities").output, "0\n");
                                   if (most.systemCallFilter) {
                                       EXPECT_EQ(scratch.Run("attack set-ids").output, "EPERM\n");
                                   }
                               }))
                << name << " as " << user;
    const Under under(Mechanisms{0, false, false, false, true});
    const Scratch scratch;
    EXPECT_EQ(scratch.Run("attack set-ids").output, "EPERM\n") << "the filter alone";
}

/// What another user of the machine finds of a folder: every file below that he can read, run or write.
std::string FoundByAnother(const fs::path& folder) {
    const test::TemporaryFolder beside;
    fs::permissions(beside.Path(), fs::perms::all);
    constexpr uid_t kNeighbour = 60'002;
    AsUser(kNeighbour, [&] {
        Unconfined(
            "/", "find '" + folder.string() + "' -type f -readable > '" + (beside / "found").string() + "'");
    });
    return test::ReadBytes(beside / "found");
}

TEST(Attack, AnotherUserReachesNothingThatACommandLeaves) {
    if (::geteuid() != 0) GTEST_SKIP() << "it takes root to be two users";
    constexpr uid_t kStation = 60'001;
    const std::string attack =
        "cp /bin/bash $O; cp /bin/bash b; for file in $O b . .. $F $F/..; do chmod 4777 $file; chmod 777 "
        "$file; "
        "done; echo x >> $O; sleep 1000";
    for (const uid_t user : {uid_t{0}, kStation})
        for (const auto& [name, most] : kForces) {
            EXPECT_TRUE(AsUser(user,
                               [&, most = most] {
                                   const Under under(most);
                                   const Scratch scratch;
                                   ConfinedProcess process(scratch.Line(attack), scratch.Bounds());
                                   std::thread runner([&] { process.Run(); });
                                   scratch.AwaitOutput();
                                   struct stat status {};
                                   for (const fs::path& folder : {scratch.Folder(), scratch / ""})
                                       EXPECT_TRUE(::stat(folder.c_str(), &status) == 0 &&
                                                   (status.st_mode & 07777 & ~mode_t{S_IXGRP}) == 0700)
                                           << folder;
                                   if (user == 0) {
                                       EXPECT_EQ(FoundByAnother(scratch / ""), "");
                                   }
                                   process.Kill();
                                   runner.join();
                                   EXPECT_TRUE(fs::is_empty(scratch.Folder()));
                               }))
                << name << " as " << user;
        }
}

TEST(Attack, TheKernelsCornersAreRefused) {
    const Scratch scratch;
    EXPECT_EQ(scratch.Run("attack calls").output, "done\n");
#if defined(__x86_64__)
    for (const char* attack : {"perl -e 'syscall 0x40000000 + 39'", "attack ia32"})
        EXPECT_EQ(scratch.Run(attack).status, 128 + SIGSYS) << attack;
#endif
}

}  // namespace
}  // namespace sorakaze::process
