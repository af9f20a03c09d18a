// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// Attacks on the user's files, the network and other processes, each under every combination of mechanisms
// that claims to stop it, and each first without confinement, to see that it would do harm.
#include <arpa/inet.h>
#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <spawn.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <termios.h>

#include <csignal>
#include <cstddef>
#include <cstring>
#include <map>
#include <sstream>

#include "tests/process/Scratch.h"

namespace sorakaze::process {
namespace {

namespace fs = std::filesystem;
using testing::HasSubstr;
using testing::Not;

struct Force {
    const char* name;
    Mechanisms most;
};

const Force kForces[] = {{"everything", All()},
                         {"no Landlock", {0, true, true, true, true}},
                         {"no view", {99, true, true, false, true}},
                         {"no filter", {99, true, true, true, false}},
                         {"no user namespace", {99, true, false, true, true}},
                         {"no namespaces", WithoutNamespaces()},
                         {"the first Landlock alone", {1, false, false, false, true}}};

std::string Unconfined(const fs::path& folder, const std::string& line) {
    const std::string whole =
        "exec 2>/dev/null; cd '" + folder.string() + "'; PATH=" ATTACKS_FOLDER ":$PATH; " + line;
    std::string output;
    FILE* pipe = ::popen(whole.c_str(), "r");
    for (int byte; pipe && (byte = std::fgetc(pipe)) != EOF;) output += static_cast<char>(byte);
    if (pipe) ::pclose(pipe);
    return output;
}

/// A user's home, and a station that commands may read.
class Household {
  public:
    Household() {
        scratch_.Write("home/.profile", "mine");
        scratch_.Write("home/Music/song.flac", "la la la");
        scratch_.Write("home/.ssh/id", "SECRET");
        scratch_.Write("station/program", "station");
        fs::permissions(scratch_.Path("home/.ssh"), fs::perms::owner_all);
        fs::create_directory_symlink(scratch_.Path("home/.ssh"), scratch_.Folder() / "planted");
        leak_ = Descriptor(::open(scratch_.Path("home/.ssh/id").c_str(), O_RDONLY));
    }

    std::string Line(const std::string& attack) const {
        return "H='" + scratch_.Path("home").string() + "' S='" + scratch_.Path("station").string() +
               "' P=" + std::to_string(::getpid()) + " D=" + std::to_string(leak_.Get()) + "; " + attack;
    }
    std::string Confined(const std::string& attack) const {
        Confinement confinement = scratch_.Bounds();
        confinement.readable = {scratch_.Path("station")};
        return scratch_.Run(Line(attack), confinement).output;
    }
    std::string Unconfined(const std::string& attack) const {
        return process::Unconfined(scratch_.Folder(), Line(attack));
    }

    /// Names, modes, times and contents of all that a command must leave alone.
    std::string State() const {
        std::map<std::string, std::string> entries;
        for (const char* part : {"home", "station"})
            for (const fs::path& path : fs::recursive_directory_iterator(scratch_.Path(part))) {
                struct stat status {};
                ::lstat(path.c_str(), &status);
                std::ostringstream text;
                text << status.st_mode << ' ' << status.st_mtim.tv_sec << ' ' << status.st_nlink << ' '
                     << (S_ISREG(status.st_mode) ? Scratch::ReadFile(path) : "");
                entries[path] = text.str();
            }
        return testing::PrintToString(entries);
    }

