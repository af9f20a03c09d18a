// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// The calls to the player's scripts, by number. The host registers a function for each number; an unknown
// number, or a function that throws, gives an empty text.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <vector>

#include "app/runtime/Variant.h"

namespace sorakaze {

using Script = std::function<String(const std::vector<Variant>& parameters)>;

/// The scripts of an application and the calls to them that are being put together. Only with the baton.
class ScriptTable {
  public:
    void Register(std::int32_t number, Script script);
    std::int32_t Start(std::int32_t number);
    /// Adds to a started call; an unknown handle is ignored.
    void Add(std::int32_t handle, Variant parameter);
    String Complete(std::int32_t handle);
    /// Drops a started call that won't be completed.
    void Discard(std::int32_t handle) { calls_.erase(handle); }
    /// Calls that were started and not completed.
    std::size_t OpenCalls() const { return calls_.size(); }

  private:
    struct Call {
        std::int32_t number;
        std::vector<Variant> parameters;
    };
    std::map<std::int32_t, Script> scripts_;
    std::map<std::int32_t, Call> calls_;
    std::int32_t lastHandle_ = 0;
};

// The operations as the player's methods use them, on the current runtime's table.
// NOLINTBEGIN(bugprone-reserved-identifier)
String _ScriptFunction(std::int32_t number);
void _ScriptExecute(std::int32_t number);
std::int32_t _StartParamScript(std::int32_t number);
void _AddStringScriptParam(std::int32_t handle, const String& value);
void _AddIntegerScriptParam(std::int32_t handle, std::int32_t value);
String _CompleteParamScriptFunction(std::int32_t handle);
void _CompleteParamScriptExecute(std::int32_t handle);
// NOLINTEND(bugprone-reserved-identifier)

}  // namespace sorakaze
