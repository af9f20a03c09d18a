// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include <CLI/CLI.hpp>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "studio/StudioError.h"
#include "studio/air/Air.h"
#include "studio/commands/Commands.h"

namespace sorakaze::studio {
namespace {

struct Words {
    AirShow first;
    std::vector<std::pair<std::string, std::string>> then;
    std::vector<std::string> targets;
    std::string start;
};

onair::DayTime ReadDayTime(const std::string& text) {
    const auto digit = [&text](std::size_t at) { return text[at] >= '0' && text[at] <= '9'; };
    if (text.size() == 5 && text[2] == ':' && digit(0) && digit(1) && digit(3) && digit(4)) {
        const onair::DayTime time{(text[0] - '0') * 10 + text[1] - '0', (text[3] - '0') * 10 + text[4] - '0'};
        if (time.hour < 24 && time.minute < 60) return time;
    }
    throw StudioError(kWrongCall, "--start " + text + ": give a time of day, as in 07:00.");
}

}  // namespace

void AddAirCommand(CLI::App& app, int& /*status*/) {
    auto* air = app.add_subcommand("air", "Put shows on the air, without a window");
    const auto options = std::make_shared<AirOptions>();
    const auto words = std::make_shared<Words>();
    air->add_option("PROGRAM", words->first.program,
                    "The show script: a file of Programs, without its ending")
        ->required();
    air->add_option("PLAYLIST", words->first.playlist, "The playlist")->capture_default_str();
    air->add_option("--then", words->then, "The show that follows: PROGRAM PLAYLIST; any number of times");
    air->add_flag("--repeat", options->repeat, "After the last show the first one follows");
    air->add_option("--to", words->targets,
                    "Where the sound goes: device, or a sound file that is recorded; any number of times; "
                    "without it, the device")
        ->allow_extra_args(false);
    air->add_option("--start", words->start, "Wait until that time of day: HH:MM");
    air->add_flag("--graceful", options->graceful,
                  "At the first SIGTERM or interrupt the track fades, and the show ends with its ending");
    air->add_option("--log", options->log,
                    "Write what was aired, and when, to a file a day in this folder, as JSON Lines");
    air->add_option("--dead-air", options->deadAir,
                    "Start the show anew after so many seconds of a silence that it doesn't ask for")
        ->check(CLI::Range(6.0, 86400.0))
        ->capture_default_str();
    air->add_option("--station", options->station,
                    "The folder that holds Sorakaze.app; without it, this program's own");
    air->add_option("--song-seconds", options->songSeconds, "Seconds of each track before it is faded out")
        ->check(CLI::Range(30, 600));
    air->add_option("--seed", options->seed, "The same seed makes the same draws");
    air->add_flag("--quiet", options->quiet, "No transcript");
    air->footer(
        "Example:\n  sorakaze-studio air \"Night Owls\" Library --repeat --log ~/radio-log\n"
        "SIGTERM or an interrupt ends the show, a second one the program; SIGHUP opens the log anew.\n"
        "Status: 0 done, 1 failed, 2 wrong call, 4 more than half of the last show's tracks could not be "
        "played.");
    air->callback([options, words] {
        options->shows = {words->first};
        for (const auto& [program, playlist] : words->then) options->shows.push_back({program, playlist});
        options->targets = ReadTargets(words->targets);
        if (!words->start.empty()) options->start = ReadDayTime(words->start);
        Air(*options);
    });
}

}  // namespace sorakaze::studio
