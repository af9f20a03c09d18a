// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <utility>

namespace sorakaze {

/// Makes the call when the scope is left, by an exception too. The call must not throw.
template <typename Call>
class ScopeExit {
  public:
    explicit ScopeExit(Call call) : call_(std::move(call)) {}
    ~ScopeExit() { call_(); }
    ScopeExit(const ScopeExit&) = delete;
    ScopeExit& operator=(const ScopeExit&) = delete;

  private:
    const Call call_;
};

}  // namespace sorakaze
