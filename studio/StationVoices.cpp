// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "studio/StationVoices.h"

#include <chrono>
#include <cstdint>
#include <cstring>
#include <fstream>
#include <iterator>
#include <limits>
#include <sstream>
#include <system_error>

#include "gateway/voice/VoiceForm.h"
#include "host/StationPaths.h"
#include "process/ConfinedProcess.h"

namespace sorakaze::studio {
namespace {

namespace fs = std::filesystem;

process::Confinement Confined(const fs::path& folder, const fs::path& resources) {
    process::Confinement confinement;
    confinement.folder = folder;
    confinement.wallTime = std::chrono::seconds(20);
    process::OfferPrograms(confinement, resources);
#ifdef __SANITIZE_ADDRESS__
    // A program of ours that is built with the sanitizer reserves terabytes of addresses.
    confinement.addressSpace = std::numeric_limits<std::uint64_t>::max();
#endif
    return confinement;
}

/// Of a WAV file as `say` writes it: 16-bit, mono, with its rate in the head.
double LengthOf(const fs::path& file) {
    constexpr std::size_t kHead = 44, kRate = 24;
    std::ifstream stream(file, std::ios::binary);
    const std::string bytes(std::istreambuf_iterator<char>(stream), {});
    std::uint32_t rate = 0;
    if (bytes.size() < kHead) return 0;
    std::memcpy(&rate, bytes.data() + kRate, sizeof rate);
    return rate == 0 ? 0 : static_cast<double>(bytes.size() - kHead) / 2 / rate;
}

/// From the line of `say` that tells who spoke.
std::string ReplacedBy(const std::string& printed) {
    constexpr std::string_view kBegin = "say: voice: ";
    const auto at = printed.find(kBegin);
    if (at == std::string::npos) return {};
    std::istringstream rest(printed.substr(at + kBegin.size()));
    std::string line;
    std::getline(rest, line);
    if (const auto tab = line.find('\t'); tab != std::string::npos) line.replace(tab, 1, ": ");
    return line;
}

std::string TakeColumn(std::istream& line) {
    std::string column;
    std::getline(line, column, '\t');
    return column == "-" ? "" : column;
}

}  // namespace

StationVoices::StationVoices(const fs::path& station)
    : resources_(ResourcesOfStation(station)), folder_(RunFolder::Make()) {}

std::vector<Voice> StationVoices::List() const {
    if (!folder_) return {};
    const auto result =
        process::ConfinedProcess("exec say --voices", Confined(folder_->Files(), resources_)).Run();
    std::vector<Voice> voices;
    std::istringstream lines(result.output);
    for (std::string text; std::getline(lines, text);) {
        std::istringstream line(text);
        Voice voice;
        for (std::string Voice::*column : {&Voice::name, &Voice::language, &Voice::engine, &Voice::licence,
                                           &Voice::credit, &Voice::problem})
            voice.*column = TakeColumn(line);
        voices.push_back(std::move(voice));
    }
    return voices;
}

std::optional<SpokenSentence> StationVoices::Speak(const std::string& name, const std::string& text,
                                                   std::string& complaint) const {
    complaint = "there is no temporary folder";
    if (!folder_) return {};
    SpokenSentence spoken;
    spoken.file = folder_->Files() / "sentence.wav";
    process::Confinement confinement = Confined(folder_->Files(), resources_);
    confinement.output = spoken.file;
    const std::string line = "exec say -v " + gateway::QuoteForShell(name) + ' ' +
                             gateway::QuoteForShell(text) + " -o " +
                             gateway::QuoteForShell(spoken.file.string());
    const auto begin = std::chrono::steady_clock::now();
    const auto result = process::ConfinedProcess(line, std::move(confinement)).Run();
    spoken.taken = std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
    spoken.replacedBy = ReplacedBy(result.output);
    complaint =
        result.errors.empty() ? "say made no sound" : result.errors.substr(0, result.errors.find('\n'));
    std::error_code failure;
    if (!fs::exists(spoken.file, failure)) return {};
    spoken.length = LengthOf(spoken.file);
    return spoken;
}

}  // namespace sorakaze::studio
