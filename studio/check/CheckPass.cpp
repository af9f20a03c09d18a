// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "studio/check/CheckPass.h"

#include <sys/stat.h>

#include <algorithm>
#include <utility>

#include "program/check/CheckProgram.h"
#include "program/check/PlacedLine.h"
#include "studio/Station.h"
#include "studio/StudioError.h"
#include "studio/check/Fixes.h"
#include "studio/check/PlaylistCheck.h"
#include "studio/check/PronunciationCheck.h"
#include "studio/check/TextFile.h"

namespace sorakaze::studio {
namespace {

namespace fs = std::filesystem;

/// A fix can bring another one to light, hardly a third.
constexpr int kMostRounds = 4;

/// A file that lies in a station is checked against that one; without any station files can be checked all
/// the same.
fs::path ChooseStation(const CheckOptions& options) {
    if (!options.station.empty()) return FindStation(options.station);
    bool onlyPaths = !options.programs.empty() || !options.playlists.empty();
    for (const std::string& word : options.programs) {
        onlyPaths = onlyPaths && IsPath(word);
        if (const fs::path station = IsPath(word) ? StationOf(word) : fs::path(); !station.empty())
            return station;
    }
    for (const std::string& word : options.playlists) onlyPaths = onlyPaths && IsPath(word);
    try {
        return FindStation({});
    } catch (const StudioError&) {
        if (!onlyPaths) throw;
        return {};
    }
}

std::string StampOf(const fs::path& path) {
    struct stat status {};
    if (stat(path.c_str(), &status) != 0) return "-";
    return std::to_string(status.st_ino) + "," + std::to_string(status.st_size) + "," +
           std::to_string(status.st_mtim.tv_sec) + "." + std::to_string(status.st_mtim.tv_nsec);
}

}  // namespace

CheckPass::CheckPass(const CheckOptions& options) : options_(options), station_(ChooseStation(options)) {
    try {
        if (!station_.empty())
            facts_ = std::make_unique<StationFacts>(station_,
                                                    options.quick ? Speaking::Skipped : Speaking::Measured);
    } catch (const DeploymentError& error) {
        throw StudioError(kFailed, std::string("deployment.json: ") + error.what());
    }
    if (!facts_) anywhere_ = std::make_unique<check::Surroundings>();
}

std::vector<ProgramFile> CheckPass::Programs() const {
    if (options_.programs.empty()) {
        if (!options_.playlists.empty()) return {};
        return AllPrograms(station_);
    }
    std::vector<ProgramFile> files;
    for (const std::string& word : options_.programs) files.push_back(FindProgram(station_, word));
    return files;
}

std::vector<FileReport> CheckPass::Run() {
    changes_.clear();
    if (facts_) facts_->Forget();
    std::vector<FileReport> reports;
    for (const ProgramFile& file : Programs()) reports.push_back(CheckFile(file));
    for (const std::string& word : options_.playlists) reports.push_back(CheckPlaylist(station_, word));
    if (options_.programs.empty() && options_.playlists.empty()) {
        if (auto report = CheckPronunciations(station_)) reports.push_back(std::move(*report));
    }
    return reports;
}

FileReport CheckPass::CheckFile(const ProgramFile& file) {
    if (!file.findings.empty()) return {file.name, {}, file.findings};
    const std::size_t changesBefore = changes_.size();
    FileReport report = Look(file, options_.fix);
    for (int round = 1; round < kMostRounds && changes_.size() > changesBefore; ++round) {
        const std::size_t before = changes_.size();
        report = Look(file, true);
        if (changes_.size() == before) break;
    }
    return report;
}

FileReport CheckPass::Look(const ProgramFile& file, bool fixing) {
    const TextFile text = ReadTextFile(file.path);
    FileReport report{file.name, {}, text.findings};
    if (!text.isText) return report;
    for (const auto line : check::SplitLines(text.text)) report.lines.emplace_back(line);
    auto found = check::CheckProgram(text.text, facts_ ? *facts_ : *anywhere_);
    report.findings.insert(report.findings.end(), std::make_move_iterator(found.begin()),
                           std::make_move_iterator(found.end()));
    if (fixing) Fix(file, text, report.findings);
    return report;
}

void CheckPass::Fix(const ProgramFile& file, const TextFile& text,
                    const std::vector<check::Finding>& findings) {
    FixedText fixed = ApplyFixes(text.text, findings);
    if (fixed.text == text.bytes || !(text.isConverted || !fixed.changes.empty())) return;
    if (text.isGuess) {
        // Hidden, so that no menu lists it.
        const fs::path kept = file.path.parent_path() / ("." + file.path.filename().string() + ".before");
        std::error_code error;
        fs::copy_file(file.path, kept, fs::copy_options::overwrite_existing, error);
        if (error)
            throw StudioError(kFailed,
                              file.name + " is unchanged: " + kept.string() + ": " + error.message());
        changes_.push_back(file.name + ": the file as it was is kept as " + kept.filename().string());
    }
    ReplaceFile(file.path, text.bytes, fixed.text);
    if (text.isConverted) changes_.push_back(file.name + ": " + text.conversion);
    for (const std::string& change : fixed.changes) changes_.push_back(file.name + ": " + change);
}

std::string CheckPass::Stamp() const {
    std::string stamp = station_.empty() ? "" : StampOf(station_ / "Programs");
    if (options_.programs.empty() && options_.playlists.empty()) {
        std::error_code error;
        for (fs::directory_iterator entry(station_ / "Programs", error), end; !error && entry != end;
             entry.increment(error))
            stamp += entry->path().filename().string() + StampOf(entry->path()) + "\n";
        // It may be missing without a file being absent.
        stamp += StampOf(station_ / "Pronunciations.txt") + ";";
    }
    for (const std::string& word : options_.programs)
        stamp += StampOf(IsPath(word) ? fs::path(word) : station_ / "Programs" / (word + ".txt")) + "\n";
    for (const std::string& word : options_.playlists) stamp += StampOf(word) + "\n";
    return stamp;
}

}  // namespace sorakaze::studio