  private:
    Scratch scratch_;
    Descriptor leak_;
};

TEST(Attack, NothingOfTheUserIsReadOrChanged) {
    const char* attacks[] = {"echo x > \"$H/new\"",
                             "echo x >> \"$H/.profile\"",
                             "rm -rf \"$H/Music\"",
                             "mv \"$H/Music\" .",
                             "cat \"$H/.ssh/id\"",
                             "cat \"../home/.ssh/id\"",
                             "cat planted/id",
                             "rm planted/id; echo x > planted/new",
                             "cat \"/proc/$P/root$H/.ssh/id\"",
                             "cat /proc/$P/fd/$D <&$D",
                             "ln -s \"$H/.ssh\" s; cat s/id; echo x > s/x",
                             "attack hard-link \"$H/.ssh/id\" && cat linked",
                             "echo x > \"$S/program\"",
                             "rm \"$S/program\"",
                             "attack cut \"$S/program\"",
                             "attack cut \"$H/.profile\"",
                             "attack cut-path \"$S/program\"",
                             "attack cut-path \"$H/.profile\"",
                             "attack mode \"$S/program\"",
                             "attack mode \"$H/.profile\"",
                             "attack open-mode \"$S/program\"",
                             "touch -d 2001-01-01 \"$H/.profile\"",
                             "touch -d 2001-01-01 \"$S/program\"",
                             "attack descriptors | sed s/done/SECRET/"};
    for (const char* attack : attacks) {
        {
            const Household control;
            const std::string before = control.State();
            const std::string output = control.Unconfined(attack);
            EXPECT_TRUE(output.find("SECRET") != std::string::npos || control.State() != before)
                << "harmless: " << attack;
        }
        for (const Force& force : kForces) {
            const Under under(force.most);
            const Household house;
            const std::string before = house.State();
            EXPECT_THAT(house.Confined(attack), Not(HasSubstr("SECRET"))) << force.name << ": " << attack;
            EXPECT_EQ(house.State(), before) << force.name << ": " << attack;
        }
    }
}

TEST(Attack, TheRealHomeIsOutOfReach) {
    const char* home = std::getenv("HOME");
    if (!home || ::access(home, W_OK) != 0) GTEST_SKIP() << "nobody is at home";
    const fs::path damage = fs::path(home) / "sorakaze-attack-test";
    const Scratch scratch;
    for (const Force& force : kForces) {
        const Under under(force.most);
        EXPECT_EQ(scratch.Run("echo x > '" + damage.string() + "'; ls -A '" + home + "'; ls -A ~root").output,
                  "")
            << force.name;
        EXPECT_FALSE(fs::exists(damage)) << force.name;
    }
}

/// Sockets of the user's own, and how many of them somebody reached.
class Listeners {
  public:
    explicit Listeners(const Scratch& scratch)
        : outside_(scratch.Path("socket").string()), inside_((scratch.Folder() / "socket").string()) {
        Internet(SOCK_STREAM);
        Internet(SOCK_DGRAM);
        abstract_ = "@sorakaze test " + std::to_string(::getpid());
        for (const std::string& name : {outside_, abstract_, inside_}) Local(name);
    }
    ~Listeners() {
        for (const pollfd& socket : sockets_) ::close(socket.fd);
    }
    std::string Line() const {
        return "attack tcp " + ports_[0] + "; attack udp " + ports_[1] + "; attack local '" + outside_ +
               "'; attack local '" + abstract_ + "'; ";
    }
    std::string LineInside() const { return "attack local '" + inside_ + "'; "; }
    int Reached() { return ::poll(sockets_.data(), sockets_.size(), 0); }

  private:
    void Internet(int type) {
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        socklen_t length = sizeof address;
        const int socket = ::socket(AF_INET, type | SOCK_CLOEXEC, 0);
        EXPECT_EQ(::bind(socket, reinterpret_cast<sockaddr*>(&address), length), 0);
        EXPECT_TRUE(type != SOCK_STREAM || ::listen(socket, 8) == 0);
        ::getsockname(socket, reinterpret_cast<sockaddr*>(&address), &length);
        ports_.push_back(std::to_string(ntohs(address.sin_port)));
        sockets_.push_back({socket, POLLIN, 0});
    }
    void Local(const std::string& name) {
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        std::memcpy(address.sun_path, name.data(), name.size());
        if (name[0] == '@') address.sun_path[0] = 0;
        const int socket = ::socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0);
        EXPECT_EQ(::bind(socket, reinterpret_cast<sockaddr*>(&address),
                         static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + name.size())),
                  0);
        if (name[0] != '@') fs::permissions(name, fs::perms::all);
        sockets_.push_back({socket, POLLIN, 0});
    }

    std::string outside_, inside_, abstract_;
    std::vector<std::string> ports_;
    std::vector<pollfd> sockets_;
};

