// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include <CLI/CLI.hpp>
#include <memory>

#include "studio/StudioError.h"
#include "studio/Voices.h"
#include "studio/commands/Commands.h"

namespace sorakaze::studio {

void AddVoicesCommand(CLI::App& app, int& /*status*/) {
    auto* voices = app.add_subcommand("voices", "List the voices that `say` lines can have, or try one");
    struct Words {
        VoicesOptions list;
        TryOptions trial;
        std::vector<std::string> words;
    };
    const auto shared = std::make_shared<Words>();
    Words& options = *shared;
    voices->add_option("WORDS", options.words, "try NAME [TEXT]: have a voice speak a sentence")
        ->expected(0, 3)
        ->type_name("");
    voices->add_option("--station", options.list.station,
                       "The folder that holds Sorakaze.app; without it, this program's own");
    voices->add_flag("--json", options.list.json, "Print an array of voices");
    voices->add_flag("--measure", options.list.measure,
                     "Have each speak a sentence: how many times faster than it is heard");
    voices->add_option("--output", options.trial.output,
                       "Of try: a WAV file for the sentence, in place of the sound device");
    voices->footer("Example:\n  sorakaze-studio voices try Samantha \"Good evening.\"");
    voices->callback([shared] {
        const auto& words = shared->words;
        if (words.empty()) return ListVoices(shared->list);
        if (words.front() != "try" || words.size() < 2)
            throw StudioError(kWrongCall, "The call is: voices, or voices try NAME [TEXT].");
        shared->trial.station = shared->list.station;
        shared->trial.name = words[1];
        if (words.size() > 2) shared->trial.text = words[2];
        TryVoice(shared->trial);
    });
}

}  // namespace sorakaze::studio
