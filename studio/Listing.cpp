// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "studio/Listing.h"

#include <chrono>
#include <memory>
#include <nlohmann/json.hpp>
#include <string>

#include "host/StationHost.h"
#include "sound/MixingEngine.h"
#include "studio/Console.h"
#include "studio/ConsoleHost.h"
#include "studio/Station.h"

namespace sorakaze::studio {
namespace {

using Json = nlohmann::ordered_json;
using Missing = player::MusicLibrary::Missing;

/// For the files of one playlist. Only one of hundred thousands of entries takes longer.
constexpr std::chrono::seconds kLongestSearch{5};

std::string CountText(int tracks, const Missing& missing) {
    std::string text = std::to_string(tracks);
    if (missing.count > 0) text += ", " + std::to_string(missing.count) + " missing";
    if (missing.isCut) text += ", the rest of the file isn't read";
    if (missing.addresses > 0) text += ", " + std::to_string(missing.addresses) + " on the network left out";
    if (missing.checked < tracks) text += ", the first " + std::to_string(missing.checked) + " looked for";
    return text;
}

void PrintText(Console& console, mainWindow& window, player::LocalPlayer& player) {
    console.Line("Programs:");
    for (const String& row : window.programMenu.Rows()) console.Line("  " + row.Bytes());
    console.Line("Playlists:");
    for (const String& row : window.playlistMenu.Rows()) {
        const std::string& name = row.Bytes();
        const Missing missing = player.FindMissing(name, kLongestSearch);
        console.Line("  " + name + " (" + CountText(std::stoi(player.CountSongs(name)), missing) + ")");
    }
}

Json JsonOf(const std::string& name, int tracks, const Missing& missing) {
    Json playlist{{"name", name},
                  {"tracks", tracks},
                  {"missing", missing.count},
                  {"lookedFor", missing.checked},
                  {"onNetwork", missing.addresses},
                  {"isCut", missing.isCut}};
    Json& entries = playlist["missingTracks"] = Json::array();
    for (const auto& entry : missing.entries)
        entries.push_back({{"number", entry.number}, {"path", entry.written}, {"why", entry.why}});
    return playlist;
}

void PrintJson(Console& console, mainWindow& window, player::LocalPlayer& player) {
    Json all{{"programs", Json::array()}, {"playlists", Json::array()}};
    for (const String& row : window.programMenu.Rows()) all["programs"].push_back(row.Bytes());
    for (const String& row : window.playlistMenu.Rows()) {
        const std::string& name = row.Bytes();
        all["playlists"].push_back(
            JsonOf(name, std::stoi(player.CountSongs(name)), player.FindMissing(name, kLongestSearch)));
    }
    // Names of files can be any bytes.
    console.Line(all.dump(-1, ' ', false, Json::error_handler_t::replace));
}

}  // namespace

void List(const std::filesystem::path& given, ListFormat format) {
    const auto folder = FindStation(given);
    Console console;
    ConsoleHost host;
    sound::MixingEngine engine(sound::MixingMode::Offline);
    StationHost station({std::make_unique<StudioClock>(), folder, &engine, std::nullopt}, host);
    mainWindow& window = station.mainWindow();
    window.Event_Open();
    if (format == ListFormat::Json)
        PrintJson(console, window, station.Player());
    else
        PrintText(console, window, station.Player());
}

}  // namespace sorakaze::studio
