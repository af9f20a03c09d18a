// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "studio/Voices.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdio>
#include <nlohmann/json.hpp>
#include <system_error>
#include <thread>
#include <vector>

#include "app/output/Loudspeaker.h"
#include "sound/MixingEngine.h"
#include "studio/Console.h"
#include "studio/Station.h"
#include "studio/StationVoices.h"
#include "studio/StudioError.h"

namespace sorakaze::studio {
namespace {

namespace fs = std::filesystem;
using Json = nlohmann::ordered_json;

constexpr const char* kSentence = "Good morning. This is the voice that announces the next song.";

/// Seconds of speech made in a second; 0 if the voice itself didn't speak.
double SpeedOf(const StationVoices& voices, const std::string& name) {
    std::string complaint;
    const auto spoken = voices.Speak(name, kSentence, complaint);
    return spoken && spoken->replacedBy.empty() && spoken->taken > 0 ? spoken->length / spoken->taken : 0;
}

std::string SpeedText(double speed) {
    char text[32];
    std::snprintf(text, sizeof text, speed < 10 ? "%.1fx" : "%.0fx", speed);
    return speed > 0 ? text : "-";
}

using Row = std::array<std::string, 5>;

void PrintTable(Console& console, const std::vector<Row>& rows) {
    Row::size_type column = 0;
    std::array<std::size_t, 5> widths{};
    for (const Row& row : rows)
        for (column = 0; column < row.size(); ++column)
            widths[column] = std::max(widths[column], row[column].size());
    for (const Row& row : rows) {
        std::string line;
        for (column = 0; column < row.size(); ++column) {
            line += row[column];
            if (column + 1 < row.size()) line.append(widths[column] - row[column].size() + 2, ' ');
        }
        console.Line(line);
    }
}

std::string OrHyphen(const std::string& text) {
    return text.empty() ? "-" : text;
}

void Play(const fs::path& file) {
    sound::MixingEngine engine(sound::MixingMode::RealTime);
    std::string why;
    const auto speech = engine.Open({file}, sound::Bus::Speech, {}, &why);
    if (!speech) throw StudioError(kFailed, "The sentence can't be played: " + why + ".");
    const output::Loudspeaker loudspeaker(engine);
    constexpr std::chrono::milliseconds kLook{20};
    constexpr int kMostLooks = 250;  // five seconds for a device to be there
    for (int look = 0; look < kMostLooks && !loudspeaker.IsAudible(); ++look)
        std::this_thread::sleep_for(kLook);
    if (!loudspeaker.IsAudible())
        throw StudioError(kFailed, "There is no sound device (" + loudspeaker.Description() +
                                       "): name a file by --output.");
    speech->Start();
    while (speech->IsPlaying()) std::this_thread::sleep_for(kLook);
}

}  // namespace

void ListVoices(const VoicesOptions& options) {
    const StationVoices voices(FindStation(options.station));
    const std::vector<Voice> all = voices.List();
    if (all.empty()) throw StudioError(kFailed, "The station's program say could not be asked.");
    Console console;
    Json list = Json::array();
    std::vector<Row> rows{{"Name", "Language", "Engine", "Speed", "Licence"}};
    for (const Voice& voice : all) {
        const double speed = options.measure ? SpeedOf(voices, voice.name) : 0;
        rows.push_back({voice.name, OrHyphen(voice.language), OrHyphen(voice.engine), SpeedText(speed),
                        OrHyphen(voice.licence)});
        if (!voice.problem.empty()) rows.back()[4] += "  ! " + voice.problem;
        Json entry{{"name", voice.name},       {"language", voice.language}, {"engine", voice.engine},
                   {"licence", voice.licence}, {"credit", voice.credit},     {"problem", voice.problem}};
        entry["speed"] = speed > 0 ? Json(speed) : Json(nullptr);
        list.push_back(std::move(entry));
    }
    if (options.json)
        console.Line(list.dump(-1, ' ', false, Json::error_handler_t::replace));
    else
        PrintTable(console, rows);
}

void TryVoice(const TryOptions& options) {
    const StationVoices voices(FindStation(options.station));
    std::string complaint;
    const auto spoken =
        voices.Speak(options.name, options.text.empty() ? kSentence : options.text, complaint);
    if (!spoken) throw StudioError(kFailed, complaint);
    Console console;
    if (!spoken->replacedBy.empty())
        console.Message("voice " + options.name + " is spoken by " + spoken->replacedBy);
    if (options.output.empty()) return Play(spoken->file);
    std::error_code failure;
    fs::copy_file(spoken->file, options.output, fs::copy_options::overwrite_existing, failure);
    if (failure)
        throw StudioError(kFailed, options.output.string() + " can't be written: " + failure.message() + ".");
}

}  // namespace sorakaze::studio
