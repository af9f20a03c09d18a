// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// The eight operations on the player: each passes its parameters to the numbered script.
#include "app/runtime/Exceptions.h"
#include "app/runtime/Runtime.h"
#include "app/runtime/Scripts.h"
#include "player/bridge/PlayerScriptNumber.h"
#include "show/mainWindow.h"

namespace sorakaze {
namespace {

using Parameters = std::vector<Variant>;

/// Yields after each parameter.
void AddParameters(std::int32_t handle, const Parameters& parameters) {
    for (const Variant& parameter : parameters) {
        if (parameter.VarType() == Variant::kInteger) {
            _AddIntegerScriptParam(handle, parameter.Integer());
        } else {
            _AddStringScriptParam(handle, parameter.Text());
        }
        Yield();
    }
}

/// A call with its parameters in place, ready to be completed.
std::int32_t StartCall(std::int32_t number, const Parameters& parameters) {
    const std::int32_t handle = _StartParamScript(number);
    try {
        AddParameters(handle, parameters);
    } catch (...) {
        // The thread was killed at a yield.
        Runtime::Current().Scripts().Discard(handle);
        throw;
    }
    return handle;
}

String CallFunction(PlayerScript script, const Parameters* parameters) {
    const auto number = static_cast<std::int32_t>(script);
    if (NotNil(parameters)->empty()) return _ScriptFunction(number);
    return _CompleteParamScriptFunction(StartCall(number, *parameters));
}

void CallProcedure(PlayerScript script, const Parameters* parameters) {
    const auto number = static_cast<std::int32_t>(script);
    if (NotNil(parameters)->empty()) {
        _ScriptExecute(number);
    } else {
        _CompleteParamScriptExecute(StartCall(number, *parameters));
    }
}

}  // namespace

String mainWindow::iTunesSongInfo(const String& playlist, std::int32_t track) {
    const Parameters parameters{playlist, track};
    return ConvertEncoding(CallFunction(PlayerScript::getSongInfo, &parameters), Encodings::UTF8);
}

String mainWindow::iTunesState() {
    const Parameters parameters;
    return CallFunction(PlayerScript::getPlayerState, &parameters);
}

String mainWindow::iTunesPlaylist() {
    const Parameters parameters;
    return CallFunction(PlayerScript::getPlaylists, &parameters);
}

String mainWindow::iTunesPlayPosition() {
    const Parameters parameters;
    return CallFunction(PlayerScript::getPosition, &parameters);
}

void mainWindow::iTunesFadeout() {
    const Parameters parameters;
    CallProcedure(PlayerScript::fadeOutTrack, &parameters);
}

void mainWindow::iTunesPlay(const String& playlist, std::int32_t track) {
    const Parameters parameters{playlist, track};
    CallProcedure(PlayerScript::playTrack, &parameters);
}

void mainWindow::iTunesStop() {
    const Parameters parameters;
    CallProcedure(PlayerScript::stopTrack, &parameters);
}

String mainWindow::getSongCount(const String& playlist) {
    const Parameters parameters{playlist};
    return CallFunction(PlayerScript::countSongs, &parameters);
}

}  // namespace sorakaze
