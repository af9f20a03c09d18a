// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// What a decoder's process that a file has taken over could reach: nothing, under every combination of
// mechanisms around it, whoever the station's user is.
#include <gmock/gmock.h>
#include <poll.h>
#include <sys/socket.h>

#include "process/ConfinedHelper.h"
#include "tests/process/Scratch.h"
#include "tests/support/LocalAddress.h"

namespace sorakaze::process {
namespace {

using testing::ElementsAre;
using testing::IsSupersetOf;

constexpr uid_t kStation = 61999;
constexpr Mechanisms kNothing{};

/// A socket that every process of the machine can send to.
class AbstractSocket {
  public:
    AbstractSocket() : socket_(::socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0)) {
        const test::LocalAddress address(name_);
        EXPECT_EQ(::bind(socket_.Get(), address.Get(), address.size), 0);
    }
    const std::string& Name() const { return name_; }
    bool WasReached() const {
        char byte = 0;
        return ::recv(socket_.Get(), &byte, 1, 0) >= 0;
    }

  private:
    const std::string name_ = "@sorakaze-test-" + std::to_string(::getpid());
    const FileDescriptor socket_;
};

/// What an intruder in that role came to, with "done" at its end.
std::vector<std::string> ReachedAs(const std::string& role) {
    const test::TemporaryFolder folder;
    fs::permissions(folder.Path(), fs::perms(0711));
    const AbstractSocket abstract;
    HelperOptions options;
    options.program = INTRUDER;
    options.arguments = {role, std::to_string(::getpid()), folder.Write("own", "mine"), abstract.Name()};
    ConfinedHelper helper(options);
    std::vector<std::string> reached;
    pollfd channel{helper.Channel(), POLLIN, 0};
    while (::poll(&channel, 1, 60'000) > 0) {
        char text[512];
        const ssize_t size = ::recv(helper.Channel(), text, sizeof text, 0);
        if (size <= 0) break;
        reached.emplace_back(text, static_cast<std::size_t>(size));
        // Its own peer gets what it sends to another address.
        if (reached.back() == "reached") reached.pop_back();
        if (!reached.empty() && reached.back() == "done") break;
    }
    if (abstract.WasReached()) reached.emplace_back("an abstract socket");
    return reached;
}

/// The attacks are real ones: what holds them is the bounds.
TEST(Reach, WithoutBoundsIsWide) {
    EXPECT_TRUE(AsUser(kStation, [] {
        const Under under(kNothing);
        EXPECT_THAT(ReachedAs("unbound"),
                    IsSupersetOf({"openat /etc/passwd", "stat /tmp", "socket 1", "socket 2",
                                  "kill its parent", "kill a sibling", "kill the application",
                                  "memory: private", "memory: shared", "memory: stack", "memory: more stack",
                                  "memory: made writable", "fork", "executed"}));
    }));
}

TEST(Reach, OfAWorkerIsNothing) {
    std::vector<std::pair<const char*, Mechanisms>> forces(std::begin(kForces), std::end(kForces));
    forces.emplace_back("nothing around it", kNothing);
    forces.emplace_back("the filter alone", Mechanisms{0, false, false, false, true});
    for (const uid_t user : {uid_t{0}, kStation})
        for (const auto& [name, most] : forces)
            EXPECT_TRUE(AsUser(user,
                               [most = most] {
                                   const Under under(most);
                                   EXPECT_THAT(ReachedAs("worker"), ElementsAre("done"));
                                   EXPECT_THAT(ReachedAs("threads"), ElementsAre("done"));
                               }))
                << name << " as " << user;
}

/// It reads no foreign byte. It starts workers and ends them, and has nothing to open or to talk to either.
TEST(Reach, OfTheFirstProcessIsItsWorkers) {
    for (const uid_t user : {uid_t{0}, kStation})
        for (const auto& [name, most] : kForces)
            EXPECT_TRUE(AsUser(user,
                               [most = most] {
                                   const Under under(most);
                                   auto reached = ReachedAs("program");
                                   // Without a namespace the kernel lets it signal its user's processes.
                                   if (!most.namespaces) std::erase(reached, "kill the application");
                                   EXPECT_THAT(reached, ElementsAre("done"));
                               }))
                << name << " as " << user;
}

}  // namespace
}  // namespace sorakaze::process
