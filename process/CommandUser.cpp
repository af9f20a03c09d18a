// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "process/CommandUser.h"

#include <linux/capability.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <fstream>
#include <sstream>
#include <vector>

namespace sorakaze::process {
namespace {

constexpr const char* kUserMap = "/proc/self/uid_map";
constexpr const char* kGroupMap = "/proc/self/gid_map";
constexpr uid_t kFirstCommandUser = 60'578;  // a range that no user data base gives out
constexpr uid_t kCommandUsers = 600;

struct IdRange {
    std::uint64_t inside, outside, count;
};

/// Of a user namespace, as the kernel tells it.
std::vector<IdRange> ReadMap(const char* path) {
    std::vector<IdRange> ranges;
    std::ifstream lines(path);
    for (IdRange range{}; lines >> range.inside >> range.outside >> range.count;) ranges.push_back(range);
    return ranges;
}

bool HasCommandUsers(const std::vector<IdRange>& ranges) {
    return std::any_of(ranges.begin(), ranges.end(), [](const IdRange& range) {
        return range.inside <= kFirstCommandUser &&
               range.inside + range.count >= kFirstCommandUser + kCommandUsers;
    });
}

}  // namespace

std::optional<uid_t> CommandUser() {
    if (::geteuid() != 0) return {};
    __user_cap_header_struct header{_LINUX_CAPABILITY_VERSION_3, 0};
    __user_cap_data_struct data[2]{};
    constexpr std::uint32_t kNeeded = 1u << CAP_SETUID | 1u << CAP_SETGID | 1u << CAP_CHOWN;
    // Root in a container may have no privilege.
    if (::syscall(SYS_capget, &header, data) != 0 || (data[0].effective & kNeeded) != kNeeded ||
        !HasCommandUsers(ReadMap(kUserMap)) || !HasCommandUsers(ReadMap(kGroupMap)))
        return {};
    return kFirstCommandUser + static_cast<uid_t>(::getpid()) % kCommandUsers;
}

std::string IdentityIdMap(const char* path) {
    std::ostringstream map;
    for (const IdRange& range : ReadMap(path))
        map << range.inside << ' ' << range.inside << ' ' << range.count << '\n';
    return map.str();
}

}  // namespace sorakaze::process