TEST(Attack, NoSocketIsReached) {
    {
        const Scratch scratch;
        Listeners control(scratch);
        Unconfined(scratch.Folder(), control.Line() + control.LineInside());
        EXPECT_EQ(control.Reached(), 5);
    }
    const Scratch scratch;
    Listeners listeners(scratch);
    for (const Force& force : kForces) {
        const Under under(force.most);
        // Only the filter knows a socket in the folder that the command may write.
        const std::string line =
            listeners.Line() + (force.most.systemCallFilter ? listeners.LineInside() : "");
        const std::string output = scratch.Run(line).output;
        EXPECT_THAT(output, testing::StartsWith("E")) << force.name;
        EXPECT_THAT(output, Not(HasSubstr("done"))) << force.name;
        EXPECT_EQ(listeners.Reached(), 0) << force.name;
    }
}

/// A program of the user's that goes about its business.
class Victim {
  public:
    Victim() {
        const char* words[] = {"sleep", "1000", nullptr};
        EXPECT_EQ(::posix_spawn(&process, "/bin/sleep", nullptr, nullptr, const_cast<char**>(words), nullptr),
                  0);
    }
    ~Victim() {
        if (!Lives()) return;
        ::kill(process, SIGKILL);
        ::waitpid(process, nullptr, 0);
    }
    bool Lives() { return !ended_ && !(ended_ = ::waitpid(process, nullptr, WNOHANG) == process); }
    void AwaitEnd() { ended_ = ::waitpid(process, nullptr, 0) == process; }

    pid_t process = -1;

  private:
    bool ended_ = false;
};

TEST(Attack, NoOtherProcessIsTouched) {
    const auto line = [](pid_t process, const char* attack) {
        return std::string(attack) + ' ' + std::to_string(process) + "; ";
    };
    for (const char* attack : {"attack signal", "attack thread-signal", "kill -TERM"}) {
        Victim control;
        Unconfined("/", line(control.process, attack));
        control.AwaitEnd();
    }
    Victim victim;
    for (const Force& force : kForces) {
        const Under under(force.most);
        const Scratch scratch;
        for (const char* attack :
             {"attack signal", "attack thread-signal", "attack trace", "attack memory-of"}) {
            EXPECT_THAT(scratch.Run(line(victim.process, attack)).output, testing::StartsWith("E"))
                << force.name << ": " << attack;
        }
        scratch.Run(line(victim.process, "kill -TERM"));
        EXPECT_TRUE(victim.Lives()) << force.name;
    }
}

TEST(Attack, NothingIsTypedIntoATerminal) {
    const Descriptor master(::posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC));
    ASSERT_TRUE(master && ::grantpt(master.Get()) == 0 && ::unlockpt(master.Get()) == 0);
    // Left open for every program that starts, by mistake.
    const Descriptor terminal(::open(::ptsname(master.Get()), O_RDWR | O_NOCTTY));
    termios raw{};
    ::tcgetattr(terminal.Get(), &raw);
    ::cfmakeraw(&raw);
    ::tcsetattr(terminal.Get(), TCSANOW, &raw);
    pollfd typed{terminal.Get(), POLLIN, 0};
    const Scratch scratch;
    for (const Force& force : kForces) {
        const Under under(force.most);
        EXPECT_THAT(scratch.Run("attack type").output, testing::StartsWith("E")) << force.name;
        EXPECT_EQ(::poll(&typed, 1, 0), 0) << force.name;
    }
    // Root may, where the kernel has that call at all.
    const bool could = ::geteuid() == 0 && Unconfined("/", "attack type") == "done\n";
    EXPECT_EQ(::poll(&typed, 1, 0), could ? 1 : 0);
}

TEST(Attack, TheKernelsCornersAreRefused) {
    const Scratch scratch;
    EXPECT_EQ(scratch.Run("attack calls; ls").output,
              "bpf:EPERM\nkeyctl:EPERM\nperf:EPERM\nunshare:EPERM\nclone:EPERM\nclone3:ENOSYS\nmount:EPERM\n"
              "io_uring:ENOSYS\nuserfaultfd:ENOSYS\nmemfd:ENOSYS\nkexec:EPERM\nsymlink:EPERM\nfifo:EPERM\n"
              "young:ENOSYS\n");
#if defined(__x86_64__)
    for (const char* attack : {"attack x32", "attack ia32"})
        EXPECT_EQ(scratch.Run(attack).status, 128 + SIGSYS) << attack;
#endif
}

}  // namespace
}  // namespace sorakaze::process
