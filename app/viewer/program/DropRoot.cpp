// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/viewer/program/DropRoot.h"

#include <grp.h>
#include <sched.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>
#include <set>
#include <vector>

#include "process/CommandUser.h"

namespace sorakaze::viewer {
namespace {

/// Where there is no sound server the devices themselves are played on, by members of their group.
std::vector<gid_t> GroupsOfSound() {
    std::set<gid_t> groups;
    std::error_code none;
    for (const auto& device : std::filesystem::directory_iterator("/dev/snd", none)) {
        struct stat status {};
        const bool shared = ::stat(device.path().c_str(), &status) == 0 && S_ISCHR(status.st_mode);
        if (shared && status.st_gid != 0) groups.insert(status.st_gid);
    }
    return {groups.begin(), groups.end()};
}

}  // namespace

bool DropRoot() {
    const auto user = process::CommandUser();
    if (!user) return false;
    const auto groups = GroupsOfSound();
    const pid_t application = ::getppid();
    if (::setgroups(groups.size(), groups.data()) != 0 || ::setresgid(*user, *user, *user) != 0 ||
        ::setresuid(*user, *user, *user) != 0) {
        return false;
    }
    // Both went with the change: the end with the application, and the files under /proc/self.
    ::prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (::getppid() != application) ::_exit(1);
    ::prctl(PR_SET_DUMPABLE, 1);
    return true;
}

bool CanMakeUserNamespaces() {
    const pid_t child = ::fork();
    if (child == 0) ::_exit(::unshare(CLONE_NEWUSER) == 0 ? 0 : 1);
    int status = 1;
    return child > 0 && ::waitpid(child, &status, 0) == child && status == 0;
}

}  // namespace sorakaze::viewer
