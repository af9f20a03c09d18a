// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "speech/say/folders/VoiceReport.h"

#include <initializer_list>

#include "base/PrintableText.h"
#include "speech/say/VoiceNames.h"

namespace sorakaze::speech {
namespace {

/// Printable has left no tab in them.
std::string Line(std::initializer_list<std::string> columns) {
    std::string line;
    for (const std::string& column : columns)
        line += (line.empty() ? "" : "\t") + (column.empty() ? "-" : Printable(column));
    return line + '\n';
}

/// Of the voices that come with the system.
const char* LicenceOf(std::string_view engine) {
    if (engine == "Flite") return "MIT-Festival";
    if (engine == "HTS") return "BSD-3-Clause, MIT-Festival";
    return engine == "espeak-ng" ? "GPL-3.0-or-later" : "";
}

/// A name of the table, which has small letters.
std::string Capitalised(std::string_view name) {
    std::string capitalised(name);
    if (!capitalised.empty() && capitalised[0] >= 'a' && capitalised[0] <= 'z') capitalised[0] -= 'a' - 'A';
    return capitalised;
}

}  // namespace

std::string SpokenByLine(const FolderVoices& voices, const std::string& asked, const SpeakResult& result) {
    const auto voice = voices.Find(asked);
    std::string why = voice ? voice->complaint : "";
    for (const auto& [candidate, reason] : result.passedOver) {
        if (why.find(reason) == std::string::npos) why += (why.empty() ? "" : "; ") + reason;
    }
    if (why.empty()) return {};
    return "voice: " + Printable(Capitalised(result.used.name) + " (" + result.used.engine + ")") + '\t' +
           Printable(why);
}

std::string CreditLine(const FolderVoices& voices, const VoiceCandidate& used) {
    const auto voice = voices.Find(used.name);
    if (!voice || voice->description.credit.empty()) return {};
    return "credit: " + Printable(voice->description.credit) + '\t' + Printable(voice->description.licence);
}

std::string VoiceLines(const FolderVoices& voices, const VoiceSource& builtIn) {
    std::string lines;
    for (const VoiceFolder& voice : voices.All()) {
        const auto& about = voice.description;
        std::string problem = voice.complaint;
        if (voice.models.empty())
            problem =
                (problem.empty() ? "" : problem + "; ") + "it holds no model that an engine can speak with";
        const std::string engine = voice.models.empty() ? "" : std::string(NameOf(voice.models[0].engine));
        lines += Line({voice.name, about.language, engine, about.licence, about.credit, problem});
    }
    for (const std::string_view name : FirstNames()) {
        if (voices.Find(std::string(name))) continue;
        const auto candidates = builtIn.Named(std::string(name));
        if (candidates.empty()) continue;
        const std::string& engine = candidates[0].engine;
        lines += Line({Capitalised(name), candidates[0].language, engine, LicenceOf(engine), "", ""});
    }
    return lines;
}

}  // namespace sorakaze::speech
