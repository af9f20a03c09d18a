// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// A player without sound: tracks with a length in ticks, and every call noted.
#pragma once

#include <string>
#include <vector>

#include "app/runtime/Runtime.h"
#include "player/bridge/PlayerScriptNumber.h"

namespace sorakaze::test {

class FakePlayer {
  public:
    struct Track {
        std::string record;
        std::int32_t ticks = 600;
    };

    explicit FakePlayer(ScriptTable& scripts) {
        put(scripts, PlayerScript::getSongInfo, [this](const Parameters& parameters) -> String {
            const auto number = static_cast<std::size_t>(parameters.at(1).Integer());
            return number >= 1 && number <= tracks.size() ? tracks[number - 1].record : std::string();
        });
        put(scripts, PlayerScript::getPlayerState, [this](const Parameters&) -> String {
            if (!state.empty()) return state;
            if (playing != 0 && Ticks() - started >= tracks[playing - 1].ticks) playing = 0;
            return playing != 0 ? "playing" : "stopped";
        });
        put(scripts, PlayerScript::getPlaylists, [this](const Parameters&) -> String { return playlists; });
        put(scripts, PlayerScript::getPosition,
            [this](const Parameters&) -> String { return Str((Ticks() - started) / 60.0); });
        put(scripts, PlayerScript::fadeOutTrack, [this](const Parameters&) {
            log.push_back("fade");
            playing = 0;
            return String();
        });
        put(scripts, PlayerScript::playTrack, [this](const Parameters& parameters) {
            const std::int32_t number = parameters.at(1).Integer();
            log.push_back("play " + parameters.at(0).Text().Bytes() + " " + std::to_string(number));
            playing = number >= 1 && static_cast<std::size_t>(number) <= tracks.size()
                          ? static_cast<std::size_t>(number)
                          : 0;
            started = Ticks();
            return String();
        });
        put(scripts, PlayerScript::stopTrack, [this](const Parameters&) {
            log.push_back("stop");
            playing = 0;
            return String();
        });
        put(scripts, PlayerScript::countSongs, [this](const Parameters&) -> String {
            return count.empty() ? std::to_string(tracks.size()) : count;
        });
    }

    std::vector<Track> tracks;
    std::string playlists = "Library, Evening";
    std::string state;  ///< reported in place of the true one where set
    std::string count;  ///< likewise
    std::vector<std::string> log;
    std::size_t playing = 0;  ///< 1-based, 0 when stopped
    std::int32_t started = 0;

  private:
    using Parameters = std::vector<Variant>;
    static void put(ScriptTable& scripts, PlayerScript number, Script script) {
        scripts.Register(static_cast<std::int32_t>(number), std::move(script));
    }
};

}  // namespace sorakaze::test
