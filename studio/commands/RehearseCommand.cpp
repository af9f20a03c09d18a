// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include <CLI/CLI.hpp>
#include <memory>
#include <string>

#include "studio/Rehearse.h"
#include "studio/StudioError.h"
#include "studio/commands/Commands.h"

namespace sorakaze::studio {
namespace {

/// "58:00", "1:02:03" or "3480", in seconds.
double Seconds(const std::string& text) {
    double total = 0;
    std::size_t begin = 0;
    for (int parts = 0;; ++parts) {
        const auto colon = text.find(':', begin);
        const auto part = text.substr(begin, colon == std::string::npos ? colon : colon - begin);
        if (parts == 3 || part.empty() || part.size() > 6 ||
            part.find_first_not_of("0123456789") != std::string::npos ||
            (parts > 0 && (part.size() != 2 || part > "59")))
            throw StudioError(kWrongCall, "--end-after is a time like 58:00 or 1:02:03.");
        total = total * 60 + std::stod(part);
        if (colon == std::string::npos) return total;
        begin = colon + 1;
    }
}

}  // namespace

void AddRehearseCommand(CLI::App& app, int& /*status*/) {
    auto* rehearse = app.add_subcommand("rehearse", "Tell a show's timetable without making its sound");
    struct Words {
        RehearseOptions options;
        std::string endAfter;
        const CLI::Option* hasEndAfter = nullptr;
    };
    const auto words = std::make_shared<Words>();
    RehearseOptions& options = words->options;
    rehearse
        ->add_option("PROGRAM,--program", options.program,
                     "The show script: a file of Programs, without its ending")
        ->required();
    rehearse->add_option("PLAYLIST,--playlist", options.playlist, "The playlist")->capture_default_str();
    rehearse->add_option("--station", options.station,
                         "The folder that holds Sorakaze.app; without it, this program's own");
    rehearse
        ->add_option("--song-seconds", options.songSeconds, "Seconds of each track before it is faded out")
        ->check(CLI::Range(30, 600));
    rehearse->add_option("--limit", options.limitSeconds, "Stop the show after so many seconds")
        ->check(CLI::Range(0.001, 1e7));
    rehearse->add_option("--seed", options.seed, "The first seed; the same makes the same show")
        ->capture_default_str();
    rehearse->add_option("--seeds", options.seeds, "So many shows, a seed each: how long they are")
        ->check(CLI::Range(1, 100000));
    words->hasEndAfter = rehearse->add_option(
        "--end-after", words->endAfter, "Tell the one of --seeds that ends nearest to this time, as 58:00");
    rehearse->add_option("--trace", options.trace, "Write the show's events here, as JSON Lines");
    rehearse->footer(
        "The times are those of `render --offline` with the same seed. Lines with ! may be wrong.\n"
        "Example:\n  sorakaze-studio rehearse \"Night Owls\" Library --seeds 200 --end-after 58:00");
    rehearse->callback([words] {
        if (words->options.seeds > 1 && words->hasEndAfter->empty() && !words->options.trace.empty())
            throw StudioError(kWrongCall, "--trace is of one show: give --end-after or leave --seeds out.");
        if (!words->hasEndAfter->empty()) {
            words->options.endAfter = Seconds(words->endAfter);
            if (words->options.seeds == 1)
                throw StudioError(kWrongCall, "--end-after chooses among --seeds N: give both.");
        }
        Rehearse(words->options);
    });
}

}  // namespace sorakaze::studio
