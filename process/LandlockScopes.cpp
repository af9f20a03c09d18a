// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "process/LandlockScopes.h"

#include <sys/syscall.h>

#include <cerrno>
#include <system_error>

// The interface is written down here, since the headers of the system are older than the kernels that it runs
// on.
namespace sorakaze::process {
namespace {

constexpr int kNetworkSince = 4;
constexpr int kScopesSince = 6;
constexpr std::uint64_t kBindAndConnect = 3;
constexpr std::uint64_t kConnect = 2;
constexpr std::uint64_t kAbstractSocketsAndSignals = 3;
constexpr int kPortRule = 2;

struct RulesetAttributes {
    std::uint64_t files;
    std::uint64_t network;
    std::uint64_t scoped;
};

struct PortRule {
    std::uint64_t allowed;
    std::uint64_t port;
};

[[noreturn]] void Fail(const char* what) {
    throw std::system_error(errno, std::generic_category(), what);
}

}  // namespace

FileDescriptor MakeLandlockScopes(int version, const std::optional<std::vector<std::uint16_t>>& ports) {
    const bool network = ports && version >= kNetworkSince;
    const bool scopes = version >= kScopesSince;
    if (!network && !scopes) return {};
    const RulesetAttributes attributes{0, network ? kBindAndConnect : 0,
                                       scopes ? kAbstractSocketsAndSignals : 0};
    FileDescriptor ruleset(
        static_cast<int>(::syscall(SYS_landlock_create_ruleset, &attributes, sizeof attributes, 0)));
    if (!ruleset) Fail("landlock_create_ruleset");
    if (!network) return ruleset;
    for (const std::uint16_t port : *ports) {
        const PortRule rule{kConnect, port};
        if (::syscall(SYS_landlock_add_rule, ruleset.Get(), kPortRule, &rule, 0) != 0)
            Fail("landlock_add_rule");
    }
    return ruleset;
}

}  // namespace sorakaze::process
