// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "player/bridge/PlayerScripts.h"

#include <functional>
#include <string>

#include "app/runtime/Runtime.h"
#include "player/LocalPlayer.h"
#include "player/bridge/PlayerScriptNumber.h"

namespace sorakaze {
namespace {

using Parameters = std::vector<Variant>;

std::string TextAt(const Parameters& parameters, std::size_t index) {
    return index < parameters.size() ? parameters[index].Text().Bytes() : std::string();
}

std::int32_t NumberAt(const Parameters& parameters, std::size_t index) {
    return index < parameters.size() ? parameters[index].Integer() : 0;
}

}  // namespace

void RegisterPlayerScripts(ScriptTable& scripts, player::LocalPlayer& player) {
    const auto put = [&scripts](PlayerScript number, Script script) {
        scripts.Register(static_cast<std::int32_t>(number), std::move(script));
    };
    put(PlayerScript::getSongInfo, [&player](const Parameters& parameters) -> String {
        return player.SongInfo(TextAt(parameters, 0), NumberAt(parameters, 1));
    });
    put(PlayerScript::getPlayerState, [&player](const Parameters&) -> String { return player.State(); });
    put(PlayerScript::getPlaylists, [&player](const Parameters&) -> String { return player.Playlists(); });
    put(PlayerScript::getPosition, [&player](const Parameters&) -> String { return player.Position(); });
    put(PlayerScript::fadeOutTrack, [&player](const Parameters&) {
        player.BeginFade();
        WaitWhile([&player] { return player.IsFading(); });
        player.EndFade();
        return String();
    });
    put(PlayerScript::playTrack, [&player](const Parameters& parameters) {
        player.Play(TextAt(parameters, 0), NumberAt(parameters, 1));
        return String();
    });
    put(PlayerScript::stopTrack, [&player](const Parameters&) {
        player.Stop();
        return String();
    });
    put(PlayerScript::countSongs, [&player](const Parameters& parameters) -> String {
        return player.CountSongs(TextAt(parameters, 0));
    });
}

}  // namespace sorakaze
