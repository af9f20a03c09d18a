// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// Commands that take all there is, that don't end, and that want to outlive their line or the application;
// and an application that runs thousands of them.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <spawn.h>
#include <sys/file.h>
#include <sys/wait.h>

#include <atomic>
#include <csignal>
#include <functional>

#include "tests/process/Scratch.h"

namespace sorakaze::process {
namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;

std::uint64_t BytesIn(const fs::path& folder) {
    std::uint64_t sum = 0;
    for (const fs::directory_entry& entry : fs::recursive_directory_iterator(folder))
        if (entry.is_regular_file()) sum += entry.file_size();
    return sum;
}

TEST(Bounds, EachEndsWhatGoesBeyondIt) {
    const struct {
        const char* name;
        std::string line;
        std::function<void(Confinement&)> change;
    } cases[] = {
        {"wall time", "sleep 1000", [](Confinement& c) { c.wallTime = 200ms; }},
        {"processor time", "while :; do :; done", [](Confinement& c) { c.processorTime = 1s; }},
        {"endless output", "yes", [](Confinement& c) { c.wallTime = 500ms; }},
        {"closed output", "exec >&-; sleep 1000", [](Confinement& c) { c.wallTime = 200ms; }},
        {"fork bomb", "attack bomb", [](Confinement& c) { c.wallTime = 1s; }},
        {"one big file", "head -c 9000000 /dev/zero > big", [](Confinement& c) { c.fileSize = 1 << 20; }},
        {"many files", "attack fill", [](Confinement& c) { c.folderSize = 8 << 20; }},
        {"files without names", "attack fill-removed", [](Confinement& c) { c.folderSize = 8 << 20; }},
        {"empty files", "n=0; while :; do : > $((n+=1)); done",
         [](Confinement& c) { c.folderSize = 1 << 20; }},
        {"deep folders", "while :; do mkdir d; cd d; done", [](Confinement&) {}},
        {"the memory of many", "for n in 1 2 3 4 5 6 7 8; do attack hold-memory 60 & done; wait",
         [](Confinement& c) { c.addressSpace = 64 << 20; }},
    };
    for (const Mechanisms& most : {All(), WithoutNamespaces()}) {
        const Under under(most);
        for (const auto& [name, line, change] : cases) {
            const Scratch scratch;
            std::ofstream(scratch.Folder() / "kept") << "from before";
            Confinement confinement = scratch.Bounds();
            confinement.outputSize = 1 << 20;
            confinement.wallTime = 30s;
            change(confinement);
            const CommandResult result = scratch.Run(line, confinement);
            EXPECT_TRUE(result.timedOut) << name;
            EXPECT_FALSE(result.killed) << name;
            EXPECT_LE(result.output.size(), confinement.outputSize) << name;
            EXPECT_EQ(scratch.ReadBack("kept"), "from before") << name;
            fs::remove(scratch.Folder() / "kept");
            EXPECT_LE(BytesIn(scratch.Folder()), std::min(confinement.folderSize, confinement.fileSize))
                << name;
            // The next one finds everything as if nothing had happened.
            EXPECT_EQ(scratch.Run("ls | wc -l; echo next", confinement).status, 0) << name;
        }
    }
}

TEST(Bounds, ProcessesAndMemoryRunOut) {
    const Scratch scratch;
    Confinement confinement = scratch.Bounds();
    confinement.processes = 9;  // the attacker, in the shell's place, and eight more
    confinement.addressSpace = 100 << 20;
    EXPECT_EQ(scratch.Run("exec attack fork 200", confinement).output, "8\n");
    const int megabytes = std::stoi(scratch.Run("attack memory 500", confinement).output);
    EXPECT_GT(megabytes, 50);
    EXPECT_LT(megabytes, 100);
}

/// The lock that "attack linger" holds for as long as it lives.
class Lock {
  public:
    explicit Lock(const fs::path& path) : file_(::open(path.c_str(), O_RDWR | O_CLOEXEC)) {}
    bool IsFree() const { return ::flock(file_.Get(), LOCK_EX | LOCK_NB) == 0; }
    void Await() const { EXPECT_EQ(::flock(file_.Get(), LOCK_EX), 0); }

