// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/studio/StudioRun.h"

#include <sndfile.h>
#include <sys/wait.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <fstream>
#include <nlohmann/json.hpp>
#include <numbers>

#include "app/runtime/sound/SoundFileWriter.h"

namespace sorakaze::test {

namespace fs = std::filesystem;

StudioStation::StudioStation() {
    const auto resources = Path() / "Sorakaze.app/Contents/Resources";
    fs::create_directories(resources);
    fs::copy_file(SAY_PROGRAM, resources / "say");
    // The encyclopaedia is left in peace.
    std::ofstream(resources / "deployment.json")
        << R"({"encyclopaediaEnglish": "", "encyclopaediaJapanese": ""})";
    for (const char* folder : {"Programs", "Sounds", "Music", "home"})
        fs::create_directories(Path() / folder);
}

fs::path StudioStation::WriteTone(const std::string& name, double hertz, double amplitude,
                                  double seconds) const {
    const auto file = Path() / name;
    fs::create_directories(file.parent_path());
    const auto frames = static_cast<std::size_t>(seconds * sound::kSampleRate);
    std::vector<float> samples(frames * 2);
    for (std::size_t i = 0; i < frames; ++i) {
        const double phase = 2 * std::numbers::pi * hertz * static_cast<double>(i) / sound::kSampleRate;
        samples[2 * i] = samples[2 * i + 1] = static_cast<float>(amplitude * std::sin(phase));
    }
    const auto writer = sound::SoundFileWriter::Create(file);
    writer->Write(samples);
    writer->Finish();
    return file;
}

Outcome StudioStation::Run(const std::string& arguments, const std::string& before) const {
    const auto error = Path() / "stderr";
    // The home folder is the test's own, so that nobody's music gets into the library.
    const std::string line = "cd '" + Path().string() + "' && " + before + " env -u XDG_CONFIG_HOME HOME='" +
                             (Path() / "home").string() + "' " + STUDIO_PROGRAM + " " + arguments + " 2> '" +
                             error.string() + "'";
    Outcome outcome;
    std::FILE* pipe = popen(line.c_str(), "r");
    char buffer[4096];
    for (std::size_t size = 0; (size = std::fread(buffer, 1, sizeof buffer, pipe)) > 0;)
        outcome.out.append(buffer, size);
    const int status = pclose(pipe);
    outcome.status = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    outcome.error = ReadFile(error);
    return outcome;
}

Outcome StudioStation::Render(const std::string& output, const std::string& more,
                              const std::string& before) const {
    return Run(
        "render --station . --program Show --seed 1 --trace trace.jsonl --output " + output + " " + more,
        before);
}

SoundFile::SoundFile(const fs::path& file) {
    SF_INFO info{};
    SNDFILE* opened = sf_open(file.c_str(), SFM_READ, &info);
    if (!opened) return;
    rate = info.samplerate;
    channels = info.channels;
    std::vector<float> block(65536 * static_cast<std::size_t>(channels));
    for (sf_count_t read = 0; (read = sf_readf_float(opened, block.data(), 65536)) > 0;)
        samples.insert(samples.end(), block.begin(), block.begin() + read * channels);
    sf_close(opened);
}

double SoundFile::Seconds() const {
    return rate > 0 ? static_cast<double>(samples.size()) / channels / rate : 0;
}

double SoundFile::Peak(double fromTick, double toTick) const {
    double peak = 0;
    const auto end = std::min(static_cast<std::size_t>(toTick * 800) * 2, samples.size());
    for (std::size_t i = static_cast<std::size_t>(fromTick * 800) * 2; i < end; i += 2)
        peak = std::max(peak, std::abs(double{samples[i]}));
    return peak;
}

double SoundFile::LargestStep() const {
    double step = 0;
    for (std::size_t i = 2; i < samples.size(); i += 2)
        step = std::max(step, std::abs(double{samples[i]} - samples[i - 2]));
    return step;
}

std::string ReadFile(const fs::path& file) {
    std::ifstream in(file, std::ios::binary);
    return {std::istreambuf_iterator(in), {}};
}

std::vector<std::string> TraceFields(const fs::path& trace, const std::string& what,
                                     const std::string& field) {
    std::vector<std::string> values;
    std::ifstream in(trace);
    for (std::string line; std::getline(in, line);) {
        const auto event = nlohmann::json::parse(line);
        if (event.at("what") != what) continue;
        const auto& value = event.at(field);
        values.push_back(value.is_string() ? value.get<std::string>() : value.dump());
    }
    return values;
}

}  // namespace sorakaze::test
