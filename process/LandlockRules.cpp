// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "process/LandlockRules.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/syscall.h>

#include <cerrno>
#include <cstdint>
#include <system_error>

// The interface is written down here, since the headers of the system are older than the kernels that it runs
// on.
namespace sorakaze::process {
namespace {

constexpr std::uint64_t kExecute = 1 << 0;
constexpr std::uint64_t kWriteFile = 1 << 1;
constexpr std::uint64_t kReadFile = 1 << 2;
constexpr std::uint64_t kReadFolder = 1 << 3;
constexpr std::uint64_t kRemoveFolder = 1 << 4;
constexpr std::uint64_t kRemoveFile = 1 << 5;
constexpr std::uint64_t kMakeFolder = 1 << 7;
constexpr std::uint64_t kMakeRegular = 1 << 8;
constexpr std::uint64_t kRefer = 1 << 13;          // since version 2
constexpr std::uint64_t kTruncate = 1 << 14;       // since version 3
constexpr std::uint64_t kDeviceControl = 1 << 15;  // since version 5
constexpr std::uint64_t kEveryNetworkRight = 3;    // since version 4: bind and connect of TCP
constexpr std::uint64_t kEveryScope = 3;           // since version 6: abstract sockets and signals

constexpr unsigned kQueryVersion = 1;
constexpr int kPathBeneath = 1;

struct RulesetAttributes {
    std::uint64_t files;
    std::uint64_t network;
    std::uint64_t scoped;
};

struct PathBeneath {
    std::uint64_t allowed;
    std::int32_t parent;
} __attribute__((packed));

std::uint64_t EveryFileRight(int version) {
    std::uint64_t rights = (1 << 13) - 1;
    if (version >= 2) rights |= kRefer;
    if (version >= 3) rights |= kTruncate;
    if (version >= 5) rights |= kDeviceControl;
    return rights;
}

std::uint64_t Rights(Access access) {
    switch (access) {
        case Access::Read:
            return kExecute | kReadFile | kReadFolder;
        case Access::ReadDevice:
            return kReadFile;
        case Access::WriteDevice:
        case Access::WriteFile:
            return kReadFile | kWriteFile | kTruncate;
        case Access::Write:
            return kReadFile | kWriteFile | kTruncate | kReadFolder | kRemoveFolder | kRemoveFile |
                   kMakeFolder | kMakeRegular | kRefer;
    }
    return 0;
}

}  // namespace

int LandlockVersion() {
    const long version = ::syscall(SYS_landlock_create_ruleset, nullptr, 0, kQueryVersion);
    return version > 0 ? static_cast<int>(version) : 0;
}

FileDescriptor MakeLandlockRules(int version, const std::vector<PathRule>& paths) {
    const std::uint64_t handled = EveryFileRight(version);
    const RulesetAttributes attributes{handled, version >= 4 ? kEveryNetworkRight : 0,
                                       version >= 6 ? kEveryScope : 0};
    // An older kernel takes a longer structure as long as what it doesn't know is zero.
    FileDescriptor ruleset(
        static_cast<int>(::syscall(SYS_landlock_create_ruleset, &attributes, sizeof attributes, 0)));
    if (!ruleset) throw std::system_error(errno, std::generic_category(), "landlock_create_ruleset");
    for (const PathRule& rule : paths) {
        const FileDescriptor descriptor(::open(rule.path.c_str(), O_PATH | O_CLOEXEC));
        if (!descriptor) continue;
        if (!AllowPath(ruleset.Get(), version, descriptor.Get(), rule.access))
            throw std::system_error(errno, std::generic_category(), "landlock_add_rule");
    }
    return ruleset;
}

bool AllowPath(int ruleset, int version, int descriptor, Access access) {
    struct stat status {};
    // Not through the C library: a sanitizer has its own fstat, which takes locks.
    if (::syscall(SYS_fstat, descriptor, &status) != 0) return false;
    std::uint64_t rights = Rights(access) & EveryFileRight(version);
    if (!S_ISDIR(status.st_mode)) rights &= kExecute | kReadFile | kWriteFile | kTruncate;
    const PathBeneath rule{rights, descriptor};
    return ::syscall(SYS_landlock_add_rule, ruleset, kPathBeneath, &rule, 0) == 0;
}

bool EnforceLandlock(int ruleset) {
    return ::syscall(SYS_landlock_restrict_self, ruleset, 0) == 0;
}

}  // namespace sorakaze::process
