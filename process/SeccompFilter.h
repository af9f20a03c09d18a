// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// A filter of system calls that a program of ours puts itself under, for good: the one place that wraps the
// library for such filters. A command's filter is a SystemCallFilter instead, since it is installed between
// fork and exec, where nothing may be allocated.
#pragma once

#include <seccomp.h>

#include <cstdint>
#include <initializer_list>
#include <memory>

namespace sorakaze::process {

class SeccompFilter {
  public:
    enum class Default {
        Allowed,
        NoSuchCall,  ///< as if the kernel didn't know them: the C library often has another way
    };
    /// On an argument, counted from 0. The kernel reads most of them as 32 bits, whatever the others are.
    using Condition = scmp_arg_cmp;
    using Conditions = std::initializer_list<Condition>;
    static Condition Is(unsigned argument, std::uint32_t value) {
        return {argument, SCMP_CMP_MASKED_EQ, 0xffffffff, value};
    }
    static Condition IsNot(unsigned argument, std::uint32_t value) {
        return {argument, SCMP_CMP_NE, value, 0};
    }
    static Condition IsAtLeast(unsigned argument, std::uint32_t value) {
        return {argument, SCMP_CMP_GE, value, 0};
    }
    static Condition BitsAre(unsigned argument, std::uint32_t mask, std::uint32_t value) {
        return {argument, SCMP_CMP_MASKED_EQ, mask, value};
    }

    /// `action` is for calls without a rule. All methods throw std::runtime_error where memory is short or a
    /// rule makes no sense.
    explicit SeccompFilter(Default action);

    /// Where all conditions on the call's arguments hold. A call may have several such rules.
    void Allow(int call, Conditions conditions = {});
    void Refuse(int call, Conditions conditions = {});  ///< with EPERM

    /// Puts the filter in force for the calling thread and all that it starts. False on a kernel without such
    /// filters.
    bool Load();

  private:
    void Add(std::uint32_t action, int call, Conditions conditions);

    const std::unique_ptr<void, decltype(&seccomp_release)> context_;
};

}  // namespace sorakaze::process