  private:
    Descriptor file_;
};

TEST(Bounds, NothingOutlivesItsLine) {
    for (const Mechanisms& most : {All(), WithoutNamespaces(), Mechanisms{99, false, false, false, false}}) {
        const Under under(most);
        const Scratch scratch;
        EXPECT_EQ(scratch.Run("attack linger lock").output, "done\n");
        EXPECT_TRUE(Lock(scratch.Folder() / "lock").IsFree());
    }
}

TEST(Bounds, NothingOutlivesTheApplication) {
    for (const char* namespaces : {"WITH", "WITHOUT"}) {
        const Scratch scratch;
        const std::string folder = scratch.Folder(), line = "attack linger lock; echo > started; sleep 1000";
        const char* words[] = {HOST_PROGRAM,   namespaces,   folder.c_str(),
                               ATTACKS_FOLDER, line.c_str(), nullptr};
        pid_t host = -1;
        ASSERT_EQ(::posix_spawn(&host, HOST_PROGRAM, nullptr, nullptr, const_cast<char**>(words), environ),
                  0);
        scratch.AwaitFile("started");
        const Lock lock(scratch.Folder() / "lock");
        EXPECT_FALSE(lock.IsFree());
        ::kill(host, SIGKILL);
        ::waitpid(host, nullptr, 0);
        lock.Await();
    }
}

std::ptrdiff_t OpenDescriptors() {
    return std::distance(fs::directory_iterator("/proc/self/fd"), fs::directory_iterator());
}

TEST(Bounds, ManyRunsFromManyThreadsLeaveNothingBehind) {
    const Scratch scratch;
    const std::ptrdiff_t before = OpenDescriptors();
    std::atomic<int> wrong = 0;
    std::vector<std::thread> threads;
    for (int number = 0; number < 4; ++number)
        threads.emplace_back([&, number] {
            for (int run = 0; run < 25; ++run) {
                ConfinedProcess process("echo a | cat", scratch.Bounds());
                std::thread killer;
                if (number % 2 == 1) killer = std::thread([&] { process.Kill(); });
                const CommandResult result = process.Run();
                if (killer.joinable()) killer.join();
                // Killed or not, the end is told as it was.
                const bool whole = result.status == 0 && result.output == "a\n";
                wrong += !(whole || (result.killed && result.status != 0));
            }
        });
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(wrong, 0);
    EXPECT_EQ(OpenDescriptors(), before);
    EXPECT_EQ(::waitpid(-1, nullptr, WNOHANG | __WALL), -1);
    EXPECT_EQ(errno, ECHILD);
}

TEST(Bounds, SignalsOfTheApplicationStayItsOwn) {
    // Whatever an application does with its signals and its children, commands have theirs as usual.
    struct sigaction ignore {
    }, pipe{}, child{};
    ignore.sa_handler = SIG_IGN;
    ::sigaction(SIGPIPE, &ignore, &pipe);
    ::sigaction(SIGCHLD, &ignore, &child);
    sigset_t term, before;
    ::sigemptyset(&term);
    ::sigaddset(&term, SIGTERM);
    ::pthread_sigmask(SIG_BLOCK, &term, &before);
    const Scratch scratch;
    const CommandResult result =
        scratch.Run("(yes; echo $? > yes) | head -n 1; cat yes; kill -TERM $$; exit 5");
    ::pthread_sigmask(SIG_SETMASK, &before, nullptr);
    ::sigaction(SIGPIPE, &pipe, nullptr);
    ::sigaction(SIGCHLD, &child, nullptr);
    EXPECT_EQ(result.output, "y\n141\n");
    EXPECT_EQ(result.status, 128 + SIGTERM);
}

TEST(Bounds, SaysWhatIsInForceAndStartsNothingWithoutItsFolder) {
    {
        const Under under({0, false, false, false, true});
        const ConfinementSupport support = QueryConfinementSupport();
        EXPECT_EQ(support.inForce, "seccomp, limits");
        EXPECT_EQ(support.missing, "landlock, namespaces, a file system view of its own");
    }
    Confinement nowhere;
    nowhere.writableFolder = "/nowhere/at all";
    EXPECT_EQ(ConfinedProcess("echo x", nowhere).Run().status, 127);
    EXPECT_EQ(ConfinedProcess("echo x", Confinement{}).Run().status, 127);
}

}  // namespace
}  // namespace sorakaze::process
