// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// What an honest command finds: a shell that works, the folders that it was promised, and an end that tells
// the truth. Commands that take all there is, that don't end, and that want to outlive their line or the
// application.
#include <fcntl.h>
#include <sys/file.h>
#include <sys/wait.h>

#include <atomic>
#include <csignal>
#include <cstdlib>

#include "tests/process/Scratch.h"
#include "tests/support/Program.h"

namespace sorakaze::process {
namespace {

using namespace std::chrono_literals;

TEST(ConfinedProcess, RunsShellLinesWhateverTheApplicationDoesWithItsSignals) {
    const auto pipe = ::signal(SIGPIPE, SIG_IGN), child = ::signal(SIGCHLD, SIG_IGN);
    sigset_t term, before;
    ::sigemptyset(&term);
    ::sigaddset(&term, SIGTERM);
    ::pthread_sigmask(SIG_BLOCK, &term, &before);
    const Scratch scratch;
    Confinement confinement = scratch.Bounds();
    confinement.output.clear();
    confinement.outputSize = 100'000;
    const struct {
        const char* line;
        int status;
        std::string output;
    } cases[] = {
        {"echo \"$(printf 'a%s' b) `echo c` \\$d\"", 0, "ab c $d\n"},
        {"printf 'b\\na\\n' | sort | tr a-z A-Z; exit 7", 7, "A\nB\n"},
        {"(yes; echo $? > yes) | head -n 1; cat yes; rm yes; kill -TERM $$; exit 5", 128 + SIGTERM,
         "y\n141\n"},
        {"-c", 127, ""},
        {"echo lost >&2; cat; echo kept", 0, "kept\n"},
        {"head -c 30000000 /dev/zero; exit 4", 4, std::string(confinement.outputSize, '\0')},
        {"echo 'ことば' > 'あ い.txt'; cat 'あ い.txt'", 0, "ことば\n"},
        {"env | cut -d= -f1 | sort | tr '\\n' ' '", 0, "HOME LANG PATH PWD TMPDIR "},
        {"mkdir a b; echo x > a/f; mv a/f b/g; cat b/g; rm -r a b; ls -A", 0, "x\n"},
    };
    for (const auto& [line, status, output] : cases) {
        const CommandResult result = ConfinedProcess(line, confinement).Run();
        EXPECT_EQ(result.status, status) << line;
        EXPECT_EQ(result.output, output) << line;
        EXPECT_FALSE(result.killed || result.exceeded) << line;
    }
    EXPECT_TRUE(fs::is_empty(scratch.Folder()));
    for (const char* nowhere : {"", "/nowhere/at all"}) {
        confinement.folder = nowhere;
        EXPECT_EQ(ConfinedProcess("echo x", confinement).Run().status, 127);
    }
    ::pthread_sigmask(SIG_SETMASK, &before, nullptr);
    ::signal(SIGPIPE, pipe);
    ::signal(SIGCHLD, child);
}

TEST(ConfinedProcess, FindsAndReadsButDoesNotWriteWhatItIsGiven) {
    const Scratch scratch;
    scratch.Write("Resources 資源/say", "#!/bin/sh\necho \"our say: $*\"\n");
    for (const char* name : {"later/say", "later/ls"}) scratch.Write(name, "#!/bin/sh\necho our later one\n");
    for (const char* name : {"Resources 資源/say", "later/say", "later/ls"})
        fs::permissions(scratch / name, fs::perms::owner_all);
    scratch.Write("data 辞書/deep/file", "words\n");
    fs::create_directory_symlink(scratch / "data 辞書", scratch / "link");
    Confinement confinement = scratch.Bounds();
    confinement.searchFirst = {scratch / "Resources 資源", scratch / "later"};
    confinement.readable = {scratch / "Resources 資源", scratch / "later", scratch / "link",
                            scratch / "nowhere",        "/bin/sh",         "/dev"};
    const std::string line = "say -v Alex \"a  b\"; ls; cd '" + (scratch / "").string() +
                             "'; cat link/deep/file 'data 辞書/deep/file'; echo x > link/deep/file";
    fs::permissions(scratch / "data 辞書/deep", fs::perms::owner_all);
    for (const Mechanisms& most : {kEverything, kWithoutNamespaces}) {
        const Under under(most);
        const CommandResult result = ConfinedProcess(line, confinement).Run();
        EXPECT_EQ(result.output, "our say: -v Alex a  b\nour later one\nwords\nwords\n");
        EXPECT_NE(result.status, 0);
        EXPECT_EQ(test::ReadBytes(scratch / "data 辞書/deep/file"), "words\n");
    }
}

TEST(ConfinedProcess, KillEndsItBeforeAndDuring) {
    const Scratch scratch;
    // The line says by its output that it runs.
    ConfinedProcess process(scratch.Line("echo out; echo x > $O; sleep 1000"), scratch.Bounds());
    CommandResult result;
    std::thread runner([&] { result = process.Run(); });
    scratch.AwaitOutput();
    process.Kill();
    runner.join();
    EXPECT_TRUE(result.killed && !result.exceeded);
    EXPECT_EQ(result.status, 128 + SIGKILL);
    EXPECT_EQ(result.output, "out\n");
    EXPECT_FALSE(fs::exists(scratch.Output()));
    result = process.Run();
    EXPECT_TRUE(result.killed && result.status != 0 && result.output.empty());
}

TEST(ConfinedProcess, UsesWhatThereIsAndSaysOnceWhatIsMissing) {
    constexpr const char* kInside = "SORAKAZE_TEST_INSIDE";
    if (std::getenv(kInside)) {
        const Under under(Mechanisms{0, false, false, false, false});
        const Scratch scratch;
        for (int run = 0; run < 2; ++run) EXPECT_EQ(scratch.Run("echo runs").output, "runs\n");
        return;
    }
    // A process of its own, in which nothing has been said.
    const Scratch scratch;
    const fs::path said = scratch / "said";
    const auto self = fs::read_symlink("/proc/self/exe").string();
    EXPECT_EQ(test::Program({"/usr/bin/env", std::string(kInside) + "=1", self,
                             "--gtest_filter=ConfinedProcess.UsesWhat*"},
                            said, test::Program::Errors::WithOutput)
                  .Wait(),
              0);
    const std::string text = test::ReadBytes(said);
    const std::string line =
        "Sorakaze: commands run confined by limits only; this system lacks: landlock, namespaces, a file "
        "system "
        "view of its own, seccomp\n";
    const auto found = text.find(line);
    ASSERT_NE(found, std::string::npos) << text;
    EXPECT_EQ(text.find("Sorakaze:", found + 1), std::string::npos) << text;
}

TEST(ConfinedProcess, MakesOneFileOrNone) {
    constexpr uid_t kAnybody = 60'001;
    const struct {
        const char* line;
        const char* made;  ///< null for nothing
    } cases[] = {
        {":", nullptr},
        {"echo made > $O", "made\n"},
        {"echo made > $O; exit 3", "made\n"},
        {"echo made > $O; chmod 0 $O", "made\n"},
        {"echo made > $O; chmod 4777 $O; chmod 777 $O $F .", "made\n"},
        {"echo made > $O; sleep 1000", nullptr},
        {"echo made > $O; mv $O other; echo more > $O", "more\n"},
        {"head -c 3000000 /dev/zero > $O", nullptr},
        {"rm -f $O; mkdir $O || : > $O", nullptr},
        {"rm -f $O; ln -s /etc/passwd $O || : > $O", nullptr},
        {"echo beside > $F/beside; echo over > $F/before", nullptr},
    };
    for (const uid_t user : {uid_t{0}, kAnybody})
        for (const auto& [name, most] : kForces) {
            const bool passed = AsUser(user, [&, most = most] {
                const Under under(most);
                const Scratch scratch;
                Confinement bounds = scratch.Bounds();
                bounds.fileSize = 1 << 20;
                std::ofstream(scratch.Folder() / "before") << "mine";
                std::ofstream(scratch.Output()) << "from before";
                for (const auto& [line, made] : cases) {
                    bounds.wallTime = std::string_view(line).ends_with("sleep 1000") ? 300ms : 30s;
                    ConfinedProcess(scratch.Line(line), bounds).Run();
                    struct stat status {};
                    const bool exists = ::lstat(scratch.Output().c_str(), &status) == 0;
                    EXPECT_EQ(exists, made != nullptr) << line;
                    if (exists && made) {
                        EXPECT_EQ(status.st_mode, S_IFREG | 0600u) << line;
                        EXPECT_EQ(status.st_uid, ::geteuid()) << line;
                        EXPECT_EQ(test::ReadBytes(scratch.Output()), made) << line;
                    }
                    fs::remove(scratch.Output());
                    EXPECT_EQ(test::ReadBytes(scratch.Folder() / "before"), "mine") << line;
                    EXPECT_EQ(std::distance(fs::directory_iterator(scratch.Folder()), {}), 1) << line;
                }
            });
            EXPECT_TRUE(passed) << name << " as " << user;
        }
}

TEST(Bounds, EachEndsWhatGoesBeyondIt) {
    const struct {
        const char* line;
        std::chrono::milliseconds wallTime = 30s;
        std::optional<ExceededLimit> limit = {};  ///< empty where more than one can be met first
    } cases[] = {
        {"exec >&-; sleep 1000", 200ms, ExceededLimit::WallTime},
        {"while :; do :; done", 30s, ExceededLimit::ProcessorTime},
        {"yes", 500ms},
        {"perl -e 'fork while 1'", 1s},
        {"head -c 3000000 /dev/zero > big", 30s, ExceededLimit::FileSize},
        {"while :; do mkdir d; cd d; done", 2s},
        {"for n in 1 2 3 4 5 6 7 8; do (head -c 40000000 /dev/zero; sleep 60) | tail -c 40000000 & done; "
         "wait",
         30s, ExceededLimit::Memory},
        // In memory that is shared, of which no process has a page in use.
        {"for n in 1 2 3 4 5 6 7 8; do attack share 40000000 & done; wait", 30s, ExceededLimit::Memory},
    };
    for (const Mechanisms& most : {kEverything, kWithoutNamespaces}) {
        const Under under(most);
        for (const auto& [line, wallTime, limit] : cases) {
            const Scratch scratch;
            const fs::path kept = scratch.Folder() / "kept";
            std::ofstream(kept) << "from before";
            Confinement bounds = scratch.Bounds();
            bounds.wallTime = wallTime;
            bounds.processorTime = 1s;
            bounds.outputSize = bounds.fileSize = 1 << 20;
            bounds.folderSize = 4 << 20;
            bounds.addressSpace = 64 << 20;
            bounds.memory = 128 << 20;
            const CommandResult result = ConfinedProcess(scratch.Line(line), bounds).Run();
            EXPECT_TRUE(result.exceeded && !result.killed) << line;
            if (limit) {
                EXPECT_EQ(result.exceeded, limit) << line;
            }
            EXPECT_LE(result.output.size(), bounds.outputSize) << line;
            EXPECT_EQ(test::ReadBytes(kept), "from before") << line;
            EXPECT_EQ(std::distance(fs::directory_iterator(scratch.Folder()), {}), 1) << "left by " << line;
        }
    }
}

TEST(Bounds, TheFolderIsFullAtItsSize) {
    for (const Mechanisms& most : {kEverything, kWithoutNamespaces})
        for (const char* line :
             {"while head -c 1000000 /dev/zero > $n.; do n=$((n+1)); [ $n = 9 ] && break; done",
              "for n in 3 4 5 6 7 8 9; do eval \"exec $n>f\"; rm f; head -c 1000000 /dev/zero >&$n || exit; "
              "done",
              "attack removed 8 1000000 >&2 || exit", "while [ $n != 9000 ]; do : > $((n+=1)); done"}) {
            const Under under(most);
            const Scratch scratch;
            Confinement bounds = scratch.Bounds();
            bounds.folderSize = 4 << 20;
            bounds.wallTime = 30s;
            // Either there is no room for more, or what took it is ended.
            const CommandResult result = ConfinedProcess(scratch.Line(std::string("n=0; ") + line +
                                                                      "; sleep 2; test $n = 4 || echo whole"),
                                                         bounds)
                                             .Run();
            EXPECT_EQ(result.output, "") << line;
        }
}

TEST(Bounds, ProcessesAndMemoryRunOut) {
    const Scratch scratch;
    Confinement bounds = scratch.Bounds();
    bounds.processes = 9;  // the one in the shell's place and eight more
    bounds.addressSpace = 100 << 20;
    const std::pair<const char*, const char*> cases[] = {
        {"exec perl -e 'while (defined($child = fork)) { $child or sleep; $n++ } print $n'", "8"},
        {"head -c 50000000 /dev/zero | tail -c 50000000 | wc -c", "50000000\n"},
        {"head -c 120000000 /dev/zero | tail -c 120000000 | wc -c", "0\n"}};
    for (const auto& [line, output] : cases)
        EXPECT_EQ(ConfinedProcess(line, bounds).Run().output, output) << line;
}

TEST(Bounds, NothingOutlivesItsLineOrTheApplication) {
    // Leaves a process behind that holds a lock, in a session of its own where it may.
    const std::string linger =
        "(trap '' HUP TERM; setsid true && s=setsid; $s flock $F/../lock sh -c '> held; sleep 1000' >&- &);"
        "until [ -e held ]; do :; done; echo done; echo x > $O";
    for (const Mechanisms& most :
         {kEverything, kWithoutNamespaces, Mechanisms{99, false, false, false, false}}) {
        const Under under(most);
        const Scratch line, application;
        const auto run = [](const Scratch& scratch, const std::string& text) {
            scratch.Write("lock", "");
            Confinement bounds = scratch.Bounds();
            bounds.readable.push_back(scratch / "lock");
            return ConfinedProcess(scratch.Line(text), bounds).Run();
        };
        const auto lock = [](const Scratch& scratch, int how) {
            const FileDescriptor file(::open((scratch / "lock").c_str(), O_RDWR | O_CLOEXEC));
            return ::flock(file.Get(), LOCK_EX | how) == 0;
        };
        EXPECT_EQ(run(line, linger).output, "done\n");
        EXPECT_TRUE(lock(line, LOCK_NB));
        const pid_t host = ::fork();
        if (host == 0) {
            run(application, linger + "; sleep 1000");
            ::_exit(1);
        }
        application.AwaitOutput();
        EXPECT_FALSE(lock(application, LOCK_NB));
        ::kill(host, SIGKILL);
        ::waitpid(host, nullptr, 0);
        EXPECT_TRUE(lock(application, 0));
    }
}

TEST(Bounds, ManyRunsFromManyThreadsLeaveNothingBehind) {
    const auto descriptors = [] {
        return std::distance(fs::directory_iterator("/proc/self/fd"), fs::directory_iterator());
    };
    const Scratch scratch;
    Confinement bounds = scratch.Bounds();
    bounds.output.clear();
    const auto before = descriptors();
    std::atomic<int> wrong = 0;
    std::vector<std::thread> threads;
    for (int number = 0; number < 4; ++number)
        threads.emplace_back([&, number] {
            for (int run = 0; run < 25; ++run) {
                ConfinedProcess process("echo a | cat", bounds);
                std::thread killer([&] { number % 2 == 1 ? process.Kill() : void(); });
                const CommandResult result = process.Run();
                killer.join();
                // Killed or not, the end is told as it was.
                const bool whole = result.status == 0 && result.output == "a\n";
                wrong += !(whole || (result.killed && result.status != 0));
            }
        });
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(wrong, 0);
    EXPECT_EQ(descriptors(), before);
    EXPECT_EQ(::waitpid(-1, nullptr, WNOHANG | __WALL), -1);
    EXPECT_EQ(errno, ECHILD);
}

}  // namespace
}  // namespace sorakaze::process
