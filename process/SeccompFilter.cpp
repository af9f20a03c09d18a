// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "process/SeccompFilter.h"

#include <cerrno>
#include <stdexcept>

namespace sorakaze::process {

SeccompFilter::SeccompFilter(Default action)
    : context_(seccomp_init(action == Default::Allowed ? SCMP_ACT_ALLOW : SCMP_ACT_ERRNO(ENOSYS)),
               seccomp_release) {
    if (!context_) throw std::runtime_error("seccomp_init");
}

void SeccompFilter::Allow(int call, Conditions conditions) {
    Add(SCMP_ACT_ALLOW, call, conditions);
}

void SeccompFilter::Refuse(int call, Conditions conditions) {
    Add(SCMP_ACT_ERRNO(EPERM), call, conditions);
}

void SeccompFilter::Add(std::uint32_t action, int call, Conditions conditions) {
    if (seccomp_rule_add_array(context_.get(), action, call, static_cast<unsigned>(conditions.size()),
                               conditions.begin()) < 0)
        throw std::runtime_error("seccomp_rule_add");
}

bool SeccompFilter::Load() {
    return seccomp_load(context_.get()) == 0;
}

}  // namespace sorakaze::process
