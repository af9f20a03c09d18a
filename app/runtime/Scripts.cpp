// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/runtime/Scripts.h"

#include <utility>

#include "app/runtime/Runtime.h"

namespace sorakaze {

void ScriptTable::Register(std::int32_t number, Script script) {
    scripts_[number] = std::move(script);
}

std::int32_t ScriptTable::Start(std::int32_t number) {
    AssertBaton();
    calls_[++lastHandle_] = {number, {}};
    return lastHandle_;
}

void ScriptTable::Add(std::int32_t handle, Variant parameter) {
    const auto call = calls_.find(handle);
    if (call != calls_.end()) call->second.parameters.push_back(std::move(parameter));
}

String ScriptTable::Complete(std::int32_t handle) {
    AssertBaton();
    const auto call = calls_.extract(handle);
    if (call.empty()) return {};
    const auto script = scripts_.find(call.mapped().number);
    if (script == scripts_.end()) return {};
    try {
        return script->second(call.mapped().parameters);
    } catch (const std::exception&) {
        return {};
    }
}

String _ScriptFunction(std::int32_t number) {
    return _CompleteParamScriptFunction(_StartParamScript(number));
}

void _ScriptExecute(std::int32_t number) {
    _CompleteParamScriptExecute(_StartParamScript(number));
}

std::int32_t _StartParamScript(std::int32_t number) {
    return Runtime::Current().Scripts().Start(number);
}

void _AddStringScriptParam(std::int32_t handle, const String& value) {
    Runtime::Current().Scripts().Add(handle, value);
}

void _AddIntegerScriptParam(std::int32_t handle, std::int32_t value) {
    Runtime::Current().Scripts().Add(handle, value);
}

String _CompleteParamScriptFunction(std::int32_t handle) {
    return Runtime::Current().Scripts().Complete(handle);
}

void _CompleteParamScriptExecute(std::int32_t handle) {
    Runtime::Current().Scripts().Complete(handle);
}

}  // namespace sorakaze
